#include "cfft_kernels.h"

const cfft::Kernels cfft::Avx512Kernels = cfft::OwnKernels;
