/** The vector layer on ARM Advanced SIMD, 32- and 64-bit. */
#ifndef DSPLIB_SIMD_SIMD_NEON_H
#define DSPLIB_SIMD_SIMD_NEON_H

#ifndef __ARM_NEON
#error "simdNeon.h needs a compiler that targets ARM Advanced SIMD (-mfpu=neon)"
#endif

#include <arm_neon.h>

namespace simd {

using F32x2 = float32x2_t;
using F32x4 = float32x4_t;

inline F32x4 load4(const float* from) {
    return vld1q_f32(from);
}

inline void store4(float* to, F32x4 v) {
    vst1q_f32(to, v);
}

inline F32x4 splat4(float value) {
    return vdupq_n_f32(value);
}

inline F32x4 add(F32x4 a, F32x4 b) {
    return vaddq_f32(a, b);
}

inline F32x4 mul(F32x4 a, F32x4 b) {
    return vmulq_f32(a, b);
}

/** accumulator + a·b, rounded twice: the multiply-accumulate of this unit does not fuse */
inline F32x4 mulAdd(F32x4 accumulator, F32x4 a, F32x4 b) {
    return vmlaq_f32(accumulator, a, b);
}

/** (v0 + v1) + (v2 + v3): adjacent lanes first */
inline float sumLanes(F32x4 v) {
    const float32x2_t pairs = vpadd_f32(vget_low_f32(v), vget_high_f32(v));
    return vget_lane_f32(vpadd_f32(pairs, pairs), 0);
}

}  // namespace simd

#endif
