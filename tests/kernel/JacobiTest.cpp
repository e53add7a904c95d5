// The Jacobi eigen-solver and the polar factorisation built on it.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using Mat = std::array<double, 16>; // m[4*c + r], as the kernel stores it

constexpr float kSentinel = -77.25f;

EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

Mat product(Mat const & a, Mat const & b) {
    Mat out{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 4; ++k)
                out[4 * c + r] += a[4 * k + r] * b[4 * c + k];
    return out;
}

Mat identity() {
    Mat m{};
    m[0] = m[5] = m[10] = m[15] = 1.0;
    return m;
}

Mat transposed(Mat const & m) {
    Mat t;
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            t[4 * c + r] = m[4 * r + c];
    return t;
}

Mat toDoubles(float const * m) {
    Mat d;
    for (int i = 0; i < 16; ++i)
        d[i] = static_cast<double>(m[i]);
    return d;
}

// Rotation by `angle` about the coordinate axis `axis` (0, 1, 2).
Mat axisRotation(int axis, double angle) {
    Mat m = identity();
    int const i = (axis + 1) % 3, j = (axis + 2) % 3;
    m[5 * i] = m[5 * j] = std::cos(angle);
    m[4 * i + j] = std::sin(angle);
    m[4 * j + i] = -std::sin(angle);
    return m;
}

Mat diagonal(double a, double b, double c) {
    Mat m = identity();
    m[0] = a;
    m[5] = b;
    m[10] = c;
    return m;
}

double det3(Mat const & m) {
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
           m[2] * (m[4] * m[9] - m[5] * m[8]);
}

// The upper-left block of `m` is a rotation: orthonormal with determinant +1.
void expectRotation(float const * m, char const * what) {
    Mat const a = toDoubles(m);
    Mat const ata = product(transposed(a), a);
    for (int c = 0; c < 3; ++c)
        for (int r = 0; r < 3; ++r)
            EXPECT_NEAR(ata[4 * c + r], r == c ? 1.0 : 0.0, 1e-6) << what << " " << r << c;
    EXPECT_NEAR(det3(a), 1.0, 1e-6) << what;
}

struct Jacobi {
    float values[3] = {kSentinel, kSentinel, kSentinel};
    float vectors[3][3];
    int rotations = -1;

    explicit Jacobi(Mat const & m) {
        for (auto & row : vectors)
            std::fill(row, row + 3, kSentinel);
        float f[16];
        for (int i = 0; i < 16; ++i)
            f[i] = static_cast<float>(m[i]);
        kernel().jacobi3(values, vectors, rotations, f);
    }
};

// A symmetric block with the given rows; the rest of the 4x4 holds values jacobi3 must not read.
Mat symmetric(std::array<double, 9> const & rows) {
    Mat m = {0, 0, 0, 9, 0, 0, 0, 9, 0, 0, 0, 9, 9, 9, 9, 9};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            m[4 * c + r] = rows[3 * r + c];
    return m;
}

TEST(Jacobi3, DiagonalBlockReturnsAtOnce) {
    // Off the diagonal only m[1], m[2], m[6] are read: the mirror elements change nothing.
    Mat m = symmetric({5, 0, 0, 0, -2, 0, 0, 0, 0.5});
    m[4] = m[8] = m[9] = 3.0;
    Jacobi const j(m);
    EXPECT_EQ(j.rotations, 0);
    EXPECT_EQ(j.values[0], 5.0f);
    EXPECT_EQ(j.values[1], -2.0f);
    EXPECT_EQ(j.values[2], 0.5f);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(j.vectors[r][c], r == c ? 1.0f : 0.0f) << r << c;
}

TEST(Jacobi3, OneRotationSplitsACoupledPair) {
    // One turn by pi/4 in the (0, 1) plane diagonalises it; the second sweep finds nothing.
    Jacobi const j(symmetric({2, 1, 0, 1, 2, 0, 0, 0, 3}));
    EXPECT_EQ(j.rotations, 3);
    EXPECT_EQ(j.values[0], 1.0f);
    EXPECT_EQ(j.values[1], 3.0f);
    EXPECT_EQ(j.values[2], 3.0f);
    float const h = static_cast<float>(std::sqrt(0.5));
    float const expected[3][3] = {{h, h, 0}, {-h, h, 0}, {0, 0, 1}};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(j.vectors[r][c], expected[r][c], 6e-8) << r << c;
}

TEST(Jacobi3, FullBlockGivesEigenpairsAndCountsThreePairsPerSweep) {
    std::array<double, 9> const rows = {2, 1, 0.5, 1, 3, 0.25, 0.5, 0.25, 4};
    Jacobi const j(symmetric(rows));
    EXPECT_GT(j.rotations, 3);
    EXPECT_EQ(j.rotations % 3, 0);
    EXPECT_NEAR(j.values[0], 1.3481243, 1e-6);
    EXPECT_NEAR(j.values[1], 3.3102057, 1e-6);
    EXPECT_NEAR(j.values[2], 4.3416700, 1e-6);
    // Each column k is a unit eigenvector of values[k], and together they form a rotation.
    Mat v = identity();
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            v[4 * k + r] = j.vectors[r][k];
    for (int k = 0; k < 3; ++k)
        for (int r = 0; r < 3; ++r) {
            double av = 0.0;
            for (int c = 0; c < 3; ++c)
                av += rows[3 * r + c] * v[4 * k + c];
            EXPECT_NEAR(av, j.values[k] * v[4 * k + r], 4e-6) << "vector " << k << " row " << r;
        }
    float vf[16];
    for (int i = 0; i < 16; ++i)
        vf[i] = static_cast<float>(v[i]);
    expectRotation(vf, "vectors");
}

