// Tests of LUDecomp: pivot choice, cleared columns, where the back substitutions stop, the
// inverse, agreement with a two-buffer transcription of the elimination and with an independent
// long double solve, and the behaviour of the process-wide buffers.
#include "kdrcore/solver/LUDecomp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

// ---------------------------------------------------------------------------------------------
// Allocation counting. Under AddressSanitizer through its hooks; otherwise by interposing the C
// allocator's entry points in this program and forwarding to glibc.
namespace {
long g_allocations = 0; // allocations (including reallocations) since start
long g_frees = 0;
} // namespace

#if defined(__SANITIZE_ADDRESS__)
// From the sanitizer runtime's allocator interface.
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
struct HookInstaller {
    HookInstaller() { __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree); }
} g_hookInstaller;
} // namespace
#else
extern "C" {
void * __libc_malloc(size_t);
void * __libc_calloc(size_t, size_t);
void * __libc_realloc(void *, size_t);
void __libc_free(void *);
void * malloc(size_t size) noexcept {
    ++g_allocations;
    return __libc_malloc(size);
}
void * calloc(size_t count, size_t size) noexcept {
    ++g_allocations;
    return __libc_calloc(count, size);
}
void * realloc(void * p, size_t size) noexcept {
    ++g_allocations;
    if (p != nullptr)
        ++g_frees;
    return __libc_realloc(p, size);
}
void free(void * p) noexcept {
    if (p != nullptr)
        ++g_frees;
    __libc_free(p);
}
}
#endif

namespace {

using Matrix = std::vector<double>;

bool sameBits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}
bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The elimination as described for the solver: two copies of the system, each step copying the
// source to the target and writing the new rows into the target. Used to check that the solver's
// in-place form gives the same bits.
template <class Rhs, class Update>
void referenceEliminate(Matrix & a, std::vector<Rhs> & b, int n, Update update) {
    Matrix src = a, dst(a.size());
    std::vector<Rhs> bsrc = b, bdst(b.size());
    for (int k = 0; k + 1 < n; ++k) {
        double p = src[k * n + k];
        bool searched = false, found = false;
        if (std::fabs(p) < 1e-4) {
            searched = true;
            for (int r = k + 1; r < n && !found; ++r) {
                if (!(std::fabs(src[r * n + k]) < 1e-4)) {
                    for (int j = k; j < n; ++j)
                        std::swap(src[k * n + j], src[r * n + j]);
                    std::swap(bsrc[k], bsrc[r]);
                    p = src[k * n + k];
                    found = true;
                }
            }
        }
        dst = src;
        bdst = bsrc;
        if (searched && !found) {
            for (int i = k + 1; i < n; ++i)
                dst[i * n + k] = 0.0;
        } else {
            const double inv = 1.0 / p;
            for (int i = k + 1; i < n; ++i) {
                const double f = inv * src[i * n + k];
                for (int j = k + 1; j < n; ++j)
                    dst[i * n + j] = src[i * n + j] - f * src[k * n + j];
                dst[i * n + k] = 0.0;
                update(bdst[i], bsrc[i], f, bsrc[k]);
            }
        }
        std::swap(src, dst);
        std::swap(bsrc, bdst);
    }
    a = src;
    b = bsrc;
}

void referenceEliminate(Matrix & a, std::vector<double> & b, int n) {
    referenceEliminate(
        a, b, n, [](double & out, double in, double f, double pivot) { out = in - f * pivot; });
}

void referenceEliminate(Matrix & a, std::vector<_POINT3D> & b, int n) {
    referenceEliminate(a, b, n, [](_POINT3D & out, _POINT3D in, double f, _POINT3D pivot) {
        out.x = static_cast<float>(static_cast<double>(in.x) - f * static_cast<double>(pivot.x));
        out.y = static_cast<float>(static_cast<double>(in.y) - f * static_cast<double>(pivot.y));
        out.z = static_cast<float>(static_cast<double>(in.z) - f * static_cast<double>(pivot.z));
    });
}

// The inverse as described: column operations one column at a time.
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
    singular = false;
    for (int k = 0; k < n; ++k) {
        double best = 1e-6;
        int c = -1;
        for (int j = k; j < n; ++j)
            if (std::fabs(a[k * n + j]) > best) {
                best = std::fabs(a[k * n + j]);
                c = j;
            }
        if (c < 0) {
            singular = true;
            return {};
        }
        for (int i = 0; i < n && c != k; ++i) {
            std::swap(a[i * n + k], a[i * n + c]);
            std::swap(w[i * n + k], w[i * n + c]);
        }
        for (int j = k + 1; j < n; ++j)
            columnOp(k, j);
    }
    for (int k = n - 1; k >= 0; --k)
        for (int j = k - 1; j >= 0; --j)
            columnOp(k, j);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            w[i * n + j] = w[i * n + j] / a[j * n + j];
    return w;
}

