/**
 * The four detectors in double precision, one plain loop per sentence of what they do. They share
 * nothing with the module.
 */
#ifndef VERIFY_REFERENCE_DETECTOR_MODELS_H
#define VERIFY_REFERENCE_DETECTOR_MODELS_H

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "doubleFft.h"

namespace reference {

/**
 * How near the decisions of a run came to their thresholds, relative to what was compared. A run
 * that comes as near as the roundings of single precision proves nothing.
 */
class Clearance {
  public:
    void note(double distance, double scale) {
        smallest_ = std::min(smallest_, std::abs(distance) / scale);
    }
    bool isAbove(double value, double threshold) {
        note(value - threshold, threshold);
        return value > threshold;
    }
    double smallest() const { return smallest_; }

  private:
    double smallest_ = 1.0;
};

/** Per-bin amplitude of the room noise in two channels. */
struct NoiseLevelModel {
    const std::vector<double>& update(const Spectrum& first, const Spectrum& second, bool freeze);

    std::vector<double> noise = std::vector<double>(2049), fast = noise, slow = noise;
    double remembered = 0.0;  // slow band sum when the level last changed
    int counter = 0, limit = 0;
    int startUp = 40;              // frames
    bool followsQuickly = false;   // in the last frame
    bool isAboveTheLevel = false;  // the estimate, before the last frame moved it
    Clearance clearance;

  private:
    bool judge(double fastSum, double slowSum, double noiseSum);
};

/** Speech-band power against the noise level, with burst counters and a hangover. */
struct FrequencyVoiceModel {
    struct Decision {
        bool voice, sound;
    };
    Decision update(const Spectrum& first, const Spectrum& second,
                    const std::vector<double>& noise);

    int temporal = 0, burst = 0, hang = 0;
    Clearance clearance;
};

/** output[i] = sum of taps[j]·input[i+j]: as many outputs as whole sums. */
std::vector<double> correlate(const std::vector<double>& input, const std::vector<double>& taps);

/** The taps of the time-domain detector, and what they make of a stretch of signal. */
struct EnvelopeFilters {
    std::vector<double> lowPass, highPass, average;

    /** Band-limited and rectified. */
    std::vector<double> rectified(const std::vector<double>& signal) const;
    std::vector<double> envelope(const std::vector<double>& signal) const;
    /** With every tap by its magnitude: of a signal's magnitudes, what roundings are scaled by. */
    EnvelopeFilters magnitudes() const;
};
extern const EnvelopeFilters TimeVoiceFilters;

/** Envelope of one channel's waveform against its running median; one frame late. */
class TimeVoiceModel {
  public:
    /** samples: the 2048 new samples of the channel. */
    bool update(const double* samples);

    /** What the last decision rests on: 43 samples, the frame before the newest, 44 samples. */
    std::vector<double> heard() const;

  private:
    std::vector<double> history_ = std::vector<double>(6144);
    double median_ = 0.0;
    double step_ = 1e-12;
    bool previous_ = true;
};

/** Power just below the top of the spectrum against its neighbour band, judged every 20 frames. */
struct UltrasoundModel {
    bool update(const std::vector<Spectrum>& channels);

    double level = -100.0;    // dB, the kept maximum
    bool isReplaced = false;  // at the last evaluation the level gave way to the kept one

  private:
    std::array<double, 8> band_{}, neighbour_{};
    int frames_ = 0;
};

}  // namespace reference

#endif