TEST(Jacobi3, StopsAfterFiftySweepsWithoutConverging) {
    // A NaN never compares: no sweep rotates or ends early, and all 50 sweeps are counted.
    Mat m = symmetric({1, 0, 0, 0, 2, 0, 0, 0, 3});
    m[1] = std::numeric_limits<double>::quiet_NaN();
    Jacobi const j(m);
    EXPECT_EQ(j.rotations, 150);
    EXPECT_EQ(j.values[0], 1.0f);
    EXPECT_EQ(j.values[1], 2.0f);
    EXPECT_EQ(j.values[2], 3.0f);
    EXPECT_EQ(j.vectors[0][1], 0.0f);
}

struct Factors {
    float r[16], s[3], u[16], t[3], p[16];
    bool ok;

    explicit Factors(float const * m, EnhancedMathFunctions const & k = kernel()) {
        for (float * a : {r, u, p})
            std::fill(a, a + 16, kSentinel);
        std::fill(s, s + 3, kSentinel);
        std::fill(t, t + 3, kSentinel);
        ok = k.factor(r, s, u, t, p, m);
    }
};

std::array<float, 16> toFloats(Mat const & m) {
    std::array<float, 16> f;
    for (int i = 0; i < 16; ++i)
        f[i] = static_cast<float>(m[i]);
    return f;
}

// Factors R1 S R2 moved by 1, -2, 3 and checks the parts and that T u r' S r rebuilds it.
void expectPolarFactors(Mat const & stretch) {
    Mat m = product(product(axisRotation(2, 0.3), axisRotation(0, 0.5)),
                    product(stretch, axisRotation(1, -0.7)));
    m[12] = 1.0;
    m[13] = -2.0;
    m[14] = 3.0;
    std::array<float, 16> const mf = toFloats(m);
    Factors const f(mf.data());
    ASSERT_TRUE(f.ok);
    EXPECT_EQ(f.t[0], 1.0f);
    EXPECT_EQ(f.t[1], -2.0f);
    EXPECT_EQ(f.t[2], 3.0f);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(f.p[i], identity()[i]) << "p element " << i;
    expectRotation(f.r, "r");
    expectRotation(f.u, "u");

    // A mirror is carried by the stretches: all three take the sign of the determinant.
    double const sign = det3(stretch) < 0.0 ? -1.0 : 1.0;
    std::array<double, 3> got, want;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(f.s[i] < 0.0f, sign < 0.0) << "s " << i;
        got[i] = std::fabs(f.s[i]);
        want[i] = std::fabs(stretch[5 * i]);
    }
    std::sort(got.begin(), got.end());
    std::sort(want.begin(), want.end());
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(got[i], want[i], 1e-5) << "sorted |s| " << i;

    Mat tr = identity();
    tr[12] = f.t[0];
    tr[13] = f.t[1];
    tr[14] = f.t[2];
    Mat const r = toDoubles(f.r);
    Mat const rebuilt =
        product(product(tr, toDoubles(f.u)),
                product(transposed(r), product(diagonal(f.s[0], f.s[1], f.s[2]), r)));
    for (int i = 0; i < 16; ++i) {
        if (i % 4 != 3) {
            EXPECT_NEAR(rebuilt[i], m[i], 1e-5) << "element " << i;
        }
    }
}

TEST(PolarFactor, IdentityFactorsIntoIdentities) {
    float id[16];
    kernel().setIdentity(id);
    Factors const f(id);
    EXPECT_TRUE(f.ok);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(f.r[i], id[i]) << "r element " << i;
        EXPECT_EQ(f.u[i], id[i]) << "u element " << i;
        EXPECT_EQ(f.p[i], id[i]) << "p element " << i;
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(f.s[i], 1.0f);
        EXPECT_EQ(f.t[i], 0.0f);
    }
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

TEST(PolarFactor, IgnoresTheBottomRow) {
    Mat m = product(axisRotation(0, 0.4), diagonal(1.5, 2.0, 2.5));
    m[12] = 4.0;
    std::array<float, 16> const affine = toFloats(m);
    m[3] = 0.1;
    m[7] = -0.2;
    m[11] = 0.3;
    m[15] = 5.0;
    std::array<float, 16> const projective = toFloats(m);
    Factors const a(affine.data()), b(projective.data());
    EXPECT_TRUE(a.ok && b.ok);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(a.r[i], b.r[i]) << "r element " << i;
        EXPECT_EQ(a.u[i], b.u[i]) << "u element " << i;
    }
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(a.s[i], b.s[i]) << "s " << i;
}

