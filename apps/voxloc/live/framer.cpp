#include "live/framer.h"

#include <cmath>
#include <utility>

Framer::Framer(int inputChannels, std::vector<int> channels, double gain)
    : inputChannels_(static_cast<std::size_t>(inputChannels)),
      channels_(std::move(channels)),
      factor_(static_cast<float>(std::pow(10.0, gain / 20.0))) {
    if (channels_.empty()) {
        for (int c = 0; c < inputChannels; ++c) channels_.push_back(c);
    }
    frame_.samples.resize(channels_.size() * FRAME_SAMPLES);
}

bool Framer::add(const float* interleaved, std::size_t count) {
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        const float* from = interleaved + channels_[c];
        float* const to = frame_.samples.data() + c * FRAME_SAMPLES + filled_;
        for (std::size_t n = 0; n < count; ++n) to[n] = from[n * inputChannels_] * factor_;
    }
    filled_ += count;
    if (filled_ < FRAME_SAMPLES) return false;
    filled_ = 0;
    return true;
}
