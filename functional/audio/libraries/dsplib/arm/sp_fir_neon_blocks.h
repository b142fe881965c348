/**
 * The vector kernels of the FIR engine for whole blocks of outputs and few taps, in the order of
 * additions that sp_fir_neon_kernels.h states. On ARM they are for the public interface alone: the
 * tracker's filters have 24 and 32 taps.
 */
#ifndef DSPLIB_SP_FIR_NEON_BLOCKS_H
#define DSPLIB_SP_FIR_NEON_BLOCKS_H

#include "dsplib/simd/simdLanes.h"
#include "sp_fir_neon_kernels.h"

namespace sp_fir {
inline namespace SP_SIMD_TARGET {

struct FourLanes : simd::Lanes<4> {
    static constexpr int Count = 4;
    static Type loadCoefficients(const float* four) { return simd::load4(four); }
};

/** Vectors of outputs in one iteration of a block kernel. */
constexpr int BlockVectors = 8;

/** Taps coefficients, four to a vector; the last vector is filled up with zeros. */
template <class Width, int Taps>
struct Coefficients {
    typename Width::Type group[(Taps + 3) / 4];
};

template <class Width, int Taps>
[[gnu::always_inline]] inline Coefficients<Width, Taps> loadTaps(const float* h) {
    constexpr int Groups = (Taps + 3) / 4;
    alignas(16) float padded[4 * Groups] = {};
    for (int j = 0; j < Taps; ++j) padded[j] = h[j];
    Coefficients<Width, Taps> taps;
    unrolled<Groups>(
        [&](auto g) SP_FIR_INLINED { taps.group[g] = Width::loadCoefficients(padded + 4 * g); });
    return taps;
}

/** The four sums joined, for Taps >= 1 taps. */
template <int Taps, class Vector>
[[gnu::always_inline]] inline Vector joinSums(const Vector (&sum)[4]) {
    if constexpr (Taps == 1) {
        return sum[0];
    } else if constexpr (Taps == 2) {
        return simd::add(sum[0], sum[1]);
    } else if constexpr (Taps == 3) {
        return simd::add(simd::add(sum[0], sum[1]), sum[2]);
    } else {
        return simd::add(simd::add(sum[0], sum[1]), simd::add(sum[2], sum[3]));
    }
}

/** Vectors vectors of outputs with all taps unrolled. Reads x[0 .. outputs+Taps-2]. */
template <class Width, int Taps, int Vectors>
[[gnu::always_inline]] inline void unrolledBlock(const float* x,
                                                 const Coefficients<Width, Taps>& taps, float* y) {
    unrolled<Vectors>([&](auto v) SP_FIR_INLINED {
        typename Width::Type sum[4];
        unrolled<Taps>([&](auto j) SP_FIR_INLINED {
            constexpr int r = j % 4;
            const auto samples = Width::load(x + Width::Count * v + j);
            if constexpr (j < 4) {
                sum[r] = simd::mulLane<r>(samples, taps.group[0]);
            } else {
                sum[r] = simd::mulAddLane<r>(sum[r], samples, taps.group[j / 4]);
            }
        });
        Width::store(y + Width::Count * v, joinSums<Taps>(sum));
    });
}

/**
 * A filter of Taps taps with its coefficients in registers: 8 vectors of outputs an iteration (32
 * outputs of four lanes), 4 once before the loop when the number of fours is odd. Returns how many
 * outputs it made; fewer than four vectors are left.
 */
template <class Width, int Taps>
inline int unrolledFilter(const float* x, const float* h, float* y, int ny) {
    const auto taps = loadTaps<Width, Taps>(h);
    constexpr int Half = Width::Count * BlockVectors / 2;
    int i = 0;
    if (ny / Half % 2 != 0) {
        unrolledBlock<Width, Taps, BlockVectors / 2>(x, taps, y);
        i = Half;
    }
    for (; ny - i >= 2 * Half; i += 2 * Half) {
        unrolledBlock<Width, Taps, BlockVectors>(x + i, taps, y + i);
    }
    return i;
}

/** function(nh as a constant) for nh = 1 + one of the indices, and its value; 0 for any other. */
template <class Function, int... Index>
inline int callWithTaps(int nh, Function function, std::integer_sequence<int, Index...>) {
    int made = 0;
    static_cast<void>(
        ((nh == 1 + Index && (made = function(std::integral_constant<int, 1 + Index>{}), true)) ||
         ...));
    return made;
}

/** Whole blocks of a filter of nh >= 1 taps, if so few; returns how many outputs it made. */
inline int filterBlocks(const float* x, const float* h, float* y, int nh, int ny) {
    constexpr int MostTapsUnrolled = 16;  // four to a register
    return callWithTaps(
        nh, [=](auto taps) { return unrolledFilter<FourLanes, taps>(x, h, y, ny); },
        std::make_integer_sequence<int, MostTapsUnrolled>{});
}

}  // namespace SP_SIMD_TARGET
}  // namespace sp_fir

#endif
