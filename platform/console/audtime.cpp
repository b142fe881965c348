#include "audtime.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include "eventlog.h"

NYRA_time* NYRA_currentTime(NYRA_time* out) {
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) < 0) {
        eventlog_die("NYRA_currentTime: %s\n", std::strerror(errno));
    }
    out->seconds = static_cast<uint32_t>(now.tv_sec);
    out->nanoseconds = static_cast<uint32_t>(now.tv_nsec);
    return out;
}

uint64_t NYRA_now64(void) {
    NYRA_time now;
    NYRA_currentTime(&now);
    return now.nanoseconds / 1000 + uint64_t{now.seconds} * 1000000;
}

uint32_t audtime_getTicks(void) {
    return static_cast<uint32_t>(NYRA_now64());
}

int audtime_ticksPerMs(void) {
    return 1000;
}

int audtime_cyclesPerTick(void) {
    return -1;
}
