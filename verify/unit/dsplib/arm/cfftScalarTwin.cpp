// The FFT compiled a second time, on the scalar back end of the vector layer: its namespace is
// another one than that of the vectors of this build.

#ifndef SP_SIMD_SCALAR
#define SP_SIMD_SCALAR
#endif
#include "dsplib/arm/cfft_kernels.h"

extern const cfft::Kernels ScalarKernels4, ScalarKernels2;
const cfft::Kernels ScalarKernels4 = cfft::KernelsOfWidth<4>;
const cfft::Kernels ScalarKernels2 = cfft::KernelsOfWidth<2>;
