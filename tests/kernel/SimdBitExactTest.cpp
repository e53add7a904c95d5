// The vector versions of the hot kernel operations give the bits of plain double-width code.
//
// Each operation is checked against a reference written here from its formula, on 10^5 random
// inputs mixing ordinary values, powers of two far apart, small integers (ties, zeros, exact
// cancellation), denormals, infinities, NaNs and random bit patterns: the baseline version, the
// AVX2 version when the CPU has it, and the member reached through getCurrent(), which runs
// whichever version the library chose. A NaN must meet a NaN; every other result must have the
// same bits, the sign of zero included. (Which NaN comes out of an operation on two NaNs is not
// fixed even for scalar code: the compiler may swap the operands of an addition.)
#include "kernel/MatrixKernels.h"
#include "kernel/QuaternionKernels.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

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

constexpr int SAMPLES = 100000;

double w(float v) {
    return static_cast<double>(v);
}

std::uint32_t bitsOf(float v) {
    std::uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

bool sameBits(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || bitsOf(a) == bitsOf(b);
}

// Inputs that reach the corners of the arithmetic.
class Inputs {
public:
    explicit Inputs(unsigned seed) : m_rng(seed) {}

    float next() {
        static float const specials[] = {0.0f,
                                         -0.0f,
                                         1.0f,
                                         -1.0f,
                                         std::numeric_limits<float>::denorm_min(),
                                         -std::numeric_limits<float>::denorm_min(),
                                         0x1.fffffcp-127f, // largest denormal
                                         std::numeric_limits<float>::min(),
                                         std::numeric_limits<float>::max(),
                                         -std::numeric_limits<float>::max(),
                                         std::numeric_limits<float>::infinity(),
                                         -std::numeric_limits<float>::infinity(),
                                         std::numeric_limits<float>::quiet_NaN(),
                                         -std::numeric_limits<float>::quiet_NaN(),
                                         1e30f,
                                         -1e-30f};
        int const kind = pick(100);
        if (kind < 50)
            return std::ldexp(uniform(-1.0f, 1.0f), pick(41) - 20);
        if (kind < 70)
            return static_cast<float>(pick(7) - 3); // ties, zeros, cancellation
        if (kind < 80)
            return specials[pick(static_cast<int>(std::size(specials)))];
        if (kind < 90) // denormals
            return std::ldexp(uniform(-1.0f, 1.0f), -126 - pick(23));
        std::uint32_t const b = static_cast<std::uint32_t>(m_rng());
        float f;
        std::memcpy(&f, &b, sizeof f);
        return f;
    }

    // A 4x4 matrix; every fourth one is mostly ordinary, so that inverses get past the pivots.
    void matrix(float * m) {
        bool const tame = pick(4) == 0;
        for (int i = 0; i < 16; ++i)
            m[i] = tame ? uniform(-4.0f, 4.0f) : next();
        if (pick(8) == 0) { // two equal groups: singular, or a tie in every pivot search
            int const a = pick(4), b = (a + 1 + pick(3)) % 4;
            for (int j = 0; j < 4; ++j)
                m[4 * b + j] = pick(2) == 0 ? m[4 * a + j] : -m[4 * a + j];
        }
        if (pick(8) == 0) // a bottom row that makes w vanish or overflow
            m[3] = m[7] = m[11] = pick(2) == 0 ? 0.0f : next();
    }

    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_rng); }
    float uniform(float lo, float hi) {
        return std::uniform_real_distribution<float>(lo, hi)(m_rng);
    }

private:
    std::mt19937 m_rng;
};

// ---- References, written from the formulas: every sum at double width, left to right.

void refMultMatrices(float * d, float const * a, float const * b) {
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            d[4 * c + r] =
                static_cast<float>(w(a[r]) * w(b[4 * c]) + w(a[4 + r]) * w(b[4 * c + 1]) +
                                   w(a[8 + r]) * w(b[4 * c + 2]) + w(a[12 + r]) * w(b[4 * c + 3]));
}

