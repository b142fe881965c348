#include "doctor/spectra.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

constexpr int BlockSamples = 2 * FRAME_SAMPLES;
// The tracker's own: noise falls fast and rises slowly, and only what stands out counts.
constexpr float RiseRate = 0.014121801f, FallRate = 0.5981308f;
constexpr float AboveNoise = 9.0f, Steepness = 1.25f,
                MostWeight = static_cast<float>(MostBinWeight);
constexpr float SilentPower = 1e-9f;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

}  // namespace

SpectrumMaker::SpectrumMaker(int channels)
    : channels_(channels),
      window_(BlockSamples),
      twiddles_(BlockSamples),
      aTable_(BlockSamples),
      bTable_(BlockSamples),
      block_(BlockSamples + 2),
      result_(BlockSamples + 2),
      work_(BlockSamples + 2),
      previous_(at(channels) * FRAME_SAMPLES),
      blocks_(at(channels) * BlockSamples),
      noise_(at(channels), std::vector<float>(UsedBins)),
      spectra_(at(channels)) {
    voxloc_generateHammingWindow(window_.data());
    voxloc_generateTwiddleFactors(twiddles_.data(), BlockSamples / 2);
    voxloc_generateAbTables(aTable_.data(), bTable_.data(), BlockSamples / 2);
    for (Spectrum& one : spectra_) {
        one.phase.resize(UsedBins);
        one.power.resize(UsedBins);
        one.weight.resize(UsedBins);
    }
}

const std::vector<Spectrum>& SpectrumMaker::next(const std::vector<float>& frame) {
    voxloc_overlapInputChannels(blocks_.data(), previous_.data(), frame.data(), channels_);
    previous_ = frame;
    for (int c = 0; c < channels_; ++c) {
        transform(c);
        // Whatever is there at first is taken for noise: it falls fast if it is not.
        if (isFirst_) noise_[at(c)] = spectra_[at(c)].power;
        weigh(spectra_[at(c)], noise_[at(c)]);
    }
    isFirst_ = false;
    return spectra_;
}

void SpectrumMaker::transform(int channel) {
    voxloc_vectorMultiply(blocks_.data() + at(channel) * BlockSamples, window_.data(),
                          block_.data(), BlockSamples);
    voxloc_realFft(BlockSamples, block_.data(), twiddles_.data(), result_.data(), 2, aTable_.data(),
                   bTable_.data(), work_.data());
    Spectrum& spectrum = spectra_[at(channel)];
    for (int k = 0; k < UsedBins; ++k) {
        const std::complex<float> bin(result_[at(2 * (k + LowestBin))],
                                      result_[at(2 * (k + LowestBin) + 1)]);
        // Samples that are no numbers are silence here; anything else would spread over all sums.
        const float norm = std::norm(bin);
        const float power = std::isfinite(norm) ? norm : 0.0f;
        spectrum.power[at(k)] = power;
        spectrum.phase[at(k)] = power > SilentPower ? bin / std::sqrt(power) : 0.0f;
    }
}

void SpectrumMaker::weigh(Spectrum& spectrum, std::vector<float>& noise) const {
    for (std::size_t k = 0; k < noise.size(); ++k) {
        const float power = spectrum.power[k];
        noise[k] += (power - noise[k]) * (noise[k] < power ? RiseRate : FallRate);
        spectrum.weight[k] =
            power > SilentPower
                ? std::clamp((power - AboveNoise * noise[k]) * Steepness / power, 0.0f, MostWeight)
                : 0.0f;
    }
}

Correlator::Correlator()
    : twiddles_(LagsAround),
      aTable_(LagsAround),
      bTable_(LagsAround),
      spectrum_(LagsAround + 2),
      scratch_(LagsAround + 2) {
    voxloc_generateTwiddleFactors(twiddles_.data(), LagsAround / 2);
    voxloc_generateAbTables(aTable_.data(), bTable_.data(), LagsAround / 2);
}

void Correlator::correlate(const std::vector<std::complex<float>>& cross, int lags, float scale,
                           float* out) {
    std::fill(spectrum_.begin(), spectrum_.end(), 0.0f);
    for (int k = 0; k < UsedBins; ++k) {
        spectrum_[at(2 * (k + LowestBin))] = cross[at(k)].real();
        spectrum_[at(2 * (k + LowestBin) + 1)] = cross[at(k)].imag();
    }
    voxloc_realIfft(LagsAround, spectrum_.data(), twiddles_.data(), scratch_.data(), 2,
                    aTable_.data(), bTable_.data());
    // The inverse divides by half its size: a cross-spectrum of ones then peaks at 2·bins/size.
    const float unit = scale * LagsAround / 2.0f;
    for (int lag = -lags; lag <= lags; ++lag) {
        out[lag + lags] = unit * spectrum_[at((lag + LagsAround) % LagsAround)];
    }
}
