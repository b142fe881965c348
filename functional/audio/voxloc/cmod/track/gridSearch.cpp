#include "gridSearch.h"

#include <cmath>

#include "grids.h"

namespace voxloc {

namespace {

constexpr float LowestFloat = -3.4028235e38f;
constexpr float RowsPerPoint = 0.004405286f;  // 1/227, one row holds all azimuths
constexpr float FlatTolerance = 1e-7f;        // of the summed correlation

int rowOf(int point) {
    return static_cast<int>(std::floor(static_cast<float>(point) * RowsPerPoint));
}

}  // namespace

float gather(const float* correlation, const std::int16_t* lags, int points, bool isFirst,
             float* sum) {
    float largest = LowestFloat;
    for (int i = 0; i < points; ++i) {
        const float value = correlation[lags[i]];
        sum[i] = isFirst ? value : sum[i] + value;
        if (value > largest) largest = value;
    }
    return largest;
}

int firstMaximum(const float* sum, int points) {
    int index = 0;
    float largest = LowestFloat;
    for (int i = 0; i < points; ++i) {
        if (sum[i] > largest) {
            largest = sum[i];
            index = i;
        }
    }
    return index;
}

RangeRows flatRangeRows(const float* azimuthRangeSum, int peak) {
    RangeRows rows = {rowOf(peak), rowOf(peak)};
    for (int j = peak + AzimuthCount; j < AzimuthRangePoints; j += AzimuthCount) {
        if (std::fabs(azimuthRangeSum[j] - azimuthRangeSum[peak]) > FlatTolerance) break;
        rows.last = rowOf(j);
    }
    return rows;
}

}  // namespace voxloc
