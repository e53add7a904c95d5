// Tests of LUDecomp: pivot choice, cleared columns and where the back substitutions stop; the
// elimination and inverse against transcriptions of their two-buffer and column-by-column forms,
// bit for bit; solutions against an independent long double solve; buffer reuse and release.
#include "kdrcore/solver/LUDecomp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace {
long g_allocations = 0, g_frees = 0; // counted under AddressSanitizer only
} // namespace

#if defined(__SANITIZE_ADDRESS__)
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*mallocHook)(const volatile void *,
                                                                            size_t),
                                                         void (*freeHook)(const volatile void *));
namespace {
void onMalloc(const volatile void *, size_t) {
    ++g_allocations;
}
void onFree(const volatile void *) {
    ++g_frees;
}
const int g_hooks = __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);
} // namespace
#endif

namespace {

using Matrix = std::vector<double>;

template <class T> bool sameBits(T a, T b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}
float sub(float v, double f, float p) {
    return static_cast<float>(double(v) - f * double(p));
}
double sub(double v, double f, double p) {
    return v - f * p;
}
_POINT3D sub(_POINT3D v, double f, _POINT3D p) {
    return {sub(v.x, f, p.x), sub(v.y, f, p.y), sub(v.z, f, p.z)};
}

// The elimination in its two-buffer form: each step copies the source system to the target and
// writes the new rows there from the source's values.
template <class Rhs> void referenceEliminate(Matrix & a, std::vector<Rhs> & b, int n) {
    for (int k = 0; k + 1 < n; ++k) {
        int r = k;
        if (std::fabs(a[k * n + k]) < 1e-4)
            for (r = k + 1; r < n && std::fabs(a[r * n + k]) < 1e-4; ++r) {
            }
        if (r < n && r != k) {
            for (int j = k; j < n; ++j)
                std::swap(a[k * n + j], a[r * n + j]);
            std::swap(b[k], b[r]);
        }
        Matrix ta = a;
        std::vector<Rhs> tb = b;
        for (int i = k + 1; i < n; ++i) {
            ta[i * n + k] = 0.0;
            if (r == n)
                continue; // no pivot: the column is cleared, nothing else changes
            const double f = (1.0 / a[k * n + k]) * a[i * n + k];
            for (int j = k + 1; j < n; ++j)
                ta[i * n + j] = a[i * n + j] - f * a[k * n + j];
            tb[i] = sub(b[i], f, b[k]);
        }
        a = ta;
        b = tb;
    }
}

// The inverse with its column operations applied one column at a time. Null when singular.
std::vector<double> referenceInverse(Matrix a, int n, bool & singular) {
    Matrix w(static_cast<size_t>(n) * n, 0.0);
    for (int i = 0; i < n; ++i)
        w[i * n + i] = 1.0;
    auto columnOp = [&](int k, int j) {
        const double f = a[k * n + j] / a[k * n + k];
        for (int i = 0; i < n; ++i) {
            a[i * n + j] = a[i * n + j] - a[i * n + k] * f;
            w[i * n + j] = w[i * n + j] - w[i * n + k] * f;
        }
    };
    for (int k = 0; k < n; ++k) {
        int c = -1;
        for (int j = k; j < n; ++j)
            if (std::fabs(a[k * n + j]) > (c < 0 ? 1e-6 : std::fabs(a[k * n + c])))
                c = j;
        if ((singular = c < 0))
            return {};
        for (int i = 0; i < n; ++i) {
            std::swap(a[i * n + k], a[i * n + c]);
            std::swap(w[i * n + k], w[i * n + c]);
        }
        for (int j = k + 1; j < n; ++j)
            columnOp(k, j);
    }
    for (int k = n - 1; k >= 0; --k)
        for (int j = k - 1; j >= 0; --j)
            columnOp(k, j);
    for (int i = 0; i < n * n; ++i)
        w[i] = w[i] / a[(i % n) * (n + 1)];
    return w;
}

// Independent solve: long double elimination with partial pivoting.
std::vector<long double> independentSolve(const Matrix & a, const std::vector<double> & b, int n) {
    std::vector<long double> m(a.begin(), a.end()), x(b.begin(), b.end());
    for (int k = 0; k < n; ++k) {
        int p = k;
        for (int r = k + 1; r < n; ++r)
            if (std::fabs(m[r * n + k]) > std::fabs(m[p * n + k]))
                p = r;
        for (int j = 0; j < n; ++j)
            std::swap(m[k * n + j], m[p * n + j]);
        std::swap(x[k], x[p]);
        for (int i = k + 1; i < n; ++i) {
            const long double f = m[i * n + k] / m[k * n + k];
            for (int j = k; j < n; ++j)
                m[i * n + j] -= f * m[k * n + j];
            x[i] -= f * x[k];
        }
    }
    for (int i = n - 1; i >= 0; --i) {
        for (int j = i + 1; j < n; ++j)
            x[i] -= m[i * n + j] * x[j];
        x[i] /= m[i * n + i];
    }
    return x;
}

// Diagonally dominant (well conditioned, never swaps), or full of zeros and entries around the
// pivot tolerance (swaps and cleared columns are frequent).
Matrix randomMatrix(std::mt19937 & rng, int n, bool wellConditioned) {
    std::uniform_real_distribution<double> u(-2.0, 2.0);
    const double small[] = {0.0, 5e-5, -2e-4, 1e-4, -9.999e-5};
    Matrix a(static_cast<size_t>(n) * n);
    for (double & v : a)
        v = (!wellConditioned && rng() % 3 != 0) ? small[rng() % 5] : u(rng);
    for (int i = 0; i < n && wellConditioned; ++i)
        a[i * n + i] += (rng() % 2 ? -2.0 : 2.0) * n;
    return a;
}

struct LUDecompTest : ::testing::Test {
    void TearDown() override { LUDecomp::trashRESNUM(); }
};

TEST_F(LUDecompTest, PivotIsTheFirstAcceptableRowAndAMissingOneClearsTheColumn) {
    // A[0][0] = 0; row 1 has 5e-5 (too small), row 2 has 1, row 3 has 100: row 2 is swapped up,
    // right-hand side included, although row 3 is larger.
    double a[16] = {0, 1, 2, 3, 5e-5, 1, 0, 0, 1, 2, 4, 8, 100, 0, 0, 1};
    double b[4] = {10, 20, 30, 40};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(a, b, 4));
    EXPECT_EQ(a[3], 8.0);
    EXPECT_EQ(b[0], 30.0);
    EXPECT_EQ(a[5], 1.0 - 5e-5 * 2.0); // f = (1 / 1) * 5e-5
    EXPECT_EQ(a[4] + a[8] + a[12], 0.0);

