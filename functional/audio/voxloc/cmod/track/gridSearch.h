/**
 * The search for the talker: correlations summed over the grids of directions and ranges, and the
 * first maximum of each sum. No state of its own.
 */
#ifndef VOXLOC_GRID_SEARCH_H
#define VOXLOC_GRID_SEARCH_H

#include <cstdint>

#include "dsplib/simd/simdKernel.h"
#include "voxloc.h"

namespace voxloc {

/** The most pairs that one map sums. */
constexpr int MaxPairsPerMap = VOXLOC_MAX_PAIRS;

/** Floats past the largest lag that the search may read, and ignores: wide vectors take windows. */
constexpr int GatherWindow = 64;

/** What one pair adds to a map. */
struct PairContribution {
    const float* correlation;  // readable for GatherWindow floats past the largest lag
    const std::int16_t* lags;  // of each grid point
};

/**
 * Reads each pair's correlation at each grid point's lag and sums them, in the order of the pairs.
 *
 * One pass over the grid reads all pairs: the sum of a point is built in a register and written
 * once.
 *
 * @param pairs    in, `count` contributions, 1 to MaxPairsPerMap
 * @param points   grid points, at least 16
 * @param sum      out, one float per grid point
 * @param largest  out, the largest value read of each pair
 * @return the largest sum
 */
SP_SIMD_KERNEL(sumCorrelations, float(const PairContribution* pairs, int count, int points,
                                      float* sum, float* largest));

/** The largest of `points` sums; the lowest float when none is larger. */
SP_SIMD_KERNEL(largestOf, float(const float* sum, int points));

/**
 * Index of the first of `points` sums that equals their maximum `largest`; 0 when that is the
 * lowest float.
 */
SP_SIMD_KERNEL(firstMaximum, int(const float* sum, int points, float largest));

/** Grid rows where the sum stays as high as at `peak`, down the same azimuth column. */
struct RangeRows {
    int first, last;
};
SP_SIMD_KERNEL(flatRangeRows, RangeRows(const float* azimuthRangeSum, int peak));

}  // namespace voxloc

#endif
