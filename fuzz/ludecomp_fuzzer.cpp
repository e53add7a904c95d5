// Fuzz target: LUDecomp on random systems of 1 to 64 unknowns, any bit pattern included.
//
// Every operation runs on arrays allocated to their exact size, so that AddressSanitizer sees any
// access beyond them. The ok flags and null results must agree with the matrices they describe
// (the pivot tolerances on the eliminated diagonal), elimination must leave exact zeros below the
// diagonal, and where a triangular system is solved with finite values its solution must satisfy
// the equations to rounding. The process-wide buffers are grown, reused and released in between.
#include "FuzzCheck.h"
#include "FuzzLevels.h"

#include "kdrcore/solver/LUDecomp.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr double PIVOT_LIMIT = 1e-4;    // pivots and back substitution
constexpr double DIAGONAL_LIMIT = 1e-5; // final test of Triangularise_matrice

double consumeEntry(FuzzedDataProvider & in, std::uint64_t & lcg) {
    if (in.remaining_bytes() == 0) {
        // Out of input: a regular pseudo-random value, so that large systems are not all zero.
        lcg = lcg * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<double>(static_cast<int>(lcg >> 40) % 2001 - 1000) / 64.0;
    }
    static const double special[] = {
        0.0,     -0.0,   1.0,  -1.0,     2e-4,      1e-4,
        9.99e-5, 5e-5,   1e-5, 9.9e-6,   1e-6,      1e-7,
        1e300,   1e-300, NAN,  INFINITY, -INFINITY, std::numeric_limits<double>::denorm_min(),
        DBL_MAX};
    switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
        return fuzz::doubleOf(in.ConsumeIntegral<std::uint64_t>());
    case 1:
        return special[in.ConsumeIntegralInRange<std::size_t>(0, std::size(special) - 1)];
    default:
        return static_cast<double>(in.ConsumeIntegralInRange(-100, 100)) / 8.0;
    }
}

float consumeFloat(FuzzedDataProvider & in, std::uint64_t & lcg) {
    if (in.remaining_bytes() > 0 && in.ConsumeBool())
        return fuzz::floatOf(in.ConsumeIntegral<std::uint32_t>());
    return static_cast<float>(consumeEntry(in, lcg));
}

// The first failing row of a back substitution (from the bottom, the last row excepted), or -1.
int failingRow(const double * a, int n) {
    for (int i = n - 2; i >= 0; --i)
        if (std::fabs(a[i * n + i]) < PIVOT_LIMIT)
            return i;
    return -1;
}

void checkLowerZero(const double * a, int n, const char * op) {
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j)
            FUZZ_CHECK(a[i * n + j] == 0.0, "n %d: %s left (%d, %d) = %a", n, op, i, j,
                       a[i * n + j]);
}

// Row i of the upper triangular system a x = b, to rounding: |b - a x| small against the terms.
// `rel` is the relative rounding of the solution; rows with a non-finite term are not judged.
// `tiny` is the absolute rounding of the solution (its denormals), per unit of the coefficients.
void checkRow(const double * a, int n, int i, const double * x, double b, double rel, double tiny,
              const char * op) {
    double r = b, scale = std::fabs(b), coefficients = 0.0;
    for (int j = i; j < n; ++j) {
        const double t = a[i * n + j] * x[j];
        r -= t;
        scale += std::fabs(t);
        coefficients += std::fabs(a[i * n + j]);
    }
    if (std::isfinite(scale) && std::isfinite(coefficients))
        FUZZ_CHECK(std::fabs(r) <= rel * scale * n + tiny * coefficients * n,
                   "n %d: %s row %d residual %a of %a", n, op, i, r, scale);
}

