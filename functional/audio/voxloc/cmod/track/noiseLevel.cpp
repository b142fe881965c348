#include "noiseLevel.h"

#include <algorithm>
#include <cmath>

#include "conversions.h"
#include "noiseLevelKernels.h"

namespace voxloc {

namespace {

constexpr std::int16_t FramesFromBoot = 40;
constexpr std::int16_t ShortestStationarity = 20, LongestStationarity = 32;  // frames
constexpr float SilentBandLevel = 1e-34f;
constexpr float StationaryDeviation = 0.0625f;  // of the slow band level

constexpr float FastAdaptation = 0.0625f;      // per frame
constexpr float RisingAdaptation = 0x1p-22f;   // per frame
constexpr float SinkingAdaptation = 0x1p-18f;  // per frame

void countFromBoot(float slowBandLevel, std::int16_t& framesLeft) {
    if (slowBandLevel <= SilentBandLevel) {
        framesLeft = FramesFromBoot;
    } else if (framesLeft > 0) {
        --framesLeft;
    }
}

/** Frames that the level must be stationary: 3 per dB by which it exceeds the estimate. */
std::int16_t durationLimit(const BandLevels& band) {
    const float excess = 20.0f * std::log10(band.fast / (band.noise + SilentBandLevel));  // dB
    const auto frames = toInteger<std::int16_t>(3.0f * std::floor(excess));
    return std::min(std::max(frames, ShortestStationarity), LongestStationarity);
}

/** True when the estimate may follow the slow average quickly. */
bool judgeStationarity(NoiseLevelEstimator& estimator, const BandLevels& band) {
    bool fast = false;
    if (std::fabs(band.slow - estimator.NoiseAmplification) < band.slow * StationaryDeviation) {
        const std::int16_t limit = durationLimit(band);
        estimator.CurrentNoiseDurationLimit = limit;
        estimator.NoiseDetectionCounter =
            static_cast<std::int16_t>(std::min(estimator.NoiseDetectionCounter + 1, int{limit}));
        fast = limit <= estimator.NoiseDetectionCounter;
    } else {
        estimator.NoiseDetectionCounter = 0;
        estimator.CurrentNoiseDurationLimit = ShortestStationarity;
        estimator.NoiseAmplification = band.slow;
    }
    return fast || band.noise > band.slow;
}

}  // namespace

void intializeNoiseLevel(NoiseLevelEstimator& estimator) {
    std::fill_n(estimator.NoiseLevel, SpectrumBins, 0.0f);
    std::fill_n(estimator.FastLevel, SpectrumBins, 0.0f);
    std::fill_n(estimator.SlowLevel, SpectrumBins, 0.0f);
    estimator.NoiseDetectionCounter = 0;
    estimator.NoiseAmplification = 0.0f;
    estimator.CurrentNoiseDurationLimit = 0;
    estimator.NoiseCountFromBoot = FramesFromBoot;
}

void setNoiseLevelChannels(NoiseLevelEstimator& estimator, std::uint32_t first,
                           std::uint32_t second) {
    estimator.NoiseLevelChannel1 = first;
    estimator.NoiseLevelChannel2 = second;
}

const float* calculateNoiseLevel(NoiseLevelEstimator& estimator, const float* spectra,
                                 unsigned int freeze) {
    if (freeze != 0) return estimator.NoiseLevel;
    trackLevels(spectra + estimator.NoiseLevelChannel1 * SpectrumFloats,
                spectra + estimator.NoiseLevelChannel2 * SpectrumFloats, estimator.FastLevel,
                estimator.SlowLevel);
    const BandLevels band = sumBand(estimator.FastLevel, estimator.SlowLevel, estimator.NoiseLevel);
    countFromBoot(band.slow, estimator.NoiseCountFromBoot);
    const bool fast = judgeStationarity(estimator, band);
    if (fast || estimator.NoiseCountFromBoot != 0) {
        adapt(estimator.SlowLevel, FastAdaptation, FastAdaptation, estimator.NoiseLevel);
    } else {
        adapt(estimator.SlowLevel, RisingAdaptation, SinkingAdaptation, estimator.NoiseLevel);
    }
    return estimator.NoiseLevel;
}

}  // namespace voxloc
