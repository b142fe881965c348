/**
 * The vector kernels of the FIR engine for whole blocks of outputs, as wide as the machine, in the
 * order of additions that sp_fir_neon_kernels.h states.
 */
#ifndef DSPLIB_SP_FIR_NEON_BLOCKS_H
#define DSPLIB_SP_FIR_NEON_BLOCKS_H

#include <algorithm>

#include "dsplib/simd/simdLanes.h"
#include "sp_fir_neon_kernels.h"

namespace sp_fir {

struct FourLanes : simd::Lanes<4> {
    static constexpr int Count = 4;
    static constexpr int Fronts = 1;
#if defined(__SSE2__) && !defined(SP_SIMD_SCALAR)
    static constexpr int MostTapsAtOnce = 12;    // a register each, of 16
    static constexpr int MostTapsUnrolled = 24;  // in halves
#else
    static constexpr int MostTapsAtOnce = 16;  // four to a register
    static constexpr int MostTapsUnrolled = 16;
#endif
    static Type loadCoefficients(const float* four) {
        return simd::load4(four);
    }
};

#ifdef DSPLIB_SIMD_SIMD_AVX_H
struct EightLanes : simd::Lanes<8> {
    static constexpr int Count = 8;
    static constexpr int Fronts = 2;
    static constexpr int MostTapsAtOnce = 16;
    static constexpr int MostTapsUnrolled = 16;
    static Type load(const float* from) { return simd::inRegister(simd::load8(from)); }
    static Type loadCoefficients(const float* four) { return simd::load4Twice(four); }
};
using BlockWidth = EightLanes;
#else
using BlockWidth = FourLanes;
#endif

/** Vectors of outputs in one iteration of a block kernel. */
constexpr int BlockVectors = 8;

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
[[gnu::always_inline]] inline void unrolledBlock(
    const float* x, const typename Width::Type (&coefficients)[(Taps + 3) / 4], float* y) {
    unrolled<Vectors>([&](auto v) SP_FIR_INLINED {
        typename Width::Type sum[4];
        unrolled<Taps>([&](auto j) SP_FIR_INLINED {
            constexpr int r = j % 4;
            const auto samples = Width::load(x + Width::Count * v + j);
            if constexpr (j < 4) {
                sum[r] = simd::mulLane<r>(samples, coefficients[0]);
            } else {
                sum[r] = simd::mulAddLane<r>(sum[r], samples, coefficients[j / 4]);
            }
        });
        Width::store(y + Width::Count * v, joinSums<Taps>(sum));
    });
}

/** Adds the two sums 2·Pair and 2·Pair+1 of one vector of outputs. */
template <class Width, int Taps, int Pair>
[[gnu::always_inline]] inline typename Width::Type pairOfSums(
    const float* x, const typename Width::Type (&coefficients)[(Taps + 3) / 4]) {
    typename Width::Type sum[2];
    unrolled<Taps>([&](auto j) SP_FIR_INLINED {
        constexpr int r = j % 4;
        if constexpr (r / 2 == Pair) {
            const auto samples = Width::load(x + j);
            if constexpr (j < 4) {
                sum[r % 2] = simd::mulLane<r>(samples, coefficients[0]);
            } else {
                sum[r % 2] = simd::mulAddLane<r>(sum[r % 2], samples, coefficients[j / 4]);
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
[[gnu::always_inline]] inline int filterInHalves(
    const float* x, const typename Width::Type (&coefficients)[(Taps + 3) / 4], float* y, int ny) {
    constexpr int RunVectors = 32;
    int i = 0;
    while (ny - i >= Width::Count) {
        const int vectors = std::min(RunVectors, (ny - i) / Width::Count);
        typename Width::Type front[RunVectors];
        for (int v = 0; v < vectors; ++v) {
            front[v] = pairOfSums<Width, Taps, 0>(x + i + Width::Count * v, coefficients);
        }
        for (int v = 0; v < vectors; ++v) {
            const int at = i + Width::Count * v;
            Width::store(y + at,
                         simd::add(front[v], pairOfSums<Width, Taps, 1>(x + at, coefficients)));
        }
        i += Width::Count * vectors;
    }
    return i;
}

/**
 * A filter of Taps taps with its coefficients in registers: 8 vectors of outputs an iteration (32
 * outputs of four lanes), 4 once before the loop when the number of fours is odd. Returns how many
 * outputs it made; fewer than four vectors are left.
 */
template <class Width, int Taps>
inline int unrolledFilter(const float* x, const float* h, float* y, int ny) {
    constexpr int Groups = (Taps + 3) / 4;
    typename Width::Type coefficients[Groups];
    alignas(16) float padded[4 * Groups] = {};
    for (int j = 0; j < Taps; ++j) padded[j] = h[j];
    unrolled<Groups>(
        [&](auto g) SP_FIR_INLINED { coefficients[g] = Width::loadCoefficients(padded + 4 * g); });

    if constexpr (Taps > Width::MostTapsAtOnce) {
        return filterInHalves<Width, Taps>(x, coefficients, y, ny);
    } else {
        constexpr int Half = Width::Count * BlockVectors / 2;
        int i = 0;
        if (ny / Half % 2 != 0) {
            unrolledBlock<Width, Taps, BlockVectors / 2>(x, coefficients, y);
            i = Half;
        }
        for (; ny - i >= 2 * Half; i += 2 * Half) {
            if constexpr (Width::Fronts > 1 && Taps == 16) {
                wideBlock<Width>(x + i, h, y + i, Taps);  // loads are what limits eight lanes here
            } else {
                unrolledBlock<Width, Taps, BlockVectors>(x + i, coefficients, y + i);
            }
        }
        return i;
    }
}

/** Whole wide blocks of a filter of nh >= 16 taps. Returns how many outputs it made. */
template <class Width>
inline int wideFilter(const float* x, const float* h, float* y, int nh, int ny) {
    constexpr int Outputs = Width::Count * BlockVectors;
    int i = 0;
    for (; ny - i >= Outputs; i += Outputs) wideBlock<Width>(x + i, h, y + i, nh);
    return i;
}

}  // namespace sp_fir

#endif
