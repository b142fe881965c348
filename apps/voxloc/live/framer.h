/** Interleaved samples as they come to frames as the tracker takes them. */
#ifndef VOXLOC_APP_LIVE_FRAMER_H
#define VOXLOC_APP_LIVE_FRAMER_H

#include <cstddef>
#include <vector>

#include "readers/reader.h"

class Framer {
  public:
    /** `channels` of the input in the order of the microphones; empty: as they are. */
    Framer(int inputChannels, std::vector<int> channels, double gain);

    /** Samples a channel that the frame still lacks; never 0. */
    std::size_t wanted() const { return FRAME_SAMPLES - filled_; }

    /** Up to that many; whether the frame is full now. The next call begins another one. */
    bool add(const float* interleaved, std::size_t count);

    /** Samples a channel of a frame that is not full. */
    std::size_t filled() const { return filled_; }

    /** Begins the frame anew: what comes now does not follow what came. */
    void drop() { filled_ = 0; }

    InputFrame& frame() { return frame_; }

  private:
    std::size_t inputChannels_;
    std::vector<int> channels_;
    float factor_;
    std::size_t filled_ = 0;
    InputFrame frame_;
};

#endif
