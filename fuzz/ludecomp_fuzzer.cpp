// Fuzz target: LUDecomp on random systems of 1 to 64 unknowns, any bit pattern included.
//
// Every operation runs on arrays allocated to their exact size, so that AddressSanitizer sees any
// access beyond them. The results are compared with a plain transcription of the documented
// algorithms (first acceptable pivot, column-wise Gauss-Jordan, back substitution with its
// failure row), value for value, NaN matching NaN: so the ok flags and the null results are
// checked to agree with the matrices they describe, and the solved entries to be the documented
// ones. The process-wide buffers are grown, reused at smaller sizes and released in between.
#include "FuzzCheck.h"
#include "FuzzLevels.h"

#include "kdrcore/solver/LUDecomp.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace {

using fuzz::sameDouble;
using fuzz::sameFloat;

constexpr double PIVOT_LIMIT = 1e-4;    // pivots and back substitution
constexpr double DIAGONAL_LIMIT = 1e-5; // final test of Triangularise_matrice
constexpr double INVERSE_LIMIT = 1e-6;  // pivots of Inverse_Matrix

// Value equality that lets NaN match NaN and +0 match -0 (the sign of a zero sum is not part of
// the contract).
bool sameValue(double a, double b) {
    return a == b || sameDouble(a, b);
}
bool sameValue(float a, float b) {
    return a == b || sameFloat(a, b);
}

