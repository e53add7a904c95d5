// Tests of LUDecomp on systems worked out by hand: pivot choice, cleared columns and where the
// back substitutions stop, exact inverses, a system beyond one elimination panel solved to
// rounding, buffer reuse and release. The vector levels are compared with the plain path bit for
// bit in fuzz/ludecomp_fuzzer.cpp.
#include "kdrcore/solver/LUDecomp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

namespace {

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
    double const identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, sevens[3] = {7, 7, 7};
    bool ok = false;
    LUDecomp::Resoud_matrice(identity, sevens, 3, &ok); // the result buffer now holds 7s
    double const * x = LUDecomp::Resoud_matrice(g, h, 3, &ok);
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
    double const atLimit[4] = {1e-4, 1, 0, 2}; // a diagonal of exactly TOLERANCE passes
    LUDecomp::Resoud_matrice(atLimit, sb, 2, &ok);
    EXPECT_TRUE(ok);

    // Points: a last diagonal of 1e-7 is accepted, an exact 0 refused at once (all zero); 1e-7
    // higher up fails with the rows below solved and the rest zero, exactly 1e-4 passes.
    const _POINT3D rhs[2] = {{1, 2, 3}, {4, 8, 12}};
    double const lastSmall[4] = {2, 1, 0, 1e-7}, lastZero[4] = {2, 1, 0, 0},
                 upperSmall[4] = {1e-7, 1, 0, 2}, upperAtLimit[4] = {1e-4, 1, 0, 2};
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
    std::free(LUDecomp::Resoud_Pmatrice(upperAtLimit, rhs, 2, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(LUDecomp::Resoud_Pmatrice(lastZero, rhs, 0, &ok), nullptr);

    const _POINT3D q = {1.0f, 3.0f, -6.0f}, r = Div3D(&q, 3.0);
    EXPECT_TRUE(r.x == static_cast<float>(1.0 * (1.0 / 3.0)) && r.z == -2.0f);
    double m[12] = {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23};
    LUDecomp::Permut_lignes(m, 3, 4, 0, 2, 1); // from column 1 on
    EXPECT_TRUE(m[0] == 0 && m[1] == 21 && m[3] == 23 && m[8] == 20 && m[9] == 1 && m[4] == 10);
}

TEST_F(LUDecompTest, BlockedEliminationSolvesASystemBeyondOnePanel) {
    // 20 unknowns: the elimination works in panels of 16 steps, so rows 16 to 19 are updated
    // below a whole panel. Tridiagonal (4 on the diagonal, -1 beside it) with a last column of
    // ones; x_j = j - 7, so b = A x is exact in small integers. The double solution is exact to
    // rounding, the point solution to float rounding. The fuzz target checks the inverse.
    constexpr int n = 20;
    double a[n * n] = {}, b[n] = {};
    _POINT3D p[n];
    for (int i = 0; i < n; ++i) {
        a[i * n + i] = 4.0;
        if (i > 0)
            a[i * n + i - 1] = -1.0;
        if (i + 1 < n)
            a[i * n + i + 1] = -1.0;
        a[i * n + n - 1] += 1.0;
    }
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j)
            b[i] += a[i * n + j] * (j - 7);
        p[i] = {static_cast<float>(b[i]), 0.0f, static_cast<float>(-b[i])};
    }
    double t[n * n];
    std::copy(a, a + n * n, t);
    ASSERT_TRUE(LUDecomp::Triangularise_matrice(a, b, n));
    LUDecomp::Triangularise_Pmatrice(t, p, n);
    bool ok = false, pok = false;
    double const * x = LUDecomp::Resoud_matrice(a, b, n, &ok);
    _POINT3D * px = LUDecomp::Resoud_Pmatrice(t, p, n, &pok);
    ASSERT_TRUE(ok && pok);
    for (int j = 0; j < n; ++j) {
        EXPECT_NEAR(x[j], j - 7, 1e-13) << "x " << j;
        EXPECT_NEAR(px[j].x, j - 7, 2e-5) << "point x " << j;
        EXPECT_EQ(px[j].y, 0.0f) << "point y " << j;
        EXPECT_NEAR(px[j].z, 7 - j, 2e-5) << "point z " << j;
    }
    std::free(px);
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
    double const * first = solve(3);
    EXPECT_EQ(solve(2), first); // smaller: no reallocation
    EXPECT_EQ(solve(3), first);
    LUDecomp::trashRESNUM();
    LUDecomp::trashRESNUM();     // harmless
    double const * x = solve(3); // allocates anew and still solves
    EXPECT_TRUE(x[0] == 1.5 && x[1] == 0.0 && x[2] == 0.5);
}

} // namespace
