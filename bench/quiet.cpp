#include "quiet.h"

#include <cmath>

namespace voxloc_bench {

QuietFrames::QuietFrames(const Quiet& quiet)
    : kind(quiet),
      unitNoise(kit::noiseScenario(BlockFrames)),
      block(unitNoise),
      gain(quiet.amplitude) {}

std::size_t QuietFrames::blocks() const {
    const double frames = kind.minutes * 60000.0 / kit::FrameMilliseconds;
    return static_cast<std::size_t>(frames) / BlockFrames;
}

const kit::Scenario& QuietFrames::next() {
    const double decayPerFrame =
        std::pow(10.0, -kind.decayDbPerSecond * kit::FrameMilliseconds / 1000.0 / 20.0);
    for (std::size_t i = 0; i < block.samples.size(); ++i) {
        if (i % block.frameSamples == 0) gain *= decayPerFrame;
        block.samples[i] = static_cast<float>(static_cast<double>(unitNoise.samples[i]) * gain);
    }
    return block;
}

}  // namespace voxloc_bench
