#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Uses the installed library the way a user would: each of its headers compiles alone, without a warning and with
# no path but the one include root; an example is built by find_package and by pkg-config, and both are run on a
# volume:
#   run.sh BUILD_DIR SOURCE_DIR WORK_DIR VOLUME EXPECTED_LINE [CXX_FLAGS]
# BUILD_DIR holds the built library, VOLUME has data records, EXPECTED_LINE is one that they must give,
# CXX_FLAGS are those that the library was built with, if it needs any (sanitizers).
set -euo pipefail
build=$1 source=$2 work=$3 volume=$4 expected=$5 flags=${6:-}

rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >"$work/install.log"
example=$source/examples/print_samples.cpp

# The public headers and those that lead former programs to them, no others.
former=(decode/{decode_{32bit,asro,cdsn,dwwssn,geoscope,ieeefloat,sro,steim,steim2,usnsn},formats,sample_cursor,swap_{2,4}byte}
    seedio/decode)
{
    (cd "$source/include" && find . -name '*.h')
    printf './quarry/%s.h\n' "${former[@]}"
} | sort >"$work/expected_headers"
(cd "$prefix/include" && find . -type f) | sort >"$work/headers"
diff "$work/expected_headers" "$work/headers" >&2
compile() {
    echo "#include <${1#./}>" | "${CXX:-c++}" -x c++ -std=c++20 -fsyntax-only -I "$prefix/include" \
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Werror -
}
export -f compile
export prefix
xargs -P "$(nproc)" -I {} bash -c 'compile {}' <"$work/headers"

# The project of the document.
mkdir "$work/project"
cp "$example" "$work/project/program.cpp"
awk '/^```cmake/ {on = 1; next} /^```/ {on = 0} on' "$source/docs/library.md" >"$work/project/CMakeLists.txt"
cmake -S "$work/project" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$flags" >"$work/configure.log"
cmake --build "$work/build" >"$work/build.log"

# The prefix is not where the library was configured for: both ways must find it all the same.
config=$(find "$prefix" -name quarry.pc)
words=$(PKG_CONFIG_PATH=$(dirname "$config") pkg-config --cflags --libs quarry)
# shellcheck disable=SC2086 # flags are several words
"${CXX:-c++}" -std=c++20 $flags "$example" $words -o "$work/by_pkg_config"

"$work/build/program" "$volume" >"$work/found_by_cmake.txt"
"$work/by_pkg_config" "$volume" >"$work/found_by_pkg_config.txt"
cmp "$work/found_by_cmake.txt" "$work/found_by_pkg_config.txt"
if ! grep -qxF -- "$expected" "$work/found_by_cmake.txt"; then
    echo "no line '$expected' in $work/found_by_cmake.txt:" >&2
    head -5 "$work/found_by_cmake.txt" >&2
    exit 1
fi
echo "$(wc -l <"$work/headers") headers, $(wc -l <"$work/found_by_cmake.txt") lines from $(basename "$volume")"
