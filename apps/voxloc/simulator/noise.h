/** Noise that falls by 3 dB an octave above 50 Hz. */
#ifndef VOXLOC_APP_SIMULATOR_NOISE_H
#define VOXLOC_APP_SIMULATOR_NOISE_H

#include <cstdint>
#include <vector>

#include "simulator/simulator.h"

/**
 * Noise from all directions alike, as the points hear it: between two of them the spectra go
 * together by sin(kd)/(kd), d their distance, k the wave number. Near walls it is another one; that
 * is left out.
 */
std::vector<std::vector<float>> diffuseNoise(const std::vector<Point>& points, std::size_t samples,
                                             std::uint64_t seed);

/** Noise of their own in that many channels. */
std::vector<std::vector<float>> independentNoise(std::size_t channels, std::size_t samples,
                                                 std::uint64_t seed);

#endif
