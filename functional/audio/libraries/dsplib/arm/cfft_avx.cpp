#include "cfft_kernels.h"

const cfft::Kernels cfft::AvxKernels = cfft::OwnKernels;
