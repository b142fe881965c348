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

TEST_F(Time, InMicrosecondsIsRoundedDown) {
    fakeClock::script({{5, 1999}, {0, 999}, {0, 999999999}});
    EXPECT_EQ(NYRA_now64(), 5000001u);
    EXPECT_EQ(NYRA_now64(), 0u);
    EXPECT_EQ(NYRA_now64(), 999999u);
}

TEST_F(Time, InMicrosecondsGoesBeyond32Bits) {
    fakeClock::script({{2000000000, 7000}});
    EXPECT_EQ(NYRA_now64(), 2000000000000007u);
}

TEST_F(Time, TicksAreTheLow32BitsOfTheMicroseconds) {
    fakeClock::script({{5, 1999}, {4294, 967295000}, {4294, 967296000}, {5000, 1000}});
    EXPECT_EQ(audtime_getTicks(), 5000001u);
    EXPECT_EQ(audtime_getTicks(), 4294967295u);
    EXPECT_EQ(audtime_getTicks(), 0u);
    EXPECT_EQ(audtime_getTicks(), 705032705u);  // 5,000,000,001 - 2^32
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
