/**
 * The lags of a pair's correlation where the loudspeaker's direct sound peaks, and their damping.
 * No state.
 */
#ifndef VOXLOC_LOUDSPEAKER_ZONE_H
#define VOXLOC_LOUDSPEAKER_ZONE_H

#include <cstdint>

#include "microphonePair.h"

namespace voxloc {

struct LoudspeakerZone {
    std::uint16_t halfWidth;  // lags
    std::int16_t lag;
    float gain;
};

/** A zone that changes nothing. */
constexpr LoudspeakerZone NoLoudspeakerZone = {0, 0, 1.0f};

/** The zone of a pair whose microphones are that far (metres) from the loudspeaker. */
LoudspeakerZone loudspeakerZone(float firstDistance, float secondDistance);

/** Damps the pair's zone of a correlation of CorrelationBufferFloats floats. */
void attenuateLoudspeaker(const MicrophonePair& pair, float* correlation);

}  // namespace voxloc

#endif
