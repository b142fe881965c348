/** Microphone signals that are made up sample by sample, with delays as fine as need be. */
#ifndef VERIFY_TRACK_SYNTHETIC_ARRAY_H
#define VERIFY_TRACK_SYNTHETIC_ARRAY_H

#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "voxloc/voxloc.h"

/**
 * A steady broadband source: sinusoids from 200 Hz to 16 kHz, a tenth of full scale, with the
 * delay of free air (348 m/s) from a point to each microphone.
 */
class SyntheticSource {
  public:
    SyntheticSource(unsigned int seed, std::vector<Position> microphones)
        : microphones_(std::move(microphones)) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> uniform(0.0, 1.0);
        for (Partial& partial : partials_) {
            partial.frequency = 200.0 + 15800.0 * uniform(random);
            partial.phase = 6.283185307179586 * uniform(random);
        }
    }

    /** The next frame of all microphones, 24 bits. */
    const float* next(const Position& source) {
        frame_.assign(microphones_.size() * 2048, 0.0f);
        for (std::size_t c = 0; c < microphones_.size(); ++c) {
            const Position& m = microphones_[c];
            const double x = static_cast<double>(source.x - m.x);
            const double y = static_cast<double>(source.y - m.y);
            const double z = static_cast<double>(source.z - m.z);
            addChannel(&frame_[c * 2048], std::sqrt(x * x + y * y + z * z) / 348.0);
        }
        samples_ += 2048;
        return frame_.data();
    }

  private:
    struct Partial {
        double frequency;  // Hz
        double phase;
    };

    // Each sinusoid by turning a phasor from sample to sample.
    void addChannel(float* out, double delay) const {
        std::vector<double> sum(2048);
        for (const Partial& partial : partials_) {
            const double step = 6.283185307179586 * partial.frequency / 48000.0;
            const double start =
                partial.phase + 6.283185307179586 * partial.frequency *
                                    (static_cast<double>(samples_) / 48000.0 - delay);
            double re = std::cos(start);
            double im = std::sin(start);
            const double turnRe = std::cos(step);
            const double turnIm = std::sin(step);
            for (double& value : sum) {
                value += re;
                const double turned = re * turnRe - im * turnIm;
                im = re * turnIm + im * turnRe;
                re = turned;
            }
        }
        for (std::size_t i = 0; i < sum.size(); ++i) {
            out[i] = static_cast<float>(std::round(sum[i] * 838860.8 / std::sqrt(Partials / 2.0)));
        }
    }

    static constexpr int Partials = 500;
    std::vector<Position> microphones_;
    Partial partials_[Partials];
    std::vector<float> frame_;
    long samples_ = 0;
};

#endif
