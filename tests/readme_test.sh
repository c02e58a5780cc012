#!/usr/bin/env bash
# The lines of the README's listing stand in the listing of the demonstration volume.
# usage: readme_test.sh README QUARRY DEMO_VOLUME DIRECTORY-OF-QUARRY.PF
set -euo pipefail
export QUARRY_PARAM_PATH=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$3" "$work/demo.seed"
"$2" "$work/demo.seed" >"$work/listing" 2>/dev/null
awk '/^## A listing/ {on = 1} /^## Options/ {on = 0} /^```/ {inside = !inside; next} on && inside' "$1" >"$work/claimed"
[ "$(wc -l <"$work/claimed")" -ge 10 ]
while IFS= read -r line; do
    grep -qF -- "$line" "$work/listing" || { echo "not in the listing: $line"; exit 1; }
done <"$work/claimed"