void refMultAffineMatrices(float * d, float const * a, float const * b) {
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 3; ++r) {
            double s = w(a[r]) * w(b[4 * c]) + w(a[4 + r]) * w(b[4 * c + 1]) +
                       w(a[8 + r]) * w(b[4 * c + 2]);
            if (c == 3)
                s = s + w(a[12 + r]);
            d[4 * c + r] = static_cast<float>(s);
        }
        d[4 * c + 3] = c == 3 ? 1.0f : 0.0f;
    }
}

double rowTimesPoint(float const * m, int r, float const * v) {
    return w(m[r]) * w(v[0]) + w(m[4 + r]) * w(v[1]) + w(m[8 + r]) * w(v[2]) + w(m[12 + r]);
}

void refMultMatrixVec3f(float * d, float const * m, float const * v) {
    double const hw = rowTimesPoint(m, 3, v);
    if (hw == 0.0) {
        d[0] = d[1] = d[2] = 0.0f;
        return;
    }
    double const k = 1.0 / hw;
    float out[3];
    for (int r = 0; r < 3; ++r)
        out[r] = static_cast<float>(rowTimesPoint(m, r, v) * k);
    std::memcpy(d, out, sizeof out);
}

void refMultAffineMatrixVec3f(float * d, float const * m, float const * v) {
    float out[3];
    for (int r = 0; r < 3; ++r)
        out[r] = static_cast<float>(rowTimesPoint(m, r, v));
    std::memcpy(d, out, sizeof out);
}

void refMultQuaternions(float * d, float const * a, float const * b, bool conjugate) {
    double const s = conjugate ? -1.0 : 1.0;
    double const a0 = w(a[0]), a1 = w(a[1]), a2 = w(a[2]), a3 = w(a[3]);
    double const b0 = w(b[0]), b1 = s * w(b[1]), b2 = s * w(b[2]), b3 = s * w(b[3]);
    float const out[4] = {static_cast<float>(a0 * b0 - a1 * b1 - a2 * b2 - a3 * b3),
                          static_cast<float>(a0 * b1 + a1 * b0 + a2 * b3 - a3 * b2),
                          static_cast<float>(a0 * b2 + a2 * b0 + a3 * b1 - a1 * b3),
                          static_cast<float>(a0 * b3 + a3 * b0 + a1 * b2 - a2 * b1)};
    std::memcpy(d, out, sizeof out);
}

void refQuaternionToMatrix(float * d, float const * q) {
    double const qw = w(q[0]), x = w(q[1]), y = w(q[2]), z = w(q[3]);
    float const m[16] = {static_cast<float>(2.0 * (qw * qw + x * x) - 1.0),
                         static_cast<float>(2.0 * (x * y + qw * z)),
                         static_cast<float>(2.0 * (x * z - qw * y)),
                         0.0f,
                         static_cast<float>(2.0 * (x * y - qw * z)),
                         static_cast<float>(2.0 * (qw * qw + y * y) - 1.0),
                         static_cast<float>(2.0 * (y * z + qw * x)),
                         0.0f,
                         static_cast<float>(2.0 * (x * z + qw * y)),
                         static_cast<float>(2.0 * (y * z - qw * x)),
                         static_cast<float>(2.0 * (qw * qw + z * z) - 1.0),
                         0.0f,
                         0.0f,
                         0.0f,
                         0.0f,
                         1.0f};
    std::memcpy(d, m, sizeof m);
}

