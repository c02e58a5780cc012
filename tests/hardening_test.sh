#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A release build is hardened. usage: hardening_test.sh PROGRAM
set -euo pipefail
has() { # PART-SHOWN-BY-READELF PATTERN
    shown=$(readelf -W "$1" "$program")
    grep -qE -- "$2" <<<"$shown" || { echo "not hardened: no $2"; exit 1; }
}
program=$1
has -l 'GNU_RELRO'
has -d 'FLAGS_1.* NOW.* PIE'
has -s ' __stack_chk_fail'
has -s ' __(read|snprintf|vsnprintf|memcpy|fprintf)_chk'
