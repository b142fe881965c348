#include "common/signals.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t isStopRequested = 0;

void requestStop(int) {
    isStopRequested = 1;
}

}  // namespace

void catchSignals() {
    struct sigaction action = {};
    action.sa_handler = requestStop;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

bool stopRequested() {
    return isStopRequested != 0;
}
