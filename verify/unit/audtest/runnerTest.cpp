#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csetjmp>

#include "audunittest/audunittest_checks.h"
#include "harnessFixture.h"

namespace {

using audunittest::run_all_tests_matching_name;
using audunittest::run_test;
using audunittest::run_test_with_name;

// ---- one test ----------------------------------------------------------------------------------

class RunOneTest : public HarnessTest {
  protected:
    static void run(audunittest_function function) {
        const audunittest::test_entry entry{function, "a_test", nullptr};
        run_test(&entry);
    }
};

TEST_F(RunOneTest, SucceedsUnlessAnAssertionFailsInIt) {
    run(body::failTwice);
    EXPECT_EQ(output(), twoFailures("a_test"));
    expectCounts(2, 2);
    run(body::passOnce);
    EXPECT_EQ(output(), success("a_test"));
    expectCounts(3, 2);
    run(body::assertNothing);
    EXPECT_EQ(output(), success("a_test"));
    expectCounts(3, 2);
}

TEST_F(RunOneTest, HasItsNameAsContextWhileItRuns) {
    static std::string contextInside;
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
    EXPECT_EQ(fakeClock::clocksRead(), std::vector<clockid_t>(2, CLOCK_THREAD_CPUTIME_ID));
}

TEST_F(RunOneTest, PrintsMillisecondsWithThreeDecimalsAndCarriesNanoseconds) {
    const struct {
        fakeClock::Reading begin, end;
        std::string milliseconds;
    } rows[] = {
        {{3, 250}, {3, 1250}, "0.001"},
        {{3, 0}, {3, 1400}, "0.001"},
        {{3, 0}, {3, 1600}, "0.002"},
        {{3, 0}, {3, 12345678}, "12.346"},
        {{3, 0}, {5, 0}, "2000.000"},
        {{3, 0}, {5, 500000000}, "2500.000"},
        {{3, 999999000}, {4, 1000}, "0.002"},
        {{3, 750000000}, {5, 250000000}, "1500.000"},
        {{3, 999999999}, {4, 0}, "0.000"},
        {{3, 999999490}, {4, 0}, "0.001"},  // 0.000 as 1000 - 999.99949 in single precision
    };
    for (const auto& row : rows) {
        fakeClock::script({row.begin, row.end});
        run(body::passOnce);
        EXPECT_EQ(output(), "Running a_test... Success [" + row.milliseconds + " ms]\n");
    }
}

TEST_F(RunOneTest, ThatResetsTheCountersAfterAFailureDoesNotSucceed) {
    run([] {
        body::failTwice();
        audunittest_reset();
    });
    EXPECT_EQ(output(), twoFailures("a_test"));
    expectCounts(0, 0);
    // A failure more and a failure forgotten do not cancel each other.
    body::failOnce();
    output();
    run([] {
        audunittest_reset();
        body::failTwice();
        audunittest_reset();
        body::failOnce();
    });
    EXPECT_EQ(output().find("Success"), std::string::npos);
}

// ---- all tests that match ----------------------------------------------------------------------

using RunAll = HarnessTest;

TEST_F(RunAll, OfAnEmptyListSucceeds) {
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 1u);
    EXPECT_EQ(output(), summary("Test success: 0 tests with 0 assertions [0.000 s]."));
}

TEST_F(RunAll, SelectsByPartOfTheNameInAnyCaseAndRunsInOrder) {
    audunittest_register_test(body::passTwice, "speaker_Bramble");
    audunittest_register_test(body::passOnce, "speaker_aster");
    const struct {
        const char* search;
        std::string report;
    } rows[] = {
        {"ASTER",
         success("speaker_aster") + summary("Test success: 1 test with 1 assertion [0.000 s].")},
        {"bramble",
         success("speaker_Bramble") + summary("Test success: 1 test with 2 assertions [0.000 s].")},
        {"", success("speaker_Bramble") + success("speaker_aster") +
                 summary("Test success: 2 tests with 3 assertions [0.000 s].")},
        {nullptr, success("speaker_Bramble") + success("speaker_aster") +
                      summary("Test success: 2 tests with 3 assertions [0.000 s].")},
        {"cinder", summary("Test success: 0 tests with 0 assertions [0.000 s].")},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(run_all_tests_matching_name(row.search), 1u);
        EXPECT_EQ(output(), row.report);
    }
}

