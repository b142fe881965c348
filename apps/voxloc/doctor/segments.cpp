#include "doctor/segments.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr int SegmentFrames = 12;           // SegmentSeconds
constexpr std::size_t MostSegments = 60;    // half a minute
constexpr double LeastWeight = 0.01;        // below it there is nothing to correlate
constexpr double LeastShareOfLouder = 0.5;  // of the weight that a quarter of the segments exceeds

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

}  // namespace

int pairsOf(int channels) {
    return channels * (channels - 1) / 2;
}

int pairIndex(int channels, int i, int j) {
    return i * (2 * channels - i - 1) / 2 + (j - i - 1);
}

SegmentGatherer::SegmentGatherer(int channels, int lags)
    : channels_(channels),
      lags_(lags),
      cross_(at(pairsOf(channels)), std::vector<std::complex<float>>(UsedBins)),
      weights_(at(pairsOf(channels))) {}

void SegmentGatherer::add(const std::vector<Spectrum>& spectra, double seconds) {
    if (frames_ == 0) firstSecond_ = seconds;
    lastSecond_ = seconds;
    accumulate(spectra);
    if (++frames_ == SegmentFrames) close();
}

std::vector<SegmentTables> SegmentGatherer::finish() {
    if (frames_ > 0) close();
    std::vector<double> weights;
    for (const Gathered& one : gathered_) weights.push_back(one.weight);
    std::sort(weights.begin(), weights.end());
    std::vector<SegmentTables> segments;
    for (Gathered& one : gathered_) {
        if (one.weight < LeastShareOfLouder * weights[weights.size() * 3 / 4]) continue;
        segments.push_back(std::move(one.tables));
    }
    gathered_.clear();
    return segments;
}

void SegmentGatherer::keep(Gathered segment) {
    if (gathered_.size() == MostSegments) {
        const auto least = std::min_element(
            gathered_.begin(), gathered_.end(),
            [](const Gathered& a, const Gathered& b) { return a.weight < b.weight; });
        if (least->weight >= segment.weight) return;
        gathered_.erase(least);
    }
    gathered_.push_back(std::move(segment));
}

void SegmentGatherer::accumulate(const std::vector<Spectrum>& spectra) {
    for (int i = 0; i < channels_; ++i) {
        const Spectrum& a = spectra[at(i)];
        for (int j = i + 1; j < channels_; ++j) {
            const Spectrum& b = spectra[at(j)];
            const std::size_t pair = at(pairIndex(channels_, i, j));
            double sum = 0.0;
            for (std::size_t k = 0; k < UsedBins; ++k) {
                const float weight = std::min(a.weight[k], b.weight[k]);
                // Written out: the complex product of the library minds infinities.
                const float re =
                    a.phase[k].real() * b.phase[k].real() + a.phase[k].imag() * b.phase[k].imag();
                const float im =
                    a.phase[k].imag() * b.phase[k].real() - a.phase[k].real() * b.phase[k].imag();
                cross_[pair][k] += std::complex<float>(weight * re, weight * im);
                sum += static_cast<double>(weight);
            }
            weights_[pair] += sum;
        }
    }
}

void SegmentGatherer::close() {
    // The middle pair's weight for all: a channel of noise must not be weighed up to the others.
    std::vector<double> sorted = weights_;
    std::sort(sorted.begin(), sorted.end());
    const double weight = sorted[sorted.size() / 2];
    const double share = weight / (MostBinWeight * UsedBins * frames_);
    if (share > LeastWeight) keep({tablesOf(weight), share});
    for (auto& one : cross_) std::fill(one.begin(), one.end(), std::complex<float>());
    std::fill(weights_.begin(), weights_.end(), 0.0);
    frames_ = 0;
}

SegmentTables SegmentGatherer::tablesOf(double weight) {
    SegmentTables tables;
    tables.seconds = 0.5 * (firstSecond_ + lastSecond_);
    tables.channels = channels_;
    tables.lags = lags_;
    tables.values.resize(at(pairsOf(channels_)) * at(2 * lags_ + 1));
    for (int i = 0; i < channels_; ++i) {
        for (int j = i + 1; j < channels_; ++j) {
            const std::size_t pair = at(pairIndex(channels_, i, j));
            double real = 0.0;
            for (const std::complex<float>& bin : cross_[pair]) {
                real += static_cast<double>(bin.real());
            }
            tables.likeness.push_back(
                weights_[pair] > 0.0 ? static_cast<float>(real / weights_[pair]) : 0.0f);
            correlator_.correlate(cross_[pair], lags_, static_cast<float>(1.0 / weight),
                                  tables.pair(i, j));
        }
    }
    return tables;
}
