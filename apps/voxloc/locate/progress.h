/** One line on a terminal that says how far a run is. */
#ifndef VOXLOC_APP_LOCATE_PROGRESS_H
#define VOXLOC_APP_LOCATE_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <optional>

class Progress {
  public:
    /** Silent unless `isShown`. */
    Progress(bool isShown, std::optional<std::uint64_t> frames)
        : isShown_(isShown), frames_(frames) {}

    void step(std::uint64_t framesDone) {
        if (isShown_ && framesDone % 64 == 0) show(framesDone);
    }
    void clear();

  private:
    using Clock = std::chrono::steady_clock;
    void show(std::uint64_t framesDone);

    bool isShown_, isOnScreen_ = false;
    std::optional<std::uint64_t> frames_;
    std::optional<std::uint64_t> first_;
    Clock::time_point began_ = Clock::now(), shown_ = began_;
};

#endif