TEST_F(RunAll, CountsATestOnceHoweverOftenItFailsAndGoesOn) {
    const std::string oneFailure = "Running a...\nFailed: file:6 in a\n [0.000 ms]\n";
    audunittest_register_test(body::failOnce, "a");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    EXPECT_EQ(output(), oneFailure + summary("Test failure: 1 failed assertion in 1 test with 1 "
                                             "assertion [0.000 s]."));
    audunittest_register_test(body::passOnce, "b");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    EXPECT_EQ(output(), oneFailure + success("b") +
                            summary("Test failure: 1 failed assertion in 2 tests with 2 assertions "
                                    "[0.000 s]."));
    audunittest_register_test(body::failTwice, "c");
    EXPECT_EQ(run_all_tests_matching_name("c"), 0u);
    EXPECT_EQ(output(),
              twoFailures("c") + summary("Test failure: 2 failed assertions in 1 test with 2 "
                                         "assertions [0.000 s]."));
}

TEST_F(RunAll, RunsEveryTestOfTheSameName) {
    audunittest_register_test(body::passOnce, "a");
    audunittest_register_test(body::passTwice, "a");
    EXPECT_EQ(run_all_tests_matching_name("a"), 1u);
    expectCounts(3, 0);
}

TEST_F(RunAll, ForgetsEarlierRuns) {
    body::failTwice();
    audunittest_register_test(body::passOnce, "a");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 1u);
    expectCounts(1, 0);
}

TEST_F(RunAll, DoesNotTake256FailuresForNone) {
    audunittest_register_test(body::fail256Times, "a");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    EXPECT_NE(output().find("Test failure: 256 failed assertions in 1 test with 256 assertions"),
              std::string::npos);
}

TEST_F(RunAll, TellsAllThatWasCountedInIt) {
    audunittest_register_test(body::failTwice, "a");
    audunittest_register_test(audunittest_reset, "b");
    audunittest_register_test(body::passOnce, "c");
    EXPECT_EQ(run_all_tests_matching_name(nullptr), 0u);
    EXPECT_EQ(output(), twoFailures("a") + success("b") + success("c") +
                            summary("Test failure: 2 failed assertions in 3 tests with 3 "
                                    "assertions [0.000 s]."));
    expectCounts(1, 0);
}

TEST_F(RunAll, WithinATestTakesNothingFromIt) {
    audunittest_register_test(
        [] {
            body::failOnce();
            EXPECT_EQ(run_all_tests_matching_name("inner"), 1u);
            EXPECT_EQ(run_test_with_name("inner"), 0u);
        },
        "outer");
    audunittest_register_test(body::passOnce, "inner");
    const std::string inside = "Running outer...\nFailed: file:6 in outer\n" + success("inner") +
                               summary("Test success: 1 test with 1 assertion [0.000 s].") +
                               success("inner");
    EXPECT_EQ(run_all_tests_matching_name("outer"), 0u);
    EXPECT_EQ(output(), inside + " [0.000 ms]\n" +
                            summary("Test failure: 1 failed assertion in 1 test with 3 assertions "
                                    "[0.000 s]."));
    EXPECT_EQ(run_test_with_name("outer"), 1u);
}

TEST_F(RunAll, WithinATestFailsThatTest) {
    audunittest_register_test([] { run_test_with_name("inner"); }, "outer");
    audunittest_register_test(body::failOnce, "inner");
    EXPECT_EQ(run_test_with_name("outer"), 1u);
    EXPECT_EQ(output().find("Success"), std::string::npos);
}

TEST_F(RunAll, IsTimedAsAWholeInSeconds) {
    audunittest_register_test(body::passOnce, "a");
    fakeClock::script({{10, 900000000}, {11, 0}, {11, 2000000}, {13, 134000000}});
    run_all_tests_matching_name(nullptr);
    EXPECT_EQ(output(), "Running a... Success [2.000 ms]\n" +
                            summary("Test success: 1 test with 1 assertion [2.234 s]."));
    EXPECT_EQ(fakeClock::clocksRead(), std::vector<clockid_t>(4, CLOCK_THREAD_CPUTIME_ID));
}

// ---- a test by name ----------------------------------------------------------------------------

class RunByName : public HarnessTest {
  protected:
    void SetUp() override {
        HarnessTest::SetUp();
        audunittest_register_test(body::passOnce, "test__passes");
        audunittest_register_test(body::failTwice, "test__fails");
    }
};

