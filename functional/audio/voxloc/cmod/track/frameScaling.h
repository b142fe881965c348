/**
 * A frame's samples brought to a full scale of 1, and what becomes of those that no converter
 * gives: they are silenced, counted and told, so that no average keeps them.
 */
#ifndef VOXLOC_FRAME_SCALING_H
#define VOXLOC_FRAME_SCALING_H

#include <cstdint>

#include "trackerLog.h"

namespace voxloc {

/**
 * Times full scale; what lies beyond, either side, and what is no number is silenced.
 *
 * That is 36 dB, 16 dB more than the hottest float audio. The largest bin is then 2212 times as
 * much (the sum of the window), a power and a cross-spectrum the square of that, and what the phase
 * transform makes of a cross-spectrum the square again: 4.0e20, far from what a float holds.
 */
constexpr float LargestSample = 64.0f;

/** A warning is due again after that many frames in a row with nothing to silence: a second. */
constexpr int FramesBetweenSpells = 24;

struct SilencedSamples {
    std::uint64_t count;  // since the start
    int framesLeft;       // of the spell, unless there is more to silence; 0: none lasts
};

/** 1 / 2^(bits-1), below the smallest positive float 0 */
float fullScaleReciprocal(std::uint32_t bits);

/**
 * scaled[i] = frame[i] / 2^(bits-1), or 0 where that is beyond LargestSample or no number; counts
 * those, and tells the log of the first of a spell.
 *
 * @param frame   in, channels·FRAME_SAMPLES samples, channel-major
 * @param scaled  out, as many; must not overlap frame
 */
void scaleFrame(SilencedSamples& silenced, const Log& log, const float* frame, std::uint32_t bits,
                int channels, float* scaled);

}  // namespace voxloc

#endif