// Gauss-Jordan with partial pivoting on [R | I], rows exchanged by index.
bool refInverse(float * d, float const * s) {
    double R[4][4], I[4][4];
    for (int n = 0; n < 4; ++n)
        for (int j = 0; j < 4; ++j) {
            R[n][j] = w(s[4 * n + j]);
            I[n][j] = n == j ? 1.0 : 0.0;
        }
    int row[4] = {0, 1, 2, 3}; // row[n]: the storage row at position n
    auto search = [&](int col) {
        for (int n = 3; n > col; --n)
            if (std::fabs(R[row[n]][col]) > std::fabs(R[row[n - 1]][col]))
                std::swap(row[n], row[n - 1]);
        return R[row[col]][col] != 0.0;
    };
    for (int col = 0; col < 2; ++col) {
        if (!search(col))
            return false;
        double * const P = R[row[col]];
        double * const PI = I[row[col]];
        double const k = 1.0 / P[col];
        for (int n = col + 1; n < 4; ++n) {
            double * const Rn = R[row[n]];
            double * const In = I[row[n]];
            double const f = Rn[col] * k;
            for (int j = col + 1; j < 4; ++j)
                Rn[j] -= f * P[j];
            for (int j = 0; j < 4; ++j)
                if (PI[j] != 0.0)
                    In[j] -= f * PI[j];
        }
    }
    if (!search(2))
        return false;
    double *R0 = R[row[0]], *R1 = R[row[1]], *R2 = R[row[2]], *R3 = R[row[3]];
    double *I0 = I[row[0]], *I1 = I[row[1]], *I2 = I[row[2]], *I3 = I[row[3]];
    double const f3 = R3[2] / R2[2];
    R3[3] -= f3 * R2[3];
    for (int j = 0; j < 4; ++j)
        I3[j] -= f3 * I2[j];
    if (R3[3] == 0.0)
        return false;
    for (int j = 0; j < 4; ++j) {
        I3[j] *= 1.0 / R3[3];
        I2[j] = (1.0 / R2[2]) * (I2[j] - I3[j] * R2[3]);
        I1[j] -= I3[j] * R1[3];
        I0[j] -= I3[j] * R0[3];
        I1[j] = (1.0 / R1[1]) * (I1[j] - I2[j] * R1[2]);
        I0[j] -= I2[j] * R0[2];
        I0[j] = (1.0 / R0[0]) * (I0[j] - I1[j] * R0[1]);
    }
    double * const out[4] = {I0, I1, I2, I3};
    for (int n = 0; n < 4; ++n)
        for (int j = 0; j < 4; ++j)
            d[4 * n + j] = static_cast<float>(out[n][j]);
    return true;
}

// ---- The versions under test

using Product = void (*)(float *, float const *, float const *);
using Inverse = bool (*)(float *, float const *);
using Conversion = void (*)(float *, float const *);

struct Version {
    std::string name;
    Product multMatrices, multAffineMatrices, multMatrixVec3f, multAffineMatrixVec3f;
    Inverse inverseMatrix;
    Product multQuaternions, divQuaternionsU;
    Conversion quaternionToMatrix;
};

EnhancedMathFunctions & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

// Every version this machine can run, the library's own choice last.
std::vector<Version> versions() {
    std::vector<Version> v;
    v.push_back({"baseline", kdrkernel::multMatricesPlain, kdrkernel::multAffineMatricesPlain,
                 kdrkernel::multMatrixVec3fPlain, kdrkernel::multAffineMatrixVec3fPlain,
                 kdrkernel::inverseMatrixPlain, kdrkernel::multQuaternionsPlain<false>,
                 kdrkernel::multQuaternionsPlain<true>, kdrkernel::quaternionToMatrixPlain});
#if KDRCORE_SIMD_X86
    if (kdrsimd::detectLevel() >= kdrsimd::LEVEL_AVX2)
        v.push_back({"AVX2", kdrkernel::multMatricesAvx2, kdrkernel::multAffineMatricesAvx2,
                     kdrkernel::multMatrixVec3fAvx2, kdrkernel::multAffineMatrixVec3fAvx2,
                     kdrkernel::inverseMatrixAvx2, kdrkernel::multQuaternionsAvx2<false>,
                     kdrkernel::multQuaternionsAvx2<true>, kdrkernel::quaternionToMatrixAvx2});
#endif
    v.push_back(
        {"getCurrent()",
         [](float * d, float const * a, float const * b) { kernel().multMatrices(d, a, b); },
         [](float * d, float const * a, float const * b) { kernel().multAffineMatrices(d, a, b); },
         [](float * d, float const * m, float const * x) { kernel().multMatrixVec3f(d, m, x); },
         [](float * d, float const * m, float const * x) {
             kernel().multAffineMatrixVec3f(d, m, x);
         },
         [](float * d, float const * s) { return kernel().inverseMatrix(d, s); },
         [](float * d, float const * a, float const * b) { kernel().multQuaternions(d, a, b); },
         [](float * d, float const * a, float const * b) { kernel().divQuaternionsU(d, a, b); },
         [](float * d, float const * q) { kernel().quaternionToMatrix(d, q); }});
    return v;
}

