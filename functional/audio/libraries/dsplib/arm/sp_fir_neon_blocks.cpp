/** The block filters behind the entry points: which kernel makes which outputs. */
#include "sp_fir_neon_blocks.h"

#include <cstddef>

#include "sp_fir_neon_internal.h"
#include "sp_fir_neon_kernels.h"
#ifdef SP_SIMD_X86
#include "dsplib/x86/sp_fir_wide.h"
#endif
#if SP_SIMD_WIDEST >= 8
#include "dsplib/x86/sp_fir_groups.h"
#endif
#if SP_SIMD_WIDEST >= 16
#include "dsplib/x86/sp_fir_phases.h"
#endif

namespace sp_fir {
namespace {

/** Passes of 4·Vectors outputs while there are so many. Returns the next output. */
template <int Vectors>
int passesOf(const float* x, const float* h, float* y, int nh, int ny, int i) {
    for (; ny - i >= 4 * Vectors; i += 4 * Vectors) {
        SumsOfOutputs<Vectors> sums = emptySums<Vectors>();
        addTaps(sums, x + i, h, nh);
        storeOutputs(y + i, sums);
    }
    return i;
}

/**
 * The decimating counterpart: `outputs` windows lie `step` samples apart. With a step of 1 it makes
 * the last outputs of a block; all else is for the public interface alone.
 */
template <int Outputs>
int decimatingPassesOf(const float* x, const float* h, float* y, int nh, int outputs, int step,
                       int m) {
    // Up to three samples behind a window are samples all the same, of windows that follow.
    const int whole = nh / 4 * 4, last = nh - whole;
    if (last > 0) {
        const F32x4 padded = loadPadded(h + whole, last, 0.0f);
        for (; outputs - m >= Outputs + 3; m += Outputs) {
            const float* const from = x + std::ptrdiff_t{m} * step;
            SumsInLanes<Outputs> sums = emptyLanes<Outputs>();
            addTaps(sums, from, step, h, whole);
            addMaskedTaps(sums, from + whole, step, padded, last);
            storeOutputs(y + m, sums);
        }
    }
    for (; outputs - m >= Outputs; m += Outputs) {
        SumsInLanes<Outputs> sums = emptyLanes<Outputs>();
        addTaps(sums, x + std::ptrdiff_t{m} * step, step, h, nh);
        storeOutputs(y + m, sums);
    }
    return m;
}

}  // namespace

void SP_SIMD_HERE::pipelined_unroll12x(const float* x, const float* h, float* y, int nh, int ny) {
    int i = passesOf<3>(x, h, y, nh, ny, 0);
    i = passesOf<1>(x, h, y, nh, ny, i);
    decimatingPassesOf<1>(x, h, y, nh, ny, 1, i);
}

void SP_SIMD_HERE::sp_fir_gen_(const float* x, const float* h, float* y, int nh, int ny) {
#ifdef SP_SIMD_X86
    const int made = filterWideBlocks(x, h, y, nh, ny);
#else
    const int made = filterBlocks(x, h, y, nh, ny);
#endif
    if (made < ny) pipelined_unroll12x(x + made, h, y + made, nh, ny - made);
}

void SP_SIMD_HERE::sp_fir_add_taps(const float* x, const float* h, float* sums, int taps) {
#ifdef SP_SIMD_X86
    addTapsWide(x, h, sums, taps);
#else
    for (int i = 0; i < SummedOutputs; i += 8) {
        SumsOfOutputs<2> eight = loadSums<2>(sums + i, SummedOutputs);
        addTaps(eight, x + i, h, taps);
        storeSums(sums + i, SummedOutputs, eight);
    }
#endif
}

void SP_SIMD_HERE::sp_fir_gen_downsample_(const float* x, const float* h, float* y, int nh, int n,
                                          int step) {
    const int outputs = (n - 1) / step + 1;
    int m = 0;
#if SP_SIMD_WIDEST >= 8
    if (step == 2) m = filterGroups<GroupsWidth, 2>(x, h, y, nh, outputs);
    if (step == 4) m = filterGroups<GroupsWidth, 4>(x, h, y, nh, outputs);
#endif
#if SP_SIMD_WIDEST >= 16
    if (step == 3) m = filterPhases<3>(x, h, y, nh, outputs);
#endif
    m = decimatingPassesOf<8>(x, h, y, nh, outputs, step, m);
    m = decimatingPassesOf<4>(x, h, y, nh, outputs, step, m);
    decimatingPassesOf<1>(x, h, y, nh, outputs, step, m);
}

}  // namespace sp_fir
