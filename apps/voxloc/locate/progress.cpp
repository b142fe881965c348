#include "locate/progress.h"

#include <cstdio>

#include "common/record.h"

void Progress::show(std::uint64_t framesDone) {
    const Clock::time_point now = Clock::now();
    if (!first_) first_ = framesDone;
    if (now - shown_ < std::chrono::milliseconds(100)) return;
    shown_ = now;
    isOnScreen_ = true;
    const double elapsed = std::chrono::duration<double>(now - began_).count();
    const double framesPerSecond = static_cast<double>(framesDone - *first_ + 1) / elapsed;
    const double speed = framesPerSecond * SecondsPerFrame;
    if (frames_ && *frames_ > 0) {
        const double share = static_cast<double>(framesDone) / static_cast<double>(*frames_);
        const double left = static_cast<double>(*frames_ - framesDone) / framesPerSecond;
        std::fprintf(stderr, "\r\033[K%3.0f %%, %.0f times real time, %.0f s left", 100.0 * share,
                     speed, left);
    } else {
        std::fprintf(stderr, "\r\033[K%.0f s, %.0f times real time",
                     static_cast<double>(framesDone) * SecondsPerFrame, speed);
    }
}

void Progress::clear() {
    if (isOnScreen_) std::fputs("\r\033[K", stderr);
    isOnScreen_ = false;
}
