#include <cerrno>

#include "harnessFixture.h"

namespace {

using audunittest::run_all_tests_matching_name;
using audunittest::run_test;
using audunittest::run_test_with_name;

const std::string Dashes(32, '-');

std::string summary(const std::string& line) {
    return Dashes + "\n" + line + "\n" + Dashes + "\n";
}

// ---- one test ----------------------------------------------------------------------------------

class RunOneTest : public HarnessTest {
  protected:
    void run(audunittest_function function) {
        const audunittest::test_entry entry{function, "a_test", nullptr};
        run_test(&entry);
    }

    void expectTime(fakeClock::Reading begin, fakeClock::Reading end, const std::string& text) {
        console_.text.clear();
        fakeClock::script({begin, end});
        run(body::passOnce);
        EXPECT_EQ(output(), "Running a_test... Success [" + text + " ms]\n");
    }
};

TEST_F(RunOneTest, ThatPasses) {
    stopTheClock();
    run(body::passOnce);
    EXPECT_EQ(output(), "Running a_test... Success [0.000 ms]\n");
}

TEST_F(RunOneTest, ThatAssertsNothingSucceeds) {
    stopTheClock();
    run(body::assertNothing);
    EXPECT_EQ(output(), "Running a_test... Success [0.000 ms]\n");
    EXPECT_EQ(audunittest_num_assertions(), 0u);
}

TEST_F(RunOneTest, ThatFails) {
    stopTheClock();
    run(body::failTwice);
    EXPECT_EQ(output(),
              "Running a_test...\nFailed: file:6 in a_test: 0 != 3\n"
              "\nFailed: file:7 in a_test\n [0.000 ms]\n");
    EXPECT_EQ(audunittest_num_failed(), 2u);
}

TEST_F(RunOneTest, ThatPassesAfterOneThatFailed) {
    stopTheClock();
    run(body::failOnce);
    console_.text.clear();
    run(body::passOnce);
    EXPECT_EQ(output(), "Running a_test... Success [0.000 ms]\n");
    EXPECT_EQ(audunittest_num_assertions(), 2u);
    EXPECT_EQ(audunittest_num_failed(), 1u);
}

TEST_F(RunOneTest, HasItsNameAsContextWhileItRuns) {
    static std::string contextInside;
    stopTheClock();
    audunittest_set_context("before");
    run([] { contextInside = audunittest::current_context; });
    EXPECT_EQ(contextInside, "a_test");
    EXPECT_EQ(audunittest::current_context, nullptr);
}

TEST_F(RunOneTest, IsTimedByTheThreadsProcessorClockAroundItsFunctionAlone) {
    static size_t readsBeforeFunction;
    fakeClock::script({{0, 0}, {0, 0}});
    run([] { readsBeforeFunction = fakeClock::clocksRead().size(); });
    EXPECT_EQ(readsBeforeFunction, 1u);
    EXPECT_EQ(fakeClock::clocksRead(),
              (std::vector<clockid_t>{CLOCK_THREAD_CPUTIME_ID, CLOCK_THREAD_CPUTIME_ID}));
}

TEST_F(RunOneTest, PrintsMillisecondsWithThreeDecimals) {
    expectTime({3, 250}, {3, 1250}, "0.001");
    expectTime({3, 0}, {3, 1400}, "0.001");
    expectTime({3, 0}, {3, 1600}, "0.002");
    expectTime({3, 0}, {3, 12345678}, "12.346");
    expectTime({3, 0}, {5, 0}, "2000.000");
    expectTime({3, 0}, {5, 500000000}, "2500.000");
}

TEST_F(RunOneTest, CarriesNanosecondsIntoSeconds) {
    expectTime({3, 999999000}, {4, 1000}, "0.002");
    expectTime({3, 750000000}, {5, 250000000}, "1500.000");
    expectTime({3, 999999999}, {4, 0}, "0.000");
}

using RunOneTestDeathTest = RunOneTest;

TEST_F(RunOneTestDeathTest, AbortsWithoutAWordWhenTheClockFails) {
    fakeClock::script({{0, 0, EINVAL}});
    EXPECT_EXIT(run(body::passOnce), ::testing::KilledBySignal(SIGABRT), lastWords(""));
    fakeClock::script({{0, 0}, {0, 0, EINVAL}});
    EXPECT_EXIT(run(body::passOnce), ::testing::KilledBySignal(SIGABRT), lastWords(""));
}

// ---- all tests that match ----------------------------------------------------------------------

class RunAll : public HarnessTest {
  protected:
    void SetUp() override {
        HarnessTest::SetUp();
        stopTheClock();
    }
};

TEST_F(RunAll, OfAnEmptyListSucceeds) {
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 1u);
    EXPECT_EQ(output(), summary("Test success: 0 tests with 0 assertions [0.000 s]."));
}

