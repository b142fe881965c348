/** The harness with a test list, output and clock of the test's own; its state is put back. */
#ifndef VERIFY_UNIT_AUDTEST_HARNESS_FIXTURE_H
#define VERIFY_UNIT_AUDTEST_HARNESS_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "audio/audtest/audunittest_internal.h"
#include "audunittest/audunittest.h"
#include "kit/capturedConsole.h"
#include "kit/fakePlatform.h"
#include "kit/lastWords.h"

class HarnessTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(audunittest::tests, nullptr);
        current_console = &console_.operations;
        // The time stands still: every duration is zero.
        fakeClock::script(std::vector<fakeClock::Reading>(100, {0, 0}));
    }

    void TearDown() override {
        fakeClock::stop();
        current_console = nullptr;
        audunittest_reset();
        audunittest::current_context = nullptr;
        while (audunittest::tests != nullptr) {
            std::free(std::exchange(audunittest::tests, audunittest::tests->next));
        }
    }

    /** What was printed since the last call. */
    std::string output() { return std::exchange(console_.text, ""); }

    void expectCounts(uint32_t assertions, uint32_t failed) {
        EXPECT_EQ(audunittest_num_assertions(), assertions);
        EXPECT_EQ(audunittest_num_failed(), failed);
    }

    CapturedConsole console_;
};

/** Bodies of registered tests. */
namespace body {
inline void passOnce() {
    audunittest_succeed_test("file", 1);
}
inline void passTwice() {
    passOnce();
    passOnce();
}
inline void failOnce() {
    audunittest_fail_test("file", 6);
}
inline void failTwice() {
    audunittest_fail_equals_uint("file", 6, 0, 3, "!=");
    audunittest_fail_test("file", 7);
}
/** 0 in a counter of eight bits. */
inline void fail256Times() {
    for (int i = 0; i < 256; i++) failOnce();
}
inline void assertNothing() {}
}  // namespace body

/** What the harness prints where the time stands still. */
inline std::string success(const std::string& name) {
    return "Running " + name + "... Success [0.000 ms]\n";
}
inline std::string twoFailures(const std::string& name) {
    return "Running " + name + "...\nFailed: file:6 in " + name + ": 0 != 3\n\nFailed: file:7 in " +
           name + "\n [0.000 ms]\n";
}
inline std::string summary(const std::string& line) {
    const std::string dashes(32, '-');
    return dashes + "\n" + line + "\n" + dashes + "\n";
}

/** The report of a failed assertion in the harness. */
inline std::string assertionReport(const std::string& function, const std::string& expression) {
    return assertionReport("platform/audio/audtest/audunittest", function, expression);
}

/** The end of a process by an assertion or an abort. */
inline const ::testing::KilledBySignal Aborted(SIGABRT);

#endif
