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

/** Lags that a sound's path to two microphones can differ by, with room for rounding; even. */
int reachInLags(const Position& first, const Position& second);

/** Sines and cosines of an angle grid. */
struct Directions {
    const float* sine;
    const float* cosine;
};

/**
 * A row of a pair's lag table: the lags of the sources at `count` azimuths, all at one elevation
 * (radians) and range (metres). Entry by entry what voxloc_sphericalToCartesian, the two distances
 * and voxloc_distanceToSampleDelay give; a NaN azimuth gives lag 0.
 */
void lagsOfRow(const Directions& azimuths, int count, float elevation, float range,
               const Position& first, const Position& second, std::int16_t* lags);

}  // namespace voxloc

#endif