TEST_F(RunAll, RunsEveryTestInOrder) {
    audunittest_register_test(body::passTwice, "two");
    audunittest_register_test(body::passOnce, "one");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 1u);
    EXPECT_EQ(output(), "Running one... Success [0.000 ms]\nRunning two... Success [0.000 ms]\n" +
                            summary("Test success: 2 tests with 3 assertions [0.000 s]."));
}

TEST_F(RunAll, SelectsByPartOfTheNameInAnyCase) {
    audunittest_register_test(body::passOnce, "speaker_aster");
    audunittest_register_test(body::failOnce, "speaker_bramble");
    EXPECT_EQ(run_all_tests_matching_name("ASTER"), 1u);
    EXPECT_EQ(output(), "Running speaker_aster... Success [0.000 ms]\n" +
                            summary("Test success: 1 test with 1 assertion [0.000 s]."));
}

TEST_F(RunAll, SelectsAllWithAnEmptySearch) {
    audunittest_register_test(body::passOnce, "a");
    EXPECT_EQ(run_all_tests_matching_name(""), 1u);
    EXPECT_EQ(audunittest_num_assertions(), 1u);
}

TEST_F(RunAll, ThatMatchesNothingSucceeds) {
    audunittest_register_test(body::failOnce, "a");
    EXPECT_EQ(run_all_tests_matching_name("b"), 1u);
    EXPECT_EQ(output(), summary("Test success: 0 tests with 0 assertions [0.000 s]."));
}

TEST_F(RunAll, WithOneFailureInOneTest) {
    audunittest_register_test(body::failOnce, "a");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    EXPECT_EQ(output(), "Running a...\nFailed: file:6 in a\n [0.000 ms]\n" +
                            summary("Test failure: 1 failed assertion in 1 test with 1 assertion "
                                    "[0.000 s]."));
}

TEST_F(RunAll, CountsATestOnceHoweverOftenItFails) {
    audunittest_register_test(body::failTwice, "a");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    EXPECT_EQ(output(),
              "Running a...\nFailed: file:6 in a: 0 != 3\n\nFailed: file:7 in a\n [0.000 ms]\n" +
                  summary("Test failure: 2 failed assertions in 1 test with 2 assertions "
                          "[0.000 s]."));
}

TEST_F(RunAll, GoesOnAfterAFailure) {
    audunittest_register_test(body::failOnce, "a");
    audunittest_register_test(body::passOnce, "b");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    EXPECT_EQ(output(),
              "Running a...\nFailed: file:6 in a\n [0.000 ms]\n"
              "Running b... Success [0.000 ms]\n" +
                  summary("Test failure: 1 failed assertion in 2 tests with "
                          "2 assertions [0.000 s]."));
}

TEST_F(RunAll, RunsEveryTestOfTheSameName) {
    audunittest_register_test(body::passOnce, "a");
    audunittest_register_test(body::passTwice, "a");
    EXPECT_EQ(run_all_tests_matching_name("a"), 1u);
    EXPECT_EQ(audunittest_num_assertions(), 3u);
}

TEST_F(RunAll, ForgetsEarlierRuns) {
    body::failTwice();
    audunittest_register_test(body::passOnce, "a");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 1u);
    EXPECT_EQ(audunittest_num_assertions(), 1u);
    EXPECT_EQ(audunittest_num_failed(), 0u);
}

