// The Jacobi eigen-solver and the polar factorisation built on it.
#include "kernel/DoubleMatrix.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace dmat;

namespace {

constexpr float kSentinel = -77.25f;

EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

// The upper-left block of `m` is orthonormal with determinant +1.
void expectRotation(Mat const & m, char const * what) {
    Mat const mtm = product(transposed(m), m);
    for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10})
        EXPECT_NEAR(mtm[i], i % 5 == 0 ? 1.0 : 0.0, 1e-6) << what << " element " << i;
    EXPECT_NEAR(det3(m), 1.0, 1e-6) << what;
}

struct Jacobi {
    float values[3] = {kSentinel, kSentinel, kSentinel};
    float vectors[3][3];
    int rotations = -1;

    // The block by rows; the rest of the 4x4 holds 9s, which must not be read.
    explicit Jacobi(std::array<double, 9> const & rows, double m1 = 0.0) {
        std::fill(&vectors[0][0], &vectors[0][0] + 9, kSentinel);
        float m[16];
        std::fill(m, m + 16, 9.0f);
        for (int i = 0; i < 9; ++i)
            m[4 * (i / 3) + i % 3] = static_cast<float>(rows[i]);
        m[1] += static_cast<float>(m1);
        kernel().jacobi3(values, vectors, rotations, m);
    }
};

TEST(Jacobi3, DiagonalBlockReturnsAtOnce) {
    Jacobi const j({5, 0, 0, 0, -2, 0, 0, 0, 0.5});
    EXPECT_EQ(j.rotations, 0);
    EXPECT_EQ(std::vector<float>(j.values, j.values + 3), (std::vector<float>{5, -2, 0.5f}));
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(j.vectors[i / 3][i % 3], i % 4 == 0 ? 1.0f : 0.0f) << i;
}

TEST(Jacobi3, WorkedBlocksGiveTheirEigenpairsAndPairCounts) {
    // One turn by pi/4 in the (0, 1) plane diagonalises the first block; the second sweep finds
    // nothing to do, so one sweep of three pairs is counted.
    Jacobi const a({2, 1, 0, 1, 2, 0, 0, 0, 3});
    EXPECT_EQ(a.rotations, 3);
    EXPECT_EQ(std::vector<float>(a.values, a.values + 3), (std::vector<float>{1, 3, 3}));
    double const h = std::sqrt(0.5);
    double const want[9] = {h, h, 0, -h, h, 0, 0, 0, 1};
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(a.vectors[i / 3][i % 3], want[i], 6e-8) << i;

    // A full block: three pairs are counted in every sweep, rotated or not. Each column k of
    // the vectors is a unit eigenvector of values[k], and together they make a rotation.
    std::array<double, 9> const rows = {2, 1, 0.5, 1, 3, 0.25, 0.5, 0.25, 4};
    Jacobi const b(rows);
    EXPECT_GT(b.rotations, 3);
    EXPECT_EQ(b.rotations % 3, 0);
    EXPECT_NEAR(b.values[0], 1.3481243, 1e-6);
    EXPECT_NEAR(b.values[1], 3.3102057, 1e-6);
    EXPECT_NEAR(b.values[2], 4.3416700, 1e-6);
    Mat v = identity();
    for (int i = 0; i < 9; ++i)
        v[4 * (i % 3) + i / 3] = b.vectors[i / 3][i % 3];
    expectRotation(v, "vectors");
    for (int k = 0; k < 3; ++k)
        for (int r = 0; r < 3; ++r) {
            double av = 0.0;
            for (int c = 0; c < 3; ++c)
                av += rows[3 * r + c] * v[4 * k + c];
            EXPECT_NEAR(av, b.values[k] * v[4 * k + r], 4e-6) << "vector " << k << " row " << r;
        }
}

TEST(Jacobi3, StopsAfterFiftySweepsWithoutConverging) {
    // A NaN never compares: no sweep rotates or ends early, and all 50 sweeps are counted.
    Jacobi const j({1, 0, 0, 0, 2, 0, 0, 0, 3}, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(j.rotations, 150);
    EXPECT_EQ(std::vector<float>(j.values, j.values + 3), (std::vector<float>{1, 2, 3}));
    EXPECT_EQ(j.vectors[0][1], 0.0f);
}

struct Factors {
    FMat r, u, p;
    float s[3] = {kSentinel, kSentinel, kSentinel}, t[3] = {kSentinel, kSentinel, kSentinel};
    bool ok;

    explicit Factors(Mat const & m, EnhancedMathFunctions const & k = kernel()) {
        for (FMat * a : {&r, &u, &p})
            a->fill(kSentinel);
        FMat const mf = toFloats(m);
        ok = k.factor(r.data(), s, u.data(), t, p.data(), mf.data());
    }
};

// Factors R1 S R2, moved by 1, -2, 3 and with a perspective bottom row that must be ignored;
// checks the parts and that T u r' S r rebuilds the matrix.
void expectPolarFactors(Mat const & stretch) {
    Mat m =
        product(product(rotation(2, 0.3), rotation(0, 0.5)), product(stretch, rotation(1, -0.7)));
    m[12] = 1.0;
    m[13] = -2.0;
    m[14] = 3.0;
    m[3] = 0.25;
    m[15] = 4.0;
    Factors const f(m);
    ASSERT_TRUE(f.ok);
    EXPECT_EQ(std::vector<float>(f.t, f.t + 3), (std::vector<float>{1, -2, 3}));
    EXPECT_EQ(f.p, toFloats(identity()));
    Mat const r = toDoubles(f.r.data()), u = toDoubles(f.u.data());
    expectRotation(r, "r");
    expectRotation(u, "u");

    // A mirror is carried by the stretches: all three take the sign of the determinant.
    bool const mirror = det3(stretch) < 0.0;
    std::vector<double> got, want;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(f.s[i] < 0.0f, mirror) << "s " << i;
        got.push_back(std::fabs(f.s[i]));
        want.push_back(std::fabs(stretch[5 * i]));
    }
    std::sort(got.begin(), got.end());
    std::sort(want.begin(), want.end());
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(got[i], want[i], 1e-5) << "sorted |s| " << i;

    Mat tr = identity();
    std::copy(f.t, f.t + 3, tr.begin() + 12);
    Mat const rebuilt = product(
        product(tr, u), product(transposed(r), product(diagonal(f.s[0], f.s[1], f.s[2]), r)));
    for (int i = 0; i < 16; ++i) {
        if (i % 4 != 3) {
            EXPECT_NEAR(rebuilt[i], m[i], 1e-5) << "element " << i;
        }
    }
}

