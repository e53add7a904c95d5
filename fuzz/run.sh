#!/usr/bin/env bash
# Builds the libFuzzer programs (the `fuzz` preset: clang, AddressSanitizer and
# UndefinedBehaviorSanitizer), replays the checked-in corpora through them, then runs each target
# for a bounded time from its corpus and prints the executions per target.
#
#   fuzz/run.sh [target ...]        all targets, or the named ones (e.g. boolarray)
#
# Environment:
#   FUZZ_SECONDS  seconds per target (default 30)
#
# New inputs go to a scratch corpus under build/fuzz, never into fuzz/corpus. A target that finds
# a failure leaves its input as build/fuzz/artifacts/<target>-crash-*; replay it with
# `build/fuzz/fuzz/<target>_fuzzer <file>`. To minimise a corpus after a change:
#   build/fuzz/fuzz/<target>_fuzzer -merge=1 -max_len=4096 fuzz/corpus/<target> <new inputs>
# Exits 0 when clang++ is missing, after saying so.
set -uo pipefail
cd "$(dirname "$0")/.."
seconds=${FUZZ_SECONDS:-30}
build=build/fuzz

if ! command -v clang++ >/dev/null 2>&1; then
    echo "fuzz: skipped: clang++ not found"
    exit 0
fi
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
echo "=== fuzz: building and replaying the corpora (cmake --workflow --preset fuzz)"
if ! cmake --workflow --preset fuzz >"$logs/workflow.log" 2>&1; then
    tail -n 40 "$logs/workflow.log"
    echo "fuzz: FAILED to build or to replay the corpora"
    exit 1
fi

if [ $# -gt 0 ]; then
    targets=("$@")
else
    targets=()
    for source in fuzz/*_fuzzer.cpp; do
        targets+=("$(basename "$source" _fuzzer.cpp)")
    done
fi

mkdir -p "$build/artifacts"
failed=0
summary=()
for name in "${targets[@]}"; do
    target=${name}_fuzzer
    work=$build/corpus/$name
    mkdir -p "$work"
    log=$build/$target.log
    echo "=== fuzz: $target for ${seconds} s"
    "$build/fuzz/$target" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=3072 \
        -max_len=4096 -print_final_stats=1 -artifact_prefix="$build/artifacts/$target-" \
        "$work" "fuzz/corpus/$name" >"$log" 2>&1
    status=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -n 1)
    if [ $status -ne 0 ]; then
        failed=1
        grep -v '^#' "$log" | tail -n 40
        summary+=("$(printf '%-24s %12s %10s  FAILED (see %s)' "$target" "${runs:-?}" \
            "${rate:-?}" "$log")")
    else
        summary+=("$(printf '%-24s %12s %10s  ok' "$target" "${runs:-?}" "${rate:-?}")")
    fi
done

echo
printf '%-24s %12s %10s  %s\n' target executions exec/s result
printf '%s\n' "${summary[@]}"
exit $failed
