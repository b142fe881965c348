#include "realFft.h"

#include <cmath>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "dsplib/sp_fir_neon.h"
#include "realFftSplit.h"
#include "voxlocParts.h"

namespace voxloc {

// clang-format off
const unsigned char BitReverseTable[64] = {
    0, 32, 16, 48,  8, 40, 24, 56,  4, 36, 20, 52, 12, 44, 28, 60,
    2, 34, 18, 50, 10, 42, 26, 58,  6, 38, 22, 54, 14, 46, 30, 62,
    1, 33, 17, 49,  9, 41, 25, 57,  5, 37, 21, 53, 13, 45, 29, 61,
    3, 35, 19, 51, 11, 43, 27, 59,  7, 39, 23, 55, 15, 47, 31, 63,
};
// clang-format on

}  // namespace voxloc

void voxloc_generateTwiddleFactors(float* table, int n) {
    constexpr double multiplesOfTwoPi[] = {6.283185307179586, 12.566370614359172,
                                           18.84955592153876};
    if (n < 4) return;
    const double perPoint = 1.0 / n;
    for (int stride = 1; stride <= n / 4; stride *= 4) {
        for (int i = 0; i < n / 4; i += stride) {
            for (const double angle : multiplesOfTwoPi) {
                *table++ = static_cast<float>(std::cos(perPoint * angle * i));
                *table++ = static_cast<float>(std::sin(perPoint * angle * i));
            }
        }
    }
}

void voxloc_generateAbTables(float* aTable, float* bTable, int n) {
    if (n <= 0) return;
    const double step = 6.283185307179586 / (2.0 * n);
    for (int k = 0; k < n; ++k) {
        const double sine = std::sin(k * step);
        const double cosine = std::cos(k * step);
        aTable[2 * k] = static_cast<float>((1.0 - sine) * 0.5);
        aTable[2 * k + 1] = static_cast<float>(cosine * -0.5);
        bTable[2 * k] = static_cast<float>(sine * 0.5 + 0.5);
        bTable[2 * k + 1] = static_cast<float>(cosine * 0.5);
    }
}

void voxloc_fft(int n, float* input, const float* twiddles, float* output, int radix) {
    sp_fftSPxSP(n, input, twiddles, output, voxloc::BitReverseTable, radix, 0, n);
}

void voxloc_ifft(int n, float* input, const float* twiddles, float* output, int radix) {
    sp_ifftSPxSP(n, input, twiddles, output, voxloc::BitReverseTable, radix, 0, n);
}

void voxloc_realFft(int size, float* input, const float* twiddles, float* result, int radix,
                    const float* aTable, const float* bTable, float* work) {
    if (size < 0) return;
    const int half = size / 2;
    voxloc_fft(half, input, twiddles, work, radix);
    voxloc::splitFft(half, work, aTable, bTable, result);
}

void voxloc_realIfft(int size, float* spectrum, const float* twiddles, float* scratch, int radix,
                     const float* aTable, const float* bTable) {
    if (size < 0) return;
    const int half = size / 2;
    voxloc::splitIfft(half, spectrum, aTable, bTable, scratch);
    voxloc_ifft(half, scratch, twiddles, spectrum, radix);
}

void voxloc_firFilter(const float* input, const float* coefficients, float* output, int taps,
                      int outputs) {
    sp_fir_gen(input, coefficients, output, taps, outputs);
}