TEST(PolarFactor, IdentityFactorsIntoIdentities) {
    Factors const f(identity());
    EXPECT_TRUE(f.ok);
    FMat const id = toFloats(identity());
    EXPECT_EQ(f.r, id);
    EXPECT_EQ(f.u, id);
    EXPECT_EQ(f.p, id);
    EXPECT_EQ(std::vector<float>(f.s, f.s + 3), (std::vector<float>{1, 1, 1}));
    EXPECT_EQ(std::vector<float>(f.t, f.t + 3), (std::vector<float>{0, 0, 0}));
}

TEST(PolarFactor, RebuildsTurnedStretchesAndCarriesMirrorsInTheStretch) {
    {
        SCOPED_TRACE("proper");
        expectPolarFactors(diagonal(2.0, 3.0, 0.5));
    }
    {
        SCOPED_TRACE("mirror");
        expectPolarFactors(diagonal(2.0, -3.0, 0.5));
    }
}

TEST(PolarFactor, SingularBlockWritesOnlyTranslationAndP) {
    // A zero column, and a mirrored block whose |determinant| 1e-13 lies below the limit 1e-12.
    FMat untouched;
    untouched.fill(kSentinel);
    for (Mat m : {diagonal(2.0, 0.0, 3.0), diagonal(1e-4, 1e-4, -1e-5)}) {
        m[12] = 5.0;
        m[13] = 6.0;
        m[14] = 7.0;
        Factors const f(m);
        EXPECT_FALSE(f.ok);
        EXPECT_EQ(std::vector<float>(f.t, f.t + 3), (std::vector<float>{5, 6, 7}));
        EXPECT_EQ(f.p, toFloats(identity()));
        EXPECT_EQ(f.r, untouched);
        EXPECT_EQ(f.u, untouched);
        EXPECT_EQ(std::vector<float>(f.s, f.s + 3), std::vector<float>(3, kSentinel));
    }
    // With |determinant| 1e-11 the block is accepted.
    EXPECT_TRUE(Factors(diagonal(1e-4, 1e-4, -1e-3)).ok);
}

// Logs the operations factor reaches through the table, with their first two array arguments,
// and forwards each to the default code.
class RecordingKernel : public EnhancedMathFunctions {
public:
    struct Call {
        std::string name;
        void const *dst, *a;
    };
    mutable std::vector<Call> calls;
    ~RecordingKernel() override = default;

    using EnhancedMathFunctions::det3;
    void copyMat4fTo(float * const dst, float const * const src) const override {
        calls.push_back({"copyMat4fTo", dst, src});
        EnhancedMathFunctions::copyMat4fTo(dst, src);
    }
    void setIdentity(float * const dst) const override {
        calls.push_back({"setIdentity", dst, nullptr});
        EnhancedMathFunctions::setIdentity(dst);
    }
    float det3(float const * const m) const override {
        calls.push_back({"det3", nullptr, m});
        return EnhancedMathFunctions::det3(m);
    }
    void transpose(float * const dst, float const * const src) const override {
        calls.push_back({"transpose", dst, src});
        EnhancedMathFunctions::transpose(dst, src);
    }
    void multMatrices(float * const dst, float const * const a,
                      float const * const b) const override {
        calls.push_back({"multMatrices", dst, a});
        EnhancedMathFunctions::multMatrices(dst, a, b);
    }
    void jacobi3(float * const values, float (*const vectors)[3], int & rotations,
                 float const * const m) const override {
        calls.push_back({"jacobi3", values, m});
        EnhancedMathFunctions::jacobi3(values, vectors, rotations, m);
    }
};

TEST(PolarFactor, ReachesItsOperationsThroughTheTableInOrder) {
    RecordingKernel k;
    Factors const f(product(rotation(1, 0.2), diagonal(1, 2, 3)), k);
    EXPECT_TRUE(f.ok);
    std::vector<std::string> names;
    for (auto const & c : k.calls)
        names.push_back(c.name);
    ASSERT_EQ(names,
              (std::vector<std::string>{"copyMat4fTo", "setIdentity", "det3", "transpose",
                                        "multMatrices", "jacobi3", "setIdentity", "transpose",
                                        "multMatrices", "multMatrices", "multMatrices"}));
    auto const & c = k.calls;
    EXPECT_EQ(c[1].dst, f.p.data());
    EXPECT_EQ(c[5].a, c[4].dst);   // jacobi3 of L'L
    EXPECT_EQ(c[7].a, f.r.data()); // then L r' D r
    EXPECT_EQ(c[8].a, c[0].dst);
    EXPECT_EQ(c[10].dst, f.u.data());

    // A singular block stops after the determinant.
    k.calls.clear();
    EXPECT_FALSE(Factors(diagonal(1, 0, 1), k).ok);
    EXPECT_EQ(k.calls.size(), 3u);
}

} // namespace
