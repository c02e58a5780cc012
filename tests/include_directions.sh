#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The listing and the commands are two ways to read a volume that share only what is below both: no file of
# the one includes a file of the other, and on either way includes go in one direction. A public header belongs to a
# folder, and includes public headers only.
# usage: include_directions.sh SOURCE-DIRECTORY
set -euo pipefail
shopt -s inherit_errexit
cd "$1"
listing='sdd|seedio|listing|blockette|state\.h'
inventory='inventory/|quarry/(inventory|data_found|coverage)\.h'
volume='volume/|quarry/(volume|samples)\.h'
fields='fields/|quarry/fields\.h'
commands="commands/|check/|report/|$inventory|$volume|$fields"
# The lines of files that include what they must not: includes PATTERN FILE...
includes() {
    local pattern=$1
    shift
    grep -rnE "#include [\"<]($pattern)" "$@" || [ $? -eq 1 ]
}
public=../include/quarry
found=$({
    includes "$commands" sdd seedio listing blockette state.*
    includes "$listing" commands check report inventory volume fields
    includes "$listing|$commands" decode platform $public/{byte_error,decoders,fixed_header,time}.h
    includes 'decode/|quarry/decoders\.h' platform
    includes 'sdd/' seedio listing blockette state.*
    includes 'seedio/' listing blockette state.*
    includes 'listing/' blockette state.*
    includes 'blockette/' state.*
    includes 'commands/|report/' check
    includes 'commands/|check/' report
    includes 'commands/|check/|report/' inventory volume fields
    includes "$inventory" volume fields $public/{volume,samples,fields}.h
    includes "$volume" fields $public/fields.h
    grep -rn '#include "' $public | grep -v '"quarry/' || true
})
[ -z "$found" ] || { echo "$found"; exit 1; }
