#include "detectorModels.h"

#include <algorithm>
#include <cmath>

namespace reference {

namespace {

double sum(const std::vector<double>& values, int first, int last) {
    double total = 0.0;
    for (int i = first; i <= last; ++i) total += values[static_cast<std::size_t>(i)];
    return total;
}

double power(const Spectrum& bins, int first, int last) {
    double total = 0.0;
    for (int i = first; i <= last; ++i) total += std::norm(bins[static_cast<std::size_t>(i)]);
    return total;
}

double decibels(double bandPower) {
    return 10.0 * std::log10(bandPower) - 60.75550079345703;
}

}  // namespace

bool NoiseLevelModel::judge(double fastSum, double slowSum, double noiseSum) {
    startUp = slowSum <= 1e-34 ? 40 : std::max(startUp - 1, 0);
    bool follows = false;
    const double change = std::abs(slowSum - remembered);
    if (slowSum > 0.0) clearance.note(change - slowSum / 16, slowSum);
    if (change < slowSum / 16) {
        const double excess = 20.0 * std::log10(fastSum / (noiseSum + 1e-34));  // dB
        if (excess > 6.5 && excess < 11.5) {
            clearance.note(excess - std::round(excess), 20.0 / std::log(10.0));
        }
        limit = static_cast<int>(std::clamp(3.0 * std::floor(excess), 20.0, 32.0));
        counter = std::min(counter + 1, limit);
        follows = limit <= counter;
    } else {
        counter = 0;
        limit = 20;
        remembered = slowSum;
    }
    if (startUp == 0) clearance.note(noiseSum - slowSum, slowSum);
    isAboveTheLevel = noiseSum > slowSum;
    return follows || isAboveTheLevel || startUp > 0;
}

const std::vector<double>& NoiseLevelModel::update(const Spectrum& first, const Spectrum& second,
                                                   bool freeze) {
    if (freeze) return noise;
    for (std::size_t b = 0; b < noise.size(); ++b) {
        const double amplitude = (std::abs(first[b]) + std::abs(second[b])) / 2;
        fast[b] = amplitude * 0.31830987 + fast[b] * 0.75;
        slow[b] = amplitude * 0.15915494 + slow[b] * 0.875;
    }
    followsQuickly = judge(sum(fast, 12, 511), sum(slow, 12, 511), sum(noise, 12, 511));
    for (std::size_t b = 0; b < noise.size(); ++b) {
        const double gap = slow[b] - noise[b];
        noise[b] += gap * (followsQuickly ? 0.0625 : gap < 0.0 ? 0x1p-18 : 0x1p-22);
    }
    return noise;
}

FrequencyVoiceModel::Decision FrequencyVoiceModel::update(const Spectrum& first,
                                                          const Spectrum& second,
                                                          const std::vector<double>& noise) {
    const auto mean = [&](int from, int to) {
        return 0.5 * (power(first, from, to) + power(second, from, to));
    };
    double noisePower = 0.0;
    for (std::size_t b = 13; b <= 511; ++b) noisePower += noise[b] * noise[b];
    const double ratio = mean(13, 511) / noisePower;
    const bool sound = clearance.isAbove(ratio, 1.3);
    if (clearance.isAbove(ratio, 1.1)) {
        const double total = 0.01 * mean(0, 7) + mean(8, 1193);
        const bool isSpeech = clearance.isAbove(2.0 * mean(18, 54), total);
        if (++temporal > 6 && isSpeech) {
            ++burst;
            hang = 34;
            return {true, sound};
        }
    } else {
        temporal = 0;
    }
    burst = 0;
    if (hang == 0) return {false, sound};
    --hang;
    return {true, sound};
}

std::vector<double> correlate(const std::vector<double>& input, const std::vector<double>& taps) {
    std::vector<double> output(input.size() - taps.size() + 1);
    for (std::size_t i = 0; i < output.size(); ++i) {
        for (std::size_t j = 0; j < taps.size(); ++j) output[i] += taps[j] * input[i + j];
    }
    return output;
}

const EnvelopeFilters TimeVoiceFilters = {
    {0.0,     -0.0012, 0.002,  -0.0021, 0.0,     0.0048, -0.0099, 0.01,    0.0,    -0.0189, 0.0362,
     -0.0347, 0.0,     0.0685, -0.1529, 0.223,   0.7505, 0.223,   -0.1529, 0.0685, 0.0,     -0.0347,
     0.0362,  -0.0189, 0.0,    0.01,    -0.0099, 0.0048, 0.0,     -0.0021, 0.002,  -0.0012},
    {0.0,     -0.0013, 0.0051,  -0.0006, -0.0122, -0.009,  0.0302,  0.0438,
     -0.0422, -0.1475, -0.0948, 1.1146,  -1.7722, 1.1146,  -0.0948, -0.1475,
     -0.0422, 0.0438,  0.0302,  -0.009,  -0.0122, -0.0006, 0.0051,  -0.0013},
    std::vector<double>(32, 0.03125)};

std::vector<double> EnvelopeFilters::rectified(const std::vector<double>& signal) const {
    std::vector<double> band = correlate(correlate(signal, lowPass), highPass);
    for (double& value : band) value = std::abs(value);
    return band;
}

std::vector<double> EnvelopeFilters::envelope(const std::vector<double>& signal) const {
    return correlate(rectified(signal), average);
}

EnvelopeFilters EnvelopeFilters::magnitudes() const {
    EnvelopeFilters result = *this;
    for (auto* taps : {&result.lowPass, &result.highPass}) {
        for (double& tap : *taps) tap = std::abs(tap);
    }
    return result;
}

std::vector<double> TimeVoiceModel::heard() const {
    return {history_.begin() + 2005, history_.begin() + 2005 + 2135};
}

bool TimeVoiceModel::update(const double* samples) {
    std::rotate(history_.begin(), history_.begin() + 2048, history_.end());
    std::copy(samples, samples + 2048, history_.begin() + 4096);
    const std::vector<double> envelope = TimeVoiceFilters.envelope(heard());

    double largest = 0.0;
    for (std::size_t i = 0; i < 2048; ++i) {
        if (i > 0) {
            median_ += envelope[i] > median_ ? step_ : -step_;
            step_ = std::max(0.005 * median_, 1e-12);
        }
        if (median_ > 1e-7) largest = std::max(largest, (envelope[i] - median_) / median_);
    }
    const bool calm = largest <= 1.7;
    const bool decision = calm && previous_;
    previous_ = calm;
    return decision;
}

bool UltrasoundModel::update(const std::vector<Spectrum>& channels) {
    for (std::size_t c = 0; c < channels.size(); ++c) {
        band_[c] += (power(channels[c], 1728, 1844) - band_[c]) * 0.060586929;
        neighbour_[c] += (power(channels[c], 1536, 1705) - neighbour_[c]) * 0.060586929;
    }
    if (++frames_ < 20) return false;
    frames_ = 0;
    const auto loudest = static_cast<std::size_t>(
        std::max_element(band_.begin(), band_.begin() + static_cast<int>(channels.size())) -
        band_.begin());
    const double found = decibels(band_[loudest]);
    const double neighbour = decibels(neighbour_[loudest]);
    isReplaced = found > -60.0 && found - neighbour < 15.0;
    if (!isReplaced) level = found;
    band_.fill(0.0);
    neighbour_.fill(0.0);
    return level > -25.0 && level - neighbour > 15.0;
}

}  // namespace reference
