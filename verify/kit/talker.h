/** Frames of a talker, prepared beforehand, the same ones on every run. */
#ifndef VERIFY_KIT_TALKER_H
#define VERIFY_KIT_TALKER_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "voxloc/voxloc.h"

namespace kit {

constexpr std::uint32_t SignificantBits = 24;
constexpr double FrameMilliseconds = 2048.0 / 48.0;

/** Frames of the product that the module is initialised for, laid out as voxloc_calculate reads. */
struct Scenario {
    std::size_t frameSamples;          // channels·FRAME_SAMPLES
    std::vector<float> samples;        // frame after frame
    std::vector<std::uint32_t> flags;  // VOXLOC_INPUT_... of each frame

    std::size_t frames() const { return flags.size(); }
    const float* frame(std::size_t i) const { return samples.data() + i * frameSamples; }
};

/** Hands a frame to the module. */
inline TrackerResult processFrame(const Scenario& scenario, std::size_t i) {
    TrackerResult result;
    voxloc_calculate(scenario.frame(i), SignificantBits, scenario.flags[i], &result);
    return result;
}

/**
 * Room noise, a talker who walks, silence, the talker while the far end is active, noise again, and
 * the talker at another place, in fixed shares of the frame count.
 */
Scenario mixedScenario(std::size_t frames);

/** The talker alone, walking. */
Scenario talkerScenario(std::size_t frames);

/** Seeded uniform noise at full scale, an independent one in each channel. */
Scenario noiseScenario(std::size_t frames);

}  // namespace kit

#endif