TEST(PolarFactor, SingularBlockWritesOnlyTranslationAndP) {
    // A zero column, and a block whose determinant 1e-13 lies below the limit 1e-12.
    Mat zeroColumn = diagonal(2.0, 0.0, 3.0);
    zeroColumn[12] = 5.0;
    zeroColumn[13] = 6.0;
    zeroColumn[14] = 7.0;
    Mat tiny = diagonal(1e-4, 1e-4, -1e-5);
    tiny[12] = 5.0;
    tiny[13] = 6.0;
    tiny[14] = 7.0;
    for (Mat const & m : {zeroColumn, tiny}) {
        std::array<float, 16> const mf = toFloats(m);
        Factors const f(mf.data());
        EXPECT_FALSE(f.ok);
        EXPECT_EQ(f.t[0], 5.0f);
        EXPECT_EQ(f.t[1], 6.0f);
        EXPECT_EQ(f.t[2], 7.0f);
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(f.p[i], identity()[i]) << "p element " << i;
            EXPECT_EQ(f.r[i], kSentinel) << "r element " << i;
            EXPECT_EQ(f.u[i], kSentinel) << "u element " << i;
        }
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(f.s[i], kSentinel) << "s " << i;
    }
    // Ten times larger, the same block is accepted.
    std::array<float, 16> const small = toFloats(diagonal(1e-4, 1e-4, -1e-3));
    EXPECT_TRUE(Factors(small.data()).ok);
}

// A kernel that logs the operations factor reaches through the table, forwarding each.
class RecordingKernel : public EnhancedMathFunctions {
public:
    struct Call {
        std::string name;
        void const * dst;
        void const * a;
        void const * b;
    };
    mutable std::vector<Call> calls;

    ~RecordingKernel() override = default;

    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (Call const & c : calls)
            out.push_back(c.name);
        return out;
    }

    using EnhancedMathFunctions::det3;
    void copyMat4fTo(float * const dst, float const * const src) const override {
        calls.push_back({"copyMat4fTo", dst, src, nullptr});
        EnhancedMathFunctions::copyMat4fTo(dst, src);
    }
    void setIdentity(float * const dst) const override {
        calls.push_back({"setIdentity", dst, nullptr, nullptr});
        EnhancedMathFunctions::setIdentity(dst);
    }
    float det3(float const * const m) const override {
        calls.push_back({"det3", nullptr, m, nullptr});
        return EnhancedMathFunctions::det3(m);
    }
    void transpose(float * const dst, float const * const src) const override {
        calls.push_back({"transpose", dst, src, nullptr});
        EnhancedMathFunctions::transpose(dst, src);
    }
    void multMatrices(float * const dst, float const * const a,
                      float const * const b) const override {
        calls.push_back({"multMatrices", dst, a, b});
        EnhancedMathFunctions::multMatrices(dst, a, b);
    }
    void jacobi3(float * const values, float (*const vectors)[3], int & rotations,
                 float const * const m) const override {
        calls.push_back({"jacobi3", values, m, vectors});
        EnhancedMathFunctions::jacobi3(values, vectors, rotations, m);
    }
};

TEST(PolarFactor, ReachesItsOperationsThroughTheTableInOrder) {
    RecordingKernel k;
    std::array<float, 16> const m = toFloats(product(axisRotation(1, 0.2), diagonal(1, 2, 3)));
    Factors const f(m.data(), k);
    EXPECT_TRUE(f.ok);
    std::vector<std::string> const expected = {
        "copyMat4fTo", "setIdentity", "det3",         "transpose",    "multMatrices", "jacobi3",
        "setIdentity", "transpose",   "multMatrices", "multMatrices", "multMatrices"};
    ASSERT_EQ(k.names(), expected);
    auto const & c = k.calls;
    void const * a = c[0].dst; // the local copy of the block
    EXPECT_EQ(c[0].a, m.data());
    EXPECT_EQ(c[1].dst, f.p);
    EXPECT_EQ(c[2].a, a);
    EXPECT_EQ(c[3].a, a);        // B = L'
    EXPECT_EQ(c[4].a, c[3].dst); // H = L' L
    EXPECT_EQ(c[4].b, a);
    EXPECT_EQ(c[5].a, c[4].dst); // jacobi3 of H
    EXPECT_EQ(c[7].a, f.r);      // r'
    EXPECT_EQ(c[8].a, a);        // E = L r'
    EXPECT_EQ(c[8].b, c[7].dst);
    EXPECT_EQ(c[9].a, c[8].dst); // F = E D
    EXPECT_EQ(c[9].b, c[6].dst);
    EXPECT_EQ(c[10].dst, f.u); // u = F r
    EXPECT_EQ(c[10].a, c[9].dst);
    EXPECT_EQ(c[10].b, f.r);

    // A singular block stops after the determinant.
    k.calls.clear();
    std::array<float, 16> const flat = toFloats(diagonal(1, 0, 1));
    EXPECT_FALSE(Factors(flat.data(), k).ok);
    EXPECT_EQ(k.names(), (std::vector<std::string>{"copyMat4fTo", "setIdentity", "det3"}));
}

} // namespace
