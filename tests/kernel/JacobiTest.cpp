// The Jacobi eigen-solver and the polar factorisation built on it.
#include "support/TestSupport.h"

using namespace kdrtest;

namespace {

// The upper-left block of `m` is orthonormal with determinant +1.
void expectRotation(Mat const & m, char const * what) {
    Mat const mtm = product(transposed(m), m);
    for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10})
        EXPECT_NEAR(mtm[i], i % 5 == 0 ? 1.0 : 0.0, 1e-6) << what << " element " << i;
    double const det = m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
                       m[2] * (m[4] * m[9] - m[5] * m[8]);
    EXPECT_NEAR(det, 1.0, 1e-6) << what;
}

struct Jacobi {
    float values[3], vectors[3][3];
    int rotations = -1;
    // The block by rows; the rest of the 4x4 holds 9s, which must not be read.
    explicit Jacobi(std::array<double, 9> const & rows) {
        float m[16];
        std::fill(m, m + 16, 9.0f);
        for (int i = 0; i < 9; ++i)
            m[4 * (i / 3) + i % 3] = static_cast<float>(rows[i]);
        kernel().jacobi3(values, vectors, rotations, m);
    }
};

TEST(Jacobi3, WorkedBlocksGiveTheirEigenpairsAndPairCounts) {
    Jacobi const d({5, 0, 0, 0, -2, 0, 0, 0, 0.5}); // diagonal: returns at once
    EXPECT_EQ(d.rotations, 0);
    EXPECT_TRUE(elems(d.values, {5, -2, 0.5}));
    EXPECT_TRUE(elems(&d.vectors[0][0], {1, 0, 0, 0, 1, 0, 0, 0, 1}));

    // One turn by pi/4 in the (0, 1) plane diagonalises this block; the second sweep finds
    // nothing to do, so one sweep of three pairs is counted.
    Jacobi const a({2, 1, 0, 1, 2, 0, 0, 0, 3});
    EXPECT_EQ(a.rotations, 3);
    EXPECT_TRUE(elems(a.values, {1, 3, 3}));
    double const h = std::sqrt(0.5);
    EXPECT_TRUE(elems(&a.vectors[0][0], {h, h, 0, -h, h, 0, 0, 0, 1}, 6e-8));

    // A full block: three pairs are counted in every sweep, rotated or not. Each column k of
    // the vectors is a unit eigenvector of values[k], and together they make a rotation.
    std::array<double, 9> const rows = {2, 1, 0.5, 1, 3, 0.25, 0.5, 0.25, 4};
    Jacobi const b(rows);
    EXPECT_TRUE(b.rotations > 3 && b.rotations % 3 == 0) << b.rotations;
    EXPECT_TRUE(elems(b.values, {1.3481243, 3.3102057, 4.3416700}, 1e-6));
    Mat v = diagonal(1, 1, 1);
    for (int i = 0; i < 9; ++i)
        v[4 * (i % 3) + i / 3] = b.vectors[i / 3][i % 3];
    expectRotation(v, "vectors");
    for (int i = 0; i < 9; ++i) { // (rows v)[r][k] = values[k] v[r][k], with i = 3k + r
        int const k = i / 3, r = i % 3;
        double const av = rows[3 * r] * v[4 * k] + rows[3 * r + 1] * v[4 * k + 1] +
                          rows[3 * r + 2] * v[4 * k + 2];
        EXPECT_NEAR(av, double{b.values[k]} * v[4 * k + r], 4e-6) << "vector " << k << " row " << r;
    }
    // A NaN never compares: no sweep rotates or ends early, and all 50 sweeps are counted.
    Jacobi const n({1, std::numeric_limits<double>::quiet_NaN(), 0, 0, 2, 0, 0, 0, 3});
    EXPECT_EQ(n.rotations, 150);
    EXPECT_TRUE(elems(n.values, {1, 2, 3}));
}

struct Factors {
    FMat r, u, p, m;
    float s[3], t[3];
    bool ok;
    explicit Factors(Mat const & a) : m(toFloats(a)) {
        ok = kernel().factor(r.data(), s, u.data(), t, p.data(), m.data());
    }
};

TEST(PolarFactor, RebuildsTurnedStretchesAndCarriesMirrorsInTheStretch) {
    // R1 S R2, moved by 1, -2, 3, with a perspective bottom row that must be ignored. T u r' S r
    // rebuilds it; a mirror is carried by the stretches, all three negative.
    for (double const mirror : {1.0, -1.0}) {
        Mat const stretch = diagonal(2.0, 3.0 * mirror, 0.5);
        Mat m = product(product(rotation(2, 0.3), rotation(0, 0.5)),
                        product(stretch, rotation(1, -0.7)));
        m[12] = 1.0, m[13] = -2.0, m[14] = 3.0, m[3] = 0.25, m[15] = 4.0;
        Factors const f(m);
        ASSERT_TRUE(f.ok);
        Mat const r = toDoubles(f.r.data()), u = toDoubles(f.u.data());
        expectRotation(r, "r");
        expectRotation(u, "u");
        for (float const v : f.s) // the magnitudes follow from the rebuild, the signs do not
            EXPECT_EQ(v < 0.0f, mirror < 0.0) << "s " << v;
        Mat tr = diagonal(1, 1, 1);
        std::copy(f.t, f.t + 3, tr.begin() + 12);
        Mat const rebuilt = product(
            product(tr, u), product(transposed(r), product(diagonal(f.s[0], f.s[1], f.s[2]), r)));
        for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14}) // the bottom row is not rebuilt
            EXPECT_NEAR(rebuilt[i], m[i], 1e-5) << "mirror " << mirror << " element " << i;
    }
}

TEST(PolarFactor, SingularBlockFails) {
    // A zero column, and a mirrored block whose |determinant| 1e-13 lies below the limit 1e-12;
    // 1e-11 is accepted. What each case writes, t and p included, is the kernel fuzz target's
    // check.
    EXPECT_FALSE(Factors(diagonal(2.0, 0.0, 3.0)).ok || Factors(diagonal(1e-4, 1e-4, -1e-5)).ok);
    EXPECT_TRUE(Factors(diagonal(1e-4, 1e-4, -1e-3)).ok);
}

} // namespace