// Independent solve: long double elimination with partial pivoting.
std::vector<long double> independentSolve(const Matrix & a, const std::vector<double> & b, int n) {
    std::vector<long double> m(a.begin(), a.end()), x(b.begin(), b.end());
    for (int k = 0; k < n; ++k) {
        int best = k;
        for (int r = k + 1; r < n; ++r)
            if (std::fabs(m[r * n + k]) > std::fabs(m[best * n + k]))
                best = r;
        for (int j = 0; j < n; ++j)
            std::swap(m[k * n + j], m[best * n + j]);
        std::swap(x[k], x[best]);
        for (int i = k + 1; i < n; ++i) {
            const long double f = m[i * n + k] / m[k * n + k];
            for (int j = k; j < n; ++j)
                m[i * n + j] -= f * m[k * n + j];
            x[i] -= f * x[k];
        }
    }
    for (int i = n - 1; i >= 0; --i) {
        long double s = x[i];
        for (int j = i + 1; j < n; ++j)
            s -= m[i * n + j] * x[j];
        x[i] = s / m[i * n + i];
    }
    return x;
}

// Random diagonally dominant matrix: well conditioned, and the elimination never swaps.
Matrix wellConditioned(std::mt19937 & rng, int n) {
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Matrix a(static_cast<size_t>(n) * n);
    for (double & v : a)
        v = u(rng);
    for (int i = 0; i < n; ++i)
        a[i * n + i] += (u(rng) < 0 ? -1.0 : 1.0) * (n + 1.0);
    return a;
}

// Random matrix full of small pivots: zeros, entries just around the pivot tolerance and
// ordinary values, so that swaps and cleared columns happen often.
Matrix awkward(std::mt19937 & rng, int n) {
    std::uniform_int_distribution<int> pick(0, 5);
    std::uniform_real_distribution<double> u(-2.0, 2.0);
    const double small[] = {0.0, 5e-5, -2e-4, 1e-4, -9.999e-5};
    Matrix a(static_cast<size_t>(n) * n);
    for (double & v : a) {
        const int p = pick(rng);
        v = p < 5 && pick(rng) < 4 ? small[p] : u(rng);
    }
    return a;
}

class LUDecompTest : public ::testing::Test {
protected:
    void TearDown() override { LUDecomp::trashRESNUM(); }
};

TEST_F(LUDecompTest, PivotSearchTakesTheFirstAcceptableRowNeverTheLargest) {
    // A[0][0] = 0, row 1 has 5e-5 (below the tolerance), row 2 has 1 and row 3 has 100: row 2
    // is the first acceptable one and is swapped with row 0, right-hand side included.
    double a[16] = {0, 1, 2, 3, 5e-5, 1, 0, 0, 1, 2, 4, 8, 100, 0, 0, 1};
    double b[4] = {10, 20, 30, 40};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(a, b, 4));
    EXPECT_EQ(a[0], 1.0);
    EXPECT_EQ(a[1], 2.0);
    EXPECT_EQ(a[2], 4.0);
    EXPECT_EQ(a[3], 8.0);
    EXPECT_EQ(b[0], 30.0);
    // Row 1 keeps its place: 1 - 5e-5 * 2 with the factor taken as (1 / 1) * 5e-5.
    EXPECT_EQ(a[5], 1.0 - 5e-5 * 2.0);
    EXPECT_EQ(a[4], 0.0);
    EXPECT_EQ(a[8], 0.0); // the old row 0, now row 2, had a zero in column 0
    EXPECT_EQ(a[12], 0.0);

    // A pivot of 2e-4 stays even with 1000 below it; 1e-4 itself is acceptable too.
    double c[4] = {2e-4, 1, 1000, 1};
    double d[2] = {1, 2};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(c, d, 2));
    EXPECT_EQ(c[0], 2e-4);
    EXPECT_EQ(c[2], 0.0);
    const double f = (1.0 / 2e-4) * 1000.0;
    EXPECT_EQ(c[3], 1.0 - f * 1.0);
    EXPECT_EQ(d[1], 2.0 - f * 1.0);
    double e[4] = {1e-4, 1, 1000, 1};
    double g[2] = {1, 2};
    LUDecomp::Triangularise_matrice(e, g, 2);
    EXPECT_EQ(e[0], 1e-4);

    // A NaN below a small pivot counts as acceptable and is swapped up.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    double h[4] = {0, 1, nan, 2};
    double i[2] = {1, 2};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(h, i, 2)); // NaN diagonals pass the final test
    EXPECT_TRUE(std::isnan(h[0]));
    EXPECT_EQ(h[1], 2.0);
    EXPECT_EQ(i[0], 2.0);
}

