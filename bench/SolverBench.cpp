// bench/SolverBench.cpp - LUDecomp solves beside a plain unblocked Gaussian elimination and
// Eigen's blocked LU
//
// Each iteration copies the system into work arrays (every solver destroys its input) and solves
// it: elimination and back substitution.
#include "BenchSupport.h"

#include "kdrcore/solver/LUDecomp.h"

#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#if KDRCORE_BENCH_HAVE_EIGEN
#include <Eigen/Dense>
#endif

namespace kdrbench {
namespace {

// A diagonally dominant system: no pivot search, as the systems the library meets in practice.
struct System {
    int n;
    std::vector<double> a, b;
};

System system(int n) {
    System s{n, std::vector<double>(static_cast<std::size_t>(n) * static_cast<std::size_t>(n)),
             std::vector<double>(static_cast<std::size_t>(n))};
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j)
            s.a[static_cast<std::size_t>(i * n + j)] = uniform(-1.0f, 1.0f);
        s.a[static_cast<std::size_t>(i * n + i)] += static_cast<double>(n);
        s.b[static_cast<std::size_t>(i)] = uniform(-1.0f, 1.0f);
    }
    return s;
}

// Textbook Gaussian elimination with partial pivoting, row by row, then back substitution.
void plainSolve(double * a, double * b, double * x, int n) {
    for (int k = 0; k < n; ++k) {
        int p = k;
        for (int i = k + 1; i < n; ++i)
            if (std::fabs(a[i * n + k]) > std::fabs(a[p * n + k]))
                p = i;
        if (p != k) {
            for (int j = k; j < n; ++j)
                std::swap(a[k * n + j], a[p * n + j]);
            std::swap(b[k], b[p]);
        }
        double const inv = 1.0 / a[k * n + k];
        for (int i = k + 1; i < n; ++i) {
            double const f = a[i * n + k] * inv;
            for (int j = k + 1; j < n; ++j)
                a[i * n + j] -= f * a[k * n + j];
            b[i] -= f * b[k];
        }
    }
    for (int i = n - 1; i >= 0; --i) {
        double s = b[i];
        for (int j = i + 1; j < n; ++j)
            s -= a[i * n + j] * x[j];
        x[i] = s / a[i * n + i];
    }
}

void registerSolves() {
    for (int n : {8, 32, 128, 512}) {
        System const s = system(n);
        std::string const op = "LUDecomp solve n=" + std::to_string(n);
        add(op, KDRCORE, 1, [s, a = s.a, b = s.b]() mutable {
            std::memcpy(a.data(), s.a.data(), a.size() * sizeof(double));
            std::memcpy(b.data(), s.b.data(), b.size() * sizeof(double));
            bool ok = LUDecomp::Triangularise_matrice(a.data(), b.data(), s.n);
            benchmark::DoNotOptimize(LUDecomp::Resoud_matrice(a.data(), b.data(), s.n, &ok));
            benchmark::DoNotOptimize(ok);
        });
        add(op, "plain elimination", 1, [s, a = s.a, b = s.b, x = s.b]() mutable {
            std::memcpy(a.data(), s.a.data(), a.size() * sizeof(double));
            std::memcpy(b.data(), s.b.data(), b.size() * sizeof(double));
            plainSolve(a.data(), b.data(), x.data(), s.n);
        });
#if KDRCORE_BENCH_HAVE_EIGEN
        using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
        add(op, "Eigen PartialPivLU", 1,
            [s, a = RowMajor(n, n), x = Eigen::VectorXd(n),
             lu = Eigen::PartialPivLU<RowMajor>(n)]() mutable {
                a = Eigen::Map<RowMajor const>(s.a.data(), s.n, s.n);
                lu.compute(a);
                x = lu.solve(Eigen::Map<Eigen::VectorXd const>(s.b.data(), s.n));
            });
#endif
    }
}

} // namespace

void registerSolverBenchmarks() {
    registerSolves();
}

} // namespace kdrbench
