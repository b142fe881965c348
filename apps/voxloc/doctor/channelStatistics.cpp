#include "doctor/channelStatistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

constexpr double LowestLevel = -200.0;  // dB, digital silence
// Hum is looked for at 3 kHz, in blocks of a second.
constexpr int Thinning = 16;
constexpr double ThinRate = 48000.0 / Thinning;  // Hz
constexpr int BlockLength = 3000;
constexpr std::array<double, 2> Mains{50.0, 60.0};  // Hz
constexpr int Harmonics = 7;
constexpr std::array<double, 4> Aside{-9.0, -5.0, 5.0, 9.0};  // Hz from a line
constexpr double QuietShare = 0.2;                            // of the blocks: voices pause in them
constexpr double ClearLine = 12.0;  // dB above what is around, for one line alone
constexpr double AnyLine = 10.0;    // dB, for each of LeastLines
constexpr int LeastLines = 3;       // two may be a voice's
constexpr double LeastHum = -75.0;  // dB of full scale
constexpr float SamePlateau = 0.9999f;
constexpr std::uint64_t LeastRun = 3;  // samples
constexpr float AudibleLevel = -90.0f;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

double decibels(double meanSquare) {
    return meanSquare > 1e-20 ? 10.0 * std::log10(meanSquare) : LowestLevel;
}

/** Mean square of a sine of that frequency in a block under a Hann window (Goertzel's filter). */
double linePower(const std::vector<double>& windowed, double frequency) {
    const double turn = 2.0 * std::cos(2.0 * M_PI * frequency / ThinRate);
    double last = 0.0, before = 0.0;
    for (const double x : windowed) {
        const double now = x + turn * last - before;
        before = last;
        last = now;
    }
    const double square = last * last + before * before - turn * last * before;
    const double length = static_cast<double>(windowed.size());
    const double power = 2.0 * square / (length * length);
    return std::isfinite(power) ? power : 0.0;
}

double lowQuantile(std::vector<double> values) {
    if (values.empty()) return 0.0;
    const auto k = static_cast<std::size_t>(QuietShare * static_cast<double>(values.size()));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(k), values.end());
    return values[k];
}

float frameLevel(const Spectrum& spectrum) {
    double sum = 0.0;
    for (const float power : spectrum.power) sum += static_cast<double>(power);
    constexpr double Block = 2.0 * FRAME_SAMPLES;
    constexpr double WindowPower = 0.397;  // mean square of the Hamming window
    return static_cast<float>(decibels(2.0 * sum / (Block * Block * WindowPower)));
}

}  // namespace

double quantile(std::vector<float> values, double share) {
    if (values.empty()) return LowestLevel;
    const auto last = static_cast<double>(values.size() - 1);
    const auto k = static_cast<std::ptrdiff_t>(share * last);
    std::nth_element(values.begin(), values.begin() + k, values.end());
    return static_cast<double>(values[static_cast<std::size_t>(k)]);
}

void PlateauCounter::end() {
    if (run_ >= LeastRun) {
        ++runs_;
        samples_ += run_;
    }
    run_ = 0;
}

void PlateauCounter::add(const float* samples, int count) {
    for (int n = 0; n < count; ++n) {
        const float size = std::fabs(samples[n]);
        if (size * SamePlateau > peak_) {  // a new peak makes what was counted no plateau
            runs_ = samples_ = run_ = 0;
        }
        peak_ = std::max(peak_, size);
        if (size > 0.0f && size >= peak_ * SamePlateau) {
            ++run_;
        } else {
            end();
        }
    }
    end();
}

HumMeter::HumMeter() : lines_(Mains.size() * Harmonics), around_(Mains.size() * Harmonics) {}

void HumMeter::add(const float* samples, int count) {
    // Thinned under a triangle, which leaves ultrasound no way to turn up as hum.
    for (int n = 0; n < count; ++n) {
        const auto sample = static_cast<double>(samples[n]) / (Thinning * Thinning);
        rising_ += sample * (thinned_ + 1);
        falling_ += sample * (Thinning - 1 - thinned_);
        if (++thinned_ < Thinning) continue;
        block_.push_back(before_ + falling_);
        before_ = rising_;
        rising_ = falling_ = 0.0;
        thinned_ = 0;
        if (block_.size() == BlockLength) closeBlock();
    }
}

