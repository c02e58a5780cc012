#!/usr/bin/env bash
# A command that reads many volumes in many threads writes what it writes with one.
# usage: threads_of_a_command.sh QUARRY FOLDER-OF-VOLUMES
set -euo pipefail
one=$(mktemp)
many=$(mktemp)
trap 'rm -f "$one" "$many"' EXIT
run() {
    local status=0
    "$@" || status=$?
    [ "$status" -le 2 ] || exit "$status"
    echo "$status"
}
for command in 'json --samples' 'coverage --json --gaps' check; do
    run "$1" $command --jobs 1 "$2"/*.seed >>"$one"
    run "$1" $command --jobs 8 "$2"/*.seed >>"$many"
done
[ "$(wc -l <"$one")" -gt 400 ]
cmp "$one" "$many"
