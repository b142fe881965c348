#include "noiseLevelKernels.h"

#include "dsplib/simd/simdLanes.h"
#include "grids.h"

namespace voxloc {

namespace {

constexpr int FirstBandBin = 12, LastBandBin = 511;  // about 140 Hz to 6 kHz

constexpr float FastRate = 0.31830987f, FastMemory = 0.75f;   // 1/π
constexpr float SlowRate = 0.15915494f, SlowMemory = 0.875f;  // 1/(2π)

template <class Lanes>
inline auto amplitude(const float* bins) {
    const auto bin = Lanes::loadPairs(bins);
    return simd::squareRoot(
        simd::add(simd::mul(bin.first, bin.first), simd::mul(bin.second, bin.second)));
}

}  // namespace

void SP_SIMD_HERE::trackLevels(const float* spectrum1, const float* spectrum2, float* fastLevel,
                               float* slowLevel) {
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

/** Four partial sums of each level, whatever the width; the levels' sums wait for each other not.
 */
BandLevels SP_SIMD_HERE::sumBand(const float* fastLevel, const float* slowLevel,
                                 const float* noiseLevel) {
    static_assert((LastBandBin + 1 - FirstBandBin) % 4 == 0, "whole vectors");
    simd::F32x4 fast = simd::splat4(0.0f), slow = fast, noise = fast;
    for (int b = FirstBandBin; b <= LastBandBin; b += 4) {
        fast = simd::add(fast, simd::load4(fastLevel + b));
        slow = simd::add(slow, simd::load4(slowLevel + b));
        noise = simd::add(noise, simd::load4(noiseLevel + b));
    }
    return {simd::sumLanes(fast), simd::sumLanes(slow), simd::sumLanes(noise)};
}

void SP_SIMD_HERE::adapt(const float* slowLevel, float rising, float sinking, float* noiseLevel) {
    simd::forLanes(0, SpectrumBins, [=](int b, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto before = Lanes::load(noiseLevel + b);
        const auto difference = simd::sub(Lanes::load(slowLevel + b), before);
        const auto rate = simd::selectLess(difference, Lanes::splat(0.0f), Lanes::splat(sinking),
                                           Lanes::splat(rising));
        Lanes::store(noiseLevel + b, simd::add(before, simd::mul(difference, rate)));
    });
}

}  // namespace voxloc
