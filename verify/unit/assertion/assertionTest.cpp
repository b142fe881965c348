#include "assertion/assertion.h"

#include <gtest/gtest.h>

#include "kit/lastWords.h"

namespace {

constexpr char SourcePath[] = "some/path";

void check(bool value) {
    PLATFORM_ASSERT(value);
}
void checkAs(bool value) {
    PLATFORM_ASSERT_AS("a == \"%s\"", value);
}
void checkAt(bool value) {
    PLATFORM_ASSERT_AT(38, value);
}
void checkAsAt(bool value) {
    PLATFORM_ASSERT_AS_AT(39, "text", value);
}

TEST(Assertion, LetsATrueConditionPassInSilence) {
    testing::internal::CaptureStderr();
    check(true);
    checkAs(true);
    checkAt(true);
    checkAsAt(true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(AssertionDeathTest, ReportsPathLineFunctionAndTextAndAborts) {
    const auto report = [](const std::string& lineFunctionText) {
        return lastWords("[^\n]+: some/path:" + lineFunctionText + "' failed\\.\n");
    };
    const ::testing::KilledBySignal aborted(SIGABRT);
    EXPECT_EXIT(check(false), aborted, report("12: check: Assertion `value"));
    EXPECT_EXIT(checkAs(false), aborted, report("15: checkAs: Assertion `a == \"%s\""));
    EXPECT_EXIT(checkAt(false), aborted, report("38: checkAt: Assertion `value"));
    EXPECT_EXIT(checkAsAt(false), aborted, report("39: checkAsAt: Assertion `text"));
}

}  // namespace
