#!/bin/sh
# bench/run.sh - builds KDRCore and its benchmarks with release flags, runs them once and prints
# the table of KDRCore beside its peers (time of one operation, ratio KDRCore / peer).
#
# Usage: bench/run.sh [benchmark flags...]
#   e.g. bench/run.sh --benchmark_filter='multMatrices|inverse' --verbose
# The build goes to build/bench (KDRCORE_BENCH_BUILD_DIR overrides it). Every benchmark is
# repeated 5 times (KDRCORE_BENCH_REPETITIONS) with the repetitions of all benchmarks shuffled
# together, so that load from other processes hits KDRCore and its peers alike; the table gives
# medians and the ratios of medians from that one run.
set -eu

source_dir=$(cd "$(dirname "$0")/.." && pwd)
build_dir=${KDRCORE_BENCH_BUILD_DIR:-$source_dir/build/bench}
repetitions=${KDRCORE_BENCH_REPETITIONS:-5}

cmake -S "$source_dir" -B "$build_dir" -DCMAKE_BUILD_TYPE=Release \
    -DKDRCORE_BUILD_BENCHMARKS=ON -DKDRCORE_BUILD_TESTS=OFF -DKDRCORE_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build_dir" --target kdrcore_bench -j 2 >/dev/null

exec "$build_dir/bench/kdrcore_bench" --benchmark_repetitions="$repetitions" \
    --benchmark_enable_random_interleaving=true --benchmark_min_time=0.1 "$@"
