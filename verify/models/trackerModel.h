/**
 * The whole tracker in double precision, written as plainly as it can be said, with an account of
 * how far a single-precision tracker may be from it. It shares nothing with the module but the
 * microphone geometry's lags, which are integers.
 */
#ifndef VERIFY_REFERENCE_TRACKER_MODEL_H
#define VERIFY_REFERENCE_TRACKER_MODEL_H

#include <cstdint>
#include <vector>

#include "detectorModels.h"
#include "doubleFft.h"
#include "voxloc/voxloc.h"

namespace reference {

/** A grid of summed correlations. */
struct GridSum {
    std::vector<double> value;
    int peak = 0;  // first maximum

    void findPeak();
    double atPeak() const { return value[static_cast<std::size_t>(peak)]; }
};

struct ModelResult {
    double azimuth, elevation, range, quality;
    double qualityBound;  // of a single-precision tracker's quality
    std::uint32_t flags;
};

class TrackerModel {
  public:
    /** judgesPanel: whether frames may speak for a panel mounted upside down. */
    TrackerModel(const VoxlocArray& array, bool judgesPanel);

    ModelResult calculate(const float* frame, std::uint32_t bits, std::uint32_t flags);

    const GridSum& directions() const { return directions_; }  // 131 elevations x 227 azimuths
    const GridSum& ranges() const { return ranges_; }          // 48 ranges x 227 azimuths
    /** How far a single-precision tracker's sum may be from this one's at a point. */
    double directionError(int point) const;
    double rangeError(int point) const;
    int blockedFrames() const { return blockedFrames_; }  // ever

  private:
    struct Channel {
        std::vector<double> older, newer;   // the two frames that the next block is made of
        Spectrum bins;                      // 2049
        double binError;                    // of each bin in single precision
        std::vector<double> noise, weight;  // per bin
        std::vector<double> weightError;    // per bin
    };
    struct Pair {
        std::size_t first, second;
        std::size_t lowerBin;
        int zoneStart, zoneEnd;  // lags, the end excluded; may be below 0 and above 16383
        double zoneGain;
        std::vector<int> lags;
        Spectrum smoothed;          // 2049
        std::vector<double> error;  // of each smoothed bin in single precision
        std::vector<int> idle;      // frames without update, per bin
        double quality = 0.0;
    };

    void addPair(VoxlocPair microphones, bool isElevation);
    void analyse(Channel& channel) const;
    static void weigh(Channel& channel);
    void smooth(Pair& pair, bool open, int limit) const;
    static std::vector<double> correlate(const Pair& pair);
    static double correlationError(const Pair& pair, int lag);
    static void gather(Pair& pair, const std::vector<double>& correlation, bool isFirst,
                       GridSum& sum);
    bool isBlocked(bool voice);
    double middleOfFlatRun() const;

    const VoxlocArray array_;
    const bool judgesPanel_;
    const std::size_t elevations_;  // pairs
    std::vector<double> window_ = std::vector<double>(4096);
    std::vector<Channel> channels_;
    std::vector<Pair> pairs_;  // elevation pairs first
    NoiseLevelModel noiseLevel_;
    FrequencyVoiceModel frequencyVoice_;
    TimeVoiceModel timeVoice_;
    UltrasoundModel ultrasound_;
    GridSum directions_, ranges_;
    int blockedFrames_ = 0;
};

}  // namespace reference

#endif
