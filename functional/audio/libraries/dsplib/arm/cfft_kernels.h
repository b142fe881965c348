/**
 * The complex FFT's transforms for one kind of machine.
 *
 * An x86-64 program built for the distribution's baseline may not assume vectors of more than four
 * lanes, and need not do without them either: the transforms are compiled for wider ones as well
 * (cfft_avx.cpp, cfft_avx512.cpp), and the entry points take the widest that the machine has. None
 * of these builds fuses a product with a sum, so the results are the same bits on every machine.
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
    void (*inverseEnds)(const float* x, float* y, int wanted);  // wanted: a multiple of 32
};

inline namespace SP_SIMD_TARGET {

/** At the widest vectors that this object is compiled for. */
constexpr Kernels OwnKernels = {transform<Direction::Forward, simd::BestLanes>,
                                transform<Direction::Inverse, simd::BestLanes>,
                                transformEnds<Direction::Inverse, simd::BestLanes>};

}  // namespace SP_SIMD_TARGET

// Only where SP_CFFT_WIDER_VECTORS is set
extern const Kernels AvxKernels;
extern const Kernels Avx512Kernels;

}  // namespace cfft

#endif
