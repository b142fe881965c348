#include "live/microphoneWatch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr float Silence = -130.0f;        // dB: below one step of 16 bits by far, and of 24 nearly
constexpr float FarBelow = 0.01f;         // of the others' power: 20 dB
constexpr float SmoothingFrames = 23.4f;  // a second
constexpr int SilentFrames = 47;          // two seconds
constexpr int WeakFrames = 117;           // five seconds

}  // namespace

const char* nameOf(MicrophoneState state) {
    switch (state) {
        case MicrophoneState::Silent:
            return "silent";
        case MicrophoneState::Weak:
            return "weak";
        default:
            return "alive";
    }
}

float MicrophoneWatch::medianOfOthers(int channel, int channels) const {
    // What is left over lies at the upper end and does not count.
    std::array<float, VOXLOC_MAX_CHANNELS> others;
    others.fill(std::numeric_limits<float>::max());
    for (int c = 0; c < channels; ++c) {
        if (c == channel) continue;
        others[static_cast<std::size_t>(c)] = microphones_[static_cast<std::size_t>(c)].power;
    }
    if (channels < 2) return 0.0f;
    std::sort(others.begin(), others.end());
    return others[static_cast<std::size_t>(channels - 1) / 2];
}

void MicrophoneWatch::add(const Record& record) {
    for (int c = 0; c < record.channels; ++c) {
        Microphone& microphone = microphones_[static_cast<std::size_t>(c)];
        const float level = record.level[static_cast<std::size_t>(c)];
        microphone.silentFrames = level < Silence ? microphone.silentFrames + 1 : 0;
        // A level that is no number comes from damaged samples and says nothing of the microphone.
        const float power = std::isfinite(level) ? std::pow(10.0f, level / 10.0f) : 0.0f;
        microphone.power += (power - microphone.power) / SmoothingFrames;
    }
    for (int c = 0; c < record.channels; ++c) {
        Microphone& microphone = microphones_[static_cast<std::size_t>(c)];
        const bool isWeak = microphone.power < FarBelow * medianOfOthers(c, record.channels);
        microphone.weakFrames = isWeak ? microphone.weakFrames + 1 : 0;
        MicrophoneState& state = states_[static_cast<std::size_t>(c)];
        state = microphone.silentFrames >= SilentFrames ? MicrophoneState::Silent
                : microphone.weakFrames >= WeakFrames   ? MicrophoneState::Weak
                                                        : MicrophoneState::Alive;
    }
}
