/**
 * What follows after a talker: minutes of silence of several kinds. Recursions that sink into
 * denormal numbers would make it dearer than speech.
 */
#ifndef VOXLOC_BENCH_QUIET_H
#define VOXLOC_BENCH_QUIET_H

#include <cstddef>
#include <vector>

#include "kit/talker.h"

namespace voxloc_bench {

struct Quiet {
    const char* name;
    double amplitude;         // of noise, full scale is 1; 0 for exact zeros
    double decayDbPerSecond;  // of the amplitude
    int minutes;
};

// A bin's power is several hundred times the squared amplitude. Single precision turns denormal at
// 1e-38 and ends at 1e-45.
constexpr Quiet QuietKinds[] = {
    {"zeros", 0.0, 0.0, 2},         {"noise_1e-12", 1e-12, 0.0, 1},
    {"noise_1e-20", 1e-20, 0.0, 1},  // powers about 1e-37
    {"noise_1e-22", 1e-22, 0.0, 1},  // powers denormal
    {"noise_1e-30", 1e-30, 0.0, 1},  // powers vanish
    {"noise_1e-38", 1e-38, 0.0, 1},  // samples partly denormal
    {"noise_1e-41", 1e-41, 0.0, 1},  // samples denormal
    {"tail_6_dB/s", 0.1, 6.0, 3},    // through all of these
};

/** The frames of a kind, block by block, for the product that the module is initialised for. */
class QuietFrames {
  public:
    explicit QuietFrames(const Quiet& quiet);

    static constexpr std::size_t BlockFrames = 64;  // 2.7 s

    std::size_t blocks() const;

    /** The next block; valid until the next call. */
    const kit::Scenario& next();

  private:
    Quiet kind;
    kit::Scenario unitNoise, block;
    double gain;
};

}  // namespace voxloc_bench

#endif
