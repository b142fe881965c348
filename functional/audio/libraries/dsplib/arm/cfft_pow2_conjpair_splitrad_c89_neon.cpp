/**
 * Entry points of the complex FFT: a conjugate-pair split-radix transform with 8-point leaves.
 *
 * Leaves first, straight from the input to their final places in the output buffer (cfft_leaves.h),
 * then combine passes in place (cfft_combines.h) in the order of the tree (cfft_drivers.h). There
 * is no reordering pass, no allocation, no trigonometry: the tables are constants (cfft_tables.h).
 */
#include "cfft_pow2_conjpair_splitrad_c89_neon.h"

#include <cstdint>

#include "assertion/assertion.h"
#include "cfft_ends.h"
#include "cfft_kernels.h"
#include "cfft_small.h"

namespace {

using cfft::Direction;

constexpr char SourcePath[] =
    "functional/audio/libraries/dsplib/arm/cfft_pow2_conjpair_splitrad_c89_neon";

/** 32 for 0 */
int trailingZeroBits(int value) {
    return value == 0 ? 32 : __builtin_ctz(static_cast<unsigned int>(value));
}

/** Any logarithm may be asked about; an int holds no more than 2^30. */
bool isPowerOfTwo(int value, int logarithm) {
    return logarithm >= 0 && logarithm <= 30 && value == 1 << logarithm;
}

bool areApart(const float* x, const float* y, int floats) {
    const auto bytes = static_cast<uintptr_t>(floats) * sizeof(float);
    const auto xAt = (uintptr_t)x, yAt = (uintptr_t)y;
    return xAt <= yAt ? yAt - xAt >= bytes : xAt - yAt >= bytes;
}

}  // namespace

void cfft_pow2_conjpair_splitrad_c89(int N, int log2_N, const float* x, float* y) {
    PLATFORM_ASSERT(N <= FFT_MAX);
    PLATFORM_ASSERT_AS("N <= 0 || N == 1 << log2_N", N <= 0 || isPowerOfTwo(N, log2_N));
    PLATFORM_ASSERT((uintptr_t)x % 8 == 0);
    PLATFORM_ASSERT((uintptr_t)y % 8 == 0);
    if (N <= 0) return;
    if (N <= 16) return cfft::transformSmall<Direction::Forward>(N, x, y);
    cfft::forwardTransform(N, log2_N, x, y);
}

void cifft_pow2_conjpair_splitrad_c89(int N, int log2_N, const float* x, float* y) {
    PLATFORM_ASSERT(N <= FFT_MAX);
    PLATFORM_ASSERT_AS("N <= 0 || N == 1 << log2_N", N <= 0 || isPowerOfTwo(N, log2_N));
    PLATFORM_ASSERT((uintptr_t)x % 8 == 0);
    PLATFORM_ASSERT((uintptr_t)y % 8 == 0);
    if (N <= 0) return;
    if (N <= 16) return cfft::transformSmall<Direction::Inverse>(N, x, y);
    cfft::inverseTransform(N, log2_N, x, y);
}

void sp_fftSPxSP(int N, float* x, const float*, float* y, const unsigned char*, int, int, int) {
    cfft_pow2_conjpair_splitrad_c89(N, trailingZeroBits(N), x, y);
}

void sp_ifftSPxSP(int N, float* x, const float*, float* y, const unsigned char*, int, int, int) {
    cifft_pow2_conjpair_splitrad_c89(N, trailingZeroBits(N), x, y);
}

void sp_ifft_ends(const float* x, float* y, int wanted) {
    PLATFORM_ASSERT(wanted > 0 && wanted <= SP_IFFT_ENDS_MOST_WANTED);
    PLATFORM_ASSERT((uintptr_t)x % 8 == 0);
    PLATFORM_ASSERT((uintptr_t)y % 8 == 0);
    PLATFORM_ASSERT(areApart(x, y, 2 * FFT_MAX));
    cfft::inverseTransformEnds(x, y, cfft::wholeEndSteps(wanted));
}
