/**
 * The platform calls that the harness depends on, under a test's control. A program that links this
 * is linked with --wrap for each of them; outside a test's script the real ones answer.
 */
#ifndef VERIFY_KIT_FAKE_PLATFORM_H
#define VERIFY_KIT_FAKE_PLATFORM_H

#include <ctime>
#include <vector>

namespace fakeClock {

struct Reading {
    long long seconds;
    long nanoseconds;
    int error = 0;  // not zero: the call fails with this errno
};

/** From here on clock_gettime answers these readings in turn; one too many ends the process. */
void script(std::vector<Reading> readings);

/** Back to the real clock. */
void stop();

/** The clocks asked for since script(). */
const std::vector<clockid_t>& clocksRead();

}  // namespace fakeClock

namespace fakeMemory {

/** The next malloc of the code under test returns null. */
void failNextAllocation();

}  // namespace fakeMemory

#endif