void checkDoubleSystem(const std::vector<double> & matrix, const std::vector<double> & rhs, int n) {
    const auto un = static_cast<std::size_t>(n);
    std::unique_ptr<double[]> a(new double[un * un]);
    std::unique_ptr<double[]> b(new double[un]);
    std::copy(matrix.begin(), matrix.end(), a.get());
    std::copy(rhs.begin(), rhs.end(), b.get());
    const bool triangular = LUDecomp::Triangularise_matrice(a.get(), b.get(), n);
    checkLowerZero(a.get(), n, "Triangularise_matrice");
    bool expected = true;
    for (std::size_t i = 0; i < un; ++i)
        expected = expected && !(std::fabs(a[i * un + i]) < DIAGONAL_LIMIT);
    FUZZ_CHECK(triangular == expected, "n %d: Triangularise_matrice gave %d", n, triangular);

    bool ok = false;
    const double * x = LUDecomp::Resoud_matrice(a.get(), b.get(), n, &ok);
    FUZZ_CHECK(x != nullptr, "n %d: Resoud_matrice gave null", n);
    const int failing = failingRow(a.get(), n);
    FUZZ_CHECK(ok == (failing < 0), "n %d: Resoud_matrice ok %d, but row %d fails", n, ok, failing);
    bool finite = true;
    for (int i = n - 1; i > failing && finite; --i) {
        finite = std::isfinite(x[i]);
        if (finite)
            checkRow(a.get(), n, i, x, b[static_cast<std::size_t>(i)], 1e-12, 1e-320,
                     "Resoud_matrice");
    }
}

void checkPointSystem(const std::vector<double> & matrix, const std::vector<_POINT3D> & rhs,
                      int n) {
    const auto un = static_cast<std::size_t>(n);
    std::unique_ptr<double[]> a(new double[un * un]);
    std::unique_ptr<_POINT3D[]> b(new _POINT3D[un]);
    std::copy(matrix.begin(), matrix.end(), a.get());
    std::copy(rhs.begin(), rhs.end(), b.get());
    LUDecomp::Triangularise_Pmatrice(a.get(), b.get(), n);
    checkLowerZero(a.get(), n, "Triangularise_Pmatrice");

    bool ok = false;
    _POINT3D * const x = LUDecomp::Resoud_Pmatrice(a.get(), b.get(), n, &ok);
    FUZZ_CHECK(x != nullptr, "n %d: Resoud_Pmatrice gave null", n);
    // The last row fails only on an exact zero, the others below the tolerance.
    const int failing = a[un * un - 1] == 0.0 ? n - 1 : failingRow(a.get(), n);
    FUZZ_CHECK(ok == (failing < 0), "n %d: Resoud_Pmatrice ok %d, but row %d fails", n, ok,
               failing);
    for (int c = 0; c < 3; ++c) {
        std::vector<double> xc(un), bc(un);
        bool finite = true;
        for (std::size_t i = 0; i < un; ++i) {
            const float * xs = &x[i].x;
            const float * bs = &b[i].x;
            xc[i] = static_cast<double>(xs[c]);
            bc[i] = static_cast<double>(bs[c]);
        }
        for (int i = n - 1; i > failing && finite; --i) {
            finite = std::isfinite(xc[static_cast<std::size_t>(i)]) &&
                     std::isfinite(bc[static_cast<std::size_t>(i)]);
            if (finite)
                checkRow(a.get(), n, i, xc.data(), bc[static_cast<std::size_t>(i)], 1e-6, 1e-44,
                         "Resoud_Pmatrice");
        }
    }
    std::free(x);
}

// Inverse_Matrix: null or an inverse. Where the matrix is well conditioned by the inverse given
// (norm of A times norm of X at most 1e6), A X must be I to rounding.
void checkInverse(const std::vector<double> & matrix, int n) {
    std::vector<double> a = matrix;
    std::unique_ptr<double[]> x(LUDecomp::Inverse_Matrix(a.data(), n));
    if (!x)
        return;
    double normA = 0.0, normX = 0.0; // sums of all magnitudes: above the row-sum norms
    for (int k = 0; k < n * n; ++k) {
        normA += std::fabs(matrix[static_cast<std::size_t>(k)]);
        normX += std::fabs(x[k]);
    }
    if (!(normA * normX <= 1e6)) // NaN and infinities included
        return;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            double r = i == j ? -1.0 : 0.0;
            for (int k = 0; k < n; ++k)
                r += matrix[static_cast<std::size_t>(i * n + k)] * x[k * n + j];
            FUZZ_CHECK(std::fabs(r) <= 1e-6, "n %d: (A X - I)(%d, %d) = %a", n, i, j, r);
        }
}

