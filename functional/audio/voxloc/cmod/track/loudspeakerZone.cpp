#include "loudspeakerZone.h"

#include <algorithm>
#include <cmath>

#include "conversions.h"
#include "grids.h"
#include "pairGeometry.h"
#include "voxlocParts.h"

namespace voxloc {

LoudspeakerZone loudspeakerZone(float firstDistance, float secondDistance) {
    const bool firstIsNearer = firstDistance <= secondDistance;
    const float nearer = firstIsNearer ? firstDistance : secondDistance;
    const float farther = firstIsNearer ? secondDistance : firstDistance;
    float width = -0.104f + 0.107f * (farther / nearer);  // metres of path difference
    if (width > 0.05f) width = 0.05f;
    float gain = 0.4f * nearer;
    if (gain < 0.1f) gain = 0.1f;
    return {toInteger<std::uint16_t>(std::floor(0.5f + width * SPEED_FACTOR)),
            voxloc_distanceToSampleDelay(firstDistance - secondDistance), gain};
}

void attenuateLoudspeaker(const MicrophonePair& pair, float* correlation) {
    const int first = pair.loudspeakerLag - pair.loudspeakerHalfWidth;
    const int last = pair.loudspeakerLag + pair.loudspeakerHalfWidth;
    // Lags below 0 wrap to the end. Lags past the last one deliberately do not wrap to the start;
    // they end with the buffer.
    for (int lag = first; lag <= std::min(last, CorrelationBufferFloats - 1); ++lag) {
        correlation[lag < 0 ? lag + CorrelationLags : lag] *= pair.loudspeakerGain;
    }
}

}  // namespace voxloc
