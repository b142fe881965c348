/** The harness with an empty test list of its own, its output captured, its state put back. */
#ifndef VERIFY_PLATFORM_AUDIO_AUDTEST_HARNESS_FIXTURE_H
#define VERIFY_PLATFORM_AUDIO_AUDTEST_HARNESS_FIXTURE_H

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

    /** The time stands still: every duration is zero. */
    static void stopTheClock() { fakeClock::script(std::vector<fakeClock::Reading>(100, {0, 0})); }

    static std::vector<std::string> registeredNames() {
        std::vector<std::string> names;
        for (auto* entry = audunittest::tests; entry != nullptr; entry = entry->next) {
            names.emplace_back(entry->name);
        }
        return names;
    }

    const std::string& output() const { return console_.text; }

    CapturedConsole console_;
};

/** Bodies of registered tests. */
namespace body {
inline void passOnce() {
    audunittest_succeed_test("file", 1);
}
inline void passTwice() {
    audunittest_succeed_test("file", 1);
    audunittest_succeed_test("file", 2);
}
inline void failOnce() {
    audunittest_fail_test("file", 6);
}
inline void failTwice() {
    audunittest_fail_equals_uint("file", 6, 0, 3, "!=");
    audunittest_fail_test("file", 7);
}
inline void assertNothing() {}
}  // namespace body

/** The report of a failed assertion in the harness. */
inline std::string assertionReport(const std::string& function, const std::string& expression) {
    return assertionReport("platform/audio/audtest/audunittest", function, expression);
}

#endif