void checkSmallParts(FuzzedDataProvider & in, std::uint64_t & lcg) {
    // Permut_lignes on a matrix of exact size: the two rows swap from firstColumn on.
    const int rows = in.ConsumeIntegralInRange(1, 12), width = in.ConsumeIntegralInRange(1, 70);
    const int row1 = in.ConsumeIntegralInRange(0, rows - 1);
    const int row2 = in.ConsumeIntegralInRange(0, rows - 1);
    const int first = in.ConsumeIntegralInRange(0, width);
    std::unique_ptr<double[]> m(new double[static_cast<std::size_t>(rows * width)]);
    for (int k = 0; k < rows * width; ++k)
        m[k] = static_cast<double>(k);
    LUDecomp::Permut_lignes(m.get(), rows, width, row1, row2, first);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < width; ++c) {
            const int from = c < first ? r : r == row1 ? row2 : r == row2 ? row1 : r;
            FUZZ_CHECK(m[r * width + c] == static_cast<double>(from * width + c),
                       "Permut_lignes(%d x %d, %d, %d, from %d): (%d, %d)", rows, width, row1, row2,
                       first, r, c);
        }

    _POINT3D points[3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    const int i1 = in.ConsumeIntegralInRange(0, 2), i2 = in.ConsumeIntegralInRange(0, 2);
    _POINT3D expected[3] = {points[0], points[1], points[2]};
    std::swap(expected[i1], expected[i2]);
    LUDecomp::Permut_POINT3D(points, i1, i2);
    for (int k = 0; k < 3; ++k)
        FUZZ_CHECK(points[k].x == expected[k].x && points[k].z == expected[k].z,
                   "Permut_POINT3D(%d, %d): point %d", i1, i2, k);

    // Div3D: one reciprocal, then products rounded to float. Any divisor, 0 included.
    const _POINT3D p{consumeFloat(in, lcg), consumeFloat(in, lcg), consumeFloat(in, lcg)};
    const double divisor = consumeEntry(in, lcg), r = 1.0 / divisor;
    const _POINT3D q = Div3D(&p, divisor);
    const float * qs = &q.x;
    const float * ps = &p.x;
    for (int c = 0; c < 3; ++c)
        FUZZ_CHECK(fuzz::sameFloat(qs[c], static_cast<float>(static_cast<double>(ps[c]) * r)),
                   "Div3D by %a", divisor);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    std::uint64_t lcg = size;
    for (int system = 0; system < 3 && (system == 0 || in.remaining_bytes() > 0); ++system) {
        const int choice = in.ConsumeIntegralInRange(0, 15);
        if (choice == 15) {
            LUDecomp::trashRESNUM();
            continue;
        }
        if (choice == 14) {
            checkSmallParts(in, lcg);
            continue;
        }
        // Mostly small systems; medium ones span several elimination panels; large ones grow the
        // buffers.
        const int n = choice < 8    ? in.ConsumeIntegralInRange(1, 8)
                      : choice < 12 ? in.ConsumeIntegralInRange(9, 24)
                                    : in.ConsumeIntegralInRange(1, 64);
        const auto un = static_cast<std::size_t>(n);
        std::vector<double> matrix(un * un), rhs(un);
        for (double & v : matrix)
            v = consumeEntry(in, lcg);
        for (double & v : rhs)
            v = consumeEntry(in, lcg);
        std::vector<_POINT3D> points(un);
        for (_POINT3D & p : points)
            p = {consumeFloat(in, lcg), consumeFloat(in, lcg), consumeFloat(in, lcg)};
        fuzz::forEachLevel([&](int) {
            checkDoubleSystem(matrix, rhs, n);
            checkPointSystem(matrix, points, n);
            checkInverse(matrix, n);
        });
    }

    // Sizes below 1: documented results, no access to the arrays.
    bool ok = true;
    FUZZ_CHECK(LUDecomp::Triangularise_matrice(nullptr, nullptr, 0), "n 0: not true");
    LUDecomp::Triangularise_Pmatrice(nullptr, nullptr, -1);
    LUDecomp::Resoud_matrice(nullptr, nullptr, 0, &ok);
    FUZZ_CHECK(!ok, "Resoud_matrice n 0: ok");
    ok = true;
    FUZZ_CHECK(LUDecomp::Resoud_Pmatrice(nullptr, nullptr, -3, &ok) == nullptr && !ok,
               "Resoud_Pmatrice n -3");
    return 0;
}
