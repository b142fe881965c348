/** What faults must come to, and what several of their scenarios do. */
#ifndef VERIFY_UNIT_FAULTS_FAULTS_TESTING_H
#define VERIFY_UNIT_FAULTS_FAULTS_TESTING_H

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "audunittest/audunittest.h"
#include "injection.h"
#include "kit/lastWords.h"

namespace faults {

inline void expectClean(const Outcome& outcome) {
    EXPECT_EQ(outcome.status, 0) << outcome.describe();
}

/** All that the process has printed is the report of that assertion, a regular expression. */
inline void expectAssertion(const Outcome& outcome, const std::string& report) {
    EXPECT_EQ(outcome.status, -SIGABRT) << outcome.describe();
    EXPECT_TRUE(::testing::internal::RE::FullMatch(outcome.text, report)) << outcome.describe();
}

inline void expectWordlessEnd(const Outcome& outcome) {
    expectAssertion(outcome, lastWords(""));
}

/** Where a process costs ten times as much, two products stand for all and one recording. */
#if defined(__SANITIZE_ADDRESS__) || defined(__arm__) || defined(__aarch64__)
constexpr bool SlowMachine = true;
#else
constexpr bool SlowMachine = false;
#endif

/** What a scenario comes to with a fault; without one it is clean. */
template <class Expect>
auto ifFailed(Expect expect) {
    return [expect](const Outcome& outcome) {
        outcome.hasFailed ? expect(outcome) : expectClean(outcome);
    };
}

/** Tests for the harness to run. */
inline void pass() {
    audunittest_succeed_test("file", 1);
}
inline void fail() {
    audunittest_fail_test("file", 2);
}

inline void registerThree() {
    audunittest_register_test(pass, "b");
    audunittest_register_test(fail, "c_fails");
    audunittest_register_test(pass, "a");
}

inline unsigned int commandLine(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "program");
    return audunittest_commandline(static_cast<int>(arguments.size()), arguments.data());
}

}  // namespace faults

#endif
