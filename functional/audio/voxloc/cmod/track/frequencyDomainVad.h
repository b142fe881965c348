/**
 * Frequency-domain voice activity detector: speech-band power of two channels against the noise
 * level, with counters that turn the per-frame ratio into a steady decision with a hangover.
 */
#ifndef VOXLOC_FREQUENCY_DOMAIN_VAD_H
#define VOXLOC_FREQUENCY_DOMAIN_VAD_H

#include <cstdint>

namespace voxloc {

struct FrequencyDomainVad {
    std::uint32_t FdVadChannel1 = 1;  // the channels to analyse
    std::uint32_t FdVadChannel2 = 2;
    std::int16_t TemporalCount;  // consecutive frames above the voice ratio
    std::int16_t BurstCount;     // consecutive frames that qualified as a speech burst
    std::int16_t HangCount;      // frames of hangover left
};

/** Starts again; the channels stay. */
void initializeFrequencyDomainActivityDetector(FrequencyDomainVad& detector);

/** The two channels to analyse, indices into the spectrum buffer. */
void setFrequencyDomainVadChannels(FrequencyDomainVad& detector, std::uint32_t first,
                                   std::uint32_t second);

/**
 * Judges one frame of spectra (a slot of SpectrumFloats per channel) against the noise level
 * (SpectrumBins amplitudes). Writes 0 or 1 to voice and to sound; returns voice.
 */
std::uint32_t detectFrequencyDomainActivity(FrequencyDomainVad& detector, const float* spectra,
                                            const float* noiseLevel, std::uint8_t* voice,
                                            std::uint8_t* sound);

}  // namespace voxloc

#endif
