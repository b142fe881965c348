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

struct NoiseLevelEstimator {
    alignas(64) float NoiseLevel[SpectrumBins];  // the estimate
    alignas(64) float FastLevel[SpectrumBins];
    alignas(64) float SlowLevel[SpectrumBins];
    std::int16_t NoiseDetectionCounter;      // frames counted towards the duration limit
    std::int16_t CurrentNoiseDurationLimit;  // stationary frames before fast adaptation
    float NoiseAmplification;                // band sum when the level last changed
    std::int16_t NoiseCountFromBoot = 40;    // frames of start-up fast adaptation left
    std::uint32_t NoiseLevelChannel1 = 1;    // the channels to analyse
    std::uint32_t NoiseLevelChannel2 = 2;
};

/** Starts again; the channels stay. */
void intializeNoiseLevel(NoiseLevelEstimator& estimator);

/** The two channels to analyse, indices into the spectrum buffer. */
void setNoiseLevelChannels(NoiseLevelEstimator& estimator, std::uint32_t first,
                           std::uint32_t second);

/**
 * Takes in one frame of spectra (a slot of SpectrumFloats per channel) unless `freeze` is set.
 * Returns the estimate, SpectrumBins linear amplitudes, valid until the next call.
 */
const float* calculateNoiseLevel(NoiseLevelEstimator& estimator, const float* spectra,
                                 unsigned int freeze);

}  // namespace voxloc

#endif
