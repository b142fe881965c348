/**
 * From positions to lags: pure functions, no state. The public ones are in voxloc.h.
 */
#ifndef VOXLOC_PAIR_GEOMETRY_H
#define VOXLOC_PAIR_GEOMETRY_H

#include <cstdint>

#include "voxloc.h"

namespace voxloc {

/** The lags of a pair's correlation where the loudspeaker's direct sound is damped. */
struct LoudspeakerZone {
    std::uint16_t halfWidth;  // lags
    std::int16_t lag;
    float gain;
};

/** The zone of a pair whose microphones are that far (metres) from the loudspeaker. */
LoudspeakerZone loudspeakerZone(float firstDistance, float secondDistance);

/** Lag of a source at `point` for the pair of microphones. */
std::int16_t lagOfPoint(const Position& point, const Position& first, const Position& second);

}  // namespace voxloc

#endif