TEST_F(RunAll, DoesNotTake256FailuresForNone) {
    audunittest_register_test(
        [] {
            for (int i = 0; i < 256; i++) audunittest_fail_test("file", i);
        },
        "a");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    const std::string line =
        summary("Test failure: 256 failed assertions in 1 test with 256 assertions [0.000 s].");
    ASSERT_GE(output().size(), line.size());
    EXPECT_EQ(output().substr(output().size() - line.size()), line);
}

TEST_F(RunAll, IsTimedAsAWholeInSeconds) {
    audunittest_register_test(body::passOnce, "a");
    fakeClock::script({{10, 900000000}, {11, 0}, {11, 2000000}, {13, 134000000}});
    run_all_tests_matching_name(nullptr);
    EXPECT_EQ(output(), "Running a... Success [2.000 ms]\n" +
                            summary("Test success: 1 test with 1 assertion [2.234 s]."));
    EXPECT_EQ(fakeClock::clocksRead(), std::vector<clockid_t>(4, CLOCK_THREAD_CPUTIME_ID));
}

using RunAllDeathTest = RunAll;

TEST_F(RunAllDeathTest, AbortsWithoutAWordWhenTheClockFails) {
    fakeClock::script({{0, 0, EINVAL}});
    EXPECT_EXIT(run_all_tests_matching_name(nullptr), ::testing::KilledBySignal(SIGABRT),
                lastWords(""));
    fakeClock::script({{0, 0}, {0, 0, EINVAL}});
    EXPECT_EXIT(run_all_tests_matching_name(nullptr), ::testing::KilledBySignal(SIGABRT),
                lastWords(""));
}

// ---- a test by name ----------------------------------------------------------------------------

class RunByName : public HarnessTest {
  protected:
    void SetUp() override {
        HarnessTest::SetUp();
        stopTheClock();
        audunittest_register_test(body::passOnce, "test__passes");
        audunittest_register_test(body::failTwice, "test__fails");
    }

    void expectNotFound(const std::string& name) {
        console_.text.clear();
        EXPECT_EQ(run_test_with_name(name.c_str()), 1u);
        EXPECT_EQ(output(), "Could not find unit test '" + name + "'\n");
    }
};

TEST_F(RunByName, ThatPassesReturns0WithoutASummary) {
    EXPECT_EQ(run_test_with_name("test__passes"), 0u);
    EXPECT_EQ(output(), "Running test__passes... Success [0.000 ms]\n");
}

TEST_F(RunByName, ThatFailsReturns1WithoutASummary) {
    EXPECT_EQ(run_test_with_name("test__fails"), 1u);
    EXPECT_EQ(output(),
              "Running test__fails...\nFailed: file:6 in test__fails: 0 != 3\n"
              "\nFailed: file:7 in test__fails\n [0.000 ms]\n");
}

TEST_F(RunByName, NeedsTheExactName) {
    expectNotFound("TEST__PASSES");
    expectNotFound("test__pass");
    expectNotFound("test__passes_");
    expectNotFound("");
}

TEST_F(RunByName, ForgetsEarlierRuns) {
    body::failTwice();
    console_.text.clear();
    EXPECT_EQ(run_test_with_name("test__passes"), 0u);
    EXPECT_EQ(audunittest_num_assertions(), 1u);
    EXPECT_EQ(audunittest_num_failed(), 0u);
}

TEST_F(RunByName, TakesTheFirstOfEqualNames) {
    audunittest_register_test(body::failOnce, "test__passes");
    EXPECT_EQ(run_test_with_name("test__passes"), 0u);
    EXPECT_EQ(audunittest_num_assertions(), 1u);
}

TEST_F(RunByName, DoesNotTake256FailuresForNone) {
    audunittest_register_test(
        [] {
            for (int i = 0; i < 256; i++) audunittest_fail_test("file", i);
        },
        "many");
    EXPECT_EQ(run_test_with_name("many"), 1u);
}

using RunByNameDeathTest = RunByName;

TEST_F(RunByNameDeathTest, NeedsAName) {
    EXPECT_EXIT(run_test_with_name(nullptr), ::testing::KilledBySignal(SIGABRT),
                assertionReport("run_test_with_name", "name"));
}

}  // namespace
