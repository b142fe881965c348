/**
 * The search for the talker: correlations summed over the grids of directions and ranges, and the
 * first maximum of each sum. No state of its own.
 */
#ifndef VOXLOC_GRID_SEARCH_H
#define VOXLOC_GRID_SEARCH_H

#include <cstdint>

namespace voxloc {

/**
 * Reads the correlation at each point's lag into the sum (the first pair overwrites, the others
 * add) and returns the largest value read.
 */
float gather(const float* correlation, const std::int16_t* lags, int points, bool isFirst,
             float* sum);

/** Index of the first maximum; 0 when no value is larger than the lowest float. */
int firstMaximum(const float* sum, int points);

/** Grid rows where the sum stays as high as at `peak`, down the same azimuth column. */
struct RangeRows {
    int first, last;
};
RangeRows flatRangeRows(const float* azimuthRangeSum, int peak);

}  // namespace voxloc

#endif
