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
void trackLevels(const float* spectrum1, const float* spectrum2) {
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
        follow(FastLevel, FastRate, FastMemory);
        follow(SlowLevel, SlowRate, SlowMemory);
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

BandLevels sumBand() {
    return {sumOverBand(FastLevel), sumOverBand(SlowLevel), sumOverBand(NoiseLevel)};
}

void countFromBoot(float slowBandLevel) {
    if (slowBandLevel <= SilentBandLevel) {
        NoiseCountFromBoot = FramesFromBoot;
    } else if (NoiseCountFromBoot > 0) {
        --NoiseCountFromBoot;
    }
}

/** Frames that the level must be stationary: 3 per dB by which it exceeds the estimate. */
std::int16_t durationLimit(const BandLevels& band) {
    const float excess = 20.0f * std::log10(band.fast / (band.noise + SilentBandLevel));  // dB
    const auto frames = toInteger<std::int16_t>(3.0f * std::floor(excess));
    return std::min(std::max(frames, ShortestStationarity), LongestStationarity);
}

/** True when the estimate may follow the slow average quickly. */
bool judgeStationarity(const BandLevels& band) {
    bool fast = false;
    if (std::fabs(band.slow - NoiseAmplification) < band.slow * StationaryDeviation) {
        const std::int16_t limit = durationLimit(band);
        CurrentNoiseDurationLimit = limit;
        NoiseDetectionCounter =
            std::min(static_cast<std::int16_t>(NoiseDetectionCounter + 1), limit);
        fast = limit <= NoiseDetectionCounter;
    } else {
        NoiseDetectionCounter = 0;
        CurrentNoiseDurationLimit = ShortestStationarity;
        NoiseAmplification = band.slow;
    }
    return fast || band.noise > band.slow;
}

void adapt(float rising, float sinking) {
    simd::forLanes(0, SpectrumBins, [=](int b, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto before = Lanes::load(NoiseLevel + b);
        const auto difference = simd::sub(Lanes::load(SlowLevel + b), before);
        const auto rate = simd::selectLess(difference, Lanes::splat(0.0f), Lanes::splat(sinking),
                                           Lanes::splat(rising));
        Lanes::store(NoiseLevel + b, simd::add(before, simd::mul(difference, rate)));
    });
}

}  // namespace

float NoiseLevel[SpectrumBins];
float FastLevel[SpectrumBins];
float SlowLevel[SpectrumBins];
std::int16_t NoiseDetectionCounter;
std::int16_t CurrentNoiseDurationLimit;
float NoiseAmplification;
std::int16_t NoiseCountFromBoot = FramesFromBoot;
std::uint32_t NoiseLevelChannel1 = 1;
std::uint32_t NoiseLevelChannel2 = 2;

void intializeNoiseLevel() {
    std::fill_n(NoiseLevel, SpectrumBins, 0.0f);
    std::fill_n(FastLevel, SpectrumBins, 0.0f);
    std::fill_n(SlowLevel, SpectrumBins, 0.0f);
    NoiseDetectionCounter = 0;
    NoiseAmplification = 0.0f;
    CurrentNoiseDurationLimit = 0;
    NoiseCountFromBoot = FramesFromBoot;
}

void setNoiseLevelChannels(std::uint32_t first, std::uint32_t second) {
    NoiseLevelChannel1 = first;
    NoiseLevelChannel2 = second;
}

const float* calculateNoiseLevel(const float* spectra, unsigned int freeze) {
    if (freeze != 0) return NoiseLevel;
    trackLevels(spectra + NoiseLevelChannel1 * SpectrumFloats,
                spectra + NoiseLevelChannel2 * SpectrumFloats);
    const BandLevels band = sumBand();
    countFromBoot(band.slow);
    const bool fast = judgeStationarity(band);
    if (fast || NoiseCountFromBoot != 0) {
        adapt(FastAdaptation, FastAdaptation);
    } else {
        adapt(RisingAdaptation, SinkingAdaptation);
    }
    return NoiseLevel;
}

}  // namespace voxloc
