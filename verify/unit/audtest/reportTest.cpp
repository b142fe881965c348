#include <climits>

#include "harnessFixture.h"

namespace {

class Report : public HarnessTest {
  protected:
    void expectCounts(uint32_t assertions, uint32_t failed) {
        EXPECT_EQ(audunittest_num_assertions(), assertions);
        EXPECT_EQ(audunittest_num_failed(), failed);
    }
};

TEST_F(Report, OfASuccessIsCountedAndSilent) {
    audunittest_succeed_test("file", 12);
    EXPECT_EQ(output(), "");
    expectCounts(1, 0);
}

TEST_F(Report, OfAFailure) {
    audunittest_fail_test("some/file", 12);
    EXPECT_EQ(output(), "\nFailed: some/file:12\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfAFailureInContext) {
    audunittest_set_context("a_test");
    audunittest_fail_test("some/file", 12);
    EXPECT_EQ(output(), "\nFailed: some/file:12 in a_test\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfStrings) {
    audunittest_fail_equals("some/file", 12, "left", "right", "!=");
    EXPECT_EQ(output(), "\nFailed: some/file:12: left != right\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfStringsInContext) {
    audunittest_set_context("a_test");
    audunittest_fail_equals("some/file", 12, "left", "right", "==");
    EXPECT_EQ(output(), "\nFailed: some/file:12 in a_test: left == right\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfSignedNumbers) {
    audunittest_fail_equals_int("some/file", -1, LONG_MIN, LONG_MAX, "<");
    EXPECT_EQ(output(), "\nFailed: some/file:-1: " + std::to_string(LONG_MIN) + " < " +
                            std::to_string(LONG_MAX) + "\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfSignedNumbersInContext) {
    audunittest_set_context("a_test");
    audunittest_fail_equals_int("some/file", 12, -1, 2, "!=");
    EXPECT_EQ(output(), "\nFailed: some/file:12 in a_test: -1 != 2\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfUnsignedNumbers) {
    audunittest_fail_equals_uint("some/file", 12, 1, ULONG_MAX, "!=");
    EXPECT_EQ(output(), "\nFailed: some/file:12: 1 != " + std::to_string(ULONG_MAX) + "\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfUnsignedNumbersInContext) {
    audunittest_set_context("test__voxloc__stable_speaker_aster");
    audunittest_fail_equals_uint("some/file", 6, 0, 3, "!=");
    EXPECT_EQ(output(), "\nFailed: some/file:6 in test__voxloc__stable_speaker_aster: 0 != 3\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfDoubles) {
    audunittest_fail_equals_double("some/file", 12, 0.1, -1e10, ">");
    EXPECT_EQ(output(), "\nFailed: some/file:12: 0.100000 > -10000000000.000000\n");
    expectCounts(1, 1);
}

TEST_F(Report, OfDoublesInContext) {
    audunittest_set_context("a_test");
    audunittest_fail_equals_double("some/file", 12, 1.5, 2.25, "!=");
    EXPECT_EQ(output(), "\nFailed: some/file:12 in a_test: 1.500000 != 2.250000\n");
    expectCounts(1, 1);
}

TEST_F(Report, CountsAddUpUntilReset) {
    body::passTwice();
    body::failTwice();
    body::failOnce();
    expectCounts(5, 3);
    audunittest_reset();
    expectCounts(0, 0);
}

TEST_F(Report, KeepsTheCallersContext) {
    static const char context[] = "context";
    audunittest_set_context(context);
    EXPECT_EQ(audunittest::current_context, context);
}

using ReportDeathTest = Report;

TEST_F(ReportDeathTest, NeedsAContextToSet) {
    EXPECT_EXIT(audunittest_set_context(nullptr), ::testing::KilledBySignal(SIGABRT),
                assertionReport("audunittest_set_context", "context"));
}

}  // namespace
