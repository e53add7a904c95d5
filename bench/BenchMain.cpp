// bench/BenchMain.cpp - runs every benchmark and prints KDRCore beside its peers
//
// The usual Google Benchmark flags apply, and --verbose prints every run. After the run a table
// gives, for each operation, the
// median time of one operation over the repetitions of this run for KDRCore and for each peer,
// and the ratio KDRCore / peer. Run with --benchmark_repetitions=5 (or more) and
// --benchmark_enable_random_interleaving=true on a busy machine: the repetitions of all
// benchmarks are then shuffled together, so that a burst of load hits every column alike.
#include "BenchSupport.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

// The target of each tracked comparison: KDRCore time / peer time at most `ratio`. With
// `lessEmpty` the time of the empty kernel call is first taken off KDRCore's: the goal is then on
// the work behind the virtual call, which every host-facing operation pays anyway.
struct Goal {
    char const * operation;
    char const * peer;
    double ratio;
    bool lessEmpty = false;
};

constexpr char const * EMPTY_CALL = "empty kernel call";

constexpr Goal GOALS[] = {
    {"multMatrices", "glm", 0.9},
    {"inverseMatrix", "glm", 1.0},
    {"multMatrixVec3f", "glm", 1.0, true},
    {"multAffineMatrixVec3f", "glm", 1.0, true},
    {"multQuaternions", "glm", 1.0, true},
    {"quaternionToMatrix", "glm", 1.0, true},
    {"quaternionSLERP", "glm", 1.0},
    {"jacobi3", "Eigen", 1.5},
    {"factor", "Eigen", 1.0},
    {"Matrix4f * Matrix4f", "glm", 1.0},
    {"Quaternion * Quaternion", "glm", 1.0},
    {"Matrix4f * Vector3f", "glm", 1.0},
    {"MatAff4f * Vector3f", "glm", 1.0},
    {"BBox3DIntersectBBox2D", "glm", 0.7},
    {"cameraProjBBox (2D)", "glm", 1.0},
    {"BinarySort 1e6 rows x 4 cols", "std::stable_sort", 0.05},
    {"KDRBoolArray count 1e6", "std::vector<bool>", 1.0},
    {"KDRBoolArray count 1e6", "std::bitset", 1.0},
    {"KDRBoolArray count 1e6", "boost::dynamic_bitset", 1.0},
    {"KDRBoolArray findFirst 1e6", "std::vector<bool>", 1.0},
    {"KDRBoolArray findFirst 1e6", "std::bitset", 1.0},
    {"KDRBoolArray findFirst 1e6", "boost::dynamic_bitset", 1.0},
    {"KDRBoolArray union 1e6", "std::bitset", 1.0},
    {"KDRBoolArray union 1e6", "boost::dynamic_bitset", 1.0},
    {"LUDecomp solve n=512", "plain elimination", 1.0},
    {"IDGenerator generateID x1e6", "std::set<int>", 0.1},
};

Goal const * goalFor(std::string const & operation, std::string const & peer) {
    for (Goal const & g : GOALS)
        if (operation == g.operation && peer == g.peer)
            return &g;
    return nullptr;
}

std::string formatTime(double ns) {
    char text[32];
    if (ns < 1e3)
        std::snprintf(text, sizeof text, "%.2f ns", ns);
    else if (ns < 1e6)
        std::snprintf(text, sizeof text, "%.2f us", ns / 1e3);
    else
        std::snprintf(text, sizeof text, "%.2f ms", ns / 1e6);
    return text;
}

std::string cpuModel() {
    std::ifstream in("/proc/cpuinfo");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("model name", 0) == 0) {
            std::size_t const colon = line.find(':');
            return colon == std::string::npos ? line : line.substr(colon + 2);
        }
    return "unknown";
}

std::string cpuFeatures() {
    std::string s;
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
    __builtin_cpu_init();
    if (__builtin_cpu_supports("sse4.2"))
        s += " sse4.2";
    if (__builtin_cpu_supports("avx2"))
        s += " avx2";
    if (__builtin_cpu_supports("fma"))
        s += " fma";
    if (__builtin_cpu_supports("avx512f"))
        s += " avx512f";
    if (__builtin_cpu_supports("avx512vl"))
        s += " avx512vl";
    if (__builtin_cpu_supports("avx512dq"))
        s += " avx512dq";
#endif
    return s.empty() ? " (none detected)" : s;
}

// Collects the per-operation times for the table. With --verbose the usual console lines are
// printed as well; otherwise one progress line per benchmark goes to stderr.
class TableReporter : public benchmark::ConsoleReporter {
public:
    explicit TableReporter(bool verbose) : m_verbose(verbose) {}

    bool ReportContext(Context const & context) override {
        return m_verbose ? ConsoleReporter::ReportContext(context) : true;
    }

