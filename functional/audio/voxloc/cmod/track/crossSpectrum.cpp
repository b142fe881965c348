#include "crossSpectrum.h"

#include <algorithm>
#include <cmath>

#include "grids.h"

namespace voxloc {

namespace {

constexpr float RisingRate = 0.014121801f;  // of the noise power, per frame
constexpr float FallingRate = 0.5981308f;
constexpr float SilentPower = 1e-7f;
constexpr float NoiseMargin = 9.0f;  // a bin must exceed its noise power by that factor
constexpr float WeightGain = 1.25f;
constexpr float LargestWeight = 0.5f;
constexpr float SmallestWeight = 1e-7f;       // below it a frame does not update the bin
constexpr float SmallestMagnitude2 = 1e-14f;  // squared; below it a bin has no phase

/** Written so that a NaN gives 0. */
float clampWeight(float weight) {
    if (!(weight > 0.0f)) return 0.0f;
    return weight < LargestWeight ? weight : LargestWeight;
}

}  // namespace

void updateFrequencyWeights(const float* spectrum, int count, float* noisePower, float* weight) {
    for (int j = 0; j < count; ++j) {
        const float power =
            spectrum[2 * j] * spectrum[2 * j] + spectrum[2 * j + 1] * spectrum[2 * j + 1];
        float estimate = noisePower[j];
        estimate += (power - estimate) * (estimate < power ? RisingRate : FallingRate);
        noisePower[j] = estimate;
        weight[j] = power <= SilentPower
                        ? 0.0f
                        : clampWeight((power - NoiseMargin * estimate) * WeightGain / power);
    }
}

void smoothCrossSpectrum(const MicrophonePair& pair, SmoothingGate gate, const float* weight1,
                         const float* weight2, const float* previous, float* current,
                         std::uint8_t* counter) {
    // The bin above the highest one is cleared and then smoothed all the same: deliberate, the
    // correlations contain what it held.
    const int end = pair.upperBin + 2;
    std::fill_n(current, 2 * pair.lowerBin, 0.0f);
    std::fill(current + 2 * (pair.upperBin + 1), current + SpectrumFloats, 0.0f);
    for (int k = pair.lowerBin; k < end; ++k) {
        const float weight = gate.open * std::min(weight1[k], weight2[k]);
        const int count = weight < SmallestWeight ? counter[k] + 1 : 0;
        const bool kept = count < gate.timeoutLimit;
        counter[k] = kept ? static_cast<std::uint8_t>(count) : std::uint8_t{0};
        const float keep = kept ? 1.0f : 0.0f;
        for (int i = 2 * k; i < 2 * k + 2; ++i) {
            current[i] = keep * (weight * current[i] + (1.0f - weight) * previous[i]);
        }
    }
}

void whiten(const float* crossSpectrum, float* out) {
    std::fill_n(out, CorrelationBufferFloats, 0.0f);
    for (int i = 0; i < SpectrumFloats; i += 2) {
        const float re = crossSpectrum[i], im = crossSpectrum[i + 1];
        const float magnitude2 = re * re + im * im;
        if (magnitude2 > SmallestMagnitude2) {
            const float magnitude = std::sqrt(magnitude2);
            out[i] = re / magnitude;
            out[i + 1] = im / magnitude;
        }
    }
    // The Nyquist bin moves to the Nyquist place of the upsampled spectrum, two floats past the
    // last one that the inverse transform reads: it is dropped in effect. Deliberate; the results
    // are those of a spectrum without it.
    constexpr int nyquist = SpectrumFloats - 2;
    out[CorrelationLags + 6] = out[nyquist];
    out[nyquist] = 0.0f;
}

void attenuateLoudspeaker(const MicrophonePair& pair, float* correlation) {
    const int first = pair.loudspeakerLag - pair.loudspeakerHalfWidth;
    const int last = pair.loudspeakerLag + pair.loudspeakerHalfWidth;
    // Lags below 0 wrap to the end. Lags past the last one deliberately do not wrap to the start;
    // they end with the buffer.
    for (int lag = first; lag <= std::min(last, CorrelationBufferFloats - 1); ++lag) {
        correlation[lag < 0 ? lag + CorrelationLags : lag] *= pair.loudspeakerGain;
    }
}

}  // namespace voxloc
