#include "trackerModel.h"

#include <algorithm>
#include <cmath>

#include "geometryModel.h"

namespace reference {

namespace {

constexpr double Unit = 0x1p-24;  // rounding error of a single-precision operation, relative
constexpr std::size_t Bins = 2049;
constexpr std::size_t Lags = 16384;
constexpr std::size_t UpperBin = 1451;

double degrees(float sineStart, float interval, int index) {
    return static_cast<double>(gridAngle(sineStart, interval, index)) * 57.29577951308232;
}

}  // namespace

void GridSum::findPeak() {
    peak = static_cast<int>(std::max_element(value.begin(), value.end()) - value.begin());
}

TrackerModel::TrackerModel(const VoxlocArray& array, bool judgesPanel)
    : array_(array),
      judgesPanel_(judgesPanel),
      elevations_(static_cast<std::size_t>(array.elevationPairs)) {
    for (std::size_t k = 0; k < window_.size(); ++k) {
        window_[k] = 0.54 - 0.46 * std::cos(static_cast<double>(k) * 6.283185307179586 / 4095.0);
    }
    const std::vector<double> silence(2048);
    const std::vector<double> noBins(Bins);
    channels_.resize(static_cast<std::size_t>(array.channels),
                     {silence, silence, Spectrum(Bins), 0.0, noBins, noBins, noBins});
    for (int k = 0; k < array.elevationPairs; ++k) addPair(array.elevationPair[k], true);
    for (int k = 0; k < array.azimuthPairs; ++k) addPair(array.azimuthPair[k], false);
    directions_.value.resize(Azimuths * Elevations);
    ranges_.value.resize(Azimuths * RangeSteps);
}

void TrackerModel::addPair(VoxlocPair microphones, bool isElevation) {
    const Position& a = array_.microphone[microphones.first];
    const Position& b = array_.microphone[microphones.second];
    Pair pair{};
    pair.first = static_cast<std::size_t>(microphones.first);
    pair.second = static_cast<std::size_t>(microphones.second);
    pair.lowerBin = static_cast<std::size_t>(std::floor(14.848f / distance(a, b) + 0.5f));
    pair.smoothed.resize(Bins);
    pair.error.resize(Bins);
    pair.idle.resize(Bins);
    pair.zoneGain = 1.0;
    if (array_.attenuateLoudspeaker != 0) {
        const double d1 = static_cast<double>(distance(array_.loudspeaker, a));
        const double d2 = static_cast<double>(distance(array_.loudspeaker, b));
        const double nearer = std::min(d1, d2);
        const double width = std::min(-0.104 + 0.107 * std::max(d1, d2) / nearer, 0.05);
        const int halfWidth = static_cast<int>(std::floor(0.5 + width * 551.7241));
        const int lag = lagOf(static_cast<float>(d1 - d2));
        pair.zoneStart = lag - halfWidth;
        pair.zoneEnd = lag + halfWidth + 1;
        pair.zoneGain = std::max(0.1, 0.4 * nearer);
    }
    const int rows = isElevation ? Elevations : RangeSteps;
    for (int r = 0; r < rows; ++r) {
        for (int column = 0; column < Azimuths; ++column) {
            const float azimuth = gridAngle(array_.minimumAzimuth, array_.angleInterval, column);
            const float elevation =
                isElevation ? gridAngle(array_.minimumElevation, array_.angleInterval, r) : 0.0f;
            const float range = isElevation ? FarField : gridRange(r);
            pair.lags.push_back(lagOf(pointAt(azimuth, elevation, range), a, b));
        }
    }
    pairs_.push_back(std::move(pair));
}

// The spectrum of the last two frames. A single-precision transform of N points is off by a small
// multiple of log2 N roundings of the typical bin.
void TrackerModel::analyse(Channel& channel) const {
    std::vector<double> block(channel.older);
    block.insert(block.end(), channel.newer.begin(), channel.newer.end());
    for (std::size_t i = 0; i < block.size(); ++i) block[i] *= window_[i];
    channel.bins = realSpectrum(block);
    double energy = 0.0;
    for (const auto& bin : channel.bins) energy += std::norm(bin);
    channel.binError = 12.0 * Unit * std::sqrt(energy / static_cast<double>(Bins));
    std::fill(channel.bins.begin(), channel.bins.begin() + 4, 0.0);
}

void TrackerModel::weigh(Channel& channel) {
    for (std::size_t k = 0; k < Bins; ++k) {
        const double power = std::norm(channel.bins[k]);
        double& noise = channel.noise[k];
        noise += (power - noise) * (noise < power ? 0.014121801 : 0.5981308);
        channel.weight[k] = 0.0;
        channel.weightError[k] = 0.0;
        if (power <= 1e-7) continue;
        channel.weight[k] = std::clamp((power - 9.0 * noise) * 1.25 / power, 0.0, 0.5);
        // w = 1.25·(1 - 9·noise/power): the relative errors of noise and power, which the noise
        // shares when it is made of this power, count 1.25·9·noise/power times.
        const double relative = 4.0 * channel.binError / std::sqrt(power) + 16.0 * Unit;
        if (9.0 * noise < power * (1.0 + 2.0 * relative)) {
            channel.weightError[k] = 1.25 * 9.0 * noise / power * relative;
        }
    }
}

void TrackerModel::smooth(Pair& pair, bool open, int limit) const {
    const Channel& first = channels_[pair.first];
    const Channel& second = channels_[pair.second];
    for (std::size_t k = 0; k < Bins; ++k) {
        std::complex<double>& smoothed = pair.smoothed[k];
        if (k < pair.lowerBin || k > UpperBin + 1) {
            smoothed = 0.0;
            pair.error[k] = 0.0;
            continue;
        }
        // The bin above the highest is smoothed, too, but takes in nothing.
        const std::complex<double> fresh =
            k > UpperBin ? 0.0 : first.bins[k] * std::conj(second.bins[k]);
        const double freshError = k > UpperBin ? 0.0
                                               : std::abs(first.bins[k]) * second.binError +
                                                     std::abs(second.bins[k]) * first.binError;
        const double weight = open ? std::min(first.weight[k], second.weight[k]) : 0.0;
        const double lowest = std::min(first.weight[k] - first.weightError[k],
                                       second.weight[k] - second.weightError[k]);
        const double highest = std::min(first.weight[k] + first.weightError[k],
                                        second.weight[k] + second.weightError[k]);
        const double weightError = open ? std::max(weight - lowest, highest - weight) : 0.0;
        pair.error[k] = weight * (freshError + 4.0 * Unit * std::abs(fresh)) +
                        (1.0 - weight) * (pair.error[k] + 2.0 * Unit * std::abs(smoothed)) +
                        weightError * std::abs(fresh - smoothed);
        const bool isDoubtful = open && std::abs(weight - 1e-7) <= weightError;
        if (isDoubtful) pair.error[k] += std::abs(smoothed);  // may count as an update or not

        pair.idle[k] = weight < 1e-7 ? pair.idle[k] + 1 : 0;
        if (pair.idle[k] < limit) {
            smoothed = weight * fresh + (1.0 - weight) * smoothed;
        } else {
            smoothed = 0.0;
            pair.idle[k] = 0;
            if (!isDoubtful) pair.error[k] = 0.0;
        }
    }
}

// The phase correlation at four times the sampling rate.
std::vector<double> TrackerModel::correlate(const Pair& pair) {
    Spectrum phases(Bins - 1);  // the highest bin is dropped
    for (std::size_t k = 0; k < phases.size(); ++k) {
        const double magnitude = std::abs(pair.smoothed[k]);
        if (magnitude > 1e-7) phases[k] = pair.smoothed[k] / magnitude;
    }
    std::vector<double> correlation = realSignal(phases, Lags);
    correlation.resize(Lags + 8);  // a point may lie one lag past the end; nothing is there
    for (int lag = pair.zoneStart; lag < pair.zoneEnd; ++lag) {
        if (lag > static_cast<int>(Lags)) break;
        correlation[static_cast<std::size_t>(lag < 0 ? lag + static_cast<int>(Lags) : lag)] *=
            pair.zoneGain;
    }
    return correlation;
}

// A bin contributes 2/16384·cos(angle) to a lag, angle being its phase against that lag's. A phase
// error changes that by the error times the sine and half its square. The errors of the bins are
// independent of each other, so that their squares add up; the inverse transform adds 14 stages of
// rounding of values of at most 1.
double TrackerModel::correlationError(const Pair& pair, int lag) {
    double squares = 0.0;
    double secondOrder = 0.0;
    for (std::size_t k = pair.lowerBin; k <= UpperBin + 1; ++k) {
        const double magnitude = std::abs(pair.smoothed[k]);
        if (magnitude + pair.error[k] <= 1e-7) continue;
        const bool hasPhase = magnitude - pair.error[k] > 1e-7;
        const double error = hasPhase ? pair.error[k] / magnitude + 4.0 * Unit : 2.0;
        const double angle = std::arg(pair.smoothed[k]) + 6.283185307179586 *
                                                              static_cast<double>(k) * lag /
                                                              static_cast<double>(Lags);
        const double slope = hasPhase ? std::abs(std::sin(angle)) : 1.0;
        squares += error * slope * error * slope;
        secondOrder += std::min(error * error / 2.0, 2.0);
    }
    return (std::sqrt(squares) + secondOrder) * 2.0 / static_cast<double>(Lags) + 14.0 * Unit;
}

double TrackerModel::directionError(int point) const {
    double error = 0.0;
    for (std::size_t p = 0; p < elevations_; ++p) {
        error += correlationError(pairs_[p], pairs_[p].lags[static_cast<std::size_t>(point)]);
    }
    return error;
}

double TrackerModel::rangeError(int point) const {
    double error = 0.0;
    for (std::size_t p = elevations_; p < pairs_.size(); ++p) {
        error += correlationError(pairs_[p], pairs_[p].lags[static_cast<std::size_t>(point)]);
    }
    return error;
}

void TrackerModel::gather(Pair& pair, const std::vector<double>& correlation, bool isFirst,
                          GridSum& sum) {
    pair.quality = -3.4028235e38;
    for (std::size_t i = 0; i < pair.lags.size(); ++i) {
        const double value = correlation[static_cast<std::size_t>(pair.lags[i])];
        sum.value[i] = isFirst ? value : sum.value[i] + value;
        pair.quality = std::max(pair.quality, value);
    }
}

bool TrackerModel::isBlocked(bool voice) {
    if (!judgesPanel_ || !voice) return false;
    const double ratio =
        (pairs_[0].quality + pairs_[1].quality) /
        (pairs_[3].quality + pairs_[4].quality + pairs_[5].quality + pairs_[2].quality);
    if (ratio > 1.8) ++blockedFrames_;
    return ratio > 1.8;
}

double TrackerModel::middleOfFlatRun() const {
    int last = ranges_.peak;
    for (int point = last + Azimuths; point < RangeSteps * Azimuths; point += Azimuths) {
        if (std::abs(ranges_.value[static_cast<std::size_t>(point)] - ranges_.atPeak()) > 1e-7) {
            break;
        }
        last = point;
    }
    return (static_cast<double>(gridRange(rowOf(ranges_.peak))) +
            static_cast<double>(gridRange(rowOf(last)))) /
           2.0;
}

ModelResult TrackerModel::calculate(const float* frame, std::uint32_t bits, std::uint32_t flags) {
    const bool farEnd = (flags & 1U) != 0;
    const bool noiseFlag = (flags & 2U) != 0;
    std::vector<std::vector<double>> fresh(channels_.size(), std::vector<double>(2048));
    for (std::size_t c = 0; c < fresh.size(); ++c) {
        for (std::size_t i = 0; i < 2048; ++i) {
            const double sample =
                std::ldexp(static_cast<double>(frame[c * 2048 + i]), 1 - static_cast<int>(bits));
            fresh[c][i] = std::abs(sample) <= 64.0 ? sample : 0.0;  // no converter gives more
        }
    }
    const bool timeVoice =
        timeVoice_.update(fresh[static_cast<std::size_t>(array_.timeDomainVoiceChannel)].data());

    std::vector<Spectrum> spectra;
    for (Channel& channel : channels_) {
        analyse(channel);
        weigh(channel);
        spectra.push_back(channel.bins);
    }
    const auto channel = [&](std::int32_t c) -> const Spectrum& {
        return spectra[static_cast<std::size_t>(c)];
    };
    const auto& noise = noiseLevel_.update(channel(array_.noiseChannels.first),
                                           channel(array_.noiseChannels.second), noiseFlag);
    const auto [voice, sound] = frequencyVoice_.update(channel(array_.voiceChannels.first),
                                                       channel(array_.voiceChannels.second), noise);
    const bool ultrasound = ultrasound_.update(spectra);

    for (std::size_t p = 0; p < pairs_.size(); ++p) {
        smooth(pairs_[p], timeVoice && !farEnd, voice && !farEnd ? 35 : 2);
        GridSum& sum = p < elevations_ ? directions_ : ranges_;
        gather(pairs_[p], correlate(pairs_[p]), p == 0 || p == elevations_, sum);
    }
    directions_.findPeak();
    ranges_.findPeak();
    const bool blocked = isBlocked(voice);

    for (std::size_t c = 0; c < channels_.size(); ++c) {
        channels_[c].older = std::move(channels_[c].newer);
        channels_[c].newer = std::move(fresh[c]);
    }
    const std::uint32_t word = (voice ? 1U : 0U) | (timeVoice ? 2U : 0U) | (sound ? 4U : 0U) |
                               (farEnd ? 8U : 0U) | (noiseFlag ? 16U : 0U) |
                               (ultrasound ? 32U : 0U) | (blocked ? 0U : 128U);
    return {degrees(array_.minimumAzimuth, array_.angleInterval, ranges_.peak % Azimuths),
            degrees(array_.minimumElevation, array_.angleInterval, directions_.peak / Azimuths),
            middleOfFlatRun(),
            ranges_.atPeak() + directions_.atPeak(),
            rangeError(ranges_.peak) + directionError(directions_.peak),
            word};
}

}  // namespace reference
