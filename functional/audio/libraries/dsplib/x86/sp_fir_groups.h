/**
 * Decimation by 2 and 4 on vectors of eight and sixteen lanes, in the order of additions that
 * sp_fir_neon_kernels.h states.
 *
 * Each group of four lanes holds the four sums of one output, as in the kernels of four lanes.
 * Windows that lie four samples apart follow each other in one load: those of all outputs when
 * every fourth is kept, and those of every other output when every second is. Such vectors overlap
 * as those of filters that do not decimate, and their loads are shared in the same way.
 */
#ifndef DSPLIB_X86_SP_FIR_GROUPS_H
#define DSPLIB_X86_SP_FIR_GROUPS_H

#include "sp_fir_wide.h"

namespace sp_fir {
inline namespace SP_SIMD_TARGET {

/** Four coefficients at a time, one for each lane of a group. */
template <class Width>
struct Grouped : Width {
    static typename Width::Type coefficient(const float* four) {
        return Width::loadCoefficients(four);
    }
};

/** The last group of nh % 4 taps, the samples behind them as -0 and their coefficients as 0. */
template <class Width, int Vectors>
[[gnu::always_inline]] inline void addLastGroup(const float* x, const float* h, int taps,
                                                typename Width::Type (&sum)[Vectors]) {
    alignas(16) float padded[4] = {}, places[4] = {0.0f, 1.0f, 2.0f, 3.0f};
    for (int i = 0; i < taps; ++i) padded[i] = h[i];
    const auto coefficients = Width::loadCoefficients(padded);
    const auto lanes = Width::loadCoefficients(places);
    const auto end = Width::splat(static_cast<float>(taps)), none = Width::splat(-0.0f);
    unrolled<Vectors>([&](auto v) SP_FIR_INLINED {
        const auto samples = Width::load(x + Width::Count * v);
        sum[v] = simd::mulAdd(sum[v], simd::selectLess(lanes, end, samples, none), coefficients);
    });
}

/**
 * The sums of Count/4·Vectors outputs whose windows lie four samples apart. Reads as many samples
 * as their windows have, rounded up to four taps.
 */
template <class Width>
inline void sumGroups(const float* x, const float* h, int nh, float* sums) {
    constexpr int Vectors = Width::Vectors, Most = Width::MostTerms;
    const int groups = nh / 4, last = nh % 4;
    typename Width::Type sum[Vectors];
    int done = 0;
    if (groups >= Most) {
        addTerms<Grouped<Width>, Vectors, Most, true>(x, h, sum);
        done = Most;
    } else {
        unrolled<Vectors>([&](auto v) SP_FIR_INLINED { sum[v] = Width::splat(-0.0f); });
    }
    addAllTerms<Grouped<Width>, Vectors>(x + 4 * done, h + 4 * done, groups - done, sum);
    if (last > 0) addLastGroup<Width>(x + 4 * groups, h + 4 * groups, last, sum);
    unrolled<Vectors>([&](auto v)
                          SP_FIR_INLINED { Width::store(sums + Width::Count * v, sum[v]); });
}

/** The Count outputs of four vectors of sums. */
template <class Width>
[[gnu::always_inline]] inline typename Width::Type joinGroups(const float* sums) {
    const auto pairs = [&](const float* two) SP_FIR_INLINED {
        const auto a = Width::load(two), b = Width::load(two + Width::Count);
        return simd::add(simd::evenLanes(a, b), simd::oddLanes(a, b));
    };
    const auto ab = pairs(sums), cd = pairs(sums + 2 * Width::Count);
    return simd::columnsOfGroups(simd::add(simd::evenLanes(ab, cd), simd::oddLanes(ab, cd)));
}

/** Whole blocks of a filter that keeps every Step-th output; returns how many outputs it made. */
template <class Width, int Step>
inline int filterGroups(const float* x, const float* h, float* y, int nh, int outputs) {
    constexpr int Count = Width::Count, Floats = Count * Width::Vectors, Outputs = Floats / Step;
    const int readBehind = (4 - nh % 4) % 4, needed = (readBehind + Step - 1) / Step;
    alignas(64) float sums[4 / Step][Floats];
    int m = 0;
    for (; outputs - m >= Outputs + needed; m += Outputs) {
        for (int i = 0; i < 4 / Step; ++i) {
            sumGroups<Width>(x + std::ptrdiff_t{m + i} * Step, h, nh, sums[i]);
        }
        float* to = y + m;
        for (int at = 0; at < Floats; at += 4 * Count, to += 4 * Count / Step) {
            if constexpr (Step == 4) {
                Width::store(to, joinGroups<Width>(sums[0] + at));
            } else {
                const auto odd = joinGroups<Width>(sums[1] + at);
                simd::storePairs(to, joinGroups<Width>(sums[0] + at), odd);
            }
        }
    }
    return m;
}

#if SP_SIMD_WIDEST >= 16
using GroupsWidth = Avx512Lanes;
#else
using GroupsWidth = AvxLanes;
#endif

}  // namespace SP_SIMD_TARGET
}  // namespace sp_fir

#endif
