/** The vector layer on the host: SSE2, fused multiply-add where the compiler may assume it. */
#ifndef DSPLIB_SIMD_SIMD_SSE_H
#define DSPLIB_SIMD_SIMD_SSE_H

#ifndef __SSE2__
#error "simdSse.h needs a compiler that targets SSE2"
#endif

#include <immintrin.h>

namespace simd {

using F32x4 = __m128;

inline F32x4 load4(const float* from) {
    return _mm_loadu_ps(from);
}

inline void store4(float* to, F32x4 v) {
    _mm_storeu_ps(to, v);
}

inline F32x4 splat4(float value) {
    return _mm_set1_ps(value);
}

inline F32x4 add(F32x4 a, F32x4 b) {
    return _mm_add_ps(a, b);
}

inline F32x4 mul(F32x4 a, F32x4 b) {
    return _mm_mul_ps(a, b);
}

/** accumulator + a·b */
inline F32x4 mulAdd(F32x4 accumulator, F32x4 a, F32x4 b) {
#ifdef __FMA__
    return _mm_fmadd_ps(a, b, accumulator);
#else
    return _mm_add_ps(accumulator, _mm_mul_ps(a, b));
#endif
}

/** (v0 + v1) + (v2 + v3): adjacent lanes first */
inline float sumLanes(F32x4 v) {
    const __m128 swapped = _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1));
    const __m128 pairs = _mm_add_ps(v, swapped);
    return _mm_cvtss_f32(_mm_add_ss(pairs, _mm_movehl_ps(pairs, pairs)));
}

}  // namespace simd

#endif
