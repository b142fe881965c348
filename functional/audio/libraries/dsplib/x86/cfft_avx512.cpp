#include "cfft_wider.h"

#ifndef __AVX512F__
#error "cfft_avx512.cpp is the transforms for AVX-512: compile it with -mavx512f"
#endif

const cfft::Kernels cfft::Avx512Kernels = cfft::OwnKernels;
