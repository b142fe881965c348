/** What each channel shows by itself: level, offset, plateaus, hum. */
#ifndef VOXLOC_APP_DOCTOR_CHANNEL_STATISTICS_H
#define VOXLOC_APP_DOCTOR_CHANNEL_STATISTICS_H

#include <array>
#include <cstdint>
#include <vector>

#include "doctor/spectra.h"

/** Samples that stay at the largest value of their sign. */
class PlateauCounter {
  public:
    void add(const float* samples, int count);

    float peak() const { return peak_; }
    /** Runs of three samples or more, and the samples in them. */
    std::uint64_t runs() const { return runs_; }
    std::uint64_t samples() const { return samples_; }

  private:
    void end();

    float peak_ = 0.0f;
    std::uint64_t runs_ = 0, samples_ = 0, run_ = 0;
};

/** A family of lines that stand still while voices come and go. */
struct Hum {
    double frequency = 0.0;  // Hz: 50, 60, or 0 for none
    double level = -200.0;   // dB of full scale, of its strongest line
    double line = 0.0;       // Hz, of that line
    double above = 0.0;      // dB above what is around that line
};

class HumMeter {
  public:
    HumMeter();
    void add(const float* samples, int count);
    Hum hum() const;

  private:
    void closeBlock();

    double rising_ = 0.0, falling_ = 0.0, before_ = 0.0;  // parts of triangles
    int thinned_ = 0;
    std::vector<double> block_;
    std::vector<std::vector<double>> lines_, around_;  // of each frequency and block: mean squares
};

struct ChannelReport {
    double mean = 0.0;         // of full scale
    double peak = 0.0;         // of full scale
    double speechLevel = 0.0;  // dB of full scale from 400 Hz to 8 kHz: loud frames
    double floorLevel = 0.0;   // the same: quiet frames
    double deviation = 0.0;    // dB louder than the middle channel
    std::uint64_t plateauRuns = 0, plateauSamples = 0;
    Hum hum;
};

class ChannelStatistics {
  public:
    explicit ChannelStatistics(int channels);

    /** A frame within [-1, 1] and the spectra of the block that ends with it. */
    void add(const std::vector<float>& frame, const std::vector<Spectrum>& spectra);
    std::vector<ChannelReport> reports() const;

  private:
    struct Channel {
        double sum = 0.0;
        PlateauCounter plateau;
        HumMeter hum;
        std::vector<float> levels;  // dB, of each frame
    };
    std::vector<double> deviations() const;

    std::vector<Channel> channels_;
    std::uint64_t frames_ = 0;
};

/** The value below which that share of the values lies. */
double quantile(std::vector<float> values, double share);

#endif