// Values that sit on the thresholds or break arithmetic, and ordinary ones.
double consumeEntry(FuzzedDataProvider & in, std::uint64_t & lcg) {
    if (in.remaining_bytes() == 0) {
        // Out of input: a regular pseudo-random value, so that large systems are not all zero.
        lcg = lcg * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<double>(static_cast<int>(lcg >> 40) % 2001 - 1000) / 64.0;
    }
    static const double special[] = {0.0,
                                     -0.0,
                                     1.0,
                                     -1.0,
                                     2e-4,
                                     1e-4,
                                     9.99e-5,
                                     5e-5,
                                     1e-5,
                                     9.9e-6,
                                     1e-6,
                                     1e-7,
                                     std::numeric_limits<double>::quiet_NaN(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::denorm_min(),
                                     std::numeric_limits<double>::min(),
                                     std::numeric_limits<double>::max(),
                                     -std::numeric_limits<double>::max(),
                                     1e300,
                                     1e-300};
    switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0: {
        const std::uint64_t bits = in.ConsumeIntegral<std::uint64_t>();
        double v;
        std::memcpy(&v, &bits, sizeof v);
        return v;
    }
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

// --- The documented algorithms, transcribed -------------------------------------------------

template <class Rhs> void swapRows(std::vector<double> & a, Rhs * b, int n, int k, int r) {
    for (int j = k; j < n; ++j)
        std::swap(a[static_cast<std::size_t>(k * n + j)], a[static_cast<std::size_t>(r * n + j)]);
    std::swap(b[k], b[r]);
}

void subtractScaled(double & t, double f, double p) {
    t = t - f * p;
}
void subtractScaled(_POINT3D & t, double f, const _POINT3D & p) {
    t.x = static_cast<float>(static_cast<double>(t.x) - f * static_cast<double>(p.x));
    t.y = static_cast<float>(static_cast<double>(t.y) - f * static_cast<double>(p.y));
    t.z = static_cast<float>(static_cast<double>(t.z) - f * static_cast<double>(p.z));
}

template <class Rhs> void referenceEliminate(std::vector<double> & a, Rhs * b, int n) {
    auto at = [&](int i, int j) -> double & { return a[static_cast<std::size_t>(i * n + j)]; };
    for (int k = 0; k + 1 < n; ++k) {
        double p = at(k, k);
        if (std::fabs(p) < PIVOT_LIMIT) {
            int r = k + 1;
            while (r < n && std::fabs(at(r, k)) < PIVOT_LIMIT) // a NaN is acceptable
                ++r;
            if (r == n) {
                for (int i = k + 1; i < n; ++i)
                    at(i, k) = 0.0;
                continue;
            }
            swapRows(a, b, n, k, r);
            p = at(k, k);
        }
        const double inv = 1.0 / p;
        for (int i = k + 1; i < n; ++i) {
            const double f = inv * at(i, k);
            for (int j = k + 1; j < n; ++j)
                at(i, j) = at(i, j) - f * at(k, j);
            at(i, k) = 0.0;
            subtractScaled(b[i], f, b[k]);
        }
    }
}

// The first failing row of a back substitution (from the bottom, the last row excepted), or -1.
int failingRow(const double * a, int n) {
    for (int i = n - 2; i >= 0; --i)
        if (std::fabs(a[i * n + i]) < PIVOT_LIMIT)
            return i;
    return -1;
}

// Null when singular by the pivot rule.
std::unique_ptr<double[]> referenceInverse(std::vector<double> a, int n) {
    const auto un = static_cast<std::size_t>(n);
    std::unique_ptr<double[]> w(new double[un * un]());
    auto A = [&](int i, int j) -> double & { return a[static_cast<std::size_t>(i * n + j)]; };
    auto W = [&](int i, int j) -> double & { return w[static_cast<std::size_t>(i * n + j)]; };
    for (int i = 0; i < n; ++i)
        W(i, i) = 1.0;
    auto columnOp = [&](int k, int j) {
        const double f = A(k, j) / A(k, k);
        for (int i = 0; i < n; ++i) {
            A(i, j) = A(i, j) - A(i, k) * f;
            W(i, j) = W(i, j) - W(i, k) * f;
        }
    };
    for (int k = 0; k < n; ++k) {
        double best = INVERSE_LIMIT;
        int c = -1;
        for (int j = k; j < n; ++j)
            if (std::fabs(A(k, j)) > best) {
                best = std::fabs(A(k, j));
                c = j;
            }
        if (c < 0)
            return nullptr;
        if (c != k)
            for (int i = 0; i < n; ++i) {
                std::swap(A(i, k), A(i, c));
                std::swap(W(i, k), W(i, c));
            }
        for (int j = k + 1; j < n; ++j)
            columnOp(k, j);
    }
    for (int k = n - 1; k >= 0; --k)
        for (int j = k - 1; j >= 0; --j)
            columnOp(k, j);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            W(i, j) = W(i, j) / A(j, j);
    return w;
}

// --- The checks -------------------------------------------------------------------------------

void checkDoubleSystem(const std::vector<double> & matrix, const std::vector<double> & rhs, int n) {
    const auto un = static_cast<std::size_t>(n);
    std::unique_ptr<double[]> a(new double[un * un]);
    std::unique_ptr<double[]> b(new double[un]);
    std::copy(matrix.begin(), matrix.end(), a.get());
    std::copy(rhs.begin(), rhs.end(), b.get());
    const bool triangular = LUDecomp::Triangularise_matrice(a.get(), b.get(), n);

    std::vector<double> ea = matrix;
    std::vector<double> eb = rhs;
    referenceEliminate(ea, eb.data(), n);
    bool expectedTriangular = true;
    for (int i = 0; i < n; ++i)
        if (std::fabs(ea[un * static_cast<std::size_t>(i) + static_cast<std::size_t>(i)]) <
            DIAGONAL_LIMIT)
            expectedTriangular = false;
    for (std::size_t k = 0; k < un * un; ++k)
        FUZZ_CHECK(sameValue(a[k], ea[k]), "n %d: eliminated entry (%zu, %zu) %a, expected %a", n,
                   k / un, k % un, a[k], ea[k]);
    for (std::size_t i = 0; i < un; ++i) {
        FUZZ_CHECK(sameValue(b[i], eb[i]), "n %d: eliminated rhs %zu %a, expected %a", n, i, b[i],
                   eb[i]);
        for (std::size_t j = 0; j < i; ++j)
            FUZZ_CHECK(a[i * un + j] == 0.0, "n %d: (%zu, %zu) below the diagonal is %a", n, i, j,
                       a[i * un + j]);
    }
    FUZZ_CHECK(triangular == expectedTriangular, "n %d: Triangularise_matrice gave %d", n,
               triangular);

    // Back substitution on the eliminated system.
    bool ok = false;
    const double * x = LUDecomp::Resoud_matrice(a.get(), b.get(), n, &ok);
    FUZZ_CHECK(x != nullptr, "n %d: Resoud_matrice gave null", n);
    const int failing = failingRow(a.get(), n);
    FUZZ_CHECK(ok == (failing < 0), "n %d: Resoud_matrice ok %d, but row %d fails", n, ok, failing);
    std::vector<double> ex(un);
    ex[un - 1] = b[un - 1] / a[un * un - 1];
    for (int i = n - 2; i > failing; --i) {
        double s = 0.0;
        for (int j = i + 1; j < n; ++j)
            s = s + a[static_cast<std::size_t>(i * n + j)] * ex[static_cast<std::size_t>(j)];
        ex[static_cast<std::size_t>(i)] =
            (b[static_cast<std::size_t>(i)] - s) / a[static_cast<std::size_t>(i * n + i)];
    }
    for (int i = n - 1; i > failing; --i)
        FUZZ_CHECK(sameValue(x[i], ex[static_cast<std::size_t>(i)]),
                   "n %d: solution %d is %a, expected %a (ok %d)", n, i, x[i],
                   ex[static_cast<std::size_t>(i)], ok);
}

void checkPointSystem(const std::vector<double> & matrix, const std::vector<_POINT3D> & rhs,
                      int n) {
    const auto un = static_cast<std::size_t>(n);
    std::unique_ptr<double[]> a(new double[un * un]);
    std::unique_ptr<_POINT3D[]> b(new _POINT3D[un]);
    std::copy(matrix.begin(), matrix.end(), a.get());
    std::copy(rhs.begin(), rhs.end(), b.get());
    LUDecomp::Triangularise_Pmatrice(a.get(), b.get(), n);

    std::vector<double> ea = matrix;
    std::vector<_POINT3D> eb = rhs;
    referenceEliminate(ea, eb.data(), n);
    for (std::size_t k = 0; k < un * un; ++k)
        FUZZ_CHECK(sameValue(a[k], ea[k]), "n %d: point elimination entry %zu %a, expected %a", n,
                   k, a[k], ea[k]);
    for (std::size_t i = 0; i < un; ++i)
        FUZZ_CHECK(sameValue(b[i].x, eb[i].x) && sameValue(b[i].y, eb[i].y) &&
                       sameValue(b[i].z, eb[i].z),
                   "n %d: point rhs %zu differs", n, i);

    bool ok = false;
    _POINT3D * const x = LUDecomp::Resoud_Pmatrice(a.get(), b.get(), n, &ok);
    FUZZ_CHECK(x != nullptr, "n %d: Resoud_Pmatrice gave null", n);
    // The last row fails only on an exact zero, the others below the tolerance.
    const double lastDiagonal = a[un * un - 1];
    const int failing = lastDiagonal == 0.0 ? n - 1 : failingRow(a.get(), n);
    FUZZ_CHECK(ok == (failing < 0), "n %d: Resoud_Pmatrice ok %d, but row %d fails", n, ok,
               failing);
    std::vector<_POINT3D> ex(un, _POINT3D{0.0f, 0.0f, 0.0f});
    for (int i = n - 1; i > failing; --i) {
        double s[3] = {0.0, 0.0, 0.0};
        for (int j = i + 1; j < n; ++j) {
            const double aij = a[static_cast<std::size_t>(i * n + j)];
            const _POINT3D & p = ex[static_cast<std::size_t>(j)];
            s[0] = s[0] + aij * static_cast<double>(p.x);
            s[1] = s[1] + aij * static_cast<double>(p.y);
            s[2] = s[2] + aij * static_cast<double>(p.z);
        }
        const double r = 1.0 / a[static_cast<std::size_t>(i * n + i)];
        const _POINT3D & q = b[static_cast<std::size_t>(i)];
        ex[static_cast<std::size_t>(i)] = {
            static_cast<float>((static_cast<double>(q.x) - s[0]) * r),
            static_cast<float>((static_cast<double>(q.y) - s[1]) * r),
            static_cast<float>((static_cast<double>(q.z) - s[2]) * r)};
    }
    for (std::size_t i = 0; i < un; ++i) {
        const _POINT3D & e = ex[i];
        FUZZ_CHECK(sameValue(x[i].x, e.x) && sameValue(x[i].y, e.y) && sameValue(x[i].z, e.z),
                   "n %d: point solution %zu (%a %a %a), expected (%a %a %a), failing row %d", n, i,
                   static_cast<double>(x[i].x), static_cast<double>(x[i].y),
                   static_cast<double>(x[i].z), static_cast<double>(e.x), static_cast<double>(e.y),
                   static_cast<double>(e.z), failing);
    }
    std::free(x);
}

void checkInverse(const std::vector<double> & matrix, int n) {
    const auto un = static_cast<std::size_t>(n);
    std::unique_ptr<double[]> a(new double[un * un]);
    std::copy(matrix.begin(), matrix.end(), a.get());
    std::unique_ptr<double[]> inverse(LUDecomp::Inverse_Matrix(a.get(), n));
    std::unique_ptr<double[]> expected = referenceInverse(matrix, n);
    FUZZ_CHECK((inverse == nullptr) == (expected == nullptr),
               "n %d: Inverse_Matrix %s, expected %s", n, inverse ? "an inverse" : "null",
               expected ? "an inverse" : "null");
    for (std::size_t k = 0; inverse && k < un * un; ++k)
        FUZZ_CHECK(sameValue(inverse[k], expected[k]), "n %d: inverse entry %zu %a, expected %a", n,
                   k, inverse[k], expected[k]);
}

void checkSmallParts(FuzzedDataProvider & in, std::uint64_t & lcg) {
    // Permut_lignes on a matrix of exact size: the two rows swap from firstColumn on, nothing
    // else moves.
    const int rows = in.ConsumeIntegralInRange(1, 12);
    const int width = in.ConsumeIntegralInRange(1, 70);
    const int row1 = in.ConsumeIntegralInRange(0, rows - 1);
    const int row2 = in.ConsumeIntegralInRange(0, rows - 1);
    const int first = in.ConsumeIntegralInRange(0, width);
    const auto size = static_cast<std::size_t>(rows * width);
    std::unique_ptr<double[]> m(new double[size]);
    for (std::size_t k = 0; k < size; ++k)
        m[k] = static_cast<double>(k);
    LUDecomp::Permut_lignes(m.get(), rows, width, row1, row2, first);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < width; ++c) {
            int from = r;
            if (c >= first && r == row1)
                from = row2;
            else if (c >= first && r == row2)
                from = row1;
            FUZZ_CHECK(m[static_cast<std::size_t>(r * width + c)] ==
                           static_cast<double>(from * width + c),
                       "Permut_lignes(rows %d, width %d, %d, %d, from %d): (%d, %d) wrong", rows,
                       width, row1, row2, first, r, c);
        }

    _POINT3D points[3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    const int i1 = in.ConsumeIntegralInRange(0, 2);
    const int i2 = in.ConsumeIntegralInRange(0, 2);
    _POINT3D expected[3] = {points[0], points[1], points[2]};
    std::swap(expected[i1], expected[i2]);
    LUDecomp::Permut_POINT3D(points, i1, i2);
    for (int k = 0; k < 3; ++k)
        FUZZ_CHECK(points[k].x == expected[k].x && points[k].z == expected[k].z,
                   "Permut_POINT3D(%d, %d): point %d", i1, i2, k);

    // Div3D: one reciprocal, then products rounded to float. Any divisor, 0 included.
    const _POINT3D p{consumeFloat(in, lcg), consumeFloat(in, lcg), consumeFloat(in, lcg)};
    const double divisor = consumeEntry(in, lcg);
    const _POINT3D q = Div3D(&p, divisor);
    const double r = 1.0 / divisor;
    FUZZ_CHECK(sameValue(q.x, static_cast<float>(static_cast<double>(p.x) * r)) &&
                   sameValue(q.y, static_cast<float>(static_cast<double>(p.y) * r)) &&
                   sameValue(q.z, static_cast<float>(static_cast<double>(p.z) * r)),
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
        // Small systems are the interesting ones; medium ones span several elimination panels;
        // now and then a large one grows the buffers.
        const int n = choice < 8    ? in.ConsumeIntegralInRange(1, 8)
                      : choice < 12 ? in.ConsumeIntegralInRange(9, 24)
                                    : in.ConsumeIntegralInRange(1, 64);
        const auto un = static_cast<std::size_t>(n);
        std::vector<double> matrix(un * un);
        for (double & v : matrix)
            v = consumeEntry(in, lcg);
        std::vector<double> rhs(un);
        for (double & v : rhs)
            v = consumeEntry(in, lcg);
        std::vector<_POINT3D> points(un);
        for (_POINT3D & p : points)
            p = {consumeFloat(in, lcg), consumeFloat(in, lcg), consumeFloat(in, lcg)};

        // Every instruction-set level of the elimination meets the same system.
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
