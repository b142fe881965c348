/**
 * The vector kernels of the FIR engine that take any number of taps: outputs side by side for what
 * a block filter has left over and for long filters, taps side by side for single outputs
 * and decimation. sp_fir_neon_blocks.h has the kernels for whole blocks of few taps.
 *
 * Every output of the engine, whatever kernel computes it, is
 *
 *     (s0 + s1) + (s2 + s3),    s_r = h[r]·x[r] + h[r+4]·x[r+4] + h[r+8]·x[r+8] + ...
 *
 * with the terms of each s_r added in that order. The four sums are four lanes where a kernel walks
 * the taps of one output, and four vectors where it walks the outputs of one tap. So an output does
 * not depend, down to its last bit, on its place in a block, on how a stream is cut into blocks or
 * on decimation. A sum without taps counts as -0, the one value whose addition changes nothing.
 */
#ifndef DSPLIB_SP_FIR_NEON_KERNELS_H
#define DSPLIB_SP_FIR_NEON_KERNELS_H

#include <cstddef>
#include <utility>

#include "dsplib/simd/simd.h"

namespace sp_fir {
inline namespace SP_SIMD_TARGET {

using simd::F32x4;

/** For the bodies handed to unrolled(): one left as a call would send its vectors through memory.
 */
#define SP_FIR_INLINED __attribute__((always_inline))

template <class Function, int... Index>
[[gnu::always_inline]] inline void callWithEach(Function function,
                                                std::integer_sequence<int, Index...>) {
    (function(std::integral_constant<int, Index>{}), ...);
}

/** function(0) ... function(Count-1) with constant arguments, so arrays indexed by them stay in
 *  registers whatever a compiler thinks of unrolling. */
template <int Count, class Function>
[[gnu::always_inline]] inline void unrolled(Function function) {
    callWithEach(function, std::make_integer_sequence<int, Count>{});
}

/** Up to four values copied to an aligned place and padded, so that nothing is read behind them. */
inline F32x4 loadPadded(const float* from, int count, float padding) {
    alignas(16) float padded[4];
    for (int i = 0; i < 4; ++i) padded[i] = i < count ? from[i] : padding;
    return simd::load4(padded);
}

/** Four values of which the first `count` are kept; a vector's work where four may be read. */
inline F32x4 loadMasked(const float* from, int count, float padding) {
    alignas(16) static constexpr float Places[4] = {0.0f, 1.0f, 2.0f, 3.0f};
    return simd::selectLess(simd::load4(Places), simd::splat4(static_cast<float>(count)),
                            simd::load4(from), simd::splat4(padding));
}

// --- Outputs side by side -----------------------------------------------------------------------

/** The four sums of 4·Vectors successive outputs. */
template <int Vectors>
struct SumsOfOutputs {
    F32x4 sum[4][Vectors];
};

template <int Vectors>
inline SumsOfOutputs<Vectors> emptySums() {
    SumsOfOutputs<Vectors> sums;
    unrolled<4>([&](auto r) SP_FIR_INLINED {
        unrolled<Vectors>([&](auto v) SP_FIR_INLINED { sums.sum[r][v] = simd::splat4(-0.0f); });
    });
    return sums;
}

/** Sums kept in memory, those of one r after those of another at a stride in floats. */
template <int Vectors>
inline SumsOfOutputs<Vectors> loadSums(const float* from, int stride) {
    SumsOfOutputs<Vectors> sums;
    unrolled<4>([&](auto r) SP_FIR_INLINED {
        unrolled<Vectors>([&](auto v) SP_FIR_INLINED {
            sums.sum[r][v] = simd::load4(from + r * stride + 4 * v);
        });
    });
    return sums;
}

template <int Vectors>
inline void storeSums(float* to, int stride, const SumsOfOutputs<Vectors>& sums) {
    unrolled<4>([&](auto r) SP_FIR_INLINED {
        unrolled<Vectors>(
            [&](auto v) SP_FIR_INLINED { simd::store4(to + r * stride + 4 * v, sums.sum[r][v]); });
    });
}

/** Adds tap r of a group of four, for r < 4, to every output. */
template <int Tap, int Vectors>
[[gnu::always_inline]] inline void addTap(SumsOfOutputs<Vectors>& sums, const float* x,
                                          F32x4 coefficients) {
    unrolled<Vectors>([&](auto v) SP_FIR_INLINED {
        sums.sum[Tap][v] =
            simd::mulAddLane<Tap>(sums.sum[Tap][v], simd::load4(x + 4 * v + Tap), coefficients);
    });
}

/**
 * Adds `taps` taps, counted from a multiple of four. Reads h[0 .. taps-1] and
 * x[0 .. taps+4·Vectors-2], which are the windows of its outputs and no more. The coefficients of
 * the next group are on their way while the current one is multiplied.
 */
template <int Vectors>
inline void addTaps(SumsOfOutputs<Vectors>& sums, const float* x, const float* h, int taps) {
    if (taps >= 4) {
        F32x4 coefficients = simd::load4(h);
        for (; taps >= 8; taps -= 4) {
            h += 4;
            const F32x4 next = simd::load4(h);
            unrolled<4>([&](auto r) SP_FIR_INLINED { addTap<r>(sums, x, coefficients); });
            x += 4;
            coefficients = next;
        }
        unrolled<4>([&](auto r) SP_FIR_INLINED { addTap<r>(sums, x, coefficients); });
        x += 4;
        h += 4;
        taps -= 4;
    }
    if (taps == 0) return;
    const F32x4 coefficients = loadPadded(h, taps, 0.0f);
    addTap<0>(sums, x, coefficients);
    if (taps > 1) addTap<1>(sums, x, coefficients);
    if (taps > 2) addTap<2>(sums, x, coefficients);
}

template <int Vectors>
inline void storeOutputs(float* y, const SumsOfOutputs<Vectors>& sums) {
    unrolled<Vectors>([&](auto v) SP_FIR_INLINED {
        simd::store4(y + 4 * v, simd::add(simd::add(sums.sum[0][v], sums.sum[1][v]),
                                          simd::add(sums.sum[2][v], sums.sum[3][v])));
    });
}

// --- Taps side by side --------------------------------------------------------------------------

/** The four sums of one output in the lanes of a vector, for Outputs outputs. */
template <int Outputs>
struct SumsInLanes {
    F32x4 sum[Outputs];
};

template <int Outputs>
inline SumsInLanes<Outputs> emptyLanes() {
    SumsInLanes<Outputs> sums;
    unrolled<Outputs>([&](auto m) SP_FIR_INLINED { sums.sum[m] = simd::splat4(-0.0f); });
    return sums;
}

/**
 * Adds `taps` taps, counted from a multiple of four, to outputs whose windows lie `step` samples
 * apart. Reads h[0 .. taps-1] and x[m·step .. m·step+taps-1]. In the last group both sides are
 * padded, the samples with -0, so that the missing taps add 0·(-0) = -0: neither a stranger's NaN
 * nor a change of sign.
 */
template <int Outputs>
inline void addTaps(SumsInLanes<Outputs>& sums, const float* x, std::ptrdiff_t step, const float* h,
                    int taps) {
    for (; taps >= 4; taps -= 4, x += 4, h += 4) {
        const F32x4 coefficients = simd::load4(h);
        unrolled<Outputs>([&](auto m) SP_FIR_INLINED {
            sums.sum[m] = simd::mulAdd(sums.sum[m], coefficients, simd::load4(x + m * step));
        });
    }
    if (taps == 0) return;
    const F32x4 coefficients = loadPadded(h, taps, 0.0f);
    unrolled<Outputs>([&](auto m) SP_FIR_INLINED {
        sums.sum[m] =
            simd::mulAdd(sums.sum[m], coefficients, loadPadded(x + m * step, taps, -0.0f));
    });
}

/** Adds a last group of fewer than four taps where four samples may be read: many times faster. */
template <int Outputs>
inline void addMaskedTaps(SumsInLanes<Outputs>& sums, const float* x, std::ptrdiff_t step,
                          F32x4 padded, int taps) {
    unrolled<Outputs>([&](auto m) SP_FIR_INLINED {
        sums.sum[m] = simd::mulAdd(sums.sum[m], padded, loadMasked(x + m * step, taps, -0.0f));
    });
}

inline void storeOutputs(float* y, const SumsInLanes<1>& sums) {
    *y = simd::sumLanes(sums.sum[0]);
}

template <int Outputs>
inline void storeOutputs(float* y, const SumsInLanes<Outputs>& sums) {
    static_assert(Outputs % 4 == 0, "a vector of outputs at a time");
    unrolled<Outputs / 4>([&](auto q) SP_FIR_INLINED {
        const F32x4* four = sums.sum + 4 * q;
        simd::store4(y + 4 * q, simd::sumLanesOfFour(four[0], four[1], four[2], four[3]));
    });
}

}  // namespace SP_SIMD_TARGET
}  // namespace sp_fir

#endif
