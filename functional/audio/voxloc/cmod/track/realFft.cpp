#include "realFft.h"

#include <cmath>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "dsplib/simd/simdLanes.h"
#include "dsplib/sp_fir_neon.h"
#include "voxloc.h"

namespace voxloc {

// clang-format off
const unsigned char BitReverseTable[64] = {
    0, 32, 16, 48,  8, 40, 24, 56,  4, 36, 20, 52, 12, 44, 28, 60,
    2, 34, 18, 50, 10, 42, 26, 58,  6, 38, 22, 54, 14, 46, 30, 62,
    1, 33, 17, 49,  9, 41, 25, 57,  5, 37, 21, 53, 13, 45, 29, 61,
    3, 35, 19, 51, 11, 43, 27, 59,  7, 39, 23, 55, 15, 47, 31, 63,
};
// clang-format on

namespace {

enum class Direction { Forward, Inverse };

/** Real and imaginary parts of L points. */
template <int L>
struct Points {
    simd::F32<L> re, im;
};

template <int L>
Points<L> loadPoints(const float* from) {
    const auto points = simd::Lanes<L>::loadPairs(from);
    return {points.first, points.second};
}

/** The L points that end with the one at `last`, last first. */
template <int L>
Points<L> loadPointsBackwards(const float* last) {
    const Points<L> forwards = loadPoints<L>(last - 2 * (L - 1));
    return {simd::reversed(forwards.re), simd::reversed(forwards.im)};
}

/** Z·A + conj(Y)·B forward, Z·conj(A) + conj(Y)·conj(B) inverse; summed from left to right. */
template <Direction D, int L>
Points<L> splitPoints(Points<L> z, Points<L> y, Points<L> a, Points<L> b) {
    const simd::F32<L> re = simd::mul(z.re, a.re), im = simd::mul(z.im, a.re);
    if constexpr (D == Direction::Forward) {
        return {simd::mulAdd(simd::mulAdd(simd::mulSub(re, z.im, a.im), y.re, b.re), y.im, b.im),
                simd::mulSub(simd::mulAdd(simd::mulAdd(im, z.re, a.im), y.re, b.im), y.im, b.re)};
    } else {
        return {simd::mulSub(simd::mulAdd(simd::mulAdd(re, z.im, a.im), y.re, b.re), y.im, b.im),
                simd::mulSub(simd::mulSub(simd::mulSub(im, z.re, a.im), y.re, b.im), y.im, b.re)};
    }
}

/**
 * Points 0 to n-1. A step of L from k on reads the points k to k+L-1 of x and of both tables and,
 * backwards, the points n-k to n-k-L+1 of x: never past the n+1 points that x has.
 */
template <Direction D>
void split(int n, const float* x, const float* aTable, const float* bTable, float* out) {
    simd::forLanes(0, n, [=](int k, auto width) {
        constexpr int L = decltype(width)::value;
        const Points<L> g =
            splitPoints<D, L>(loadPoints<L>(x + 2 * k), loadPointsBackwards<L>(x + 2 * (n - k)),
                              loadPoints<L>(aTable + 2 * k), loadPoints<L>(bTable + 2 * k));
        simd::storePairs(out + 2 * k, g.re, g.im);
    });
}

}  // namespace

// A split is a pass over memory of its own. Points k and n-k, which it needs together, leave the
// forward transform's last pass at different times; and the inverse transform writes over the very
// spectrum that the split reads, so that the split has to be through before.

void splitFft(int n, float* x, const float* aTable, const float* bTable, float* out) {
    x[2 * n] = x[0];
    x[2 * n + 1] = x[1];
    split<Direction::Forward>(n, x, aTable, bTable, out);
    out[2 * n] = x[0] - x[1];
    out[2 * n + 1] = 0.0f;
}

void splitIfft(int n, const float* x, const float* aTable, const float* bTable, float* out) {
    split<Direction::Inverse>(n, x, aTable, bTable, out);
}

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
