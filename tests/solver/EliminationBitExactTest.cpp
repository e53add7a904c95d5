// The blocked elimination behind LUDecomp gives the bits of the plain step-by-step elimination,
// with every row update version this machine can run.
//
// Systems of 1 to 80 unknowns, with entries that are ordinary, small integers (exact
// cancellation, zero pivots that force the search and row exchanges, columns with no acceptable
// pivot), tiny, denormal, infinite or NaN; right-hand sides of doubles and of points. Over 10^5
// matrix entries in all. A NaN must meet a NaN, every other value the same bits.
#include "solver/Elimination.h"

#include "kdrcore/solver/LUDecomp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

bool sameBits(double a, double b) {
    std::uint64_t x, y;
    std::memcpy(&x, &a, sizeof x);
    std::memcpy(&y, &b, sizeof y);
    return (std::isnan(a) && std::isnan(b)) || x == y;
}

bool sameBits(_POINT3D const & a, _POINT3D const & b) {
    auto same = [](float x, float y) {
        return (std::isnan(x) && std::isnan(y)) || std::memcmp(&x, &y, sizeof x) == 0;
    };
    return same(a.x, b.x) && same(a.y, b.y) && same(a.z, b.z);
}

double minus(double v, double f, double p) {
    return v - f * p;
}
_POINT3D minus(_POINT3D v, double f, _POINT3D p) {
    auto one = [f](float a, float b) {
        return static_cast<float>(static_cast<double>(a) - f * static_cast<double>(b));
    };
    return {one(v.x, p.x), one(v.y, p.y), one(v.z, p.z)};
}

// The elimination as written: step k searches, exchanges, then updates every row below.
template <class Rhs> void reference(std::vector<double> & a, std::vector<Rhs> & b, int n) {
    auto at = [&](int i, int j) -> double & { return a[static_cast<std::size_t>(i * n + j)]; };
    for (int k = 0; k + 1 < n; ++k) {
        if (std::fabs(at(k, k)) < 1e-4) {
            int r = k + 1;
            while (r < n && std::fabs(at(r, k)) < 1e-4)
                ++r;
            if (r == n) {
                for (int i = k + 1; i < n; ++i)
                    at(i, k) = 0.0;
                continue;
            }
            for (int j = k; j < n; ++j)
                std::swap(at(k, j), at(r, j));
            std::swap(b[static_cast<std::size_t>(k)], b[static_cast<std::size_t>(r)]);
        }
        double const inv = 1.0 / at(k, k);
        for (int i = k + 1; i < n; ++i) {
            double const f = inv * at(i, k);
            for (int j = k + 1; j < n; ++j)
                at(i, j) = minus(at(i, j), f, at(k, j));
            at(i, k) = 0.0;
            b[static_cast<std::size_t>(i)] =
                minus(b[static_cast<std::size_t>(i)], f, b[static_cast<std::size_t>(k)]);
        }
    }
}

struct System {
    int n;
    std::vector<double> a;
    std::vector<double> b;
    std::vector<_POINT3D> p;
};

// Every third system is tame (a dominant diagonal: the blocked passes run uninterrupted); the
// others mix in the troublesome entries.
std::vector<System> systems() {
    std::mt19937 rng(7u);
    auto pick = [&](int k) { return std::uniform_int_distribution<int>(0, k - 1)(rng); };
    auto uniform = [&](double lo, double hi) {
        return std::uniform_real_distribution<double>(lo, hi)(rng);
    };
    double const specials[] = {0.0,
                               -0.0,
                               5e-5,
                               -2e-4,
                               std::numeric_limits<double>::denorm_min(),
                               1e-310,
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(),
                               1e300};
    std::vector<System> out;
    std::size_t entries = 0;
    for (int index = 0; entries < 120000; ++index) {
        int const n = 1 + index % 80;
        System s{n, std::vector<double>(static_cast<std::size_t>(n * n)),
                 std::vector<double>(static_cast<std::size_t>(n)),
                 std::vector<_POINT3D>(static_cast<std::size_t>(n))};
        int const kind = index % 3;
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                double v = uniform(-1.0, 1.0);
                if (kind == 0 && i == j)
                    v += n;
                else if (kind == 1 && pick(3) == 0)
                    v = pick(3) - 1; // zeros and exact cancellation
                else if (kind == 2 && pick(40) == 0)
                    v = specials[pick(static_cast<int>(std::size(specials)))];
                s.a[static_cast<std::size_t>(i * n + j)] = v;
            }
            s.b[static_cast<std::size_t>(i)] = uniform(-1.0, 1.0);
            s.p[static_cast<std::size_t>(i)] = {static_cast<float>(uniform(-1.0, 1.0)),
                                                static_cast<float>(uniform(-1.0, 1.0)),
                                                static_cast<float>(pick(3) - 1)};
        }
        entries += static_cast<std::size_t>(n * n);
        out.push_back(std::move(s));
    }
    return out;
}

