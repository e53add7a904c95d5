// Tests of LUDecomp: pivot choice, cleared columns and where the back substitutions stop; the
// elimination and the inverse against transcriptions of their two-buffer and column-by-column
// forms, bit for bit, and the residuals of what they solve; buffer reuse and release.
#include "kdrcore/solver/LUDecomp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace {

using Matrix = std::vector<double>;

double sub(double v, double f, double p) {
    return v - f * p;
}
_POINT3D sub(_POINT3D v, double f, _POINT3D p) { // each component rounded to float as stored
    auto s = [f](float a, float b) { return static_cast<float>(double(a) - f * double(b)); };
    return {s(v.x, p.x), s(v.y, p.y), s(v.z, p.z)};
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
            const double f = (1.0 / a[k * n + k]) * a[i * n + k];
            for (int j = k + 1; j < n && r < n; ++j) // no pivot: only the column is cleared
                ta[i * n + j] = a[i * n + j] - f * a[k * n + j];
            tb[i] = r < n ? sub(b[i], f, b[k]) : b[i];
        }
        a = ta, b = tb;
    }
}

// The inverse with its column operations applied one column at a time. Empty when singular.
Matrix referenceInverse(Matrix a, int n) {
    Matrix w(static_cast<size_t>(n) * n, 0.0);
    for (int i = 0; i < n; ++i)
        w[i * n + i] = 1.0;
    auto columnOp = [&](int k, int j) {
        const double f = a[k * n + j] / a[k * n + k];
        for (int i = 0; i < n; ++i)
            a[i * n + j] -= a[i * n + k] * f, w[i * n + j] -= w[i * n + k] * f;
    };
    for (int k = 0; k < n; ++k) {
        int c = -1; // the largest entry of row k above 1e-6, the first of equals
        for (int j = k; j < n; ++j)
            if (std::fabs(a[k * n + j]) > (c < 0 ? 1e-6 : std::fabs(a[k * n + c])))
                c = j;
        if (c < 0)
            return {};
        for (int i = 0; i < n; ++i)
            std::swap(a[i * n + k], a[i * n + c]), std::swap(w[i * n + k], w[i * n + c]);
        for (int j = k + 1; j < n; ++j)
            columnOp(k, j);
    }
    for (int k = n - 1; k >= 0; --k)
        for (int j = k - 1; j >= 0; --j)
            columnOp(k, j);
    for (int i = 0; i < n * n; ++i)
        w[i] /= a[(i % n) * (n + 1)];
    return w;
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
    double a[16] = {0, 1, 2, 3, 5e-5, 1, 0, 0, 1, 2, 4, 8, 100, 0, 0, 1}, b[4] = {10, 20, 30, 40};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(a, b, 4));
    EXPECT_TRUE(a[3] == 8.0 && b[0] == 30.0 && a[4] + a[8] + a[12] == 0.0);
    EXPECT_EQ(a[5], 1.0 - 5e-5 * 2.0); // f = (1 / 1) * 5e-5
    // A pivot of exactly 1e-4 stays with 1000 below it.
    double c[4] = {1e-4, 1, 1000, 1}, d[2] = {1, 2};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(c, d, 2));
    EXPECT_TRUE(c[0] == 1e-4 && c[3] == 1.0 - (1.0 / 1e-4) * 1000.0);

    // 5e-5 with only 9e-5 and -9e-5 below: no swap, the column is cleared, no elimination in
    // that step. 5e-5 passes the final 1e-5 test; the back substitution stops at row 0.
    double g[9] = {5e-5, 1, 2, 9e-5, 3, 4, -9e-5, 5, 7}, h[3] = {1, 2, 3};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(g, h, 3));
    EXPECT_TRUE(g[3] == 0.0 && g[4] == 3.0 && g[8] == 7.0 - (1.0 / 3.0) * 5.0 * 4.0);
    const double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, sevens[3] = {7, 7, 7};
    bool ok = false;
    LUDecomp::Resoud_matrice(identity, sevens, 3, &ok); // the result buffer now holds 7s
    const double * x = LUDecomp::Resoud_matrice(g, h, 3, &ok);
    EXPECT_TRUE(!ok && x[2] == h[2] / g[8] && x[1] == (h[1] - g[5] * x[2]) / g[4]);
    EXPECT_EQ(x[0], 7.0) << "the failing row is not written";

    // A NaN below a small pivot is acceptable and swapped up; NaN diagonals pass the final test.
    double nan[4] = {0, 1, std::numeric_limits<double>::quiet_NaN(), 2}, nb[2] = {1, 2};
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(nan, nb, 2));
    EXPECT_TRUE(nan[1] == 2.0 && nb[0] == 2.0);
}

