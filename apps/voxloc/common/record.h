/** What the program knows of one frame. */
#ifndef VOXLOC_APP_COMMON_RECORD_H
#define VOXLOC_APP_COMMON_RECORD_H

#include <array>
#include <cstdint>

#include <voxloc/voxloc.h>

#include "common/sound.h"

constexpr double SecondsPerFrame = static_cast<double>(FRAME_SAMPLES) / SampleRate;

struct Record {
    std::uint64_t frame = 0;   // from 0 on, counted from the start of the input
    std::uint64_t sample = 0;  // the frame's first, in samples a channel at 48 kHz
    TrackerResult result = {};
    bool hasEstimate = false;      // whether the position rests on any sound
    bool hasElevation = false;     // whether the array has pairs that tell it
    float ultrasoundLevel = 0.0f;  // dB
    int channels = 0;
    std::array<float, VOXLOC_MAX_CHANNELS> level = {};  // dB of full scale, mean square
};

/** The flags in the order in which records list them. */
struct FlagName {
    int bit;
    const char* name;
};
constexpr std::array<FlagName, 7> FlagNames{{
    {VOXLOC_FLAG_VOICE, "voice"},
    {VOXLOC_FLAG_TD_VOICE, "td_voice"},
    {VOXLOC_FLAG_SOUND, "sound"},
    {VOXLOC_FLAG_FAR_END, "far_end"},
    {VOXLOC_FLAG_NOISE_INPUT, "noise_input"},
    {VOXLOC_FLAG_ULTRASOUND, "ultrasound"},
    {VOXLOC_FLAG_POSITION_VALID, "position_valid"},
}};

inline bool has(const Record& record, int bit) {
    return voxloc_getFlag(static_cast<std::uint32_t>(bit), record.result.flags) != 0;
}

#endif
