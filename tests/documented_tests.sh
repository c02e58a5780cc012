#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Every test that a document names in the form `Suite.Name` exists: documented_tests.sh TESTS DOCUMENT...
missing=0
tests=$1
shift
for test in $(grep -oh '`[A-Z][A-Za-z]*\.[A-Z][A-Za-z0-9]*`' "$@" | tr -d '`' | sort -u); do
    suite=${test%.*} name=${test#*.}
    grep -lE "(\(|\")$suite[,\"]" "$tests"/*_test.cpp | xargs grep -qE "[ \"]$name[),\"]" ||
        { echo "no test $test" && missing=1; }
done
# Every source file names its licence.
cd "$tests/.."
unnamed=$(grep -rL 'SPDX-License-Identifier: Apache-2.0' CMakeLists.txt src include tests fuzz bench examples cmake script .ci \
    --exclude=blockettes.txt --exclude=source-revision.txt --exclude='*.equivalent' \
    --exclude-dir=golden --exclude-dir=corpus --exclude-dir=__pycache__)
[ -z "$unnamed" ] || { echo "no licence in: $unnamed" && missing=1; }
exit "$missing"
