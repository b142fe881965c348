/**
 * From positions to lags: pure functions, no state. The public ones are in voxlocParts.h.
 */
#ifndef VOXLOC_PAIR_GEOMETRY_H
#define VOXLOC_PAIR_GEOMETRY_H

#include <cstdint>

#include "grids.h"
#include "voxlocParts.h"

namespace voxloc {

constexpr float SPEED_FACTOR = 551.7241f;   // lags per metre: 192,000 lags a second, 348 m/s
constexpr float HalfWavelength = 14.848f;   // bins·metres: 174 Hz·m in bins of 11.71875 Hz
constexpr std::uint16_t HighestBin = 1451;  // of every pair, about 17 kHz

/** Lags that a sound's path to two microphones can differ by, with room for rounding; even. */
int reachInLags(const Position& first, const Position& second);

/** The widest reach that lag tables can hold: beyond it the two ends of a correlation meet. */
constexpr int LargestReach = CorrelationLags / 2;  // lags

/** Microphones no farther apart than that have a reach within LargestReach. */
constexpr float LargestSpacing = static_cast<float>(LargestReach - 4) / SPEED_FACTOR;  // metres

/** Microphones that far apart have at least one bin to be compared in. */
constexpr float SmallestSpacing =
    HalfWavelength / static_cast<float>(HighestBin) + 1e-5f;  // metres

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
