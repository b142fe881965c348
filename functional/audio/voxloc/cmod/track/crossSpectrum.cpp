#include "crossSpectrum.h"

#include "clearBins.h"
#include "dsplib/simd/simdLanes.h"
#include "grids.h"

namespace voxloc {

namespace {

constexpr float RisingRate = 0.014121801f;  // of the noise power, per frame
constexpr float FallingRate = 0.5981308f;
constexpr float SilentPower = 1e-7f;
constexpr float NoiseMargin = 9.0f;  // a bin must exceed its noise power by that factor
constexpr float WeightGain = 1.25f;
constexpr float LargestWeight = 0.5f;
constexpr float SmallestWeight = 1e-7f;  // below it a frame does not update the bin

}  // namespace

void SP_SIMD_HERE::updateFrequencyWeights(const float* spectrum, int count, float* noisePower,
                                          float* weight) {
    simd::forLanes(0, count, [=](int j, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto zero = Lanes::splat(0.0f);
        const auto bins = Lanes::loadPairs(spectrum + 2 * j);
        const auto power =
            simd::add(simd::mul(bins.first, bins.first), simd::mul(bins.second, bins.second));
        const auto before = Lanes::load(noisePower + j);
        const auto rate =
            simd::selectLess(before, power, Lanes::splat(RisingRate), Lanes::splat(FallingRate));
        const auto estimate = simd::add(before, simd::mul(simd::sub(power, before), rate));
        Lanes::store(noisePower + j, estimate);
        const auto excess = simd::sub(power, simd::mul(Lanes::splat(NoiseMargin), estimate));
        if constexpr (simd::DividesByLane && width == 4) {
            // Most bins stand out at no time: no weight, and nothing to divide.
            if (!simd::anyLess(zero, excess)) return Lanes::store(weight + j, zero);
        }
        const auto share = simd::div(simd::mul(excess, Lanes::splat(WeightGain)), power);
        // In this order a NaN gives 0.
        const auto clamped = simd::smaller(simd::larger(share, zero), Lanes::splat(LargestWeight));
        Lanes::store(weight + j, simd::selectLess(Lanes::splat(SilentPower), power, clamped, zero));
    });
}

void SP_SIMD_HERE::smoothCrossSpectrum(const MicrophonePair& pair, SmoothingGate gate,
                                       const MicrophoneSpectrum& first,
                                       const MicrophoneSpectrum& second, const float* previous,
                                       float* current, std::uint8_t* counter) {
    const int begin = pair.lowerBin, end = pair.upperBin + 1;
    clearBins(current, 0, begin);
    clearBins(current, end, SpectrumBins);
    const auto smooth = [=](int k, auto width, auto re, auto im) {
        using Lanes = simd::Lanes<width>;
        const auto zero = Lanes::splat(0.0f), one = Lanes::splat(1.0f);
        const auto weight =
            simd::mul(Lanes::splat(gate.open),
                      simd::smaller(Lanes::load(first.weight + k), Lanes::load(second.weight + k)));
        const auto count = simd::selectLess(weight, Lanes::splat(SmallestWeight),
                                            simd::add(Lanes::loadBytes(counter + k), one), zero);
        const auto limit = Lanes::splat(static_cast<float>(gate.timeoutLimit));
        const auto keep = simd::selectLess(count, limit, one, zero);
        simd::storeBytes(counter + k, simd::selectLess(count, limit, count, zero));
        const auto rest = simd::sub(one, weight);
        const auto before = Lanes::loadPairs(previous + 2 * k);
        const auto average = [=](auto now, auto then) {
            return simd::mul(keep, simd::add(simd::mul(weight, now), simd::mul(rest, then)));
        };
        simd::storePairs(current + 2 * k, average(re, before.first), average(im, before.second));
    };
    simd::forLanes(begin, end, [=](int k, auto width) {
        const auto a = simd::Lanes<width>::loadPairs(first.bins + 2 * k);
        const auto b = simd::Lanes<width>::loadPairs(second.bins + 2 * k);
        smooth(k, width, simd::add(simd::mul(a.first, b.first), simd::mul(a.second, b.second)),
               simd::sub(simd::mul(a.second, b.first), simd::mul(a.first, b.second)));
    });
    // The bin above the highest one is cleared and then smoothed all the same: deliberate, its
    // counter of frames runs like the others'. What it holds is 0 for ever.
    smooth(end, std::integral_constant<int, 1>(), 0.0f, 0.0f);
}

}  // namespace voxloc
