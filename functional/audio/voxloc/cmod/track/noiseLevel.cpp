#include "noiseLevel.h"

#include <algorithm>
#include <cmath>

#include "conversions.h"
#include "dsplib/simd/simdLanes.h"

namespace voxloc {

namespace {

constexpr int FirstBandBin = 12, LastBandBin = 511;  // about 140 Hz to 6 kHz
constexpr std::int16_t FramesFromBoot = 40;
constexpr std::int16_t ShortestStationarity = 20, LongestStationarity = 32;  // frames
constexpr float SilentBandLevel = 1e-34f;
constexpr float StationaryDeviation = 0.0625f;  // of the slow band level

constexpr float FastAdaptation = 0.0625f;                     // per frame
constexpr float RisingAdaptation = 0x1p-22f;                  // per frame
constexpr float SinkingAdaptation = 0x1p-18f;                 // per frame
constexpr float FastRate = 0.31830987f, FastMemory = 0.75f;   // 1/π
constexpr float SlowRate = 0.15915494f, SlowMemory = 0.875f;  // 1/(2π)

struct BandLevels {
    float fast, slow, noise;
};

template <class Lanes>
inline auto amplitude(const float* bins) {
    const auto bin = Lanes::loadPairs(bins);
    return simd::squareRoot(
        simd::add(simd::mul(bin.first, bin.first), simd::mul(bin.second, bin.second)));
}

/**
 * Both averages have the gain 4/π on a constant amplitude, deliberately: the noise estimate carries
 * it, and the voice detector's thresholds are set against that.
 */
void trackLevels(NoiseLevelEstimator& estimator, const float* spectra) {
    const float* spectrum1 = spectra + estimator.NoiseLevelChannel1 * SpectrumFloats;
    const float* spectrum2 = spectra + estimator.NoiseLevelChannel2 * SpectrumFloats;
    float* fastLevel = estimator.FastLevel;
    float* slowLevel = estimator.SlowLevel;
    simd::forLanes(0, SpectrumBins, [=](int b, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto level = simd::mul(
            simd::add(amplitude<Lanes>(spectrum1 + 2 * b), amplitude<Lanes>(spectrum2 + 2 * b)),
            Lanes::splat(0.5f));
        const auto follow = [=](float* average, float rate, float memory) {
            Lanes::store(average + b,
                         simd::add(simd::mul(level, Lanes::splat(rate)),
                                   simd::mul(Lanes::load(average + b), Lanes::splat(memory))));
        };
        follow(fastLevel, FastRate, FastMemory);
        follow(slowLevel, SlowRate, SlowMemory);
    });
}

/** Four partial sums, as the lanes have it. */
float sumOverBand(const float* level) {
    static_assert((LastBandBin + 1 - FirstBandBin) % 4 == 0, "whole vectors");
    simd::F32x4 sum = simd::splat4(0.0f);
    for (int b = FirstBandBin; b <= LastBandBin; b += 4)
        sum = simd::add(sum, simd::load4(level + b));
    return simd::sumLanes(sum);
}

BandLevels sumBand(const NoiseLevelEstimator& estimator) {
    return {sumOverBand(estimator.FastLevel), sumOverBand(estimator.SlowLevel),
            sumOverBand(estimator.NoiseLevel)};
}

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

void adapt(NoiseLevelEstimator& estimator, float rising, float sinking) {
    float* noiseLevel = estimator.NoiseLevel;
    const float* slowLevel = estimator.SlowLevel;
    simd::forLanes(0, SpectrumBins, [=](int b, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto before = Lanes::load(noiseLevel + b);
        const auto difference = simd::sub(Lanes::load(slowLevel + b), before);
        const auto rate = simd::selectLess(difference, Lanes::splat(0.0f), Lanes::splat(sinking),
                                           Lanes::splat(rising));
        Lanes::store(noiseLevel + b, simd::add(before, simd::mul(difference, rate)));
    });
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
    trackLevels(estimator, spectra);
    const BandLevels band = sumBand(estimator);
    countFromBoot(band.slow, estimator.NoiseCountFromBoot);
    const bool fast = judgeStationarity(estimator, band);
    if (fast || estimator.NoiseCountFromBoot != 0) {
        adapt(estimator, FastAdaptation, FastAdaptation);
    } else {
        adapt(estimator, RisingAdaptation, SinkingAdaptation);
    }
    return estimator.NoiseLevel;
}

}  // namespace voxloc
