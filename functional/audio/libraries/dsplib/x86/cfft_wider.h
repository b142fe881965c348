/**
 * The complex FFT on vectors wider than the distribution's baseline has.
 *
 * An x86-64 program built for the baseline may not assume vectors of more than four lanes, and need
 * not do without them either: the transforms are compiled for wider ones as well (cfft_avx.cpp,
 * cfft_avx512.cpp), and the entry points take the widest that the machine has. None of these builds
 * fuses a product with a sum, so the results are the same bits on every machine.
 */
#ifndef DSPLIB_X86_CFFT_WIDER_H
#define DSPLIB_X86_CFFT_WIDER_H

#include "dsplib/arm/cfft_kernels.h"

namespace cfft {

extern const Kernels AvxKernels;
extern const Kernels Avx512Kernels;

/** The kernels for the widest vectors that this machine has. */
inline const Kernels& widestKernels() {
    if (__builtin_cpu_supports("avx512f")) return Avx512Kernels;
    if (__builtin_cpu_supports("avx")) return AvxKernels;
    return OwnKernels;
}

}  // namespace cfft

#endif