void HumMeter::closeBlock() {
    double mean = 0.0;
    for (const double x : block_) mean += x / BlockLength;
    const double step = 2.0 * M_PI / BlockLength;
    for (int n = 0; n < BlockLength; ++n) {
        block_[at(n)] = (block_[at(n)] - mean) * (1.0 - std::cos(step * n));
    }
    for (std::size_t m = 0; m < Mains.size(); ++m) {
        for (int h = 1; h <= Harmonics; ++h) {
            const std::size_t i = m * Harmonics + at(h - 1);
            lines_[i].push_back(linePower(block_, Mains[m] * h));
            double around = 0.0;
            for (const double aside : Aside) around += linePower(block_, Mains[m] * h + aside);
            around_[i].push_back(around / Aside.size());
        }
    }
    block_.clear();
}

Hum HumMeter::hum() const {
    Hum best;
    double most = 0.0;
    for (std::size_t m = 0; m < Mains.size(); ++m) {
        Hum one;
        int lines = 0;
        bool isClear = false;
        double sum = 0.0;
        for (int h = 1; h <= Harmonics; ++h) {
            const std::size_t i = m * Harmonics + at(h - 1);
            const double level = decibels(lowQuantile(lines_[i]));
            const double above = level - decibels(lowQuantile(around_[i]));
            if (level < LeastHum || above < AnyLine) continue;
            ++lines;
            isClear = isClear || (h <= 2 && above >= ClearLine);  // below voices
            sum += above;
            if (level > one.level) {
                one.frequency = Mains[m];
                one.level = level;
                one.line = Mains[m] * h;
                one.above = above;
            }
        }
        if ((lines >= LeastLines || isClear) && sum > most) {
            most = sum;
            best = one;
        }
    }
    return best;
}

ChannelStatistics::ChannelStatistics(int channels) : channels_(at(channels)) {}

void ChannelStatistics::add(const std::vector<float>& frame, const std::vector<Spectrum>& spectra) {
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        const float* samples = frame.data() + c * FRAME_SAMPLES;
        Channel& channel = channels_[c];
        for (int n = 0; n < FRAME_SAMPLES; ++n) channel.sum += static_cast<double>(samples[n]);
        channel.plateau.add(samples, FRAME_SAMPLES);
        channel.hum.add(samples, FRAME_SAMPLES);
        channel.levels.push_back(frameLevel(spectra[c]));
    }
    ++frames_;
}

/**
 * How much louder each channel is than the middle one, over the frames: of the quartiles that which
 * says less, so that a talker close to one end does not make a channel loud.
 */
std::vector<double> ChannelStatistics::deviations() const {
    std::vector<std::vector<float>> differences(channels_.size());
    std::vector<float> row(channels_.size());
    for (std::size_t f = 0; f < frames_; ++f) {
        for (std::size_t c = 0; c < channels_.size(); ++c) row[c] = channels_[c].levels[f];
        std::vector<float> sorted = row;
        std::sort(sorted.begin(), sorted.end());
        const std::size_t half = sorted.size() / 2;
        const float middle =
            sorted.size() % 2 == 1 ? sorted[half] : 0.5f * (sorted[half - 1] + sorted[half]);
        if (middle < AudibleLevel) continue;
        for (std::size_t c = 0; c < row.size(); ++c) differences[c].push_back(row[c] - middle);
    }
    std::vector<double> least;
    for (const std::vector<float>& one : differences) {
        const double low = one.empty() ? 0.0 : quantile(one, 0.25);
        const double high = one.empty() ? 0.0 : quantile(one, 0.75);
        least.push_back(low > 0.0 ? low : high < 0.0 ? high : 0.0);
    }
    return least;
}

std::vector<ChannelReport> ChannelStatistics::reports() const {
    const std::vector<double> louder = deviations();
    std::vector<ChannelReport> reports;
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        const Channel& channel = channels_[c];
        ChannelReport report;
        const double samples = static_cast<double>(frames_) * FRAME_SAMPLES;
        report.mean = frames_ > 0 ? channel.sum / samples : 0.0;
        report.peak = static_cast<double>(channel.plateau.peak());
        report.speechLevel = quantile(channel.levels, 0.9);
        report.floorLevel = quantile(channel.levels, 0.1);
        report.deviation = louder[c];
        report.plateauRuns = channel.plateau.runs();
        report.plateauSamples = channel.plateau.samples();
        report.hum = channel.hum.hum();
        reports.push_back(report);
    }
    return reports;
}
