#include "console/audtime.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "kit/fakePlatform.h"
#include "kit/lastWords.h"

namespace {

class Time : public ::testing::Test {
  protected:
    void TearDown() override { fakeClock::stop(); }
};

TEST_F(Time, IsReadFromTheMonotonicClockIntoTheCallersRecord) {
    fakeClock::script({{5, 1999}});
    NYRA_time now{};
    EXPECT_EQ(NYRA_currentTime(&now), &now);
    EXPECT_EQ(now.seconds, 5u);
    EXPECT_EQ(now.nanoseconds, 1999u);
    EXPECT_EQ(fakeClock::clocksRead(), std::vector<clockid_t>{CLOCK_MONOTONIC});
}

TEST_F(Time, IsWholeMicrosecondsOrTheirLow32BitsAsTicks) {
    const struct {
        fakeClock::Reading reading;
        uint64_t microseconds;
        uint32_t ticks;
    } rows[] = {
        {{0, 999}, 0, 0},
        {{0, 999999999}, 999999, 999999},
        {{5, 1999}, 5000001, 5000001},
        {{4294, 967295000}, 4294967295, 4294967295},
        {{4294, 967296000}, 4294967296, 0},
        {{5000, 1000}, 5000000001, 705032705},  // less 2^32
        {{2000000000, 7000}, 2000000000000007, 1233977351},
    };
    for (const auto& row : rows) {
        fakeClock::script({row.reading, row.reading});
        EXPECT_EQ(NYRA_now64(), row.microseconds);
        EXPECT_EQ(audtime_getTicks(), row.ticks) << row.microseconds;
    }
}

// Differences of ticks are right as long as they are taken in 32 bits.
TEST_F(Time, TicksGoOnAcrossTheirWrap) {
    fakeClock::script({{4294, 967294000}, {4294, 967295999}, {4294, 967296000}, {4294, 967300000}});
    const uint32_t first = audtime_getTicks();
    for (const uint32_t since : {1u, 2u, 6u}) EXPECT_EQ(audtime_getTicks() - first, since);
}

// The seconds of a record have 32 bits as well: 136 years.
TEST_F(Time, SecondsWrapAfterTheirLargest) {
    fakeClock::script({{4294967295, 999999000}, {4294967296, 0}});
    EXPECT_EQ(NYRA_now64(), 4294967295999999u);
    EXPECT_EQ(NYRA_now64(), 0u);
}

TEST_F(Time, OfTheRealClockNeverRunsBackwards) {
    const uint64_t before = NYRA_now64();
    EXPECT_LE(before, NYRA_now64());
    EXPECT_GT(before, 0u);
}

TEST_F(Time, HasFixedRates) {
    EXPECT_EQ(audtime_ticksPerMs(), 1000);
    EXPECT_EQ(audtime_cyclesPerTick(), -1);
}

using TimeDeathTest = Time;

TEST_F(TimeDeathTest, AFailingClockIsNamedAndFatal) {
    fakeClock::script({{0, 0, EINVAL}});
    NYRA_time now{};
    EXPECT_EXIT(NYRA_currentTime(&now), ::testing::KilledBySignal(SIGABRT),
                lastWords("NYRA_currentTime: Invalid argument\n"));
    EXPECT_EXIT(NYRA_now64(), ::testing::KilledBySignal(SIGABRT),
                lastWords("NYRA_currentTime: Invalid argument\n"));
}

}  // namespace
