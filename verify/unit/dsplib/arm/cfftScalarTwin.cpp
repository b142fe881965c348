// The FFT compiled a second time, on the scalar back end of the vector layer: its namespace is
// another one than that of the vectors of this build.

#ifndef SP_SIMD_SCALAR
#define SP_SIMD_SCALAR
#endif
#include "cfftWidths.h"

namespace cffttest {

const Kernels ScalarKernels4 = KernelsOfWidth<4>, ScalarKernels2 = KernelsOfWidth<2>;

}  // namespace cffttest
