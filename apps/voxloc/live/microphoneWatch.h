/** Finds microphones that look dead. */
#ifndef VOXLOC_APP_LIVE_MICROPHONE_WATCH_H
#define VOXLOC_APP_LIVE_MICROPHONE_WATCH_H

#include <array>

#include "common/record.h"

enum class MicrophoneState {
    Alive,
    Silent,  // digital silence for two seconds
    Weak     // far below the others for five seconds
};

const char* nameOf(MicrophoneState state);

class MicrophoneWatch {
  public:
    using States = std::array<MicrophoneState, VOXLOC_MAX_CHANNELS>;

    void add(const Record& record);
    const States& states() const { return states_; }

  private:
    struct Microphone {
        float power = 0.0f;  // smoothed mean square
        int silentFrames = 0, weakFrames = 0;
    };
    float medianOfOthers(int channel, int channels) const;

    std::array<Microphone, VOXLOC_MAX_CHANNELS> microphones_;
    States states_ = {};
};

#endif
