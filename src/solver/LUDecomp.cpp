// LUDecomp.cpp - dense Gaussian elimination, back substitution and inversion
#include "kdrcore/solver/LUDecomp.h"

#include "detail/Wide.h"
#include "solver/Elimination.h"

#include "kdrcore/types/Scalar.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

using kdrcore::detail::wide;

double * LUDecomp::ligne = nullptr;
int LUDecomp::lignem = 0;
double * LUDecomp::New_mat = nullptr;
double * LUDecomp::New_FLOAT = nullptr;
int LUDecomp::triangn = 0;
double * LUDecomp::New_pmat = nullptr;
_POINT3D * LUDecomp::New_POINT3D = nullptr;
int LUDecomp::ptriangn = 0;
double * LUDecomp::Coeff = nullptr;
int LUDecomp::resoudn = 0;

namespace {

// Final diagonal test of Triangularise_matrice.
constexpr double DIAGONAL_LIMIT = 1e-5;
// A pivot of Inverse_Matrix must exceed this in magnitude.
constexpr double INVERSE_PIVOT_LIMIT = 1e-6;

// count * elementSize in bytes; throws when it does not fit.
std::size_t byteSize(std::size_t count, std::size_t elementSize) {
    if (count > SIZE_MAX / elementSize)
        throw std::bad_alloc();
    return count * elementSize;
}

// Grows `buffer` to `bytes` with realloc. On failure the old buffer is left as it was.
template <class T> void reallocOrThrow(T *& buffer, std::size_t bytes) {
    void * grown = std::realloc(buffer, bytes);
    if (grown == nullptr)
        throw std::bad_alloc();
    buffer = static_cast<T *>(grown);
}

// The growth rule of a matrix pair: room for two n * n matrices and two right-hand sides of n
// entries, resized only when n exceeds the size they have room for. The size is stored only
// once both buffers have grown, so a failure leaves a valid (if larger) buffer behind.
template <class Rhs> void growPair(double *& mat, Rhs *& rhs, int & size, int n) {
    if (n <= size)
        return;
    const std::size_t un = static_cast<std::size_t>(n);
    const std::size_t nn = byteSize(un, un);
    reallocOrThrow(mat, byteSize(nn, 2 * sizeof(double)));
    reallocOrThrow(rhs, byteSize(un, 2 * sizeof(Rhs)));
    size = n;
}

} // namespace

// The elimination runs in place on the caller's arrays (Elimination.h), with the same results as
// working in the buffers and copying back; the matrix buffer of the pair holds the packed pivot
// rows of the blocked passes.
bool LUDecomp::Triangularise_matrice(double * matrix, double * rhs, int n) {
    growPair(New_mat, New_FLOAT, triangn, n);
    if (n < 1)
        return true;
    kdrcore::detail::eliminate(matrix, rhs, n, New_mat);
    for (int i = 0; i < n; ++i)
        if (std::fabs(matrix[static_cast<std::size_t>(i) * static_cast<std::size_t>(n + 1)]) <
            DIAGONAL_LIMIT)
            return false;
    return true;
}

void LUDecomp::Triangularise_Pmatrice(double * matrix, _POINT3D * rhs, int n) {
    growPair(New_pmat, New_POINT3D, ptriangn, n);
    if (n < 1)
        return;
    kdrcore::detail::eliminate(matrix, rhs, n, New_pmat);
}

double * LUDecomp::Resoud_matrice(double const * matrix, double const * rhs, int n, bool * ok) {
    if (n < 1) {
        *ok = false;
        return Coeff;
    }
    if (n > resoudn) {
        reallocOrThrow(Coeff, byteSize(static_cast<std::size_t>(n), sizeof(double)));
        resoudn = n;
    }
    *ok = true;
    double const tolerance = TOLERANCE;
    const std::size_t un = static_cast<std::size_t>(n);
    double * const x = Coeff;
    x[un - 1] = rhs[un - 1] / matrix[(un - 1) * un + (un - 1)];
    for (std::size_t i = un - 1; i-- > 0;) {
        double const * const row = matrix + i * un;
        double s = 0.0;
        for (std::size_t j = i + 1; j < un; ++j)
            s = s + row[j] * x[j];
        if (std::fabs(row[i]) < tolerance) {
            *ok = false;
            return x;
        }
        x[i] = (rhs[i] - s) / row[i];
    }
    return x;
}

_POINT3D * LUDecomp::Resoud_Pmatrice(double const * matrix, const _POINT3D * rhs, int n,
                                     bool * ok) {
    if (n < 1) {
        *ok = false;
        return nullptr;
    }
    *ok = true;
    const std::size_t un = static_cast<std::size_t>(n);
    auto * const x = static_cast<_POINT3D *>(std::calloc(un, sizeof(_POINT3D)));
    if (x == nullptr)
        throw std::bad_alloc();
    double const last = matrix[(un - 1) * un + (un - 1)];
    // Only an exact zero is refused here; the rows above use the tolerance.
    if (last == 0.0) {
        *ok = false;
        return x;
    }
    double const rLast = 1.0 / last;
    x[un - 1].x = static_cast<float>(wide(rhs[un - 1].x) * rLast);
    x[un - 1].y = static_cast<float>(wide(rhs[un - 1].y) * rLast);
    x[un - 1].z = static_cast<float>(wide(rhs[un - 1].z) * rLast);
    double const tolerance = TOLERANCE;
    for (std::size_t i = un - 1; i-- > 0;) {
        double const * const row = matrix + i * un;
        double sx = 0.0, sy = 0.0, sz = 0.0;
        for (std::size_t j = i + 1; j < un; ++j) {
            sx = sx + row[j] * wide(x[j].x);
            sy = sy + row[j] * wide(x[j].y);
            sz = sz + row[j] * wide(x[j].z);
        }
        if (std::fabs(row[i]) < tolerance) {
            *ok = false;
            return x;
        }
        double const r = 1.0 / row[i];
        x[i].x = static_cast<float>((wide(rhs[i].x) - sx) * r);
        x[i].y = static_cast<float>((wide(rhs[i].y) - sy) * r);
        x[i].z = static_cast<float>((wide(rhs[i].z) - sz) * r);
    }
    return x;
}

