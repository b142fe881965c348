#include "console/eventlog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "console/console.h"
#include "kit/capturedConsole.h"
#include "kit/lastWords.h"
#include "kit/standardError.h"

namespace {

// Standard error is not buffered by itself; with a buffer, only what was flushed has arrived.
class EventLog : public ::testing::Test {
  protected:
    void SetUp() override {
        static char buffer[BUFSIZ];
        ASSERT_EQ(std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer), 0);
    }
    void TearDown() override { std::setvbuf(stderr, nullptr, _IONBF, 0); }
};

int logThroughArguments(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = veventlog(format, args);
    va_end(args);
    return result;
}

TEST_F(EventLog, PrintsFlushesAndReturnsTheFlushesResultNotTheCount) {
    const char bytes[] = {'a', '\0', 'b', 'c'};
    RedirectedStandardError standardError(Output::file);
    EXPECT_EQ(eventlog("%d of %s,", 3, "seven"), 0);
    EXPECT_EQ(standardError.text(), "3 of seven,");
    EXPECT_EQ(logThroughArguments("%s=%.1f\n", "level", -31.5), 0);
    EXPECT_EQ(standardError.text(), "3 of seven,level=-31.5\n");
    EXPECT_EQ(eventlogputs("100 %s"), 0);
    EXPECT_EQ(standardError.text(), "3 of seven,level=-31.5\n100 %s");
    EXPECT_EQ(eventlogwrite(bytes, 3), 0);
    EXPECT_EQ(standardError.text(), "3 of seven,level=-31.5\n100 %s" + std::string(bytes, 3));
}

void expectErrors() {
    EXPECT_EQ(eventlog("text"), EOF);
    EXPECT_EQ(logThroughArguments("text"), EOF);
    EXPECT_EQ(eventlogputs("text"), EOF);
    EXPECT_EQ(eventlogwrite("text", 4), EOF);
    std::clearerr(stderr);
}

void fillStandardError() {
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    dup2(full, STDERR_FILENO);
    close(full);
}

TEST_F(EventLog, ReturnsTheFlushesErrors) {
    RedirectedStandardError standardError(Output::file);
    fillStandardError();
    expectErrors();
}

// As standard error is by itself: the flush has nothing left to do.
TEST(EventLogWithoutABuffer, ReturnsTheWritesErrors) {
    {
        RedirectedStandardError standardError(Output::file);
        fillStandardError();
        expectErrors();
    }
    RedirectedStandardError standardError(Output::file);
    close(STDERR_FILENO);
    expectErrors();
}

TEST(EventLogWithoutABuffer, SucceedsWithNothingToSay) {
    RedirectedStandardError standardError(Output::file);
    EXPECT_EQ(eventlog("%s", ""), 0);
    EXPECT_EQ(eventlogputs(""), 0);
    EXPECT_EQ(eventlogwrite(nullptr, 0), 0);
    EXPECT_EQ(eventlogputs("text"), 0);
    EXPECT_EQ(eventlogwrite("text", 4), 0);
    EXPECT_EQ(standardError.text(), "texttext");
}

TEST_F(EventLog, IgnoresTheConsole) {
    CapturedConsole console;
    current_console = &console.operations;
    RedirectedStandardError standardError(Output::file);
    eventlog("a");
    eventlogputs("b");
    eventlogwrite("c", 1);
    current_console = nullptr;
    EXPECT_EQ(standardError.text(), "abc");
    EXPECT_EQ(console.text, "");
}

TEST_F(EventLog, IsNeverColoured) {
    SKIP_WITHOUT_PSEUDO_TERMINAL();
    RedirectedStandardError standardError(Output::terminal);
    eventlog("a\n");
    EXPECT_EQ(standardError.text(), asOnTerminal("a\n"));
}

using EventLogDeathTest = EventLog;

TEST_F(EventLogDeathTest, DiePrintsFlushesAndAborts) {
    EXPECT_EXIT(eventlog_die("%s: %d\n", "gone", 5), ::testing::KilledBySignal(SIGABRT),
                lastWords("gone: 5\n"));
}

}  // namespace
