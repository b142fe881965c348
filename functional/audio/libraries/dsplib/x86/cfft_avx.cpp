#include "cfft_wider.h"

#if !defined(__AVX__) || defined(__AVX512F__)
#error "cfft_avx.cpp is the transforms for AVX: compile it with -mavx and for nothing wider"
#endif

const cfft::Kernels cfft::AvxKernels = cfft::OwnKernels;
