#include "cfft_scalar_twin.h"

// Namespaces of its own keep this copy apart from the one under test.
#ifndef SP_SIMD_SCALAR
#define SP_SIMD_SCALAR
#endif
#define simd scalarTwinSimd
#define cfft scalarTwinCfft
#include "dsplib/arm/cfft_drivers.h"
#include "dsplib/arm/cfft_tables.cpp"

using scalarTwinCfft::Direction;

void scalarForward4(int N, int log2N, const float* x, float* y) {
    scalarTwinCfft::transform<Direction::Forward, 4>(N, log2N, x, y);
}

void scalarInverse4(int N, int log2N, const float* x, float* y) {
    scalarTwinCfft::transform<Direction::Inverse, 4>(N, log2N, x, y);
}

void scalarForward2(int N, int log2N, const float* x, float* y) {
    scalarTwinCfft::transform<Direction::Forward, 2>(N, log2N, x, y);
}

void scalarInverse2(int N, int log2N, const float* x, float* y) {
    scalarTwinCfft::transform<Direction::Inverse, 2>(N, log2N, x, y);
}
