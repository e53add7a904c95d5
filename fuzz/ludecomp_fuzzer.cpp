// Fuzz target: LUDecomp on random systems of 1 to 48 unknowns, any bit pattern included.
//
// Every operation runs on arrays allocated to their exact size, so that AddressSanitizer sees any
// access beyond them. On the plain path the ok flags and null results must agree with the
// matrices they describe (the pivot tolerances on the eliminated diagonal), elimination must leave
// exact zeros below the diagonal, and where a triangular system is solved with finite values its
// solution must satisfy the equations to rounding. Every other instruction-set level must give
// the plain path's bits, for double and point right-hand sides, solutions and the inverse. The
// process-wide buffers are grown, reused and released in between.
#include "Fuzz.h"

#include "kdrcore/solver/LUDecomp.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
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
    static double const special[] = {
        0.0,  -0.0, 1.0,   -1.0,   2e-4,         1e-4,     9.99e-5,   5e-5,         1e-5,   9.9e-6,
        1e-6, 1e-7, 1e300, 1e-300, std::nan(""), HUGE_VAL, -HUGE_VAL, DBL_TRUE_MIN, DBL_MAX};
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
int failingRow(double const * a, int n) {
    for (int i = n - 2; i >= 0; --i)
        if (std::fabs(a[i * n + i]) < PIVOT_LIMIT)
            return i;
    return -1;
}

void checkLowerZero(double const * a, int n, char const * op) {
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j)
            FUZZ_CHECK(a[i * n + j] == 0.0, "n %d: %s left (%d, %d) = %a", n, op, i, j,
                       a[i * n + j]);
}

// Row i of the upper triangular system a x = b, to rounding: |b - a x| small against the terms.
// `rel` is the relative rounding of the solution; rows with a non-finite term are not judged.
// `tiny` is the absolute rounding of the solution (its denormals), per unit of the coefficients.
void checkRow(double const * a, int n, int i, double const * x, double b, double rel, double tiny,
              char const * op) {
    double r = b, scale = std::fabs(b), coefficients = 0.0;
    for (int j = i; j < n; ++j) {
        double const t = a[i * n + j] * x[j];
        r -= t;
        scale += std::fabs(t);
        coefficients += std::fabs(a[i * n + j]);
    }
    if (std::isfinite(scale) && std::isfinite(coefficients))
        FUZZ_CHECK(std::fabs(r) <= rel * scale * n + tiny * coefficients * n,
                   "n %d: %s row %d residual %a of %a", n, op, i, r, scale);
}

// Inverse_Matrix: null or an inverse. Where the matrix is well conditioned by the inverse given
// (norm of A times norm of X at most 1e6), A X must be I to rounding.
void checkInverse(std::vector<double> const & matrix, std::vector<double> const & x, int n) {
    if (x.empty())
        return;
    double normA = 0.0, normX = 0.0; // sums of all magnitudes: above the row-sum norms
    for (std::size_t k = 0; k < matrix.size(); ++k) {
        normA += std::fabs(matrix[k]);
        normX += std::fabs(x[k]);
    }
    if (!(normA * normX <= 1e6)) // NaN and infinities included
        return;
    auto const un = static_cast<std::size_t>(n);
    for (std::size_t i = 0; i < un; ++i)
        for (std::size_t j = 0; j < un; ++j) {
            double r = i == j ? -1.0 : 0.0;
            for (std::size_t k = 0; k < un; ++k)
                r += matrix[i * un + k] * x[k * un + j];
            FUZZ_CHECK(std::fabs(r) <= 1e-6, "n %d: (A X - I)(%zu, %zu) = %a", n, i, j, r);
        }
}

// Everything the solvers give for one system.
struct Results {
    std::vector<double> a, b, x, pa, inverse; // inverse: empty when Inverse_Matrix gave null
    std::vector<_POINT3D> pb, px;
    bool triangular = false, ok = false, pok = false;
};

