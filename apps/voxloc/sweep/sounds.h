/** The frames of a row of places. */
#ifndef VOXLOC_APP_SWEEP_SOUNDS_H
#define VOXLOC_APP_SWEEP_SOUNDS_H

#include <functional>

#include "sweep/sweep.h"

/** Takes frame k of the row, channel after channel. */
using TakeFrame = std::function<void(int k, const float* frame)>;

/** By the test generator: silence is digital. Reads on in the clip from place to place. */
void playPlainly(const VoxlocArray& array, const SweepJob& job,
                 const std::vector<Direction>& places, const TakeFrame& take);

/** In the simulator; `seed` tells the noises of rows apart. */
void playInRoom(const VoxlocArray& array, const SweepJob& job, const std::vector<Direction>& places,
                std::uint64_t seed, const TakeFrame& take);

/** For each frame of a row of `count` places whether the voice is heard in it. */
std::vector<bool> activityOf(const SweepJob& job, std::size_t count);

#endif
