/**
 * From a pair's smoothed cross-spectrum to its phase-transform correlation, upsampled four-fold, at
 * the lags that its microphones can have. No state; tables are handed in.
 */
#ifndef VOXLOC_PHASE_TRANSFORM_H
#define VOXLOC_PHASE_TRANSFORM_H

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "dsplib/simd/simdKernel.h"
#include "grids.h"
#include "pairGeometry.h"

namespace voxloc {

/** Up to that many lags at either end a correlation costs half: 0.928 m of path. */
constexpr int NearLags = 2 * SP_IFFT_ENDS_MOST_WANTED;  // two lags an element

/** The highest bin count that a pair may use, so that the upsampled spectrum is mostly zero. */
constexpr int MaxBinsInUse = SP_IFFT_ENDS_USED;
static_assert(HighestBin + 2 <= MaxBinsInUse, "pairs use more bins than the transform takes");

/**
 * Phase transform and inverse split in one pass: each bin from `begin` up to `end` is brought to
 * magnitude 1 (or to 0 where it is too small to have a phase), all other bins count as 0, and the
 * spectrum of CorrelationLags real lags that begins with these bins becomes the complex spectrum of
 * half the size.
 *
 * The highest bin of the short spectrum is never in use (end is at most MaxBinsInUse), so there is
 * nothing to be moved to the Nyquist place of the long one.
 *
 * @param crossSpectrum  in, complex bins
 * @param begin, end     bins in use, 1 <= begin <= end <= MaxBinsInUse
 * @param aTable,bTable  in, the split tables for CorrelationLags/2
 * @param out            out, CorrelationLags/2 complex values; those that are zero for every `end`
 *                       are not written
 */
SP_SIMD_KERNEL(whitenAndSplit, void(const float* crossSpectrum, int begin, int end,
                                    const float* aTable, const float* bTable, float* out));

/**
 * The correlation at its first and last `lags` lags; what the lags between hold means nothing.
 *
 * In unfused builds, and but for the sign of zeros, it is lag by lag what voxloc_realIfft of the
 * whole whitened spectrum gives. Up to NearLags it costs about half: the transform is told which
 * inputs are zero and which lags nobody reads.
 *
 * @param lags         2 to LargestReach, even; the fewer, the faster
 * @param scratch      CorrelationLags floats, overwritten
 * @param correlation  out, CorrelationLags floats
 */
SP_SIMD_KERNEL(correlate,
               void(const float* crossSpectrum, int begin, int end, int lags, const float* aTable,
                    const float* bTable, float* scratch, float* correlation));

}  // namespace voxloc

#endif
