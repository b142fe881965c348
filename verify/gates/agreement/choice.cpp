#include "choice.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "track/tracker.h"

namespace {

using namespace voxloc;

constexpr float FlatTolerance = 1e-7f;  // of the range's flat run

bool readsSameLags(const MicrophonePair* pairs, int count, int point1, int point2) {
    return std::all_of(pairs, pairs + count, [point1, point2](const MicrophonePair& pair) {
        return pair.lookupTable[point1] == pair.lookupTable[point2];
    });
}

int peakOf(const float* sum, int points) {
    return static_cast<int>(std::max_element(sum, sum + points) - sum);
}

float marginOfPeak(const float* sum, int points, int peak, const MicrophonePair* pairs, int count) {
    float margin = FLT_MAX;
    for (int i = 0; i < points; ++i) {
        const float distance = sum[peak] - sum[i];
        if (distance < margin && !readsSameLags(pairs, count, peak, i)) margin = distance;
    }
    return margin;
}

float marginOfRange(const Tracker& tracker, int peak) {
    const float* sum = tracker.AzimuthRangeResult;
    float margin = FLT_MAX;
    for (int j = peak + AzimuthCount; j < AzimuthRangePoints; j += AzimuthCount) {
        const float distance = std::fabs(sum[j] - sum[peak]);
        if (!readsSameLags(tracker.AzimuthPairs, tracker.NumberOfAzimuthPairs, peak, j)) {
            margin = std::min(margin, std::fabs(distance - FlatTolerance));
        }
        if (distance > FlatTolerance) break;
    }
    return margin;
}

}  // namespace

Choice choiceOfFrame(const voxloc::Tracker& tracker) {
    const int elevationPeak = peakOf(tracker.AzimuthElevationResult, AzimuthElevationPoints);
    const int azimuthPeak = peakOf(tracker.AzimuthRangeResult, AzimuthRangePoints);
    const Margins margins = {
        marginOfPeak(tracker.AzimuthElevationResult, AzimuthElevationPoints, elevationPeak,
                     tracker.ElevationPairs, tracker.NumberOfElevationPairs),
        marginOfPeak(tracker.AzimuthRangeResult, AzimuthRangePoints, azimuthPeak,
                     tracker.AzimuthPairs, tracker.NumberOfAzimuthPairs),
        marginOfRange(tracker, azimuthPeak)};
    return {elevationPeak / AzimuthCount, azimuthPeak % AzimuthCount, margins};
}
