/**
 * The vector kernels of the FIR engine for whole blocks of outputs on x86, as wide as the machine
 * that the compiler was told of, in the order of additions that sp_fir_neon_kernels.h states.
 *
 * ARM multiplies by a lane; here each coefficient is splatted with an instruction of its own, which
 * pays over eight vectors of outputs and not over the three of the passes of 12. So there are wide
 * blocks for any number of taps, and other bounds for the unrolled ones.
 */
#ifndef DSPLIB_X86_SP_FIR_WIDE_H
#define DSPLIB_X86_SP_FIR_WIDE_H

#include <algorithm>

#include "dsplib/arm/sp_fir_neon_blocks.h"

namespace sp_fir {
inline namespace SP_SIMD_TARGET {

struct SseLanes : FourLanes {
    static constexpr int Fronts = 1;
    static constexpr int MostTapsAtOnce = 12;    // a register each, of 16
    static constexpr int MostTapsUnrolled = 24;  // in halves
};

#if SP_SIMD_WIDEST >= 8
struct AvxLanes : simd::Lanes<8> {
    static constexpr int Count = 8;
    static constexpr int Fronts = 2;
    static constexpr int MostTapsAtOnce = 16;
    static constexpr int MostTapsUnrolled = 16;
    static Type load(const float* from) { return simd::inRegister(simd::load8(from)); }
    static Type loadCoefficients(const float* four) { return simd::load4Twice(four); }
};
using BlockWidth = AvxLanes;
#else
using BlockWidth = SseLanes;
#endif

/**
 * Adds Taps terms to one of the four sums of Vectors vectors of outputs; x and h point at the
 * first of the terms, which lie four apart. Start: the sums have no terms yet. Reads h[0, 4, ..]
 * and x[0 .. Count·Vectors+4·(Taps-1)-1].
 *
 * Successive vectors overlap after every Count/4 terms, so a load serves several of them: the loop
 * walks the loads, and a front of vectors, each a term behind the one before, moves along. More
 * than one front at a time gives a fused operation of long latency more independent work.
 */
template <class Width, int Vectors, int Taps, bool Start>
[[gnu::always_inline]] inline void addTerms(const float* x, const float* h,
                                            typename Width::Type (&sum)[Vectors]) {
    constexpr int Stride = Width::Count / 4;
    constexpr int PerFront = Vectors / Width::Fronts;
    typename Width::Type coefficient[Taps];
    unrolled<Taps>([&](auto k) SP_FIR_INLINED { coefficient[k] = Width::splat(h[4 * k]); });
    unrolled<Stride*(PerFront - 1) + Taps>([&](auto at) SP_FIR_INLINED {
        unrolled<Width::Fronts>([&](auto front) SP_FIR_INLINED {
            const auto samples = Width::load(x + 4 * at + Width::Count * PerFront * front);
            unrolled<PerFront>([&](auto v) SP_FIR_INLINED {
                constexpr int k = at - Stride * v;
                constexpr int to = PerFront * front + v;
                if constexpr (Start && k == 0) {
                    sum[to] = simd::mul(samples, coefficient[k]);
                } else if constexpr (k >= 0 && k < Taps) {
                    sum[to] = simd::mulAdd(sum[to], samples, coefficient[k]);
                }
            });
        });
    });
}

/** All `terms` >= 4 terms of one of the four sums. */
template <class Width, int Vectors>
[[gnu::always_inline]] inline void sumTerms(const float* x, const float* h, int terms,
                                            typename Width::Type (&sum)[Vectors]) {
    addTerms<Width, Vectors, 4, true>(x, h, sum);
    for (terms -= 4, x += 16, h += 16; terms >= 4; terms -= 4, x += 16, h += 16) {
        addTerms<Width, Vectors, 4, false>(x, h, sum);
    }
    if ((terms & 2) != 0) {
        addTerms<Width, Vectors, 2, false>(x, h, sum);
        x += 8;
        h += 8;
    }
    if ((terms & 1) != 0) addTerms<Width, Vectors, 1, false>(x, h, sum);
}

/**
 * BlockVectors vectors of outputs, nh >= 16 taps, one of the four sums at a time. Reads
 * x[0 .. outputs+nh-2] before it writes.
 */
template <class Width>
[[gnu::always_inline]] inline void wideBlock(const float* x, const float* h, float* y, int nh) {
    typename Width::Type pair[2][BlockVectors];
    for (int p = 0; p < 2; ++p) {
        typename Width::Type even[BlockVectors];
        typename Width::Type odd[BlockVectors];
        const int first = 2 * p;  // s0 + s1, then s2 + s3
        sumTerms<Width>(x + first, h + first, (nh - first + 3) / 4, even);
        unrolled<BlockVectors>([&](auto v) SP_FIR_INLINED { pair[p][v] = even[v]; });
        sumTerms<Width>(x + first + 1, h + first + 1, (nh - first + 2) / 4, odd);
        unrolled<BlockVectors>([&](auto v)
                                   SP_FIR_INLINED { pair[p][v] = simd::add(pair[p][v], odd[v]); });
    }
    unrolled<BlockVectors>([&](auto v) SP_FIR_INLINED {
        Width::store(y + Width::Count * v, simd::add(pair[0][v], pair[1][v]));
    });
}

/** Whole wide blocks of a filter of nh >= 16 taps. Returns how many outputs it made. */
template <class Width>
inline int wideFilter(const float* x, const float* h, float* y, int nh, int ny) {
    constexpr int Outputs = Width::Count * BlockVectors;
    int i = 0;
    for (; ny - i >= Outputs; i += Outputs) wideBlock<Width>(x + i, h, y + i, nh);
    return i;
}

/** Adds the two sums 2·Pair and 2·Pair+1 of one vector of outputs. */
template <class Width, int Taps, int Pair>
[[gnu::always_inline]] inline typename Width::Type pairOfSums(
    const float* x, const Coefficients<Width, Taps>& taps) {
    typename Width::Type sum[2];
    unrolled<Taps>([&](auto j) SP_FIR_INLINED {
        constexpr int r = j % 4;
        if constexpr (r / 2 == Pair) {
            const auto samples = Width::load(x + j);
            if constexpr (j < 4) {
                sum[r % 2] = simd::mulLane<r>(samples, taps.group[0]);
            } else {
                sum[r % 2] = simd::mulAddLane<r>(sum[r % 2], samples, taps.group[j / 4]);
            }
        }
    });
    return simd::add(sum[0], sum[1]);
}

/**
 * For more taps than registers hold: half of the taps over a run of outputs, with their
 * coefficients in registers, then the other half. Returns how many outputs it made.
 */
template <class Width, int Taps>
[[gnu::always_inline]] inline int filterInHalves(const float* x,
                                                 const Coefficients<Width, Taps>& taps, float* y,
                                                 int ny) {
    constexpr int RunVectors = 32;
    int i = 0;
    while (ny - i >= Width::Count) {
        const int vectors = std::min(RunVectors, (ny - i) / Width::Count);
        typename Width::Type front[RunVectors];
        for (int v = 0; v < vectors; ++v) {
            front[v] = pairOfSums<Width, Taps, 0>(x + i + Width::Count * v, taps);
        }
        for (int v = 0; v < vectors; ++v) {
            const int at = i + Width::Count * v;
            Width::store(y + at, simd::add(front[v], pairOfSums<Width, Taps, 1>(x + at, taps)));
        }
        i += Width::Count * vectors;
    }
    return i;
}

/** A filter of Taps taps; returns how many outputs it made. Fewer than a half block is left. */
template <class Width, int Taps>
inline int filterOfTaps(const float* x, const float* h, float* y, int ny) {
    if constexpr (Taps > Width::MostTapsAtOnce) {
        return filterInHalves<Width, Taps>(x, loadTaps<Width, Taps>(h), y, ny);
    } else if constexpr (Width::Fronts > 1 && Taps == 16) {
        // Loads are what limits eight lanes here. An odd half block comes first.
        constexpr int Half = Width::Count * BlockVectors / 2;
        const int first = ny / Half % 2 * Half;
        if (first > 0) unrolledFilter<Width, Taps>(x, h, y, first);
        return first + wideFilter<Width>(x + first, h, y + first, Taps, ny - first);
    } else {
        return unrolledFilter<Width, Taps>(x, h, y, ny);
    }
}

/** Whole blocks of a filter of nh >= 1 taps; returns how many outputs it made. */
inline int filterWideBlocks(const float* x, const float* h, float* y, int nh, int ny) {
    constexpr int MostUnrolled = BlockWidth::MostTapsUnrolled;
    if (nh <= MostUnrolled) {
        return callWithTaps(
            nh, [=](auto taps) { return filterOfTaps<BlockWidth, taps>(x, h, y, ny); },
            std::make_integer_sequence<int, MostUnrolled>{});
    }
    int made = wideFilter<BlockWidth>(x, h, y, nh, ny);
    if constexpr (BlockWidth::Count > 4) {
        made += wideFilter<SseLanes>(x + made, h, y + made, nh, ny - made);
    }
    return made;
}

}  // namespace SP_SIMD_TARGET
}  // namespace sp_fir

#endif