// Gauss-Jordan on columns: each column operation subtracts a multiple of column k from column j,
// in the matrix and in W alike. Within one step the factors depend only on row k before any
// column of the step changes it, and column k itself is not changed, so the factors are taken
// first and the operations are applied row by row (each entry gets the same expression as in a
// column-by-column order, with better memory access).
double * LUDecomp::Inverse_Matrix(double * matrix, int n) {
    if (n < 1)
        return new double[0];
    const std::size_t un = static_cast<std::size_t>(n);
    // n * n fits a size_t; new[] itself refuses a size beyond the allocator's reach.
    std::unique_ptr<double[]> w(new double[un * un]);
    std::unique_ptr<double[]> factor(new double[un]);
    double * const a = matrix;
    double * const wm = w.get();
    double * const f = factor.get();
    for (std::size_t i = 0; i < un * un; ++i)
        wm[i] = 0.0;
    for (std::size_t i = 0; i < un; ++i)
        wm[i * un + i] = 1.0;

    for (std::size_t k = 0; k < un; ++k) {
        double * const rowK = a + k * un;
        // Largest magnitude above the limit; ties keep the lowest column, a NaN never wins.
        double best = INVERSE_PIVOT_LIMIT;
        std::size_t c = un;
        for (std::size_t j = k; j < un; ++j) {
            double const m = std::fabs(rowK[j]);
            if (m > best) {
                best = m;
                c = j;
            }
        }
        if (c == un)
            return nullptr; // w is released
        if (c != k) {
            for (std::size_t i = 0; i < un; ++i) {
                std::swap(a[i * un + k], a[i * un + c]);
                std::swap(wm[i * un + k], wm[i * un + c]);
            }
        }
        double const pivot = rowK[k];
        for (std::size_t j = k + 1; j < un; ++j)
            f[j] = rowK[j] / pivot;
        for (std::size_t i = 0; i < un; ++i) {
            double * const ai = a + i * un;
            double * const wi = wm + i * un;
            double const aik = ai[k];
            double const wik = wi[k];
            for (std::size_t j = k + 1; j < un; ++j) {
                ai[j] = ai[j] - aik * f[j];
                wi[j] = wi[j] - wik * f[j];
            }
        }
    }

    for (std::size_t k = un - 1; k > 0; --k) {
        double const * const rowK = a + k * un;
        double const pivot = rowK[k];
        for (std::size_t j = 0; j < k; ++j)
            f[j] = rowK[j] / pivot;
        for (std::size_t i = 0; i < un; ++i) {
            double * const ai = a + i * un;
            double * const wi = wm + i * un;
            double const aik = ai[k];
            double const wik = wi[k];
            for (std::size_t j = 0; j < k; ++j) {
                ai[j] = ai[j] - aik * f[j];
                wi[j] = wi[j] - wik * f[j];
            }
        }
    }

    for (std::size_t i = 0; i < un; ++i)
        for (std::size_t j = 0; j < un; ++j)
            wm[i * un + j] = wm[i * un + j] / a[j * un + j];
    return w.release();
}

void LUDecomp::Permut_lignes(double * matrix, int rows, int width, int row1, int row2,
                             int firstColumn) {
    (void)rows;
    if (row1 == row2)
        return;
    if (width > lignem) {
        reallocOrThrow(ligne, byteSize(static_cast<std::size_t>(width), sizeof(double)));
        lignem = width;
    }
    if (firstColumn >= width)
        return;
    const std::size_t w = static_cast<std::size_t>(width);
    const std::size_t first = static_cast<std::size_t>(firstColumn);
    const std::size_t bytes = (w - first) * sizeof(double);
    double * const r1 = matrix + static_cast<std::size_t>(row1) * w + first;
    double * const r2 = matrix + static_cast<std::size_t>(row2) * w + first;
    std::memcpy(ligne, r1, bytes);
    std::memcpy(r1, r2, bytes);
    std::memcpy(r2, ligne, bytes);
}

void LUDecomp::Permut_POINT3D(_POINT3D * points, int index1, int index2) {
    std::swap(points[index1], points[index2]);
}

void LUDecomp::trashRESNUM() {
    std::free(ligne);
    std::free(New_mat);
    std::free(New_pmat);
    std::free(New_POINT3D);
    std::free(New_FLOAT);
    std::free(Coeff);
    ligne = nullptr;
    New_mat = nullptr;
    New_pmat = nullptr;
    New_POINT3D = nullptr;
    New_FLOAT = nullptr;
    Coeff = nullptr;
    lignem = 0;
    triangn = 0;
    ptriangn = 0;
    resoudn = 0;
}

_POINT3D Div3D(const _POINT3D * point, double divisor) {
    double const r = 1.0 / divisor;
    _POINT3D result;
    result.x = static_cast<float>(wide(point->x) * r);
    result.y = static_cast<float>(wide(point->y) * r);
    result.z = static_cast<float>(wide(point->z) * r);
    return result;
}