    // A pivot of 2e-4 (and one of exactly 1e-4) stays with 1000 below it.
    double c[4] = {2e-4, 1, 1000, 1}, d[2] = {1, 2};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(c, d, 2));
    EXPECT_EQ(c[3], 1.0 - (1.0 / 2e-4) * 1000.0);
    double e[4] = {1e-4, 1, 1000, 1};
    LUDecomp::Triangularise_matrice(e, d, 2);
    EXPECT_EQ(e[0], 1e-4);

    // 5e-5 with only 9e-5 and -9e-5 below: no swap, the column is cleared, no elimination in
    // that step. 5e-5 passes the final 1e-5 test; the back substitution stops at row 0.
    double g[9] = {5e-5, 1, 2, 9e-5, 3, 4, -9e-5, 5, 7}, h[3] = {1, 2, 3};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(g, h, 3));
    EXPECT_EQ(g[3], 0.0);
    EXPECT_EQ(g[4], 3.0);
    EXPECT_EQ(g[8], 7.0 - (1.0 / 3.0) * 5.0 * 4.0);
    const double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, sevens[3] = {7, 7, 7};
    bool ok = false;
    LUDecomp::Resoud_matrice(identity, sevens, 3, &ok); // the result buffer now holds 7s
    const double * x = LUDecomp::Resoud_matrice(g, h, 3, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(x[2], h[2] / g[8]);
    EXPECT_EQ(x[1], (h[1] - g[5] * x[2]) / g[4]);
    EXPECT_EQ(x[0], 7.0) << "the failing row is not written";

    // A NaN below a small pivot is acceptable and swapped up; NaN diagonals pass the final test.
    double nan[4] = {0, 1, std::numeric_limits<double>::quiet_NaN(), 2}, nb[2] = {1, 2};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(nan, nb, 2));
    EXPECT_EQ(nan[1], 2.0);
    EXPECT_EQ(nb[0], 2.0);
}

