#include "cfft_pow2_conjpair_splitrad_c89_neon.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "assertion.h"

namespace {

constexpr char SourcePath[] =
    "functional/audio/libraries/dsplib/arm/cfft_pow2_conjpair_splitrad_c89_neon";

struct Twiddles {
    std::array<float, FFT_MAX / 2> cosine, sine;
};

/** cos and sin of 2πk/FFT_MAX for the first half turn. */
const Twiddles Table = [] {
    Twiddles t;
    const double step = 2 * 3.14159265358979323846 / FFT_MAX;
    for (std::size_t k = 0; k < FFT_MAX / 2; ++k) {
        t.cosine[k] = static_cast<float>(std::cos(step * static_cast<double>(k)));
        t.sine[k] = static_cast<float>(std::sin(step * static_cast<double>(k)));
    }
    return t;
}();

std::size_t reverseBits(std::size_t value, int bits) {
    std::size_t reversed = 0;
    for (int b = 0; b < bits; ++b) reversed |= ((value >> b) & 1u) << (bits - 1 - b);
    return reversed;
}

/** Radix-2 decimation in time; `direction` is -1 for forward and +1 for inverse, `scale` per input. */
void transform(std::size_t n, int log2n, const float* x, float* y, float direction, float scale) {
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t j = reverseBits(i, log2n);
        y[2 * j] = x[2 * i] * scale;
        y[2 * j + 1] = x[2 * i + 1] * scale;
    }
    for (std::size_t half = 1; half < n; half *= 2) {
        const std::size_t stride = FFT_MAX / 2 / half;
        for (std::size_t start = 0; start < n; start += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                const float c = Table.cosine[k * stride];
                const float s = Table.sine[k * stride] * direction;
                float* a = y + 2 * (start + k);
                float* b = a + 2 * half;
                const float re = b[0] * c - b[1] * s;
                const float im = b[0] * s + b[1] * c;
                b[0] = a[0] - re;
                b[1] = a[1] - im;
                a[0] += re;
                a[1] += im;
            }
        }
    }
}

int trailingZeroBits(int value) {
    int bits = 0;
    while (bits < 32 && ((static_cast<std::uint32_t>(value) >> bits) & 1u) == 0) ++bits;
    return bits;
}

}  // namespace

void cfft_pow2_conjpair_splitrad_c89(int N, int log2_N, const float* x, float* y) {
    PLATFORM_ASSERT(N <= FFT_MAX);
    PLATFORM_ASSERT(N <= 0 || N == 1 << log2_N);
    PLATFORM_ASSERT((uintptr_t)x % 8 == 0);
    PLATFORM_ASSERT((uintptr_t)y % 8 == 0);
    if (N <= 0) return;
    transform(static_cast<std::size_t>(N), log2_N, x, y, -1.0f, 1.0f);
}

void cifft_pow2_conjpair_splitrad_c89(int N, int log2_N, const float* x, float* y) {
    PLATFORM_ASSERT(N <= FFT_MAX);
    PLATFORM_ASSERT(N <= 0 || N == 1 << log2_N);
    PLATFORM_ASSERT((uintptr_t)x % 8 == 0);
    PLATFORM_ASSERT((uintptr_t)y % 8 == 0);
    if (N <= 0) return;
    transform(static_cast<std::size_t>(N), log2_N, x, y, 1.0f, 1.0f / static_cast<float>(N));
}

void sp_fftSPxSP(int N, float* x, const float*, float* y, const unsigned char*, int, int, int) {
    cfft_pow2_conjpair_splitrad_c89(N, trailingZeroBits(N), x, y);
}

void sp_ifftSPxSP(int N, float* x, const float*, float* y, const unsigned char*, int, int, int) {
    cifft_pow2_conjpair_splitrad_c89(N, trailingZeroBits(N), x, y);
}