// Counts the elements of `got` whose bits differ from `want`; reports the first case.
int mismatches(float const * got, float const * want, int n, std::string const & what,
               std::size_t sample) {
    int bad = 0;
    for (int i = 0; i < n; ++i)
        if (!sameBits(got[i], want[i])) {
            if (bad == 0)
                ADD_FAILURE() << what << ", sample " << sample << ", element " << i << ": got "
                              << got[i] << " (0x" << std::hex << bitsOf(got[i]) << "), want "
                              << want[i] << " (0x" << bitsOf(want[i]) << ")" << std::dec;
            ++bad;
        }
    return bad;
}

float const SENTINEL = -0x1.234568p-77f;

// The inputs of one test, drawn once and shared by all versions.
struct Samples {
    std::vector<float> a, b, p;
};

// Drawn once for all the tests: 10^5 samples of two matrices and a point; in one sample in ten
// the bottom row of the first matrix is 0, so that w vanishes (or is NaN at an infinite point).
Samples const & samples() {
    static Samples const s = [] {
        Inputs in(1u);
        Samples d{std::vector<float>(16 * SAMPLES), std::vector<float>(16 * SAMPLES),
                  std::vector<float>(3 * SAMPLES)};
        for (std::size_t i = 0; i < SAMPLES; ++i) {
            float * const m = &d.a[16 * i];
            in.matrix(m);
            in.matrix(&d.b[16 * i]);
            for (std::size_t k = 0; k < 3; ++k)
                d.p[3 * i + k] = in.next();
            if (in.pick(10) == 0)
                m[3] = m[7] = m[11] = m[15] = 0.0f;
        }
        return d;
    }();
    return s;
}

} // namespace

TEST(SimdBitExact, MatrixProductsMatchThePlainFormula) {
    Samples const & in = samples();
    std::vector<float> want(16 * SAMPLES), wantAffine(16 * SAMPLES);
    for (std::size_t s = 0; s < SAMPLES; ++s) {
        refMultMatrices(&want[16 * s], &in.a[16 * s], &in.b[16 * s]);
        refMultAffineMatrices(&wantAffine[16 * s], &in.a[16 * s], &in.b[16 * s]);
    }
    for (Version const & v : versions()) {
        int bad = 0;
        float got[16];
        for (std::size_t s = 0; s < SAMPLES && bad < 10; ++s) {
            v.multMatrices(got, &in.a[16 * s], &in.b[16 * s]);
            bad += mismatches(got, &want[16 * s], 16, v.name + " multMatrices", s);
            v.multAffineMatrices(got, &in.a[16 * s], &in.b[16 * s]);
            bad += mismatches(got, &wantAffine[16 * s], 16, v.name + " multAffineMatrices", s);
        }
        EXPECT_EQ(bad, 0) << v.name;
    }
}

TEST(SimdBitExact, PointTransformsMatchThePlainFormula) {
    Samples const & in = samples();
    std::vector<float> want(3 * SAMPLES), wantAffine(3 * SAMPLES);
    int zeroW = 0;
    for (std::size_t s = 0; s < SAMPLES; ++s) {
        refMultMatrixVec3f(&want[3 * s], &in.a[16 * s], &in.p[3 * s]);
        refMultAffineMatrixVec3f(&wantAffine[3 * s], &in.a[16 * s], &in.p[3 * s]);
        zeroW += rowTimesPoint(&in.a[16 * s], 3, &in.p[3 * s]) == 0.0;
    }
    EXPECT_GT(zeroW, SAMPLES / 20) << "the inputs should reach w == 0 now and then";
    for (Version const & v : versions()) {
        int bad = 0;
        float got[4];
        for (std::size_t s = 0; s < SAMPLES && bad < 10; ++s) {
            float const * const m = &in.a[16 * s];
            float const * const p = &in.p[3 * s];
            // dst is v in every fourth sample; got[3] must survive either way.
            bool const inPlace = s % 4 == 0;
            for (int pass = 0; pass < 2; ++pass) {
                std::memcpy(got, p, 3 * sizeof(float));
                got[3] = SENTINEL;
                (pass == 0 ? v.multMatrixVec3f : v.multAffineMatrixVec3f)(got, m,
                                                                          inPlace ? got : p);
                bad += mismatches(got, pass == 0 ? &want[3 * s] : &wantAffine[3 * s], 3,
                                  v.name + (pass == 0 ? " multMatrixVec3f" : " multAffine..."), s);
                bad += mismatches(got + 3, &SENTINEL, 1, v.name + " wrote dst[3]", s);
            }
        }
        EXPECT_EQ(bad, 0) << v.name;
    }
}

