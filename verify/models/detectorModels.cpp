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

// output[i] = sum of taps[j]·input[i+j]
std::vector<double> correlate(const std::vector<double>& input, const std::vector<double>& taps) {
    std::vector<double> output(input.size() - taps.size() + 1);
    for (std::size_t i = 0; i < output.size(); ++i) {
        for (std::size_t j = 0; j < taps.size(); ++j) output[i] += taps[j] * input[i + j];
    }
    return output;
}

const std::vector<double> LowPass{
    0.0,     -0.0012, 0.002,  -0.0021, 0.0,     0.0048, -0.0099, 0.01,    0.0,    -0.0189, 0.0362,
    -0.0347, 0.0,     0.0685, -0.1529, 0.223,   0.7505, 0.223,   -0.1529, 0.0685, 0.0,     -0.0347,
    0.0362,  -0.0189, 0.0,    0.01,    -0.0099, 0.0048, 0.0,     -0.0021, 0.002,  -0.0012};
const std::vector<double> HighPass{0.0,     -0.0013, 0.0051,  -0.0006, -0.0122, -0.009,
                                   0.0302,  0.0438,  -0.0422, -0.1475, -0.0948, 1.1146,
                                   -1.7722, 1.1146,  -0.0948, -0.1475, -0.0422, 0.0438,
                                   0.0302,  -0.009,  -0.0122, -0.0006, 0.0051,  -0.0013};

double decibels(double bandPower) {
    return 10.0 * std::log10(bandPower) - 60.75550079345703;
}

}  // namespace

bool NoiseLevelModel::followsFast(double fast, double slow, double noise) {
    if (slow <= 1e-34) {
        startUp_ = 40;
    } else if (startUp_ > 0) {
        --startUp_;
    }
    bool follows = noise > slow;
    if (std::abs(slow - remembered_) < slow * 0.0625) {
        const double excess = std::floor(20.0 * std::log10(fast / (noise + 1e-34)));  // dB
        const int limit = static_cast<int>(std::clamp(3.0 * excess, 20.0, 32.0));
        counter_ = std::min(counter_ + 1, limit);
        follows = follows || limit <= counter_;
    } else {
        counter_ = 0;
        remembered_ = slow;
    }
    return follows || startUp_ > 0;
}

const std::vector<double>& NoiseLevelModel::update(const Spectrum& first, const Spectrum& second,
                                                   bool freeze) {
    if (freeze) return noise_;
    for (std::size_t b = 0; b < noise_.size(); ++b) {
        const double amplitude = (std::abs(first[b]) + std::abs(second[b])) * 0.5;
        fast_[b] = amplitude * 0.31830987 + fast_[b] * 0.75;
        slow_[b] = amplitude * 0.15915494 + slow_[b] * 0.875;
    }
    const bool follows =
        followsFast(sum(fast_, 12, 511), sum(slow_, 12, 511), sum(noise_, 12, 511));
    for (std::size_t b = 0; b < noise_.size(); ++b) {
        const double gap = slow_[b] - noise_[b];
        noise_[b] += gap * (follows ? 0.0625 : gap < 0.0 ? 0x1p-18 : 0x1p-22);
    }
    return noise_;
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
    const bool sound = ratio > 1.3;
    if (ratio > 1.1) {
        if (++temporal_ > 6 && 0.01 * mean(0, 7) + mean(8, 1193) < 2.0 * mean(18, 54)) {
            ++burst_;
            hang_ = 34;
            return {true, sound};
        }
        burst_ = 0;
    } else {
        temporal_ = 0;
        burst_ = 0;
    }
    if (hang_ == 0) return {false, sound};
    --hang_;
    return {true, sound};
}

bool TimeVoiceModel::update(const double* samples) {
    std::rotate(history_.begin(), history_.begin() + 2048, history_.end());
    std::copy(samples, samples + 2048, history_.begin() + 4096);

    std::vector<double> signal(history_.begin() + 2005, history_.begin() + 2005 + 2135);
    signal = correlate(correlate(signal, LowPass), HighPass);
    for (double& value : signal) value = std::abs(value);
    const std::vector<double> envelope =
        correlate(signal, std::vector<double>(32, 0.03125));  // moving average

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
    double level = decibels(band_[loudest]);
    const double neighbour = decibels(neighbour_[loudest]);
    if (level > -60.0 && level - neighbour < 15.0) level = kept_;
    kept_ = level;
    band_.fill(0.0);
    neighbour_.fill(0.0);
    return level > -25.0 && level - neighbour > 15.0;
}

}  // namespace reference
