#!/usr/bin/env bash
# Builds every fuzz target with clang (libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer) and
# runs each for a bounded time from its checked-in seeds, then prints the executions per target.
#
#   fuzz/run.sh [target ...]        all targets, or the named ones (e.g. boolarray_fuzzer)
#
# Environment:
#   FUZZ_SECONDS  seconds per target (default 30)
#   FUZZ_BUILD    build directory (default build-fuzz in the source tree)
#   FUZZ_JOBS     parallel build jobs (default 2)
#   CXX_FUZZ      the clang++ to use (default clang++)
#
# New inputs go to a scratch corpus under the build directory, never into fuzz/corpus. A target
# that finds a failure leaves its input as $FUZZ_BUILD/artifacts/<target>-crash-*; replay it with
# `$FUZZ_BUILD/<target> <file>`. Exits 0 when clang or libFuzzer is missing, after saying so.
set -uo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
seconds=${FUZZ_SECONDS:-30}
build=${FUZZ_BUILD:-$root/build-fuzz}
jobs=${FUZZ_JOBS:-2}
cxx=${CXX_FUZZ:-clang++}

skip() {
    echo "fuzz: skipped: $*"
    exit 0
}

command -v "$cxx" >/dev/null 2>&1 || skip "$cxx not found"
command -v cmake >/dev/null 2>&1 || skip "cmake not found"
probe=$(mktemp -d)
trap 'rm -rf "$probe"' EXIT
printf '%s\n' '#include <cstddef>' '#include <cstdint>' \
    'extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *, std::size_t) { return 0; }' \
    >"$probe/probe.cpp"
"$cxx" -fsanitize=fuzzer,address,undefined "$probe/probe.cpp" -o "$probe/probe" \
    >"$probe/log" 2>&1 || skip "$cxx cannot link -fsanitize=fuzzer (libFuzzer missing)"

echo "=== fuzz: building with $cxx in $build"
if ! cmake -S fuzz -B "$build" -DCMAKE_CXX_COMPILER="$cxx" >"$probe/configure.log" 2>&1 ||
    ! cmake --build "$build" -j "$jobs" >"$probe/build.log" 2>&1; then
    cat "$probe/configure.log" "$probe/build.log" 2>/dev/null | tail -n 40
    echo "fuzz: FAILED to build"
    exit 1
fi

if [ $# -gt 0 ]; then
    targets=("$@")
else
    targets=()
    for source in fuzz/*_fuzzer.cpp; do
        targets+=("$(basename "$source" .cpp)")
    done
fi

mkdir -p "$build/artifacts"
failed=0
summary=()
for target in "${targets[@]}"; do
    name=${target%_fuzzer}
    seeds=fuzz/corpus/$name
    work=$build/corpus/$name
    mkdir -p "$work" "$seeds"
    log=$build/$target.log
    echo "=== fuzz: $target for ${seconds} s"
    "$build/$target" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=3072 \
        -print_final_stats=1 -artifact_prefix="$build/artifacts/$target-" \
        "$work" "$seeds" >"$log" 2>&1
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
