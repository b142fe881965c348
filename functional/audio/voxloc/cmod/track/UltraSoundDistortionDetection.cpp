#include "UltraSoundDistortionDetection.h"

#include <cmath>
#include <cstdlib>

#include "assertion/assertion.h"
#include "console/eventlog.h"
#include "grids.h"
#include "voxloc.h"

namespace voxloc {

float* UltraSoundLevel;
float* NeighborBandLevel;
float TimeSmoothingFactor;
std::int16_t AccCount;
bool WarningIssued;
float MaxUltraSoundLevel_dB = -100.0f;
float LastMaxUltraSoundLevel_dB = -100.0f;

namespace {

constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/UltraSoundDistortionDetection";

struct Band {
    int firstBin, lastBin;  // of 11.71875 Hz, both included
};
constexpr Band UltraSoundBand = {1728, 1844};  // 20.25 to 21.6 kHz
constexpr Band NeighborBand = {1536, 1705};    // 18 to 20 kHz

constexpr std::int16_t FramesPerEvaluation = 20;
constexpr float QuietLevel = -60.0f;      // dB
constexpr float TooHighLevel = -25.0f;    // dB
constexpr float ProminentExcess = 15.0f;  // dB above the neighbour band

int channels() {
    return static_cast<int>(voxloc_getNumberOfChannels());
}

float bandPower(const float* spectrum, Band band) {
    float power = 0.0f;
    for (int b = band.firstBin; b <= band.lastBin; ++b) {
        power += spectrum[2 * b] * spectrum[2 * b] + spectrum[2 * b + 1] * spectrum[2 * b + 1];
    }
    return power;
}

void smoothLevels(const float* spectra, Band band, float* level) {
    for (int c = 0; c < channels(); ++c) {
        const float power = bandPower(spectra + c * SpectrumFloats, band);
        level[c] += (power - level[c]) * TimeSmoothingFactor;
    }
}

float decibels(float power) {
    constexpr float fullScale = 60.75550079345703f;  // dB
    return static_cast<float>(10.0 * std::log10(static_cast<double>(power)) -
                              static_cast<double>(fullScale));
}

int loudestChannel() {
    int loudest = 0;
    float level = 0.0f;
    for (int c = 0; c < channels(); ++c) {
        if (UltraSoundLevel[c] > level) {
            level = UltraSoundLevel[c];
            loudest = c;
        }
    }
    return loudest;
}

/** Logs when the condition starts and when it ends; returns it. */
bool report(bool tooHigh, int channel, float level, float neighborLevel) {
    if (tooHigh && !WarningIssued) {
        eventlog(
            "Warning: Ultrasound level is too high, channel: %d ultrasound level: %3.1f "
            "neighborband level: %3.1f\n",
            channel, static_cast<double>(level), static_cast<double>(neighborLevel));
    } else if (!tooHigh && WarningIssued) {
        eventlog("Ultrasound level is ok, ultrasound level: %3.1f neighborband level: %3.1f\n",
                 static_cast<double>(level), static_cast<double>(neighborLevel));
    }
    WarningIssued = tooHigh;
    return tooHigh;
}

bool evaluate() {
    const int channel = loudestChannel();
    float level = decibels(UltraSoundLevel[channel]);
    MaxUltraSoundLevel_dB = level;
    const float neighborLevel = decibels(NeighborBandLevel[channel]);
    // A level that does not stand out above its neighbour band is broadband noise: it does not
    // replace the kept maximum.
    if (level > QuietLevel && level - neighborLevel < ProminentExcess) {
        level = LastMaxUltraSoundLevel_dB;
        MaxUltraSoundLevel_dB = level;
    }
    LastMaxUltraSoundLevel_dB = level;
    return report(level > TooHighLevel && level - neighborLevel > ProminentExcess, channel, level,
                  neighborLevel);
}

/** Each evaluation starts its smoothing from zero. */
void restartSmoothing() {
    AccCount = 0;
    for (int c = 0; c < channels(); ++c) {
        UltraSoundLevel[c] = 0.0f;
        NeighborBandLevel[c] = 0.0f;
    }
}

}  // namespace

void initializeUltraSoundDistortionDetector() {
    UltraSoundLevel = static_cast<float*>(std::calloc(voxloc_getNumberOfChannels(), sizeof(float)));
    NeighborBandLevel =
        static_cast<float*>(std::calloc(voxloc_getNumberOfChannels(), sizeof(float)));
    TimeSmoothingFactor = 0.060586929f;
    AccCount = 0;
    WarningIssued = false;
    MaxUltraSoundLevel_dB = -100.0f;
    LastMaxUltraSoundLevel_dB = -100.0f;
    // These two lines are part of the report, wherever the checks stand.
    PLATFORM_ASSERT_AT(38, UltraSoundLevel);
    PLATFORM_ASSERT_AT(39, NeighborBandLevel);
}

void destroyUltraSoundDistortionDetector() {
    std::free(UltraSoundLevel);
    std::free(NeighborBandLevel);
}

void detectUltraSoundDistortion(const float* spectra, std::uint8_t* distorted) {
    *distorted = 0;
    smoothLevels(spectra, UltraSoundBand, UltraSoundLevel);
    smoothLevels(spectra, NeighborBand, NeighborBandLevel);
    ++AccCount;
    if (AccCount != FramesPerEvaluation) return;
    *distorted = evaluate() ? 1 : 0;
    restartSmoothing();
}

}  // namespace voxloc

float voxloc_getUltraSoundLevel(void) {
    return voxloc::MaxUltraSoundLevel_dB;
}
