/** The complex FFT's transforms of 32 elements and more; arguments as checked by the entry points.
 */
#ifndef DSPLIB_CFFT_KERNELS_H
#define DSPLIB_CFFT_KERNELS_H

#include "dsplib/simd/simdKernel.h"

namespace cfft {

SP_SIMD_KERNEL(forwardTransform, void(int N, int log2N, const float* x, float* y));
SP_SIMD_KERNEL(inverseTransform, void(int N, int log2N, const float* x, float* y));

/** The ends of the inverse transform of FFT_MAX elements; `wanted` in whole EndSteps. */
SP_SIMD_KERNEL(inverseTransformEnds, void(const float* x, float* y, int wanted));

}  // namespace cfft

#endif
