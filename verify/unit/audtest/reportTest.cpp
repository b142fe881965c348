#include <climits>

#include "harnessFixture.h"

namespace {

using Report = HarnessTest;

TEST_F(Report, OfASuccessIsCountedAndSilent) {
    audunittest_succeed_test("file", 12);
    EXPECT_EQ(output(), "");
    expectCounts(1, 0);
}

// Each failure without a context, which is the first report, and in one.
const struct {
    void (*fail)();
    std::string place;
    std::string values;
} Failures[] = {
    {[] { audunittest_fail_test("some/file", 12); }, "some/file:12", ""},
    {[] { audunittest_fail_equals("a", 1, "left", "right", "=="); }, "a:1", ": left == right"},
    {[] { audunittest_fail_equals_int("a", -1, -1, LONG_MAX, "<"); }, "a:-1",
     ": -1 < " + std::to_string(LONG_MAX)},
    {[] { audunittest_fail_equals_int("a", INT_MAX, LONG_MIN, 2, "!="); }, "a:2147483647",
     ": " + std::to_string(LONG_MIN) + " != 2"},
    {[] { audunittest_fail_equals_uint("a", 6, 0, 3, "!="); }, "a:6", ": 0 != 3"},
    {[] { audunittest_fail_equals_uint("a", 6, ULONG_MAX, 1, ">"); }, "a:6",
     ": " + std::to_string(ULONG_MAX) + " > 1"},
    {[] { audunittest_fail_equals_double("a", 2, 0.1, -1e10, ">="); }, "a:2",
     ": 0.100000 >= -10000000000.000000"},
};

TEST_F(Report, OfAFailureNamesPlaceContextAndValues) {
    for (const auto& failure : Failures) {
        audunittest::current_context = nullptr;
        failure.fail();
        EXPECT_EQ(output(), "\nFailed: " + failure.place + failure.values + "\n");
        expectCounts(1, 1);

        audunittest_set_context("a_test");
        failure.fail();
        EXPECT_EQ(output(), "\nFailed: " + failure.place + " in a_test" + failure.values + "\n");
        expectCounts(2, 2);
        audunittest_reset();
        expectCounts(0, 0);
    }
}

TEST_F(Report, CountsPassedAndFailedAssertions) {
    body::passTwice();
    body::failTwice();
    body::failOnce();
    expectCounts(5, 3);
}

TEST_F(Report, KeepsTheCallersContext) {
    static const char context[] = "context";
    audunittest_set_context(context);
    EXPECT_EQ(audunittest::current_context, context);
}

using ReportDeathTest = Report;

TEST_F(ReportDeathTest, NeedsAContextToSet) {
    EXPECT_EXIT(audunittest_set_context(nullptr), Aborted,
                assertionReport("audunittest_set_context", "context"));
}

}  // namespace
