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

#include "dsplib/arm/sp_fir_neon_blocks.h"
#include "dsplib/arm/sp_fir_neon_internal.h"

namespace sp_fir {
inline namespace SP_SIMD_TARGET {

struct SseLanes : FourLanes {
    static constexpr int Vectors = BlockVectors;  // of outputs in a wide block
    static constexpr int Fronts = 1;
    static constexpr int MostTerms = 4;          // of one sum at a time
    static constexpr int MostTapsAtOnce = 12;    // a register each, of 16
    static constexpr int MostTapsUnrolled = 24;  // in halves
    static Type coefficient(const float* from) { return splat(*from); }
};

#if SP_SIMD_WIDEST >= 8
template <int VectorsOfABlock, int FrontsAtOnce>
struct EightLanes : simd::Lanes<8> {
    static constexpr int Count = 8;
    static constexpr int Vectors = VectorsOfABlock;
    static constexpr int Fronts = FrontsAtOnce;
    static constexpr int MostTerms = 4;
    static constexpr int MostTapsAtOnce = 16;
    static constexpr int MostTapsUnrolled = 16;
    static Type load(const float* from) { return simd::inRegister(simd::load8(from)); }
    static Type coefficient(const float* from) { return splat(*from); }
    static Type loadCoefficients(const float* four) { return simd::load4Twice(four); }
};
using AvxLanes = EightLanes<BlockVectors, 2>;
using BlockWidth = AvxLanes;
#else
using BlockWidth = SseLanes;
#endif

#if SP_SIMD_WIDEST >= 16
/** With AVX-512 there are 32 registers, of eight lanes, too. */
using AvxLanesInMore = EightLanes<16, 1>;

struct Avx512Lanes : simd::Lanes<16> {
    static constexpr int Count = 16;
    static constexpr int Vectors = 16;
    static constexpr int Fronts = 1;
    static constexpr int MostTerms = 8;
    static Type load(const float* from) { return simd::inRegister(simd::load16(from)); }
    static Type coefficient(const float* from) { return splat(*from); }
    static Type loadCoefficients(const float* four) { return simd::load4FourTimes(four); }
};
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
    // Nothing known of x: loads of the terms before would be kept for these, and spilled for it.
    __asm__("" : "+r"(x));
    typename Width::Type coefficient[Taps];
    unrolled<Taps>([&](auto k) SP_FIR_INLINED { coefficient[k] = Width::coefficient(h + 4 * k); });
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

/** Adds `terms` terms to one of the four sums. */
template <class Width, int Vectors>
[[gnu::always_inline]] inline void addAllTerms(const float* x, const float* h, int terms,
                                               typename Width::Type (&sum)[Vectors]) {
    constexpr int Most = Width::MostTerms;
    for (; terms >= Most; terms -= Most, x += 4 * Most, h += 4 * Most) {
        addTerms<Width, Vectors, Most, false>(x, h, sum);
    }
    if constexpr (Most > 4) {
        if ((terms & 4) != 0) {
            addTerms<Width, Vectors, 4, false>(x, h, sum);
            x += 16;
            h += 16;
        }
    }
    if ((terms & 2) != 0) {
        addTerms<Width, Vectors, 2, false>(x, h, sum);
        x += 8;
        h += 8;
    }
    if ((terms & 1) != 0) addTerms<Width, Vectors, 1, false>(x, h, sum);
}

/** All `terms` >= MostTerms terms of one of the four sums. */
template <class Width, int Vectors>
[[gnu::always_inline]] inline void sumTerms(const float* x, const float* h, int terms,
                                            typename Width::Type (&sum)[Vectors]) {
    constexpr int Most = Width::MostTerms;
    addTerms<Width, Vectors, Most, true>(x, h, sum);
    addAllTerms<Width, Vectors>(x + 4 * Most, h + 4 * Most, terms - Most, sum);
}

/**
 * Width::Vectors vectors of outputs, nh >= 4·MostTerms taps, one of the four sums at a time. Reads
 * x[0 .. outputs+nh-2] before it writes.
 */
template <class Width>
[[gnu::always_inline]] inline void wideBlock(const float* x, const float* h, float* y, int nh) {
    constexpr int Vectors = Width::Vectors;
    alignas(64) float front[Width::Count * Vectors], back[Width::Count * Vectors];
    for (int r = 0; r < 4; ++r) {
        typename Width::Type sum[Vectors];
        sumTerms<Width>(x + r, h + r, (nh - r + 3) / 4, sum);
        const auto withEach = [&](auto join) SP_FIR_INLINED {
            unrolled<Vectors>([&](auto v) SP_FIR_INLINED { join(Width::Count * v, sum[v]); });
        };
        if (r == 0) {
            withEach([&](int at, auto s) SP_FIR_INLINED { Width::store(front + at, s); });
        } else if (r == 1) {
            withEach([&](int at, auto s) SP_FIR_INLINED {
                Width::store(front + at, simd::add(Width::load(front + at), s));
            });
        } else if (r == 2) {
            withEach([&](int at, auto s) SP_FIR_INLINED { Width::store(back + at, s); });
        } else {
            withEach([&](int at, auto s) SP_FIR_INLINED {
                const auto secondPair = simd::add(Width::load(back + at), s);
                Width::store(y + at, simd::add(Width::load(front + at), secondPair));
            });
        }
    }
}

/** Whole wide blocks of a filter of nh >= 16 taps. Returns how many outputs it made. */
template <class Width>
inline int wideFilter(const float* x, const float* h, float* y, int nh, int ny) {
    constexpr int Outputs = Width::Count * Width::Vectors;
    int i = 0;
    for (; ny - i >= Outputs; i += Outputs) wideBlock<Width>(x + i, h, y + i, nh);
    return i;
}

/** sp_fir_add_taps on the widest vectors */
inline void addTapsWide(const float* x, const float* h, float* sums, int taps) {
    using Width = BlockWidth;
    constexpr int Outputs = Width::Count * BlockVectors;
    static_assert(SummedOutputs % Outputs == 0);
    for (int r = 0; r < 4; ++r) {
        for (int i = 0; i < SummedOutputs; i += Outputs) {
            float* const at = sums + r * SummedOutputs + i;
            typename Width::Type sum[BlockVectors];
            unrolled<BlockVectors>(
                [&](auto v) SP_FIR_INLINED { sum[v] = Width::load(at + Width::Count * v); });
            addAllTerms<Width>(x + i + r, h + r, (taps - r + 3) / 4, sum);
            unrolled<BlockVectors>(
                [&](auto v) SP_FIR_INLINED { Width::store(at + Width::Count * v, sum[v]); });
        }
    }
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
        const int left = (ny - i) / Width::Count, vectors = left < RunVectors ? left : RunVectors;
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

/** The wide blocks that suit nh >= 16 taps; returns how many outputs they made. */
inline int wideBlocks(const float* x, const float* h, float* y, int nh, int ny) {
    int made = 0;
#if SP_SIMD_WIDEST >= 16
    made = nh >= 4 * Avx512Lanes::MostTerms ? wideFilter<Avx512Lanes>(x, h, y, nh, ny)
                                            : wideFilter<AvxLanesInMore>(x, h, y, nh, ny);
#endif
    made += wideFilter<BlockWidth>(x + made, h, y + made, nh, ny - made);
    return made;
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
        return first + wideBlocks(x + first, h, y + first, Taps, ny - first);
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
    int made = wideBlocks(x, h, y, nh, ny);
    if constexpr (BlockWidth::Count > 4) {
        made += wideFilter<SseLanes>(x + made, h, y + made, nh, ny - made);
    }
    return made;
}

}  // namespace SP_SIMD_TARGET
}  // namespace sp_fir

#endif
