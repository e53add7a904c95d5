// kdrcore/solver/LUDecomp.h - dense Gaussian elimination, back substitution and inversion
#ifndef KDRCORE_SOLVER_LUDECOMP_H
#define KDRCORE_SOLVER_LUDECOMP_H

#include "kdrcore/KDRExport.h"

/// Three floats x, y, z: the right-hand side of the point solver. A plain record, no operations.
struct _POINT3D {
    float x;
    float y;
    float z;
};

/// `*point` times the reciprocal of `divisor`, each product computed in double and rounded to
/// float. A zero divisor is not tested.
KDRCORE_API _POINT3D Div3D(const _POINT3D * point, double divisor);

/// Dense square linear systems in doubles, row-major (element (i, j) at i * n + j).
///
/// Solve with Triangularise_matrice then Resoud_matrice, or with points Triangularise_Pmatrice
/// then Resoud_Pmatrice. The work memory is a set of process-wide buffers that grow to the largest
/// n seen and stay until trashRESNUM(); repeated solves of one size allocate nothing after the
/// first. Nothing here is locked: one thread at a time. When memory runs out std::bad_alloc is
/// thrown and the buffers that were there stay valid.
class KDRCORE_API LUDecomp {
public:
    /// Eliminates below the diagonal in place: `matrix` becomes upper triangular and `rhs` the
    /// matching right-hand side. A pivot below TOLERANCE in magnitude is replaced by the first
    /// later row whose entry reaches TOLERANCE (not the largest); with none, the column is cleared
    /// below the diagonal and the step does no elimination. False when a diagonal entry of the
    /// result is below 1e-5 in magnitude (a NaN passes); true for n < 1.
    static bool Triangularise_matrice(double * matrix, double * rhs, int n);

    /// Back substitution on an upper triangular system (only the diagonal and the upper triangle
    /// are read). Returns the class's buffer of n solutions, valid until a larger solve or
    /// trashRESNUM(), its contents until the next call. `*ok` becomes false at the first row
    /// (from the bottom, the last row excepted) whose diagonal is below TOLERANCE in magnitude:
    /// the entries below that row are solved, the others hold anything. n < 1: `*ok` false and
    /// the buffer as it stands (possibly null).
    static double * Resoud_matrice(double const * matrix, double const * rhs, int n, bool * ok);

    /// The elimination of Triangularise_matrice with a point right-hand side, each coordinate
    /// rounded to float after each step. No final diagonal test.
    static void Triangularise_Pmatrice(double * matrix, _POINT3D * rhs, int n);

    /// Back substitution with points. Returns a new array of n points made with calloc, which
    /// the caller releases with free(), also when `*ok` is false: then the unsolved points are
    /// zero. A last diagonal of exactly 0 fails at once; any other row fails below TOLERANCE.
    /// n < 1: `*ok` false and null.
    static _POINT3D * Resoud_Pmatrice(double const * matrix, const _POINT3D * rhs, int n,
                                      bool * ok);

    /// Inverse of `matrix` by a Gauss-Jordan reduction on columns, in a new double[n * n] that
    /// the caller releases with delete[]. Null when some row k has no entry above 1e-6 in
    /// magnitude among columns k.. at step k (singular). `matrix` is destroyed in both cases.
    /// n < 1 gives an empty array.
    static double * Inverse_Matrix(double * matrix, int n);

    /// Swaps rows `row1` and `row2` of a row-major matrix `width` columns wide, over the columns
    /// `firstColumn` to `width` - 1, through the class's row buffer. `rows` is not used.
    static void Permut_lignes(double * matrix, int rows, int width, int row1, int row2,
                              int firstColumn);

    /// Swaps points[index1] and points[index2].
    static void Permut_POINT3D(_POINT3D * points, int index1, int index2);

    /// Releases every work buffer; the next operation allocates anew. Safe to repeat.
    static void trashRESNUM();

private:
    static double * ligne;         // row-swap scratch, lignem doubles
    static int lignem;             // capacity of ligne
    static double * New_mat;       // elimination work matrices, 2 * triangn * triangn doubles
    static double * New_FLOAT;     // elimination right-hand sides, 2 * triangn doubles
    static int triangn;            // the n that New_mat and New_FLOAT have room for
    static double * New_pmat;      // point elimination matrices, 2 * ptriangn * ptriangn doubles
    static _POINT3D * New_POINT3D; // point right-hand sides, 2 * ptriangn points
    static int ptriangn;           // the n that New_pmat and New_POINT3D have room for
    static double * Coeff;         // result of Resoud_matrice, resoudn doubles
    static int resoudn;            // capacity of Coeff
};

#endif // KDRCORE_SOLVER_LUDECOMP_H