    void ReportRuns(std::vector<Run> const & runs) override {
        if (m_verbose)
            ConsoleReporter::ReportRuns(runs);
        else if (!runs.empty())
            std::fprintf(stderr, "done: %s\n", runs.front().run_name.function_name.c_str());
        for (Run const & run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred)
                continue;
            auto const rate = run.counters.find("items_per_second");
            if (rate == run.counters.end() || rate->second.value <= 0.0)
                continue;
            std::string const & name = run.run_name.function_name;
            std::size_t const bar = name.rfind('|');
            if (bar == std::string::npos)
                continue;
            std::string const operation = name.substr(0, bar);
            std::string const impl = name.substr(bar + 1);
            auto & impls = m_times[operation];
            auto it = std::find_if(impls.begin(), impls.end(),
                                   [&](auto const & e) { return e.first == impl; });
            if (it == impls.end()) {
                impls.emplace_back(impl, std::vector<double>());
                it = impls.end() - 1;
            }
            it->second.push_back(1e9 / rate->second.value);
        }
    }

    void Finalize() override {
        if (m_verbose)
            ConsoleReporter::Finalize();
        std::FILE * const out = stdout;
        std::fflush(out);
        std::fprintf(out, "\nCPU: %s\nCPU features:%s\n", cpuModel().c_str(),
                     cpuFeatures().c_str());
#ifdef KDRCORE_BENCH_MISSING_PEERS
        std::fprintf(out,
                     "Peers not found when this program was configured, left out of the table: "
                     "%s.\n",
                     KDRCORE_BENCH_MISSING_PEERS);
#endif
        std::fprintf(out,
                     "Time of one operation, median over the repetitions of this run (CPU time);"
                     " ratio = KDRCore / peer.\n\n");
        std::fprintf(out, "%-36s %12s   %-20s %12s %8s   %s\n", "operation", "KDRCore", "peer",
                     "peer time", "ratio", "goal");
        std::fprintf(out, "%s\n", std::string(112, '-').c_str());
        auto const emptyTimes = m_times.find(EMPTY_CALL);
        double const empty = emptyTimes == m_times.end() || emptyTimes->second.empty()
                                 ? -1.0
                                 : median(emptyTimes->second.front().second);
        for (std::string const & op : kdrbench::operationOrder()) {
            auto const found = m_times.find(op);
            if (found == m_times.end())
                continue; // filtered out
            auto const & impls = found->second;
            double kdr = -1.0;
            for (auto const & [impl, times] : impls)
                if (impl == kdrbench::KDRCORE)
                    kdr = median(times);
            bool first = true;
            auto printHead = [&]() {
                std::fprintf(out, "%-36s %12s", first ? op.c_str() : "",
                             first ? (kdr < 0 ? "-" : formatTime(kdr).c_str()) : "");
                first = false;
            };
            int peers = 0;
            for (auto const & [impl, times] : impls) {
                if (impl == kdrbench::KDRCORE)
                    continue;
                ++peers;
                double const t = median(times);
                printHead();
                std::fprintf(out, "   %-20s %12s", impl.c_str(), formatTime(t).c_str());
                if (kdr >= 0) {
                    double const ratio = kdr / t;
                    std::fprintf(out, " %8.2f", ratio);
                    if (Goal const * g = goalFor(op, impl)) {
                        double r = ratio;
                        if (g->lessEmpty && empty >= 0) {
                            r = (kdr - empty) / t;
                            std::fprintf(out, "   less empty call %.2f", r);
                        }
                        if (!g->lessEmpty || empty >= 0)
                            std::fprintf(out, "   <= %.2f %s", g->ratio,
                                         r <= g->ratio ? "met" : "NOT MET");
                    }
                }
                std::fprintf(out, "\n");
            }
            if (peers == 0) {
                printHead();
                std::fprintf(out, "   %-20s\n", "(no peer)");
            }
        }
        std::fflush(out);
    }

private:
    static double median(std::vector<double> v) {
        std::sort(v.begin(), v.end());
        std::size_t const n = v.size();
        return n % 2 == 1 ? v[n / 2] : 0.5 * (v[n / 2 - 1] + v[n / 2]);
    }

    bool m_verbose;
    std::map<std::string, std::vector<std::pair<std::string, std::vector<double>>>> m_times;
};

} // namespace

int main(int argc, char ** argv) {
    // --verbose is ours; every other flag goes to Google Benchmark.
    bool verbose = false;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--verbose")
            verbose = true;
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    kdrbench::registerKernelBenchmarks();
    kdrbench::registerGeometryBenchmarks();
    kdrbench::registerSolverBenchmarks();
    kdrbench::registerContainerBenchmarks();
#ifdef KDRCORE_BENCH_MISSING_PEERS
    std::fprintf(stderr, "Peers left out of this run (not found when configured): %s.\n",
                 KDRCORE_BENCH_MISSING_PEERS);
#endif
    TableReporter reporter(verbose);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
