/**
 * Decimation by 2, 3 and 4 on vectors of sixteen lanes, in the order of additions that
 * sp_fir_neon_kernels.h states.
 *
 * The outputs 4m, 4m+1, 4m+2 and 4m+3 are the four phases; a vector holds sixteen outputs of one
 * phase, whose windows lie Row = 4·Step samples apart. So the input is laid out anew first: sample
 * Row·m + q becomes stage[q][m], and the sample that lies `position` behind the first window of
 * each output of phase 0 is one load. All four phases use that load, each with a coefficient of its
 * own: phase p begins p·Step positions later.
 */
#ifndef DSPLIB_X86_SP_FIR_PHASES_H
#define DSPLIB_X86_SP_FIR_PHASES_H

#include "dsplib/arm/sp_fir_neon_kernels.h"

namespace sp_fir {
inline namespace SP_SIMD_TARGET {

/** Outputs of a block: sixteen of each phase. */
constexpr int PhasesOutputs = 64;

template <int Step>
struct Phases {
    static constexpr int Row = 4 * Step;
    static constexpr int StageFloats = 4096;  // 16 KiB of stack
    static constexpr int MostBlocks = 8;      // of one stage; more gain nothing
    /** Positions before this one are those at which some phases have not begun, and a few more. */
    static constexpr int Begun = (3 * Step + 3) / 4 * 4;
    static_assert(Begun <= Row, "within the first row");

    /** Rows behind those of the outputs that their windows, or loads for nothing, reach into. */
    static constexpr int rowsOfTaps(int nh) { return (nh + 3 * Step + 6) / Row + 1; }
};

/** Lays `rows` rows, sixteen at a time, out as columns; samples behind `available` read as zeros.
 */
template <int Step>
inline void stageRows(const float* x, std::ptrdiff_t available, float* stage, int rows) {
    constexpr int Row = Phases<Step>::Row;
    alignas(64) float padded[16 * Row];
    for (int m = 0; m < rows; m += 16, available -= 16 * Row, x += 16 * Row) {
        const float* from = x;
        if (available < 16 * Row) {
            for (int i = 0; i < 16 * Row; ++i) padded[i] = i < available ? x[i] : 0.0f;
            from = padded;
        }
        for (int q = 0; q < Row; q += 4) {
            const simd::F32x16Four columns = simd::loadColumns(from + q, Row);
            float* const to = stage + q * rows + m;
            simd::store16(to, columns.a);
            simd::store16(to + rows, columns.b);
            simd::store16(to + 2 * rows, columns.c);
            simd::store16(to + 3 * rows, columns.d);
        }
    }
}

/** PhasesOutputs outputs of a filter of nh >= Begun taps; sum[p][k] belongs to positions 4n + k. */
template <int Step>
inline void phasesBlock(const float* stage, int rows, const float* h, float* y, int nh) {
    constexpr int Row = Phases<Step>::Row, Begun = Phases<Step>::Begun;
    simd::F32x16 sum[4][4];
    unrolled<4>([&](auto p) SP_FIR_INLINED {
        unrolled<4>([&](auto k) SP_FIR_INLINED { sum[p][k] = simd::splat16(-0.0f); });
    });
    const auto add = [&](auto p, auto k, simd::F32x16 samples, const float* tap) SP_FIR_INLINED {
        sum[p][k] = simd::mulAdd(sum[p][k], samples, simd::splat16(tap[-p * Step]));
    };

    unrolled<Begun>([&](auto position) SP_FIR_INLINED {
        constexpr int K = position % 4;
        const simd::F32x16 samples = simd::inRegister(simd::load16(stage + position * rows));
        unrolled<4>([&](auto p) SP_FIR_INLINED {
            if constexpr (position >= p * Step) {
                add(p, std::integral_constant<int, K>{}, samples, h + position);
            }
        });
    });

    int q = Begun % Row;
    const float* from = stage + q * rows + Begun / Row;
    const auto advance = [&]() SP_FIR_INLINED {
        q += 4;
        from += 4 * rows;
        if (q == Row) {
            q = 0;
            from += 1 - Row * rows;
        }
    };
    const float* tap = h + Begun;
    const int whole = nh / 4 * 4, left = nh - whole;
    for (; tap < h + whole; tap += 4) {
        // Nothing known of tap: coefficients would be kept from round to round in single lanes, and
        // spreading one over a register takes the time of an addition where a load of it takes
        // none.
        __asm__("" : "+r"(tap));
        unrolled<4>([&](auto k) SP_FIR_INLINED {
            const simd::F32x16 samples = simd::inRegister(simd::load16(from + k * rows));
            unrolled<4>([&](auto p) SP_FIR_INLINED { add(p, k, samples, tap + k); });
        });
        advance();
    }

    // The last taps of each phase: of those at most three that make no whole four, `left` are real.
    unrolled<(3 * Step + 6) / 4>([&](auto group) SP_FIR_INLINED {
        unrolled<4>([&](auto k) SP_FIR_INLINED {
            const simd::F32x16 samples = simd::inRegister(simd::load16(from + k * rows));
            unrolled<4>([&](auto p) SP_FIR_INLINED {
                constexpr int Behind = 4 * group + k - p * Step;
                if constexpr (Behind < 0) {
                    add(p, k, samples, tap + 4 * group + k);
                } else if constexpr (Behind < 3) {
                    if (Behind < left) add(p, k, samples, tap + 4 * group + k);
                }
            });
        });
        advance();
    });

    simd::F32x16 output[4];
    unrolled<4>([&](auto p) SP_FIR_INLINED {
        const auto s = [&](int r) SP_FIR_INLINED { return sum[p][(r + p * Step) % 4]; };
        output[p] = simd::add(simd::add(s(0), s(1)), simd::add(s(2), s(3)));
    });
    simd::storeColumns(y, {output[0], output[1], output[2], output[3]});
}

/** Whole blocks of a decimating filter; returns how many outputs it made. */
template <int Step>
inline int filterPhases(const float* x, const float* h, float* y, int nh, int outputs) {
    using Plan = Phases<Step>;
    if (nh < Plan::Begun || nh > Plan::StageFloats) return 0;
    constexpr int MostRows = Plan::StageFloats / Plan::Row / 16 * 16;
    const int fitting = (MostRows - Plan::rowsOfTaps(nh)) / 16;
    const int most = fitting < Plan::MostBlocks ? fitting : Plan::MostBlocks;
    if (most < 1) return 0;
    alignas(64) float stage[Plan::StageFloats];
    int m = 0;
    while (outputs - m >= PhasesOutputs) {
        const int left = (outputs - m) / PhasesOutputs, blocks = left < most ? left : most;
        const int rows = (16 * blocks + Plan::rowsOfTaps(nh) + 15) / 16 * 16;
        const std::ptrdiff_t available = std::ptrdiff_t{outputs - 1 - m} * Step + nh;
        stageRows<Step>(x + std::ptrdiff_t{m} * Step, available, stage, rows);
        for (int b = 0; b < blocks; ++b, m += PhasesOutputs) {
            phasesBlock<Step>(stage + 16 * b, rows, h, y + m, nh);
        }
    }
    return m;
}

}  // namespace SP_SIMD_TARGET
}  // namespace sp_fir

#endif
