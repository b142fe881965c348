/**
 * Frequency-domain voice activity detector: speech-band power of two channels against the noise
 * level, with counters that turn the per-frame ratio into a steady decision with a hangover.
 */
#ifndef VOXLOC_FREQUENCY_DOMAIN_VAD_H
#define VOXLOC_FREQUENCY_DOMAIN_VAD_H

#include <cstdint>

namespace voxloc {

void initializeFrequencyDomainActivityDetector();

/** The two channels to analyse, indices into the spectrum buffer. */
void setFrequencyDomainVadChannels(std::uint32_t first, std::uint32_t second);

/**
 * Judges one frame of spectra (a slot of SpectrumFloats per channel) against the noise level
 * (SpectrumBins amplitudes). Writes 0 or 1 to voice and to sound; returns voice.
 */
std::uint32_t detectFrequencyDomainActivity(const float* spectra, const float* noiseLevel,
                                            std::uint8_t* voice, std::uint8_t* sound);

// State, for white-box checks
extern std::uint32_t FdVadChannel1;
extern std::uint32_t FdVadChannel2;
extern std::int16_t TemporalCount;  // consecutive frames above the voice ratio
extern std::int16_t BurstCount;     // consecutive frames that qualified as a speech burst
extern std::int16_t HangCount;      // frames of hangover left

}  // namespace voxloc

#endif
