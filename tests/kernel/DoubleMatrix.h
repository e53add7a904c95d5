// Reference 4x4 arithmetic in double for the kernel tests, independent of the kernel's code.
#ifndef KDRCORE_TESTS_KERNEL_DOUBLEMATRIX_H
#define KDRCORE_TESTS_KERNEL_DOUBLEMATRIX_H

#include <array>
#include <cmath>

namespace dmat {

using Mat = std::array<double, 16>; // m[4*c + r], as the kernel stores it
using FMat = std::array<float, 16>;

inline Mat product(Mat const & a, Mat const & b) {
    Mat out{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 4; ++k)
                out[4 * c + r] += a[4 * k + r] * b[4 * c + k];
    return out;
}

inline Mat transposed(Mat const & m) {
    Mat t;
    for (int i = 0; i < 16; ++i)
        t[i] = m[4 * (i % 4) + i / 4];
    return t;
}

inline Mat diagonal(double a, double b, double c) {
    return {a, 0, 0, 0, 0, b, 0, 0, 0, 0, c, 0, 0, 0, 0, 1};
}

inline Mat identity() {
    return diagonal(1, 1, 1);
}

// Rotation by `angle` about the coordinate axis `axis` (0, 1, 2); a positive angle turns the next
// axis towards the one after it (y to z about x).
inline Mat rotation(int axis, double angle) {
    Mat m = identity();
    int const i = (axis + 1) % 3, j = (axis + 2) % 3;
    m[5 * i] = m[5 * j] = std::cos(angle);
    m[4 * i + j] = std::sin(angle);
    m[4 * j + i] = -std::sin(angle);
    return m;
}

inline double det3(Mat const & m) {
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
           m[2] * (m[4] * m[9] - m[5] * m[8]);
}

inline FMat toFloats(Mat const & m) {
    FMat f;
    for (int i = 0; i < 16; ++i)
        f[i] = static_cast<float>(m[i]);
    return f;
}

inline Mat toDoubles(float const * m) {
    Mat d;
    for (int i = 0; i < 16; ++i)
        d[i] = static_cast<double>(m[i]);
    return d;
}

} // namespace dmat

#endif // KDRCORE_TESTS_KERNEL_DOUBLEMATRIX_H
