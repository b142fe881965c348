#define PLATFORM_ASSERTION_PLAIN
#include "assertion/assertion.h"

#include <gtest/gtest.h>

#include "kit/lastWords.h"

namespace {

constexpr char SourcePath[] = "some/path";

void check(bool value) {
    PLATFORM_ASSERT_AT(38, value);
}

TEST(PlainAssertionDeathTest, ReportsTheSameLineWithoutTheProgram) {
    check(true);
    EXPECT_EXIT(check(false), ::testing::KilledBySignal(SIGABRT),
                lastWords("some/path:38: check: Assertion `value' failed\\.\n"));
}

}  // namespace
