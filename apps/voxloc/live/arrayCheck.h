/** The doctor beside a run: gathers ten seconds of voice when asked to, and says what it finds. */
#ifndef VOXLOC_APP_LIVE_ARRAY_CHECK_H
#define VOXLOC_APP_LIVE_ARRAY_CHECK_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "arrays/arrays.h"
#include "readers/reader.h"

/**
 * The one who adds frames never waits for the doctor, who has a thread of its own while a check is
 * under way. A check ends after ten seconds of voice, or after a minute of sound.
 */
class ArrayCheck {
  public:
    explicit ArrayCheck(NamedArray array);
    ~ArrayCheck();
    ArrayCheck(const ArrayCheck&) = delete;
    ArrayCheck& operator=(const ArrayCheck&) = delete;

    /** Begins anew; false while a check is under way. */
    bool start();

    /** A frame of the run; nothing happens while none is gathered. */
    void add(const InputFrame& frame, bool isVoice);

    /** What goes on, and the last diagnosis: one JSON object. */
    std::string json() const;

  private:
    enum class State { Idle, Gathering, Judging, Done };
    void examine();
    bool next(InputFrame& frame);

    const NamedArray array_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    State state_ = State::Idle;
    bool isEnding_ = false;
    std::deque<InputFrame> frames_;  // that the doctor has not seen yet
    std::uint64_t heardFrames_ = 0, voiceFrames_ = 0;
    std::string diagnosis_;  // JSON, or empty
    std::thread thread_;
};

#endif
