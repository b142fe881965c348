/**
 * Noise-level estimator: per bin, the amplitude of the room's background noise in two channels.
 *
 * A fast and a slow recursive average follow the bin amplitudes. While the level of the speech band
 * has been stationary for long enough, at start-up, or when the estimate is too high, the estimate
 * follows the slow average quickly; otherwise almost not at all.
 */
#ifndef VOXLOC_NOISE_LEVEL_H
#define VOXLOC_NOISE_LEVEL_H

#include <cstdint>

#include "grids.h"

namespace voxloc {

void intializeNoiseLevel();

/** The two channels to analyse, indices into the spectrum buffer. */
void setNoiseLevelChannels(std::uint32_t first, std::uint32_t second);

/**
 * Takes in one frame of spectra (a slot of SpectrumFloats per channel) unless `freeze` is set.
 * Returns the estimate, SpectrumBins linear amplitudes, valid until the next call.
 */
const float* calculateNoiseLevel(const float* spectra, unsigned int freeze);

// State, for white-box checks
extern float NoiseLevel[SpectrumBins];  // the estimate
extern float FastLevel[SpectrumBins];
extern float SlowLevel[SpectrumBins];
extern std::int16_t NoiseDetectionCounter;      // frames counted towards the duration limit
extern std::int16_t CurrentNoiseDurationLimit;  // stationary frames before fast adaptation
extern float NoiseAmplification;                // band sum when the level last changed
extern std::int16_t NoiseCountFromBoot;         // frames of start-up fast adaptation left
extern std::uint32_t NoiseLevelChannel1;
extern std::uint32_t NoiseLevelChannel2;

}  // namespace voxloc

#endif
