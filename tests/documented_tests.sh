#!/bin/sh
# Every test that a document names in the form `Suite.Name` exists: documented_tests.sh TESTS DOCUMENT...
missing=0
tests=$1
shift
for test in $(grep -oh '`[A-Z][A-Za-z]*\.[A-Z][A-Za-z0-9]*`' "$@" | tr -d '`' | sort -u); do
    suite=${test%.*} name=${test#*.}
    grep -lE "(\(|\")$suite[,\"]" "$tests"/*_test.cpp | xargs grep -qE "[ \"]$name[),\"]" ||
        { echo "no test $test" && missing=1; }
done
exit "$missing"
