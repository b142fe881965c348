#include "frequencyDomainVad.h"

#include "grids.h"

namespace voxloc {

namespace {

// Bins of 11.71875 Hz, both ends included.
constexpr int FirstFullBin = 8;                         // rumble below counts one hundredth
constexpr int LastBin = 1193;                           // 14 kHz
constexpr int FirstBandBin = 13, LastBandBin = 511;     // 150 Hz to 6 kHz
constexpr int FirstSpeechBin = 18, LastSpeechBin = 54;  // 210 to 630 Hz

constexpr float RumbleShare = 0.01f;
constexpr float SoundRatio = 1.3f;
constexpr float VoiceRatio = 1.1f;
constexpr std::int16_t FramesBeforeBurst = 6;
constexpr std::int16_t HangoverFrames = 34;

struct Powers {
    float total, band, noise, speech;
};

float powerOf(const float* bin1, const float* bin2) {
    return 0.5f *
           ((bin1[0] * bin1[0] + bin1[1] * bin1[1]) + (bin2[0] * bin2[0] + bin2[1] * bin2[1]));
}

Powers sumPowers(const float* spectrum1, const float* spectrum2, const float* noiseLevel) {
    Powers sum = {0.0f, 0.0f, 0.0f, 0.0f};
    for (int b = 0; b <= LastBin; ++b) {
        const float power = powerOf(spectrum1 + 2 * b, spectrum2 + 2 * b);
        sum.total += b < FirstFullBin ? RumbleShare * power : power;
        if (b >= FirstBandBin && b <= LastBandBin) {
            sum.band += power;
            sum.noise += noiseLevel[b] * noiseLevel[b];
        }
        if (b >= FirstSpeechBin && b <= LastSpeechBin) sum.speech += power;
    }
    return sum;
}

/**
 * Counts without a ceiling, deliberately: after 32,767 qualifying frames (23 minutes) the counter
 * turns negative, which ends the burst until a frame resets it.
 */
std::int16_t wrappingIncrement(std::int16_t counter) {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(counter) + 1u);
}

/** Counts the frame; true while it belongs to a burst of speech. */
bool countBurst(FrequencyDomainVad& detector, float ratio, const Powers& power) {
    if (!(ratio > VoiceRatio)) {
        detector.TemporalCount = 0;
        detector.BurstCount = 0;
        return false;
    }
    detector.TemporalCount = wrappingIncrement(detector.TemporalCount);
    if (detector.TemporalCount > FramesBeforeBurst && power.total < 2.0f * power.speech) {
        detector.BurstCount = wrappingIncrement(detector.BurstCount);
        return detector.BurstCount > 0;
    }
    detector.BurstCount = 0;
    return false;
}

bool decide(bool burst, std::int16_t& hangCount) {
    if (burst) {
        hangCount = HangoverFrames;
        return true;
    }
    if (hangCount > 0) {
        --hangCount;
        return true;
    }
    return false;
}

}  // namespace

void initializeFrequencyDomainActivityDetector(FrequencyDomainVad& detector) {
    detector.HangCount = 0;
    detector.BurstCount = 0;
    detector.TemporalCount = 0;
}

void setFrequencyDomainVadChannels(FrequencyDomainVad& detector, std::uint32_t first,
                                   std::uint32_t second) {
    detector.FdVadChannel1 = first;
    detector.FdVadChannel2 = second;
}

std::uint32_t detectFrequencyDomainActivity(FrequencyDomainVad& detector, const float* spectra,
                                            const float* noiseLevel, std::uint8_t* voice,
                                            std::uint8_t* sound) {
    *voice = 0;
    *sound = 0;
    const Powers power = sumPowers(spectra + detector.FdVadChannel1 * SpectrumFloats,
                                   spectra + detector.FdVadChannel2 * SpectrumFloats, noiseLevel);
    const float ratio = power.band / power.noise;
    if (ratio > SoundRatio) *sound = 1;
    *voice = decide(countBurst(detector, ratio, power), detector.HangCount) ? 1 : 0;
    return *voice;
}

}  // namespace voxloc
