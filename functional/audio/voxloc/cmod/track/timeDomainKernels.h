/** The time-domain voice detector's loops over the samples of a frame. No state of their own. */
#ifndef VOXLOC_TIME_DOMAIN_KERNELS_H
#define VOXLOC_TIME_DOMAIN_KERNELS_H

#include "dsplib/simd/simdKernel.h"

namespace voxloc {

/** The smallest step of the median tracker. */
constexpr float SmallestStep = 1e-12f;

/** out[i] = |in[i]|, of which a zero is positive. */
SP_SIMD_KERNEL(rectify, void(const float* in, int count, float* out));

/**
 * The running median of a frame's envelope: it goes up or down by a step, a small share of itself.
 * It goes on from the frame before; the frame's first sample only carries it.
 *
 * @param envelope  in, FRAME_SAMPLES
 * @param step      in and out, the step that comes next
 * @param medians   in and out, FRAME_SAMPLES; on entry those of the frame before, of which the last
 *                  one is looked at
 */
SP_SIMD_KERNEL(trackMedian, void(const float* envelope, float* step, float* medians));

/** How far the envelope exceeds its median at most, relative to it; 0 where it does so nowhere. */
SP_SIMD_KERNEL(largestRelativeExcess, float(const float* envelope, const float* medians));

}  // namespace voxloc

#endif
