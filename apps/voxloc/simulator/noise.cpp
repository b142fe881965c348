#include "simulator/noise.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "simulator/convolution.h"
#include "simulator/exactMath.h"

namespace {

// Blocks under a sine that overlap by half, so that their powers add up to a constant.
constexpr int BlockSamples = 8192;
constexpr int Bins = BlockSamples / 2;  // from 1 on, without the last
constexpr double BinHz = static_cast<double>(SampleRate) / BlockSamples;
constexpr double KneeHz = 50.0;
constexpr double OwnPower = 1e-6;  // of each point, without which close points cannot be factored

/** Lower triangle, row after row: how independent noises are mixed for one bin. */
using Mix = std::vector<double>;

std::size_t place(std::size_t row, std::size_t column) {
    return row * (row + 1) / 2 + column;
}

/** Cholesky's factor of what the points have in common. */
Mix mixFor(const std::vector<double>& distances, std::size_t points, double waveNumber) {
    Mix mix(points * (points + 1) / 2);
    for (std::size_t i = 0; i < points; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            double rest = sincOf(waveNumber * distances[place(i, j)]) + (i == j ? OwnPower : 0.0);
            for (std::size_t k = 0; k < j; ++k) rest -= mix[place(i, k)] * mix[place(j, k)];
            mix[place(i, j)] =
                i == j ? std::sqrt(std::max(rest, OwnPower)) : rest / mix[place(j, j)];
        }
    }
    return mix;
}

std::vector<double> distancesOf(const std::vector<Point>& points) {
    std::vector<double> distances;
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            const double x = points[i].x - points[j].x, y = points[i].y - points[j].y,
                         z = points[i].z - points[j].z;
            distances.push_back(std::sqrt(x * x + y * y + z * z));
        }
    }
    return distances;
}

std::vector<Mix> mixesOf(const std::vector<Point>& points) {
    const std::vector<double> distances = distancesOf(points);
    std::vector<Mix> mixes;
    mixes.reserve(Bins);
    for (int bin = 0; bin < Bins; ++bin) {
        const double waveNumber = 2 * Pi * bin * BinHz / SpeedOfSound;
        mixes.push_back(mixFor(distances, points.size(), waveNumber));
    }
    return mixes;
}

Mix noMix(std::size_t points) {
    Mix mix(points * (points + 1) / 2, 0.0);
    for (std::size_t i = 0; i < points; ++i) mix[place(i, i)] = 1.0;
    return mix;
}

std::vector<float> sineWindow() {
    std::vector<float> window;
    window.reserve(BlockSamples);
    for (int n = 0; n < BlockSamples; ++n) {
        window.push_back(static_cast<float>(sineOf(Pi * (n + 0.5) / BlockSamples)));
    }
    return window;
}

/** Spectra of one block of all channels: even random parts, mixed and coloured. */
void fillSpectra(const std::vector<Mix>& mixes, RandomNumbers& random,
                 std::vector<std::vector<float>>& spectra) {
    const std::size_t channels = spectra.size();
    std::vector<double> real(channels), imaginary(channels);
    for (std::size_t bin = 1; bin < Bins; ++bin) {
        const double amplitude =
            1.0 / std::sqrt(std::max(KneeHz, static_cast<double>(bin) * BinHz));
        const Mix& mix = mixes[mixes.size() == 1 ? 0 : bin];
        for (std::size_t c = 0; c < channels; ++c) {
            real[c] = random.between(-amplitude, amplitude);
            imaginary[c] = random.between(-amplitude, amplitude);
        }
        for (std::size_t c = 0; c < channels; ++c) {
            double a = 0.0, b = 0.0;
            for (std::size_t k = 0; k <= c; ++k) {
                a += mix[place(c, k)] * real[k];
                b += mix[place(c, k)] * imaginary[k];
            }
            spectra[c][2 * bin] = static_cast<float>(a);
            spectra[c][2 * bin + 1] = static_cast<float>(b);
        }
    }
}

std::vector<std::vector<float>> noiseOf(const std::vector<Mix>& mixes, std::size_t channels,
                                        std::size_t samples, std::uint64_t seed) {
    constexpr std::size_t Hop = BlockSamples / 2;
    const std::vector<float> window = sineWindow();
    Transform transform(BlockSamples);
    RandomNumbers random(seed);
    // The first half of the first block rises; it is left out.
    std::vector<std::vector<float>> noise(channels, std::vector<float>(samples + 2 * Hop, 0.0f));
    std::vector<std::vector<float>> spectra(channels, std::vector<float>(BlockSamples + 2, 0.0f));
    for (std::size_t from = 0; from < samples + Hop; from += Hop) {
        fillSpectra(mixes, random, spectra);
        for (std::size_t c = 0; c < channels; ++c) {
            spectra[c][0] = spectra[c][1] = 0.0f;
            spectra[c][BlockSamples] = spectra[c][BlockSamples + 1] = 0.0f;
            transform.inverse(spectra[c].data());
            const std::size_t count = std::min<std::size_t>(BlockSamples, noise[c].size() - from);
            for (std::size_t n = 0; n < count; ++n) noise[c][from + n] += spectra[c][n] * window[n];
        }
    }
    for (std::vector<float>& channel : noise) {
        channel.erase(channel.begin(), channel.begin() + static_cast<std::ptrdiff_t>(Hop));
        channel.resize(samples);
    }
    return noise;
}

}  // namespace

std::vector<std::vector<float>> diffuseNoise(const std::vector<Point>& points, std::size_t samples,
                                             std::uint64_t seed) {
    return noiseOf(mixesOf(points), points.size(), samples, seed);
}

std::vector<std::vector<float>> independentNoise(std::size_t channels, std::size_t samples,
                                                 std::uint64_t seed) {
    return noiseOf({noMix(channels)}, channels, samples, seed);
}