TEST(SimdBitExact, InverseMatchesThePlainEliminationAndKeepsDstOnFailure) {
    Samples const & in = samples();
    std::vector<float> want(16 * SAMPLES);
    std::vector<char> ok(SAMPLES);
    int singular = 0;
    for (std::size_t s = 0; s < SAMPLES; ++s) {
        ok[s] = refInverse(&want[16 * s], &in.a[16 * s]);
        singular += !ok[s];
    }
    EXPECT_GT(singular, SAMPLES / 100) << "the inputs should be singular now and then";
    EXPECT_LT(singular, SAMPLES / 2) << "most inputs should invert";
    for (Version const & v : versions()) {
        int bad = 0;
        float got[16], untouched[16];
        for (std::size_t s = 0; s < SAMPLES && bad < 10; ++s) {
            float const * const m = &in.a[16 * s];
            // dst is src in every fourth sample; a failure must leave dst as it was.
            bool const inPlace = s % 4 == 0;
            if (inPlace)
                std::memcpy(untouched, m, sizeof untouched);
            else
                std::fill(untouched, untouched + 16, SENTINEL);
            std::memcpy(got, untouched, sizeof got);
            bool const result = v.inverseMatrix(got, inPlace ? got : m);
            if (result != (ok[s] != 0)) {
                ADD_FAILURE() << v.name << " inverseMatrix, sample " << s << ": returned "
                              << result;
                ++bad;
            } else {
                bad += mismatches(got, result ? &want[16 * s] : untouched, 16,
                                  v.name + " inverseMatrix", s);
            }
        }
        EXPECT_EQ(bad, 0) << v.name;
    }
}

TEST(SimdBitExact, QuaternionProductsAndMatrixMatchThePlainFormula) {
    // The first four floats of each drawn matrix serve as a quaternion.
    Samples const & in = samples();
    std::vector<float> wantMult(4 * SAMPLES), wantDiv(4 * SAMPLES), wantMatrix(16 * SAMPLES);
    for (std::size_t s = 0; s < SAMPLES; ++s) {
        refMultQuaternions(&wantMult[4 * s], &in.a[16 * s], &in.b[16 * s], false);
        refMultQuaternions(&wantDiv[4 * s], &in.a[16 * s], &in.b[16 * s], true);
        refQuaternionToMatrix(&wantMatrix[16 * s], &in.a[16 * s]);
    }
    for (Version const & v : versions()) {
        int bad = 0;
        float got[16];
        for (std::size_t s = 0; s < SAMPLES && bad < 10; ++s) {
            float const * const a = &in.a[16 * s];
            float const * const b = &in.b[16 * s];
            // dst is a in every fourth sample: the products read all inputs first.
            bool const inPlace = s % 4 == 0;
            std::memcpy(got, a, 4 * sizeof(float));
            v.multQuaternions(got, inPlace ? got : a, b);
            bad += mismatches(got, &wantMult[4 * s], 4, v.name + " multQuaternions", s);
            std::memcpy(got, a, 4 * sizeof(float));
            v.divQuaternionsU(got, inPlace ? got : a, b);
            bad += mismatches(got, &wantDiv[4 * s], 4, v.name + " divQuaternionsU", s);
            v.quaternionToMatrix(got, a);
            bad += mismatches(got, &wantMatrix[16 * s], 16, v.name + " quaternionToMatrix", s);
        }
        EXPECT_EQ(bad, 0) << v.name;
    }
}