TEST_F(RunByName, ReturnsWhetherItFailedAndPrintsNoSummary) {
    EXPECT_EQ(run_test_with_name("test__passes"), 0u);
    EXPECT_EQ(output(), success("test__passes"));
    EXPECT_EQ(run_test_with_name("test__fails"), 1u);
    EXPECT_EQ(output(), twoFailures("test__fails"));
    audunittest_register_test(body::fail256Times, "many");
    EXPECT_EQ(run_test_with_name("many"), 1u);
}

TEST_F(RunByName, NeedsTheExactName) {
    for (const std::string name : {"TEST__PASSES", "test__pass", "test__passes_", ""}) {
        EXPECT_EQ(run_test_with_name(name.c_str()), 1u);
        EXPECT_EQ(output(), "Could not find unit test '" + name + "'\n");
    }
}

TEST_F(RunByName, ForgetsEarlierRunsAndTakesTheFirstOfEqualNames) {
    audunittest_register_test(body::failOnce, "test__passes");
    body::failTwice();
    EXPECT_EQ(run_test_with_name("test__passes"), 0u);
    expectCounts(1, 0);
}

// ---- what ends the process ---------------------------------------------------------------------

using RunDeathTest = RunByName;

TEST_F(RunDeathTest, AbortsWithoutAWordWhenTheClockFails) {
    const audunittest::test_entry entry{body::assertNothing, "a_test", nullptr};
    fakeClock::script({{0, 0, EINVAL}});
    EXPECT_EXIT(run_test(&entry), Aborted, lastWords(""));
    EXPECT_EXIT(run_all_tests_matching_name("none"), Aborted, lastWords(""));
    fakeClock::script({{0, 0}, {0, 0, EINVAL}});
    EXPECT_EXIT(run_test(&entry), Aborted, lastWords(""));
    EXPECT_EXIT(run_all_tests_matching_name("none"), Aborted, lastWords(""));
}

TEST_F(RunDeathTest, ThatIsNotThroughGivesTheProgramTheStatus1) {
    const ::testing::ExitedWithCode failed(1);
    audunittest_register_test([] { std::exit(0); }, "exits");
    EXPECT_EXIT(run_test_with_name("exits"), failed, "");
    EXPECT_EXIT(run_all_tests_matching_name("exits"), failed, "");
    audunittest_register_test(
        [] {
            run_test_with_name("test__passes");
            std::exit(0);
        },
        "exits_later");
    EXPECT_EXIT(run_test_with_name("exits_later"), failed, "");
    const auto exitBehind = [] {
        run_test_with_name("test__passes");
        std::exit(0);
    };
    EXPECT_EXIT(exitBehind(), ::testing::ExitedWithCode(0), "");
}

// The process that began the run has a run to finish, its children have none.
TEST_F(RunDeathTest, LeavesAChildsStatusAlone) {
    audunittest_register_test(
        [] {
            const pid_t child = fork();
            if (child == 0) std::exit(0);
            int status = -1;
            AUDUNITTEST_INT(waitpid(child, &status, 0), ==, child);
            AUDUNITTEST_INT(status, ==, 0);
        },
        "forks");
    const auto exitWithStatus = [] { std::exit(static_cast<int>(run_test_with_name("forks"))); };
    EXPECT_EXIT(exitWithStatus(), ::testing::ExitedWithCode(0), "");
}

TEST_F(RunDeathTest, ThatIsLeftByAJumpLeavesNoContextToTheNext) {
    static jmp_buf outside;
    audunittest_register_test([] { longjmp(outside, 1); }, "jumps");
    const auto jumpAndRun = [] {
        if (setjmp(outside) == 0) run_test_with_name("jumps");
        run_all_tests_matching_name("no test");
        std::_Exit(audunittest::current_context == nullptr ? 0 : 1);
    };
    EXPECT_EXIT(jumpAndRun(), ::testing::ExitedWithCode(0), "");
    const auto jumpAndExit = [] {
        if (setjmp(outside) == 0) run_test_with_name("jumps");
        std::exit(static_cast<int>(run_test_with_name("test__passes")));
    };
    EXPECT_EXIT(jumpAndExit(), ::testing::ExitedWithCode(1), "");
}

TEST_F(RunDeathTest, NeedsAName) {
    EXPECT_EXIT(run_test_with_name(nullptr), Aborted,
                assertionReport("run_test_with_name", "name"));
}

}  // namespace
