/**
 * The split passes between a real transform and the complex transform of half its size. The
 * transforms themselves are in voxlocParts.h. No state; tables are handed in.
 */
#ifndef VOXLOC_REAL_FFT_SPLIT_H
#define VOXLOC_REAL_FFT_SPLIT_H

#include "dsplib/simd/simdKernel.h"

namespace voxloc {

/**
 * Forward split: turns a complex spectrum x of n points into the n+1 bins of the real spectrum out.
 * x has room for n+1 points: element n is written. x and out do not overlap.
 */
SP_SIMD_KERNEL(splitFft,
               void(int n, float* x, const float* aTable, const float* bTable, float* out));

/** Inverse split: turns n+1 bins x into n complex points out. x and out do not overlap. */
SP_SIMD_KERNEL(splitIfft,
               void(int n, const float* x, const float* aTable, const float* bTable, float* out));

}  // namespace voxloc

#endif