// Each solver on arrays of exactly the size it may touch.
Results solve(std::vector<double> const & matrix, std::vector<double> const & rhs,
              std::vector<_POINT3D> const & points, int n) {
    auto const un = static_cast<std::size_t>(n);
    Results r;
    std::unique_ptr<double[]> a(new double[un * un]), b(new double[un]), pa(new double[un * un]);
    std::unique_ptr<_POINT3D[]> pb(new _POINT3D[un]);
    std::copy(matrix.begin(), matrix.end(), a.get());
    std::copy(matrix.begin(), matrix.end(), pa.get());
    std::copy(rhs.begin(), rhs.end(), b.get());
    std::copy(points.begin(), points.end(), pb.get());
    r.triangular = LUDecomp::Triangularise_matrice(a.get(), b.get(), n);
    double const * x = LUDecomp::Resoud_matrice(a.get(), b.get(), n, &r.ok);
    FUZZ_CHECK(x != nullptr, "n %d: Resoud_matrice gave null", n);
    r.x.assign(x, x + n);
    LUDecomp::Triangularise_Pmatrice(pa.get(), pb.get(), n);
    _POINT3D * const px = LUDecomp::Resoud_Pmatrice(pa.get(), pb.get(), n, &r.pok);
    FUZZ_CHECK(px != nullptr, "n %d: Resoud_Pmatrice gave null", n);
    r.px.assign(px, px + n);
    std::free(px);
    r.a.assign(a.get(), a.get() + un * un);
    r.b.assign(b.get(), b.get() + n);
    r.pa.assign(pa.get(), pa.get() + un * un);
    r.pb.assign(pb.get(), pb.get() + n);
    std::vector<double> m = matrix;
    std::unique_ptr<double[]> inverse(LUDecomp::Inverse_Matrix(m.data(), n));
    if (inverse)
        r.inverse.assign(inverse.get(), inverse.get() + un * un);
    return r;
}

// The results of the plain path: what the documentation fixes, and residuals to rounding.
void checkPlain(Results const & r, std::vector<double> const & matrix, int n) {
    auto const un = static_cast<std::size_t>(n);
    checkLowerZero(r.a.data(), n, "Triangularise_matrice");
    checkLowerZero(r.pa.data(), n, "Triangularise_Pmatrice");
    bool expected = true;
    for (std::size_t i = 0; i < un; ++i)
        expected = expected && !(std::fabs(r.a[i * un + i]) < DIAGONAL_LIMIT);
    FUZZ_CHECK(r.triangular == expected, "n %d: Triangularise_matrice gave %d", n, r.triangular);
    int const failing = failingRow(r.a.data(), n);
    FUZZ_CHECK(r.ok == (failing < 0), "n %d: Resoud_matrice ok %d, but row %d fails", n, r.ok,
               failing);
    for (int i = n - 1; i > failing && std::isfinite(r.x[static_cast<std::size_t>(i)]); --i)
        checkRow(r.a.data(), n, i, r.x.data(), r.b[static_cast<std::size_t>(i)], 1e-12, 1e-320,
                 "Resoud_matrice");
    // Points: the last row fails only on an exact zero, the others below the tolerance.
    int const pfailing = r.pa[un * un - 1] == 0.0 ? n - 1 : failingRow(r.pa.data(), n);
    FUZZ_CHECK(r.pok == (pfailing < 0), "n %d: Resoud_Pmatrice ok %d, but row %d fails", n, r.pok,
               pfailing);
    for (int c = 0; c < 3; ++c) {
        std::vector<double> xc(un), bc(un);
        for (std::size_t i = 0; i < un; ++i) {
            xc[i] = static_cast<double>((&r.px[i].x)[c]);
            bc[i] = static_cast<double>((&r.pb[i].x)[c]);
        }
        for (int i = n - 1; i > pfailing && std::isfinite(xc[static_cast<std::size_t>(i)]) &&
                            std::isfinite(bc[static_cast<std::size_t>(i)]);
             --i)
            checkRow(r.pa.data(), n, i, xc.data(), bc[static_cast<std::size_t>(i)], 1e-6, 1e-44,
                     "Resoud_Pmatrice");
    }
    checkInverse(matrix, r.inverse, n);
}