TEST_F(LUDecompTest, ColumnWithoutAcceptablePivotIsClearedAndNotEliminated) {
    // Column 0: 5e-5 on the diagonal, 9e-5 and -9e-5 below: no swap, the entries below become
    // 0 and the rows are otherwise untouched (no elimination in that step).
    double a[9] = {5e-5, 1, 2, 9e-5, 3, 4, -9e-5, 5, 7};
    double b[3] = {1, 2, 3};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(a, b, 3)); // 5e-5 passes the 1e-5 test
    EXPECT_EQ(a[0], 5e-5);
    EXPECT_EQ(a[3], 0.0);
    EXPECT_EQ(a[6], 0.0);
    EXPECT_EQ(a[4], 3.0);
    EXPECT_EQ(b[1], 2.0);
    // Step 1 eliminates normally: f = (1 / 3) * 5.
    const double f = (1.0 / 3.0) * 5.0;
    EXPECT_EQ(a[8], 7.0 - f * 4.0);
    EXPECT_EQ(b[2], 3.0 - f * 2.0);

    // The back substitution solves rows 2 and 1, then stops at row 0 (5e-5 < 1e-4).
    // Fill the result buffer with 7s first, by solving the identity.
    const double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, sevens[3] = {7, 7, 7};
    bool ok = false;
    double * x = LUDecomp::Resoud_matrice(identity, sevens, 3, &ok);
    ASSERT_TRUE(ok);
    x = LUDecomp::Resoud_matrice(a, b, 3, &ok);
    EXPECT_FALSE(ok);
    const double x2 = b[2] / a[8];
    EXPECT_EQ(x[2], x2);
    EXPECT_EQ(x[1], (b[1] - a[5] * x2) / a[4]);
    EXPECT_EQ(x[0], 7.0) << "row 0 was not to be written";

    // The final diagonal test is strict at 1e-5, and a small last pivot passes the back
    // substitution without a report.
    double tiny[1] = {9.9e-6}, limit[1] = {1e-5}, one[1] = {4};
    EXPECT_FALSE(LUDecomp::Triangularise_matrice(tiny, one, 1));
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(limit, one, 1));
    double z[4] = {1, 2, 2, 4}, zb[2] = {1, 1};
    EXPECT_FALSE(LUDecomp::Triangularise_matrice(z, zb, 2));
    EXPECT_EQ(z[3], 0.0);
    x = LUDecomp::Resoud_matrice(z, zb, 2, &ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(std::isinf(x[1]));
}

TEST_F(LUDecompTest, SmallAndEmptySystems) {
    double a = 4, b = 2;
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(&a, &b, 1));
    EXPECT_EQ(a, 4.0);
    EXPECT_EQ(b, 2.0);
    bool ok = false;
    EXPECT_EQ(LUDecomp::Resoud_matrice(&a, &b, 1, &ok)[0], 0.5);
    EXPECT_TRUE(ok);
    double zero = 0;
    EXPECT_TRUE(std::isinf(LUDecomp::Resoud_matrice(&zero, &b, 1, &ok)[0]));
    EXPECT_TRUE(ok); // the last row is never tested

    EXPECT_TRUE(LUDecomp::Triangularise_matrice(nullptr, nullptr, 0));
    LUDecomp::Triangularise_Pmatrice(nullptr, nullptr, 0);
    ok = true;
    LUDecomp::Resoud_matrice(nullptr, nullptr, 0, &ok);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(LUDecomp::Resoud_Pmatrice(nullptr, nullptr, 0, &ok), nullptr);
    EXPECT_FALSE(ok);
    double * empty = LUDecomp::Inverse_Matrix(nullptr, 0);
    EXPECT_NE(empty, nullptr);
    delete[] empty;
}

