#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
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
for command in 'json --samples' 'coverage --json --gaps' check info; do
    run "$1" $command --jobs 1 "$2"/*.seed >>"$one"
    run "$1" $command --jobs 8 "$2"/*.seed >>"$many"
done
[ "$(wc -l <"$one")" -gt 400 ]
cmp "$one" "$many"

# So do the threads that the system grants: stacks of 40 TB leave room for few. Sanitizers need that room.
stack=$((40 << 30))
if grep -q '__[at]san_init' "$1" || ! (ulimit -s $stack) 2>/dev/null; then
    exit
fi
run "$1" json --samples --jobs 1 "$2"/*.seed >"$one"
(ulimit -s $stack && run "$1" json --samples --jobs 20 "$2"/*.seed) >"$many"
cmp "$one" "$many"
