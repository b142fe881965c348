#include "fakePlatform.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

bool scripted = false;
std::vector<fakeClock::Reading> script_;
std::vector<clockid_t> clocks_;
bool allocationFails = false;

}  // namespace

extern "C" {

// Names of the linker's --wrap: the code under test calls __wrap_*, __real_* is the platform's.
int __real_clock_gettime(clockid_t clock, timespec* now);
int __wrap_clock_gettime(clockid_t clock, timespec* now);
void* __real_malloc(size_t size);
void* __wrap_malloc(size_t size);

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
    if (!scripted) return __real_clock_gettime(clock, now);
    if (clocks_.size() == script_.size()) {
        std::fputs("clock read more often than the test expects\n", stderr);
        std::_Exit(1);
    }
    const fakeClock::Reading& reading = script_[clocks_.size()];
    clocks_.push_back(clock);
    if (reading.error != 0) {
        errno = reading.error;
        return -1;
    }
    now->tv_sec = static_cast<time_t>(reading.seconds);
    now->tv_nsec = reading.nanoseconds;
    return 0;
}

void* __wrap_malloc(size_t size) {
    if (std::exchange(allocationFails, false)) return nullptr;
    return __real_malloc(size);
}

}  // extern "C"

namespace fakeClock {

void script(std::vector<Reading> readings) {
    script_ = std::move(readings);
    clocks_.clear();
    scripted = true;
}

void stop() {
    scripted = false;
}

const std::vector<clockid_t>& clocksRead() {
    return clocks_;
}

}  // namespace fakeClock

namespace fakeMemory {

void failNextAllocation() {
    allocationFails = true;
}

}  // namespace fakeMemory
