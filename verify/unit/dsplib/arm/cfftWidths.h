/** The complex FFT's transforms at a width of the caller's choice. */
#ifndef VERIFY_UNIT_CFFT_WIDTHS_H
#define VERIFY_UNIT_CFFT_WIDTHS_H

#include "dsplib/arm/cfft_drivers.h"
#include "dsplib/arm/cfft_ends.h"

namespace cffttest {

struct Kernels {
    void (*forward)(int N, int log2N, const float* x, float* y);
    void (*inverse)(int N, int log2N, const float* x, float* y);
    void (*inverseEnds)(const float* x, float* y, int wanted);
};

inline namespace SP_SIMD_TARGET {

/** On vectors of up to L lanes. */
template <int L>
constexpr Kernels KernelsOfWidth = {cfft::transform<cfft::Direction::Forward, L>,
                                    cfft::transform<cfft::Direction::Inverse, L>,
                                    cfft::transformEnds<cfft::Direction::Inverse, L>};

}  // namespace SP_SIMD_TARGET

extern const Kernels ScalarKernels4, ScalarKernels2;

}  // namespace cffttest

#endif