/// got[i] and plain[i] by bits for i >= from (a failed back substitution writes only the rows
/// below the one that failed).
template <class T, class Same>
void compareBits(std::vector<T> const & got, std::vector<T> const & plain, Same same,
                 char const * what, int level, int n, std::size_t from = 0) {
    FUZZ_CHECK(got.size() == plain.size(), "level %d, n %d: %s of another size", level, n, what);
    for (std::size_t i = from; i < got.size(); ++i)
        FUZZ_CHECK(same(got[i], plain[i]), "level %d, n %d: %s element %zu differs from plain",
                   level, n, what, i);
}

// Every level gives the plain path's bits (a NaN meets a NaN).
void checkLevel(Results const & r, Results const & plain, int level, int n) {
    auto sameP = [](_POINT3D const & p, _POINT3D const & q) {
        return fuzz::same(p.x, q.x) && fuzz::same(p.y, q.y) && fuzz::same(p.z, q.z);
    };
    FUZZ_CHECK(r.triangular == plain.triangular && r.ok == plain.ok && r.pok == plain.pok,
               "level %d, n %d: ok flags differ from plain", level, n);
    compareBits(r.a, plain.a, fuzz::same<double>, "matrix", level, n);
    compareBits(r.b, plain.b, fuzz::same<double>, "right-hand side", level, n);
    auto const written = [](int failing) { return static_cast<std::size_t>(failing + 1); };
    int const failing = failingRow(plain.a.data(), n);
    auto const un = static_cast<std::size_t>(n);
    int const pfailing = plain.pa[un * un - 1] == 0.0 ? n - 1 : failingRow(plain.pa.data(), n);
    compareBits(r.x, plain.x, fuzz::same<double>, "solution", level, n, written(failing));
    compareBits(r.pa, plain.pa, fuzz::same<double>, "point matrix", level, n);
    compareBits(r.pb, plain.pb, sameP, "point right-hand side", level, n);
    compareBits(r.px, plain.px, sameP, "point solution", level, n, written(pfailing));
    compareBits(r.inverse, plain.inverse, fuzz::same<double>, "inverse", level, n);
}

// Permut_POINT3D swaps two points. (Permut_lignes runs inside the elimination here; it and Div3D
// have their hand-derived cases in the unit test.)
void checkPermutPoints(FuzzedDataProvider & in) {
    _POINT3D points[3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    int const i1 = in.ConsumeIntegralInRange(0, 2), i2 = in.ConsumeIntegralInRange(0, 2);
    _POINT3D expected[3] = {points[0], points[1], points[2]};
    std::swap(expected[i1], expected[i2]);
    LUDecomp::Permut_POINT3D(points, i1, i2);
    for (int k = 0; k < 3; ++k)
        FUZZ_CHECK(points[k].x == expected[k].x && points[k].z == expected[k].z,
                   "Permut_POINT3D(%d, %d): point %d", i1, i2, k);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    std::uint64_t lcg = size;
    for (int system = 0; system < 3 && (system == 0 || in.remaining_bytes() > 0); ++system) {
        int const choice = in.ConsumeIntegralInRange(0, 15);
        if (choice == 15) {
            LUDecomp::trashRESNUM();
            continue;
        }
        if (choice == 14) {
            checkPermutPoints(in);
            continue;
        }
        // Mostly small systems; medium ones run past the first elimination panel of 16 steps
        // (from 18 unknowns on, rows lie below a whole panel); large ones grow the buffers.
        int const n = choice < 7    ? in.ConsumeIntegralInRange(1, 8)
                      : choice < 12 ? in.ConsumeIntegralInRange(17, 40)
                                    : in.ConsumeIntegralInRange(1, 48);
        auto const un = static_cast<std::size_t>(n);
        std::vector<double> matrix(un * un), rhs(un);
        for (double & v : matrix)
            v = consumeEntry(in, lcg);
        for (double & v : rhs)
            v = consumeEntry(in, lcg);
        std::vector<_POINT3D> points(un);
        for (_POINT3D & p : points)
            p = {consumeFloat(in, lcg), consumeFloat(in, lcg), consumeFloat(in, lcg)};
        Results plain;
        fuzz::forEachLevel([&](int level) {
            Results const r = solve(matrix, rhs, points, n);
            if (level == 0) {
                checkPlain(r, matrix, n);
                plain = r;
            } else {
                checkLevel(r, plain, level, n);
            }
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
