#!/usr/bin/env bash
# The listing and the commands are two ways to read a volume that share only what is below both: no file of
# the one includes a file of the other.
# usage: include_directions.sh SOURCE-DIRECTORY
set -euo pipefail
cd "$1"
listing='sdd|seedio|listing|blockette|state\.h'
open='commands|check|report|inventory|volume|fields'
found=$({
    grep -rnE "#include \"($open)/" sdd seedio listing blockette state.* || true
    grep -rnE "#include \"($listing)" $(ls -d commands check report inventory volume fields 2>/dev/null) || true
    grep -rnE "#include \"($listing|$open)" decode platform || true
})
[ -z "$found" ] || { echo "$found"; exit 1; }
