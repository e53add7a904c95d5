#!/usr/bin/env bash
# Reliability checks of KDRCore, the library that must never bring its host down:
#   1. the fuzz targets (fuzz/run.sh), FUZZ_SECONDS each (default 20 here, to keep the whole
#      run near 10 minutes on two cores; fuzz/run.sh alone defaults to 30);
#   2. the test suite under ThreadSanitizer (cmake --workflow --preset tsan), with the
#      eight-thread concurrency test;
#   3. the test suite under valgrind's memcheck (ci/memcheck.sh).
# A step whose tool is missing (clang/libFuzzer, valgrind) says so and is skipped. Exits non-zero
# when any step fails; every step runs regardless, so one report shows all of them.
#
#   ci/reliability.sh                      all three steps
#   RELIABILITY_STEPS="fuzz tsan" ci/reliability.sh
set -uo pipefail
cd "$(dirname "$0")/.."
steps=${RELIABILITY_STEPS:-fuzz tsan memcheck}
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT

failed=()
report=()
run_step() { # name, command...
    local name=$1
    shift
    printf '\n=== reliability: %s\n' "$name"
    local start=$SECONDS
    "$@"
    local status=$?
    local took=$((SECONDS - start))
    if [ $status -ne 0 ]; then
        failed+=("$name")
        report+=("$(printf '%-10s FAILED  %4ds' "$name" "$took")")
    else
        report+=("$(printf '%-10s ok      %4ds' "$name" "$took")")
    fi
}

tsan_workflow() {
    if ! cmake --workflow --preset tsan >"$logs/tsan.log" 2>&1; then
        if grep -q 'WARNING: ThreadSanitizer' "$logs/tsan.log"; then
            grep -A 30 'WARNING: ThreadSanitizer' "$logs/tsan.log" | head -n 80
        fi
        tail -n 30 "$logs/tsan.log"
        return 1
    fi
    grep -E 'tests passed|tests failed' "$logs/tsan.log" | tail -n 1
}

for step in $steps; do
    case $step in
    fuzz) FUZZ_SECONDS=${FUZZ_SECONDS:-20} run_step fuzz fuzz/run.sh ;;
    tsan) run_step tsan tsan_workflow ;;
    memcheck) run_step memcheck ci/memcheck.sh ;;
    *)
        echo "reliability: unknown step '$step'"
        failed+=("$step")
        ;;
    esac
done

printf '\n=== reliability summary\n'
printf '%s\n' "${report[@]}"
if [ ${#failed[@]} -ne 0 ]; then
    echo "reliability: FAILED: ${failed[*]}"
    exit 1
fi
echo "reliability: all steps passed"
