/** Loops over the samples of frames and over interleaved complex values. No state. */
#ifndef VOXLOC_FRAME_KERNELS_H
#define VOXLOC_FRAME_KERNELS_H

#include "dsplib/simd/simdKernel.h"

namespace voxloc {

/** out[i] = in[i]·factor; out may be in. */
SP_SIMD_KERNEL(scale, void(const float* in, float factor, float* out, int count));

/**
 * out[i] = in[i]·factor, and the largest square of these: `refused` when one reaches that or is no
 * number.
 *
 * @param out    may be in
 * @param count  a multiple of 64
 */
SP_SIMD_KERNEL(scaleAndSquare,
               float(const float* in, float factor, float refused, float* out, int count));

/** out[i] = a[i]·b[i]; out may be a or b. */
SP_SIMD_KERNEL(multiply, void(const float* a, const float* b, float* out, int count));

/** out[k] = a[k]·conj(b[k]) for `count` complex values; out may be a or b. */
SP_SIMD_KERNEL(multiplyByConjugate, void(const float* a, const float* b, float* out, int count));

/**
 * An analysis block of two frames leaves through the window, and its second half and the next frame
 * become the block that follows: one pass over what would be two.
 *
 * @param block     in and out, AnalysisSamples
 * @param window    in, AnalysisSamples
 * @param next      in, FRAME_SAMPLES
 * @param windowed  out, AnalysisSamples; none of the four overlap
 */
SP_SIMD_KERNEL(windowAndAdvance,
               void(float* block, const float* window, const float* next, float* windowed));

}  // namespace voxloc

#endif