TEST_F(LUDecompTest, DiagonalTestsOfTheEliminationAndBothBackSubstitutions) {
    double tiny = 9.9e-6, limit = 1e-5, zero = 0, four = 4, two = 2;
    EXPECT_FALSE(LUDecomp::Triangularise_matrice(&tiny, &two, 1));
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(&limit, &two, 1));
    EXPECT_TRUE(LUDecomp::Triangularise_matrice(nullptr, nullptr, 0));
    bool ok = false;
    EXPECT_TRUE(LUDecomp::Resoud_matrice(&four, &two, 1, &ok)[0] == 0.5 && ok);
    EXPECT_TRUE(std::isinf(LUDecomp::Resoud_matrice(&zero, &two, 1, &ok)[0]) && ok);
    // Singular 2 by 2: the elimination says false, the back substitution, which never tests
    // the last row, does not.
    double s[4] = {1, 2, 2, 4}, sb[2] = {1, 1};
    EXPECT_FALSE(LUDecomp::Triangularise_matrice(s, sb, 2));
    LUDecomp::Resoud_matrice(s, sb, 2, &ok);
    EXPECT_TRUE(ok);
    LUDecomp::Resoud_matrice(s, sb, 0, &ok); // n < 1 solves nothing
    EXPECT_FALSE(ok);

    // Points: a last diagonal of 1e-7 is accepted, an exact 0 refused at once (all zero); 1e-7
    // higher up fails with the rows below solved and the rest zero.
    const _POINT3D rhs[2] = {{1, 2, 3}, {4, 8, 12}};
    const double lastSmall[4] = {2, 1, 0, 1e-7}, lastZero[4] = {2, 1, 0, 0},
                 upperSmall[4] = {1e-7, 1, 0, 2};
    _POINT3D * p = LUDecomp::Resoud_Pmatrice(lastSmall, rhs, 2, &ok);
    EXPECT_TRUE(ok && p[1].y == static_cast<float>(8.0 * (1.0 / 1e-7)));
    EXPECT_EQ(p[0].y, static_cast<float>((2.0 - double(p[1].y)) * (1.0 / 2.0)));
    std::free(p);
    p = LUDecomp::Resoud_Pmatrice(lastZero, rhs, 2, &ok);
    EXPECT_TRUE(!ok && p[0].x == 0.0f && p[1].z == 0.0f);
    std::free(p);
    p = LUDecomp::Resoud_Pmatrice(upperSmall, rhs, 2, &ok);
    EXPECT_TRUE(!ok && p[1].x == 2.0f && p[1].z == 6.0f && p[0].x == 0.0f && p[0].y == 0.0f);
    std::free(p);
    EXPECT_EQ(LUDecomp::Resoud_Pmatrice(lastZero, rhs, 0, &ok), nullptr);

    const _POINT3D q = {1.0f, 3.0f, -6.0f}, r = Div3D(&q, 3.0);
    EXPECT_TRUE(r.x == static_cast<float>(1.0 * (1.0 / 3.0)) && r.z == -2.0f);
    double m[12] = {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23};
    LUDecomp::Permut_lignes(m, 3, 4, 0, 2, 1); // from column 1 on
    EXPECT_TRUE(m[0] == 0 && m[1] == 21 && m[3] == 23 && m[8] == 20 && m[9] == 1 && m[4] == 10);
}

