/**
 * The vector layer by number of lanes, for kernels written once for every width.
 *
 * F32<L> is the type of L lanes; F32<1> is a plain float. Templates take the number of lanes rather
 * than the type: compilers drop the attributes of a built-in vector type that is a template
 * argument, and warn of it.
 */
#ifndef DSPLIB_SIMD_SIMD_LANES_H
#define DSPLIB_SIMD_SIMD_LANES_H

#include "simd.h"

namespace simd {

template <int L>
struct Lanes;

template <>
struct Lanes<1> {
    using Type = float;
    static Type load(const float* from) { return *from; }
    static void store(float* to, Type v) { *to = v; }
    static Type splat(float value) { return value; }
};

template <>
struct Lanes<2> {
    using Type = F32x2;
    static Type load(const float* from) { return load2(from); }
    static void store(float* to, Type v) { store2(to, v); }
    static Type splat(float value) { return splat2(value); }
};

template <>
struct Lanes<4> {
    using Type = F32x4;
    static Type load(const float* from) { return load4(from); }
    static void store(float* to, Type v) { store4(to, v); }
    static Type splat(float value) { return splat4(value); }
};

#ifdef DSPLIB_SIMD_SIMD_AVX_H
template <>
struct Lanes<8> {
    using Type = F32x8;
    static Type load(const float* from) { return load8(from); }
    static void store(float* to, Type v) { store8(to, v); }
    static Type splat(float value) { return splat8(value); }
};
#endif

#ifdef DSPLIB_SIMD_SIMD_AVX512_H
template <>
struct Lanes<16> {
    using Type = F32x16;
    static Type load(const float* from) { return load16(from); }
    static void store(float* to, Type v) { store16(to, v); }
    static Type splat(float value) { return splat16(value); }
};
#endif

template <int L>
using F32 = typename Lanes<L>::Type;

inline float add(float a, float b) {
    return a + b;
}

inline float sub(float a, float b) {
    return a - b;
}

inline float mul(float a, float b) {
    return a * b;
}

/** accumulator + a·b */
inline float mulAdd(float accumulator, float a, float b) {
    return accumulator + a * b;
}

/** accumulator - a·b */
inline float mulSub(float accumulator, float a, float b) {
    return accumulator - a * b;
}

}  // namespace simd

#endif
