/**
 * A write to a pipe without a reader, or past the limit on a file's size, sends this thread a
 * signal that ends the process unless it is prepared. While an object of this kind lives, these two
 * wait; one that a write of one's own has caused is dropped, and the mask is put back at the end.
 */
#ifndef VOXLOC_HELD_SIGNALS_H
#define VOXLOC_HELD_SIGNALS_H

#include <csignal>
#include <ctime>

namespace voxloc {

class HeldSignals {
  public:
    HeldSignals() {
        sigset_t both;
        sigemptyset(&both);
        sigaddset(&both, SIGPIPE);
        sigaddset(&both, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &both, &maskBefore_);
        sigpending(&pendingBefore_);
    }
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    /** Drops the signal that a write has just caused, unless one of the program's own waits. */
    void drop(int signal) const {
        if (sigismember(&pendingBefore_, signal) == 1) return;
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, signal);
        constexpr timespec noTime = {};
        sigtimedwait(&one, nullptr, &noTime);
    }

  private:
    sigset_t maskBefore_;
    sigset_t pendingBefore_;
};

}  // namespace voxloc

#endif
