/**
 * The parts of the FIR engine behind its public functions. Not installed; for the engine's own
 * files and its verification.
 */
#ifndef DSPLIB_SP_FIR_NEON_INTERNAL_H
#define DSPLIB_SP_FIR_NEON_INTERNAL_H

#include "dsplib/simd/simdKernel.h"

namespace sp_fir {

/** Block filter behind sp_fir_gen: nh >= 1, ny >= 1. */
SP_SIMD_KERNEL(sp_fir_gen_, void(const float* x, const float* h, float* y, int nh, int ny));

/**
 * Decimating block filter behind sp_fir_gen_downsample: nh >= 1, n >= 1, step >= 1. For the public
 * interface alone: a frame of the tracker filters whole blocks.
 */
SP_SIMD_KERNEL(sp_fir_gen_downsample_,
               void(const float* x, const float* h, float* y, int nh, int n, int step));

/** Block filter for any number of taps, 12 outputs a pass; nh >= 1, ny >= 0. */
SP_SIMD_KERNEL(pipelined_unroll12x, void(const float* x, const float* h, float* y, int nh, int ny));

/** Outputs whose sums sp_fir_add_taps adds to. */
constexpr int SummedOutputs = 64;

/**
 * Adds taps 0 to taps-1 to the sums of SummedOutputs successive outputs: sums[r·SummedOutputs + i]
 * is s_r of output i. More taps may follow if `taps` is a multiple of four. Reads h[0 .. taps-1]
 * and x[0 .. taps+SummedOutputs-2]. For stream filters of more than about 2000 taps.
 */
SP_SIMD_KERNEL(sp_fir_add_taps, void(const float* x, const float* h, float* sums, int taps));

/**
 * Stores n new samples in a delay line of nh and returns its new position; nh >= 1, n >= 1 and
 * 0 <= pos < nh. Reading circularly from the new position gives the nh-1 most recent samples,
 * oldest first; the slot before it holds the sample before those.
 */
int update_delay_line(const float* x, float* dl, int pos, int nh, int n);

/**
 * What a stream filter looks at: the nh-1 samples of history, oldest first, and behind them the n
 * new ones, as three runs of memory. Sample 0 is the oldest; output i of the block sees samples i
 * to i+nh-1.
 */
struct Window {
    const float* old;     ///< history from the position to the end of the delay line
    const float* recent;  ///< history from the start of the delay line
    const float* fresh;   ///< the new samples
    int oldEnd;           ///< samples [0, oldEnd) are in old
    int recentEnd;        ///< samples [oldEnd, recentEnd) are in recent; recentEnd = nh-1
    int freshEnd;         ///< samples [recentEnd, freshEnd) are in fresh
};

/** The window of a block of n samples on a delay line; nh >= 1, 0 <= pos < nh, n >= 1. */
Window windowOf(const float* x, const float* dl, int pos, int nh, int n);

/**
 * Stages len samples from sample `first` on where the window goes from one run to the next;
 * 0 where it has ended. len is 8 (two groups of four taps for one output) or 12 (for four).
 */
void init_overlap(float* overlap, int len, const Window& window, int first);

}  // namespace sp_fir

#endif
