// bench/BenchSupport.h - registration and input helpers shared by the benchmark programs
//
// Every benchmark is registered under the name "operation|implementation". The implementation
// "KDRCore" is the library; any other is a peer doing the same work on the same inputs, the way a
// host would write it with that library. Each benchmark states how many operations one iteration
// runs, so that the table can give the time of one operation.
#ifndef KDRCORE_BENCH_BENCHSUPPORT_H
#define KDRCORE_BENCH_BENCHSUPPORT_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace kdrbench {

inline constexpr char const * KDRCORE = "KDRCore";

/// Operations in the order of their first registration: the order of the table.
inline std::vector<std::string> & operationOrder() {
    static std::vector<std::string> order;
    return order;
}

/// Registers `body` (called once per iteration, running `operations` operations) as
/// "operation|implementation".
template <class Body>
void add(std::string const & operation, std::string const & implementation, std::int64_t operations,
         Body body) {
    std::string const name = operation + "|" + implementation;
    std::vector<std::string> & order = operationOrder();
    if (std::find(order.begin(), order.end(), operation) == order.end())
        order.push_back(operation);
    benchmark::RegisterBenchmark(name.c_str(),
                                 [body, operations](benchmark::State & state) mutable {
                                     for (auto _ : state) {
                                         body();
                                         benchmark::ClobberMemory();
                                     }
                                     state.SetItemsProcessed(state.iterations() * operations);
                                 });
}

/// The same seed for every program and run: every implementation sees the same inputs.
inline std::mt19937 & rng() {
    static std::mt19937 engine(20240611u);
    return engine;
}

inline float uniform(float lo, float hi) {
    return std::uniform_real_distribution<float>(lo, hi)(rng());
}

inline int uniformInt(int lo, int hi) {
    return std::uniform_int_distribution<int>(lo, hi)(rng());
}

// Registration functions of the individual files, called in this order by main.
void registerKernelBenchmarks();
void registerGeometryBenchmarks();
void registerSolverBenchmarks();
void registerContainerBenchmarks();

} // namespace kdrbench

#endif // KDRCORE_BENCH_BENCHSUPPORT_H
