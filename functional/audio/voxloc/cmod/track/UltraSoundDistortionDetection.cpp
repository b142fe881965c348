#include "UltraSoundDistortionDetection.h"

#include <cmath>
#include <cstdlib>

#include "assertion/assertion.h"
#include "grids.h"

namespace voxloc {

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

float bandPower(const float* spectrum, Band band) {
    float power = 0.0f;
    for (int b = band.firstBin; b <= band.lastBin; ++b) {
        power += spectrum[2 * b] * spectrum[2 * b] + spectrum[2 * b + 1] * spectrum[2 * b + 1];
    }
    return power;
}

void smoothLevels(const UltraSoundDetector& detector, const float* spectra, Band band,
                  float* level) {
    for (int c = 0; c < detector.channels; ++c) {
        const float power = bandPower(spectra + c * SpectrumFloats, band);
        level[c] += (power - level[c]) * detector.TimeSmoothingFactor;
    }
}

float decibels(float power) {
    constexpr float fullScale = 60.75550079345703f;  // dB
    return static_cast<float>(10.0 * std::log10(static_cast<double>(power)) -
                              static_cast<double>(fullScale));
}

int loudestChannel(const UltraSoundDetector& detector) {
    int loudest = 0;
    float level = 0.0f;
    for (int c = 0; c < detector.channels; ++c) {
        if (detector.UltraSoundLevel[c] > level) {
            level = detector.UltraSoundLevel[c];
            loudest = c;
        }
    }
    return loudest;
}

/** What an evaluation finds out about the loudest channel. */
struct Finding {
    int channel;
    float level, neighborLevel;  // dB
    bool tooHigh;
};

/** Logs when the condition starts and when it ends. */
void report(const Finding& found, const Log& log, bool& warningIssued) {
    if (found.tooHigh && !warningIssued) {
        logText(log,
                "Warning: Ultrasound level is too high, channel: %d ultrasound level: %3.1f "
                "neighborband level: %3.1f\n",
                found.channel, static_cast<double>(found.level),
                static_cast<double>(found.neighborLevel));
    } else if (!found.tooHigh && warningIssued) {
        logText(log, "Ultrasound level is ok, ultrasound level: %3.1f neighborband level: %3.1f\n",
                static_cast<double>(found.level), static_cast<double>(found.neighborLevel));
    }
    warningIssued = found.tooHigh;
}

Finding evaluate(UltraSoundDetector& detector) {
    const int channel = loudestChannel(detector);
    float level = decibels(detector.UltraSoundLevel[channel]);
    const float neighborLevel = decibels(detector.NeighborBandLevel[channel]);
    // A level that does not stand out above its neighbour band is broadband noise: it does not
    // replace the kept maximum.
    if (level > QuietLevel && level - neighborLevel < ProminentExcess) {
        level = detector.LastMaxUltraSoundLevel_dB;
    }
    detector.MaxUltraSoundLevel_dB = level;
    detector.LastMaxUltraSoundLevel_dB = level;
    return {channel, level, neighborLevel,
            level > TooHighLevel && level - neighborLevel > ProminentExcess};
}

/** Each evaluation starts its smoothing from zero. */
void restartSmoothing(UltraSoundDetector& detector) {
    detector.AccCount = 0;
    for (int c = 0; c < detector.channels; ++c) {
        detector.UltraSoundLevel[c] = 0.0f;
        detector.NeighborBandLevel[c] = 0.0f;
    }
}

float* allocateLevels(int channels) {
    return static_cast<float*>(std::calloc(static_cast<std::size_t>(channels), sizeof(float)));
}

}  // namespace

void allocateUltraSoundLevels(UltraSoundDetector& detector, int channels) {
    detector.channels = channels;
    detector.UltraSoundLevel = allocateLevels(channels);
    detector.NeighborBandLevel = allocateLevels(channels);
}

void resetUltraSoundDistortionDetector(UltraSoundDetector& detector) {
    restartSmoothing(detector);
    detector.TimeSmoothingFactor = 0.060586929f;
    detector.WarningIssued = false;
    detector.MaxUltraSoundLevel_dB = -100.0f;
    detector.LastMaxUltraSoundLevel_dB = -100.0f;
}

void initializeUltraSoundDistortionDetector(UltraSoundDetector& detector, int channels) {
    allocateUltraSoundLevels(detector, channels);
    // These two lines are part of the report, wherever the checks stand.
    PLATFORM_ASSERT_AS_AT(38, "UltraSoundLevel", detector.UltraSoundLevel);
    PLATFORM_ASSERT_AS_AT(39, "NeighborBandLevel", detector.NeighborBandLevel);
    resetUltraSoundDistortionDetector(detector);
}

void destroyUltraSoundDistortionDetector(UltraSoundDetector& detector) {
    std::free(detector.UltraSoundLevel);
    std::free(detector.NeighborBandLevel);
}

void detectUltraSoundDistortion(UltraSoundDetector& detector, const Log& log, const float* spectra,
                                std::uint8_t* distorted) {
    *distorted = 0;
    smoothLevels(detector, spectra, UltraSoundBand, detector.UltraSoundLevel);
    smoothLevels(detector, spectra, NeighborBand, detector.NeighborBandLevel);
    ++detector.AccCount;
    if (detector.AccCount != FramesPerEvaluation) return;
    const Finding found = evaluate(detector);
    report(found, log, detector.WarningIssued);
    *distorted = found.tooHigh ? 1 : 0;
    restartSmoothing(detector);
}

}  // namespace voxloc
