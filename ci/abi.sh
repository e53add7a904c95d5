#!/usr/bin/env bash
# The binary interface of libKDRCore.so against its committed baseline, abi/<SONAME>.abi, recorded
# by abigail-tools from the release preset's library (built with -g, so types are included).
#   ci/abi.sh          build the release preset and compare it with the baseline: a removed or
#                      changed function, variable or public type fails; additions are reported
#   ci/abi.sh update   build the release preset and record it as the baseline
# Only types defined in include/ count (--headers-dir, --drop-private-types): internals are free.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=${1:-check}
[[ $mode == check || $mode == update ]] || { echo "usage: ci/abi.sh [check|update]" >&2; exit 2; }

cmake --workflow --preset release >/dev/null
library=$(readlink -f build/release/libKDRCore.so)
soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
baseline=abi/$soname.abi
public=(--drop-private-types)

if [[ $mode == update ]]; then
    mkdir -p abi
    abidw --headers-dir "$PWD/include" "${public[@]}" --no-corpus-path --no-comp-dir-path \
        --short-locs --out-file "$baseline" "$library"
    echo "recorded $baseline from $library"
    exit 0
fi
if [[ ! -f $baseline ]]; then
    echo "FAILED: no baseline $baseline for the SONAME $soname: record one with ci/abi.sh update"
    exit 1
fi
# abidiff's exit status is a bit set: 1 error, 2 usage, 4 change, 8 incompatible change.
compare() { abidiff --headers-dir2 "$PWD/include" "${public[@]}" "$@" "$baseline" "$library"; }
status=0
compare || status=$?
if ((status & 3)); then
    echo "FAILED: abidiff could not compare (status $status)"
    exit 1
elif ((status & 8)); then
    echo "FAILED: incompatible ABI change against $baseline (above); see README, Binary interface"
    exit 1
elif ((status & 4)); then
    # Additions alone are compatible; any change that remains without them is not.
    rest=0
    compare --no-added-syms >/dev/null || rest=$?
    if ((rest != 0)); then
        echo "FAILED: ABI change against $baseline (above); see README, Binary interface"
        exit 1
    fi
    echo "ABI: additions only (above), compatible; record them with ci/abi.sh update"
else
    echo "ABI: same as $baseline"
fi