TEST_F(LUDecompTest, PointBackSubstitutionRefusesOnlyAnExactZeroLastDiagonal) {
    const _POINT3D rhs[2] = {{1, 2, 3}, {4, 8, 12}};
    bool ok = false;
    // Last diagonal 1e-7: accepted (only exact 0 is refused there).
    const double a[4] = {2, 1, 0, 1e-7};
    _POINT3D * x = LUDecomp::Resoud_Pmatrice(a, rhs, 2, &ok);
    EXPECT_TRUE(ok);
    const double r = 1.0 / 1e-7;
    EXPECT_EQ(x[1].y, static_cast<float>(8.0 * r));
    const double s = 1.0 * static_cast<double>(x[1].y);
    EXPECT_EQ(x[0].y, static_cast<float>((2.0 - s) * (1.0 / 2.0)));
    std::free(x);

    // Exact zero: refused at once, every point zero.
    const double b[4] = {2, 1, 0, 0};
    x = LUDecomp::Resoud_Pmatrice(b, rhs, 2, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(x[0].x, 0.0f);
    EXPECT_EQ(x[1].z, 0.0f);
    std::free(x);

    // 1e-7 on an upper row: refused, the row below solved, the row itself left at zero.
    const double c[4] = {1e-7, 1, 0, 2};
    x = LUDecomp::Resoud_Pmatrice(c, rhs, 2, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(x[1].x, 2.0f);
    EXPECT_EQ(x[1].z, 6.0f);
    EXPECT_EQ(x[0].x, 0.0f);
    EXPECT_EQ(x[0].y, 0.0f);
    std::free(x);

    // The point elimination swaps the points with the rows.
    double d[4] = {0, 1, 2, 3};
    _POINT3D p[2] = {{1, 2, 3}, {4, 5, 6}};
    LUDecomp::Triangularise_Pmatrice(d, p, 2);
    EXPECT_EQ(d[0], 2.0);
    EXPECT_EQ(p[0].x, 4.0f);
    EXPECT_EQ(p[1].z, 3.0f);

    const _POINT3D q = {1.0f, 3.0f, -6.0f};
    const _POINT3D h = Div3D(&q, 3.0);
    EXPECT_EQ(h.x, static_cast<float>(1.0 * (1.0 / 3.0)));
    EXPECT_EQ(h.y, static_cast<float>(3.0 * (1.0 / 3.0)));
    EXPECT_EQ(h.z, -2.0f);
    _POINT3D pts[3] = {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}};
    LUDecomp::Permut_POINT3D(pts, 0, 2);
    EXPECT_EQ(pts[0].x, 3.0f);
    EXPECT_EQ(pts[2].y, 1.0f);
    EXPECT_EQ(pts[1].z, 2.0f);
}

TEST_F(LUDecompTest, PermutLignesSwapsFromTheFirstColumnOn) {
    double m[12] = {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23};
    LUDecomp::Permut_lignes(m, 3, 4, 0, 2, 1);
    const double expected[12] = {0, 21, 22, 23, 10, 11, 12, 13, 20, 1, 2, 3};
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(m[i], expected[i]) << "element " << i;
    LUDecomp::Permut_lignes(m, 3, 4, 1, 1, 0);
    EXPECT_EQ(m[4], 10.0);
}

TEST_F(LUDecompTest, EliminationMatchesTheTwoBufferFormBitForBit) {
    std::mt19937 rng(12345);
    for (int round = 0; round < 300; ++round) {
        const int n = 1 + round % 24;
        Matrix a = (round % 3 == 0) ? wellConditioned(rng, n) : awkward(rng, n);
        std::vector<double> b(n);
        std::vector<_POINT3D> pb(n);
        std::uniform_real_distribution<double> u(-5.0, 5.0);
        for (int i = 0; i < n; ++i) {
            b[i] = u(rng);
            pb[i] = {static_cast<float>(u(rng)), static_cast<float>(u(rng)),
                     static_cast<float>(u(rng))};
        }
        Matrix refA = a, got = a, pRefA = a, pGot = a;
        std::vector<double> refB = b, gotB = b;
        std::vector<_POINT3D> pRefB = pb, pGotB = pb;
        referenceEliminate(refA, refB, n);
        referenceEliminate(pRefA, pRefB, n);
        bool expectedResult = true;
        for (int i = 0; i < n; ++i)
            if (std::fabs(refA[i * n + i]) < 1e-5)
                expectedResult = false;
        EXPECT_EQ(LUDecomp::Triangularise_matrice(got.data(), gotB.data(), n), expectedResult);
        LUDecomp::Triangularise_Pmatrice(pGot.data(), pGotB.data(), n);
        for (int i = 0; i < n * n; ++i) {
            ASSERT_TRUE(sameBits(got[i], refA[i])) << "round " << round << " element " << i;
            ASSERT_TRUE(sameBits(pGot[i], pRefA[i])) << "round " << round << " element " << i;
        }
        for (int i = 0; i < n; ++i) {
            ASSERT_TRUE(sameBits(gotB[i], refB[i])) << "round " << round << " entry " << i;
            ASSERT_TRUE(sameBits(pGotB[i].x, pRefB[i].x) && sameBits(pGotB[i].y, pRefB[i].y) &&
                        sameBits(pGotB[i].z, pRefB[i].z))
                << "round " << round << " point " << i;
        }
    }
}

TEST_F(LUDecompTest, WellConditionedSystemsSolveToDoublePrecision) {
    std::mt19937 rng(777);
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    for (int n = 1; n <= 200; n += (n < 20 ? 1 : 13)) {
        const Matrix a = wellConditioned(rng, n);
        std::vector<double> b(n);
        std::vector<_POINT3D> pb(n);
        for (int i = 0; i < n; ++i) {
            b[i] = u(rng);
            pb[i] = {static_cast<float>(b[i]), static_cast<float>(u(rng)), 0.5f};
        }
        const std::vector<long double> expected = independentSolve(a, b, n);

        Matrix m = a;
        std::vector<double> rhs = b;
        ASSERT_TRUE(LUDecomp::Triangularise_matrice(m.data(), rhs.data(), n));
        bool ok = false;
        const double * x = LUDecomp::Resoud_matrice(m.data(), rhs.data(), n, &ok);
        ASSERT_TRUE(ok);
        long double err = 0, norm = 0;
        for (int i = 0; i < n; ++i) {
            err += (x[i] - expected[i]) * (x[i] - expected[i]);
            norm += expected[i] * expected[i];
        }
        // Backward-stable double elimination of a well-conditioned system: a few ulps per row.
        EXPECT_LE(std::sqrt(err / norm), 16.0 * n * std::numeric_limits<double>::epsilon())
            << "n = " << n;

        // The point solver rounds to float at each step: float precision is what it reaches.
        Matrix pm = a;
        ASSERT_TRUE(pb.size() == static_cast<size_t>(n));
        std::vector<double> bx(n);
        for (int i = 0; i < n; ++i)
            bx[i] = static_cast<double>(pb[i].x);
        const std::vector<long double> expectedX = independentSolve(a, bx, n);
        LUDecomp::Triangularise_Pmatrice(pm.data(), pb.data(), n);
        _POINT3D * px = LUDecomp::Resoud_Pmatrice(pm.data(), pb.data(), n, &ok);
        EXPECT_TRUE(ok);
        err = norm = 0;
        for (int i = 0; i < n; ++i) {
            err += (px[i].x - expectedX[i]) * (px[i].x - expectedX[i]);
            norm += expectedX[i] * expectedX[i];
        }
        EXPECT_LE(std::sqrt(err / norm), 16.0 * n * std::numeric_limits<float>::epsilon())
            << "n = " << n;
        std::free(px);
    }
}

TEST_F(LUDecompTest, InverseMatchesTheColumnFormAndInverts) {
    // Identity in, identity out.
    double id[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    double * inv = LUDecomp::Inverse_Matrix(id, 3);
    ASSERT_NE(inv, nullptr);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(inv[i], i % 4 == 0 ? 1.0 : 0.0);
    delete[] inv;

    // Row (0, 1) first: the columns are swapped, and the inverse of [[0 1] [2 3]] is
    // [[-1.5 0.5] [1 0]].
    double s[4] = {0, 1, 2, 3};
    inv = LUDecomp::Inverse_Matrix(s, 2);
    ASSERT_NE(inv, nullptr);
    EXPECT_EQ(inv[0], -1.5);
    EXPECT_EQ(inv[1], 0.5);
    EXPECT_EQ(inv[2], 1.0);
    EXPECT_EQ(inv[3], 0.0);
    delete[] inv;

    // Row 1 falls to zero at step 1 (it equals twice row 0): singular, although row 2 is large.
    double sing[9] = {1, 2, 3, 2, 4, 6, 100, 50, 7};
    EXPECT_EQ(LUDecomp::Inverse_Matrix(sing, 3), nullptr);
    // A row whose largest entry is exactly 1e-6 is singular as well.
    double edge[4] = {1e-6, -1e-6, 0, 1};
    EXPECT_EQ(LUDecomp::Inverse_Matrix(edge, 2), nullptr);

    std::mt19937 rng(4242);
    for (int round = 0; round < 60; ++round) {
        const int n = 1 + round % 30;
        const Matrix a = (round % 2) ? wellConditioned(rng, n) : awkward(rng, n);
        bool singular = false;
        const std::vector<double> expected = referenceInverse(a, n, singular);
        Matrix m = a;
        double * got = LUDecomp::Inverse_Matrix(m.data(), n);
        EXPECT_EQ(got == nullptr, singular) << "round " << round;
        if (got == nullptr)
            continue;
        for (int i = 0; i < n * n; ++i)
            ASSERT_TRUE(sameBits(got[i], expected[i])) << "round " << round << " element " << i;
        if (round % 2) {
            // Well conditioned: a * inverse is the identity to double precision.
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) {
                    long double sum = 0;
                    for (int k = 0; k < n; ++k)
                        sum += static_cast<long double>(a[i * n + k]) * got[k * n + j];
                    EXPECT_NEAR(static_cast<double>(sum), i == j ? 1.0 : 0.0, 1e-12);
                }
        }
        delete[] got;
    }
}

TEST_F(LUDecompTest, BuffersGrowOnlyForLargerSystemsAndAreReleasedByTrash) {
    LUDecomp::trashRESNUM();
    std::mt19937 rng(99);
    const int n = 40;
    const Matrix a = wellConditioned(rng, n);
    const std::vector<double> b(n, 1.0);
    Matrix m(a.size());
    std::vector<double> rhs(n);
    std::vector<_POINT3D> pb(n, _POINT3D{1, 2, 3});
    bool ok = false;
    auto solveOnce = [&](int size) {
        std::copy(a.begin(), a.begin() + size * size, m.begin());
        std::copy(b.begin(), b.begin() + size, rhs.begin());
        LUDecomp::Triangularise_matrice(m.data(), rhs.data(), size);
        return LUDecomp::Resoud_matrice(m.data(), rhs.data(), size, &ok);
    };
    const long liveBefore = g_allocations - g_frees;
    const double * first = solveOnce(n);
    const long afterFirst = g_allocations;
    const double * again = solveOnce(n);
    solveOnce(n / 2); // a smaller system does not reallocate either
    const double * third = solveOnce(n);
    EXPECT_EQ(g_allocations, afterFirst) << "repeated solves of one size must not allocate";
    EXPECT_EQ(first, again);
    EXPECT_EQ(first, third);

    // A row swap in the elimination grows the row buffer once.
    double sw[4] = {0, 1, 1, 0}, swb[2] = {1, 2};
    LUDecomp::Triangularise_matrice(sw, swb, 2);
    const long afterSwap = g_allocations;
    double sw2[4] = {0, 1, 1, 0};
    LUDecomp::Triangularise_matrice(sw2, swb, 2);
    EXPECT_EQ(g_allocations, afterSwap);

    // The point solver has its own pair of buffers; its result belongs to the caller.
    std::copy(a.begin(), a.end(), m.begin());
    LUDecomp::Triangularise_Pmatrice(m.data(), pb.data(), n);
    std::free(LUDecomp::Resoud_Pmatrice(m.data(), pb.data(), n, &ok));
    const long afterPoints = g_allocations;
    std::copy(a.begin(), a.end(), m.begin());
    LUDecomp::Triangularise_Pmatrice(m.data(), pb.data(), n);
    EXPECT_EQ(g_allocations, afterPoints);

    // Everything the buffers held goes back; trashing twice is harmless; the next solve
    // allocates anew and still gives the right answer.
    LUDecomp::trashRESNUM();
    EXPECT_EQ(g_allocations - g_frees, liveBefore);
    LUDecomp::trashRESNUM();
    EXPECT_EQ(g_allocations - g_frees, liveBefore);
    const long beforeRegrow = g_allocations;
    const double * x = solveOnce(n);
    EXPECT_GT(g_allocations, beforeRegrow);
    EXPECT_TRUE(ok);
    const std::vector<long double> expected = independentSolve(a, b, n);
    EXPECT_NEAR(x[0], static_cast<double>(expected[0]), 1e-12);
}

} // namespace
