/**
 * The complex FFT's transforms of 32 elements and more, for the machine that an object is compiled
 * for. An x86 program has them for several machines and chooses when it runs.
 */
#ifndef DSPLIB_CFFT_KERNELS_H
#define DSPLIB_CFFT_KERNELS_H

#include "cfft_drivers.h"
#include "cfft_ends.h"

namespace cfft {

/** Sizes of 32 and more; arguments as checked by the entry points. */
struct Kernels {
    void (*forward)(int N, int log2N, const float* x, float* y);
    void (*inverse)(int N, int log2N, const float* x, float* y);
    void (*inverseEnds)(const float* x, float* y, int wanted);  // wanted: whole EndSteps
};

inline namespace SP_SIMD_TARGET {

/** On vectors of up to L lanes. */
template <int L>
constexpr Kernels KernelsOfWidth = {transform<Direction::Forward, L>,
                                    transform<Direction::Inverse, L>,
                                    transformEnds<Direction::Inverse, L>};

/** At the width that is best where this object runs. */
constexpr Kernels OwnKernels = KernelsOfWidth<simd::BestLanes>;

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