TEST_F(LUDecompTest, DiagonalTestsOfTheEliminationAndBothBackSubstitutions) {
    double tiny = 9.9e-6, limit = 1e-5, zero = 0, four = 4, two = 2;
    EXPECT_FALSE(LUDecomp::Triangularise_matrice(&tiny, &two, 1));
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(&limit, &two, 1));
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(nullptr, nullptr, 0));
    bool ok = false;
    EXPECT_EQ(LUDecomp::Resoud_matrice(&four, &two, 1, &ok)[0], 0.5);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(std::isinf(LUDecomp::Resoud_matrice(&zero, &two, 1, &ok)[0]));
    EXPECT_TRUE(ok); // the last row is never tested
    // Singular 2 by 2: the elimination says false, the back substitution does not.
    double s[4] = {1, 2, 2, 4}, sb[2] = {1, 1};
    EXPECT_FALSE(LUDecomp::Triangularise_matrice(s, sb, 2));
    LUDecomp::Resoud_matrice(s, sb, 2, &ok);
    EXPECT_TRUE(ok);
    LUDecomp::Resoud_matrice(s, sb, 0, &ok);
    EXPECT_FALSE(ok);

    // Points: a last diagonal of 1e-7 is accepted, an exact 0 refused at once (all zero); 1e-7
    // higher up fails with the rows below solved and the rest zero.
    const _POINT3D rhs[2] = {{1, 2, 3}, {4, 8, 12}};
    const double lastSmall[4] = {2, 1, 0, 1e-7}, lastZero[4] = {2, 1, 0, 0};
    const double upperSmall[4] = {1e-7, 1, 0, 2};
    _POINT3D * p = LUDecomp::Resoud_Pmatrice(lastSmall, rhs, 2, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(p[1].y, static_cast<float>(8.0 * (1.0 / 1e-7)));
    EXPECT_EQ(p[0].y, static_cast<float>((2.0 - double(p[1].y)) * (1.0 / 2.0)));
    std::free(p);
    p = LUDecomp::Resoud_Pmatrice(lastZero, rhs, 2, &ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(p[0].x == 0.0f && p[1].z == 0.0f);
    std::free(p);
    p = LUDecomp::Resoud_Pmatrice(upperSmall, rhs, 2, &ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(p[1].x == 2.0f && p[1].z == 6.0f && p[0].x == 0.0f && p[0].y == 0.0f);
    std::free(p);
    EXPECT_EQ(LUDecomp::Resoud_Pmatrice(lastZero, rhs, 0, &ok), nullptr);

    const _POINT3D q = {1.0f, 3.0f, -6.0f};
    const _POINT3D r = Div3D(&q, 3.0);
    EXPECT_TRUE(r.x == static_cast<float>(1.0 * (1.0 / 3.0)) && r.z == -2.0f);
    double m[12] = {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23};
    LUDecomp::Permut_lignes(m, 3, 4, 0, 2, 1); // from column 1 on
    EXPECT_TRUE(m[0] == 0 && m[1] == 21 && m[3] == 23 && m[8] == 20 && m[9] == 1 && m[4] == 10);
}

TEST_F(LUDecompTest, EliminationMatchesTheTwoBufferFormBitForBit) {
    std::mt19937 rng(12345);
    std::uniform_real_distribution<float> u(-5.0f, 5.0f);
    for (int round = 0; round < 300; ++round) {
        const int n = 1 + round % 24;
        const Matrix a = randomMatrix(rng, n, round % 3 == 0);
        std::vector<double> b(n);
        std::vector<_POINT3D> pb(n);
        for (int i = 0; i < n; ++i) {
            b[i] = u(rng);
            pb[i] = {u(rng), u(rng), u(rng)};
        }
        Matrix ref = a, got = a, pGot = a;
        std::vector<double> refB = b;
        std::vector<_POINT3D> pRefB = pb;
        referenceEliminate(ref, refB, n);
        referenceEliminate(pGot, pRefB, n); // its matrix equals `ref`
        bool expected = true;
        for (int i = 0; i < n; ++i)
            expected = expected && !(std::fabs(ref[i * n + i]) < 1e-5);
        EXPECT_EQ(LUDecomp::Triangularise_matrice(got.data(), b.data(), n), expected);
        pGot = a;
        LUDecomp::Triangularise_Pmatrice(pGot.data(), pb.data(), n);
        for (int i = 0; i < n * n; ++i)
            ASSERT_TRUE(sameBits(got[i], ref[i]) && sameBits(pGot[i], ref[i]))
                << "round " << round << " element " << i;
        for (int i = 0; i < n; ++i)
            ASSERT_TRUE(sameBits(b[i], refB[i]) && sameBits(pb[i].x, pRefB[i].x) &&
                        sameBits(pb[i].y, pRefB[i].y) && sameBits(pb[i].z, pRefB[i].z))
                << "round " << round << " entry " << i;
    }
}

TEST_F(LUDecompTest, WellConditionedSystemsSolveToDoublePrecision) {
    std::mt19937 rng(777);
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    for (int n = 1; n <= 200; n += (n < 20 ? 1 : 13)) {
        const Matrix a = randomMatrix(rng, n, true);
        std::vector<double> b(n), bx(n);
        std::vector<_POINT3D> pb(n);
        for (int i = 0; i < n; ++i) {
            b[i] = u(rng);
            pb[i] = {static_cast<float>(u(rng)), 0.5f, 0.0f};
            bx[i] = double(pb[i].x);
        }
        Matrix m = a, pm = a;
        std::vector<double> rhs = b;
        ASSERT_TRUE(LUDecomp::Triangularise_matrice(m.data(), rhs.data(), n));
        LUDecomp::Triangularise_Pmatrice(pm.data(), pb.data(), n);
        bool ok = false, pok = false;
        const double * x = LUDecomp::Resoud_matrice(m.data(), rhs.data(), n, &ok);
        _POINT3D * px = LUDecomp::Resoud_Pmatrice(pm.data(), pb.data(), n, &pok);
        ASSERT_TRUE(ok && pok);
        const std::vector<long double> ex = independentSolve(a, b, n);
        const std::vector<long double> epx = independentSolve(a, bx, n);
        long double err = 0, norm = 0, perr = 0, pnorm = 0;
        for (int i = 0; i < n; ++i) {
            err += (x[i] - ex[i]) * (x[i] - ex[i]);
            norm += ex[i] * ex[i];
            perr += (px[i].x - epx[i]) * (px[i].x - epx[i]);
            pnorm += epx[i] * epx[i];
        }
        std::free(px);
        // A backward-stable elimination of a well-conditioned system loses a few ulps per row;
        // the point solver rounds to float at each step.
        EXPECT_LE(std::sqrt(err / norm), 16.0 * n * std::numeric_limits<double>::epsilon());
        EXPECT_LE(std::sqrt(perr / pnorm), 16.0 * n * std::numeric_limits<float>::epsilon());
    }
}

TEST_F(LUDecompTest, InverseMatchesTheColumnFormAndInverts) {
    // Row (0, 1) first: columns are swapped; the inverse of [[0 1] [2 3]] is [[-1.5 .5] [1 0]].
    double s[4] = {0, 1, 2, 3};
    double * inv = LUDecomp::Inverse_Matrix(s, 2);
    ASSERT_NE(inv, nullptr);
    EXPECT_TRUE(inv[0] == -1.5 && inv[1] == 0.5 && inv[2] == 1.0 && inv[3] == 0.0);
    delete[] inv;
    // Row 1 is twice row 0: singular at step 1 although row 2 is large. A largest entry of
    // exactly 1e-6 is too small.
    double twice[9] = {1, 2, 3, 2, 4, 6, 100, 50, 7}, edge[4] = {1e-6, -1e-6, 0, 1};
    EXPECT_EQ(LUDecomp::Inverse_Matrix(twice, 3), nullptr);
    EXPECT_EQ(LUDecomp::Inverse_Matrix(edge, 2), nullptr);
    delete[] LUDecomp::Inverse_Matrix(nullptr, 0);

    std::mt19937 rng(4242);
    for (int round = 0; round < 60; ++round) {
        const int n = 1 + round % 30;
        const Matrix a = randomMatrix(rng, n, round % 2 != 0);
        bool singular = false;
        const std::vector<double> expected = referenceInverse(a, n, singular);
        Matrix m = a;
        double * got = LUDecomp::Inverse_Matrix(m.data(), n);
        ASSERT_EQ(got == nullptr, singular) << "round " << round;
        for (int i = 0; got != nullptr && i < n * n; ++i) {
            ASSERT_TRUE(sameBits(got[i], expected[i])) << "round " << round << " element " << i;
            long double sum = 0; // (a * inverse)[i / n][i % n]
            for (int k = 0; k < n && round % 2 != 0; ++k)
                sum += static_cast<long double>(a[(i / n) * n + k]) * got[k * n + i % n];
            if (round % 2 != 0) {
                EXPECT_NEAR(double(sum), i / n == i % n ? 1.0 : 0.0, 1e-12);
            }
        }
        delete[] got;
    }
}

TEST_F(LUDecompTest, RepeatedSolvesAllocateNothingAndTrashReleasesEverything) {
#if !defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "allocations are counted through the AddressSanitizer hooks";
#endif
    LUDecomp::trashRESNUM();
    std::mt19937 rng(99);
    const int n = 40;
    const Matrix a = randomMatrix(rng, n, true);
    Matrix m(a.size());
    std::vector<double> rhs(n);
    std::vector<_POINT3D> pb(n);
    bool ok = false;
    const long live = g_allocations - g_frees;
    auto solve = [&](int size, bool points) {
        std::copy(a.begin(), a.begin() + size * size, m.begin());
        std::fill(rhs.begin(), rhs.end(), 1.0);
        std::fill(pb.begin(), pb.end(), _POINT3D{1, 2, 3});
        if (points) {
            LUDecomp::Triangularise_Pmatrice(m.data(), pb.data(), size);
            std::free(LUDecomp::Resoud_Pmatrice(m.data(), pb.data(), size, &ok));
            return static_cast<double *>(nullptr);
        }
        LUDecomp::Triangularise_matrice(m.data(), rhs.data(), size);
        return LUDecomp::Resoud_matrice(m.data(), rhs.data(), size, &ok);
    };
    double sw[4] = {0, 1, 1, 0}, swb[2] = {1, 2}; // swaps a row: the row buffer grows once
    LUDecomp::Triangularise_matrice(sw, swb, 2);
    const double * first = solve(n, false);
    const long afterFirst = g_allocations;
    EXPECT_EQ(solve(n / 2, false), first); // smaller: no reallocation
    EXPECT_EQ(solve(n, false), first);
    EXPECT_EQ(g_allocations, afterFirst);
    solve(n, true);
    const long afterPoints = g_allocations;
    solve(n, true);
    EXPECT_EQ(g_allocations, afterPoints + 1) << "only the caller's result array";
    LUDecomp::Triangularise_matrice(sw, swb, 2);
    EXPECT_EQ(g_allocations, afterPoints + 1);

    LUDecomp::trashRESNUM();
    LUDecomp::trashRESNUM(); // harmless
    EXPECT_EQ(g_allocations - g_frees, live);
    const double * x = solve(n, false); // allocates anew and still solves
    EXPECT_GT(g_allocations, afterPoints + 1);
    EXPECT_NEAR(x[0], double(independentSolve(a, std::vector<double>(n, 1.0), n)[0]), 1e-12);
}

} // namespace
