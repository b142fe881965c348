/** What an array's geometry says of segments of speech, and what it would say with a fault. */
#ifndef VOXLOC_APP_DOCTOR_STEERING_H
#define VOXLOC_APP_DOCTOR_STEERING_H

#include <cstdint>
#include <vector>

#include "doctor/segments.h"

using ChannelSet = std::uint32_t;  // a bit a channel

inline bool contains(ChannelSet set, int channel) {
    return (set >> channel & 1u) != 0;
}

/** Places in an array's field of view, near and far, and the lags from each to each microphone. */
class Places {
  public:
    explicit Places(const VoxlocArray& array);

    int channels() const { return channels_; }
    int count() const { return count_; }
    /** Lags between neighbouring places, about. */
    double step() const { return step_; }
    /** Lags by which sound from a place is later at one microphone than at another. */
    int lag(int place, int later, int earlier) const {
        return delay(later)[place] - delay(earlier)[place];
    }
    const std::int16_t* delay(int channel) const {
        return delays_.data() +
               static_cast<std::size_t>(channel) * static_cast<std::size_t>(count_);
    }
    /** Of any place and pair. */
    int mostLag() const { return mostLag_; }

  private:
    int channels_, count_ = 0, mostLag_ = 0;
    double step_ = 0.0;
    std::vector<std::int16_t> delays_;  // channel after channel, lags beyond that to microphone 0
};

/** Lags that a channel may be late or early, and still be recognised. */
constexpr int MostOffset = 1024;  // 5.3 ms

/** The response of a place is the sum of all pairs' correlations at its lags. */
class Steering {
  public:
    /** Pairs with a channel that is not in `used` count nothing. */
    Steering(const Places& places, const SegmentTables& tables, ChannelSet used);

    double best() const { return best_; }
    int bestPlace() const { return bestPlace_; }
    /** What the channel's pairs give to the best response. */
    double partOf(int channel) const {
        return static_cast<double>(touched_[static_cast<std::size_t>(channel) * sum_.size() +
                                            static_cast<std::size_t>(bestPlace_)]);
    }
    /** The best response when the channel's polarity is turned. */
    double bestInverted(int channel) const;
    /** The best response when the two channels are exchanged; much less than best() ends the search
     * at 70 per cent of it. */
    double bestSwapped(int a, int b) const;
    /**
     * The best response for each number of lags from -MostOffset to MostOffset by which the
     * channels of the set would be late.
     */
    std::vector<float> offsetCurve(ChannelSet late) const;

  private:
    /** Of each place: without the pairs between the channels of the set and the others. */
    std::vector<float> rests(ChannelSet late) const;

    const Places& places_;
    const SegmentTables& tables_;
    ChannelSet used_;
    std::vector<float> sum_;      // of each place
    std::vector<float> touched_;  // of each channel and place: its pairs' part
    double best_ = 0.0;
    int bestPlace_ = 0;
};

#endif