TEST_F(LUDecompTest, EliminationAndInverseMatchTheirModelsAndSolve) {
    std::mt19937 rng(12345);
    std::uniform_real_distribution<float> u(-5.0f, 5.0f);
    for (int round = 0; round < 300; ++round) {
        const int n = 1 + round % 24;
        const bool wellConditioned = round % 3 == 0;
        const Matrix a = randomMatrix(rng, n, wellConditioned);
        std::vector<double> b(n);
        std::vector<_POINT3D> pb(n);
        for (int i = 0; i < n; ++i)
            b[i] = u(rng), pb[i] = {u(rng), u(rng), u(rng)};
        Matrix ref = a, pRef = a, got = a, pGot = a;
        std::vector<double> refB = b, b0 = b;
        std::vector<_POINT3D> pRefB = pb, pb0 = pb;
        referenceEliminate(ref, refB, n);
        referenceEliminate(pRef, pRefB, n);
        bool expected = true;
        for (int i = 0; i < n; ++i)
            expected = expected && !(std::fabs(ref[i * n + i]) < 1e-5);
        EXPECT_EQ(LUDecomp::Triangularise_matrice(got.data(), b.data(), n), expected);
        LUDecomp::Triangularise_Pmatrice(pGot.data(), pb.data(), n);
        Matrix m = a;
        const Matrix inverse = referenceInverse(a, n);
        std::unique_ptr<double[]> inv(LUDecomp::Inverse_Matrix(m.data(), n));
        const size_t mat = sizeof(double) * n * n, vec = sizeof(double) * n;
        ASSERT_EQ(inv == nullptr, inverse.empty()) << "round " << round;
        ASSERT_TRUE(std::memcmp(got.data(), ref.data(), mat) == 0 &&
                    std::memcmp(pGot.data(), pRef.data(), mat) == 0 &&
                    std::memcmp(b.data(), refB.data(), vec) == 0 &&
                    std::memcmp(pb.data(), pRefB.data(), sizeof(_POINT3D) * n) == 0 &&
                    (inv == nullptr || std::memcmp(inv.get(), inverse.data(), mat) == 0))
            << "round " << round << ", bit for bit";
        if (!wellConditioned)
            continue;
        // The back substitutions solve the original system, with residuals of a few ulps of the
        // right-hand side (|b| <= 5) at double width and at the float width of the point solver;
        // a times its inverse is the identity.
        bool ok = false, pok = false;
        const double * x = LUDecomp::Resoud_matrice(got.data(), b.data(), n, &ok);
        _POINT3D * px = LUDecomp::Resoud_Pmatrice(pGot.data(), pb.data(), n, &pok);
        ASSERT_TRUE(ok && pok && inv != nullptr) << "round " << round;
        for (int i = 0; i < n; ++i) {
            double r = -b0[i], pr = -double(pb0[i].z);
            for (int j = 0; j < n; ++j) {
                r += a[i * n + j] * x[j], pr += a[i * n + j] * double(px[j].z);
                long double e = 0; // (a inverse)[i][j]
                for (int k = 0; k < n; ++k)
                    e += static_cast<long double>(a[i * n + k]) * inv[k * n + j];
                EXPECT_NEAR(double(e), i == j ? 1.0 : 0.0, 1e-12) << "round " << round;
            }
            EXPECT_NEAR(r, 0.0, 1e-13) << "round " << round << " row " << i;
            EXPECT_NEAR(pr, 0.0, 2e-5) << "round " << round << " row " << i;
        }
        std::free(px);
    }
}

TEST_F(LUDecompTest, InverseSwapsColumnsAndStopsAtARowOfSmallEntries) {
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
}

TEST_F(LUDecompTest, BuffersGrowOnlyAndTrashReleasesThem) {
    // Both solvers on the system y + 2z = 1, x + z = 2, 2x + y = 3, whose first pivot is 0: the
    // row buffer takes part. With n = 2 they see the top of the same arrays. AddressSanitizer's
    // leak check sees buffers that trashRESNUM forgets.
    auto solve = [](int n) {
        double a[9] = {0, 1, 2, 1, 0, 1, 2, 1, 0}, pa[9], b[3] = {1, 2, 3};
        _POINT3D p[3] = {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}};
        std::copy(a, a + 9, pa);
        bool ok = false;
        LUDecomp::Triangularise_matrice(a, b, n);
        LUDecomp::Triangularise_Pmatrice(pa, p, n);
        std::free(LUDecomp::Resoud_Pmatrice(pa, p, n, &ok));
        return LUDecomp::Resoud_matrice(a, b, n, &ok);
    };
    const double * first = solve(3);
    EXPECT_EQ(solve(2), first); // smaller: no reallocation
    EXPECT_EQ(solve(3), first);
    LUDecomp::trashRESNUM();
    LUDecomp::trashRESNUM();     // harmless
    const double * x = solve(3); // allocates anew and still solves
    EXPECT_TRUE(x[0] == 1.5 && x[1] == 0.0 && x[2] == 0.5);
}

} // namespace
