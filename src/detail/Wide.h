// src/detail/Wide.h - the double width at which the library computes, and the rounding back
// (private)
//
// Inside one expression arithmetic runs at double width: each float operand is widened
// explicitly, and a value becomes a float where it is stored.
#ifndef KDRCORE_SRC_DETAIL_WIDE_H
#define KDRCORE_SRC_DETAIL_WIDE_H

namespace kdrcore::detail {

inline double wide(float v) {
    return static_cast<double>(v);
}

inline float narrow(double v) {
    return static_cast<float>(v);
}

/// `v` rounded to float and made opaque to the optimiser, so that whatever reads the value next
/// starts from the float. For values that are rounded and then widened again in the same function
/// (a point updated step after step, a vector stored and then normalised): g++ 12 at -O2 and -O3
/// packs x and y of such a value into one register, stores the rounded floats and goes on from
/// the unrounded doubles, while the scalar z is rounded as written. No vectoriser can look through
/// the empty asm, so the rounding stays whatever the compiler and its flags.
inline float roundedFloat(double v) {
    float r = static_cast<float>(v);
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
    __asm__("" : "+x"(r));
#elif defined(__GNUC__)
    __asm__("" : "+m"(r));
#endif
    return r;
}

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_DETAIL_WIDE_H