std::vector<std::pair<std::string, kdrsolver::RowUpdate>> updates() {
    std::vector<std::pair<std::string, kdrsolver::RowUpdate>> v{
        {"baseline", kdrsolver::rowUpdatePlain}};
#if KDRCORE_SIMD_X86
    if (kdrsimd::detectLevel() >= kdrsimd::LEVEL_AVX2)
        v.emplace_back("AVX2", kdrsolver::rowUpdateAvx2);
    if (kdrsimd::detectLevel() >= kdrsimd::LEVEL_AVX512)
        v.emplace_back("AVX-512", kdrsolver::rowUpdateAvx512);
#endif
    return v;
}

template <class T>
int mismatches(std::vector<T> const & got, std::vector<T> const & want, std::string const & what,
               int n) {
    for (std::size_t i = 0; i < got.size(); ++i)
        if (!sameBits(got[i], want[i])) {
            ADD_FAILURE() << what << ", n = " << n << ", element " << i;
            return 1;
        }
    return 0;
}

} // namespace

TEST(EliminationBitExact, EveryRowUpdateMatchesTheStepByStepElimination) {
    std::vector<System> const all = systems();
    int searched = 0;
    for (auto const & [name, update] : updates()) {
        int bad = 0;
        for (System const & s : all) {
            if (bad > 5)
                break;
            std::vector<double> wantA = s.a, wantB = s.b, gotA = s.a, gotB = s.b;
            std::vector<_POINT3D> wantP = s.p, gotP = s.p;
            std::vector<double> pointsA = s.a, scratch(static_cast<std::size_t>(2 * s.n * s.n));
            reference(wantA, wantB, s.n);
            std::vector<double> wantPA = s.a;
            reference(wantPA, wantP, s.n);
            kdrsolver::eliminate(gotA.data(), gotB.data(), s.n, update, scratch.data());
            kdrsolver::eliminate(pointsA.data(), gotP.data(), s.n, update, scratch.data());
            bad += mismatches(gotA, wantA, name + " matrix", s.n);
            bad += mismatches(gotB, wantB, name + " right-hand side", s.n);
            bad += mismatches(pointsA, wantPA, name + " matrix (points)", s.n);
            bad += mismatches(gotP, wantP, name + " points", s.n);
            for (int k = 0; k + 1 < s.n; ++k)
                searched += std::fabs(s.a[static_cast<std::size_t>(k * s.n + k)]) < 1e-4;
        }
        EXPECT_EQ(bad, 0) << name;
    }
    EXPECT_GT(searched, 100) << "small pivots should send the elimination to its search";
}

TEST(EliminationBitExact, TriangulariseMatchesTheStepByStepElimination) {
    // Through the public functions, with whatever version the library chose.
    int bad = 0;
    for (System const & s : systems()) {
        std::vector<double> wantA = s.a, wantB = s.b, gotA = s.a, gotB = s.b;
        std::vector<_POINT3D> wantP = s.p, gotP = s.p;
        std::vector<double> wantPA = s.a, gotPA = s.a;
        reference(wantA, wantB, s.n);
        reference(wantPA, wantP, s.n);
        LUDecomp::Triangularise_matrice(gotA.data(), gotB.data(), s.n);
        LUDecomp::Triangularise_Pmatrice(gotPA.data(), gotP.data(), s.n);
        bad += mismatches(gotA, wantA, "Triangularise_matrice", s.n);
        bad += mismatches(gotB, wantB, "Triangularise_matrice rhs", s.n);
        bad += mismatches(gotPA, wantPA, "Triangularise_Pmatrice", s.n);
        bad += mismatches(gotP, wantP, "Triangularise_Pmatrice points", s.n);
        if (bad > 5)
            break;
    }
    EXPECT_EQ(bad, 0);
    LUDecomp::trashRESNUM();
}
