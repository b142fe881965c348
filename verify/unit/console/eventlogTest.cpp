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
    void SetUp() override { std::setvbuf(stderr, nullptr, _IOFBF, BUFSIZ); }
    void TearDown() override { std::setvbuf(stderr, nullptr, _IONBF, 0); }
};

TEST_F(EventLog, PrintsFormattedTextAndFlushes) {
    RedirectedStandardError standardError(Output::file);
    const int result = eventlog("%d of %s", 3, "seven");
    EXPECT_EQ(standardError.text(), "3 of seven");
    EXPECT_EQ(result, 0);  // the flush's, not the count
}

int logThroughArguments(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = veventlog(format, args);
    va_end(args);
    return result;
}

TEST_F(EventLog, PrintsAnArgumentListAndFlushes) {
    RedirectedStandardError standardError(Output::file);
    const int result = logThroughArguments("%s=%.1f\n", "level", -31.5);
    EXPECT_EQ(standardError.text(), "level=-31.5\n");
    EXPECT_EQ(result, 0);
}

TEST_F(EventLog, PutsTextAsItIsAndFlushes) {
    RedirectedStandardError standardError(Output::file);
    const int result = eventlogputs("100 %s");
    EXPECT_EQ(standardError.text(), "100 %s");
    EXPECT_EQ(result, 0);
}

TEST_F(EventLog, WritesBytesAndFlushes) {
    const char bytes[] = {'a', '\0', 'b', 'c'};
    RedirectedStandardError standardError(Output::file);
    const int result = eventlogwrite(bytes, 3);
    EXPECT_EQ(standardError.text(), std::string(bytes, 3));
    EXPECT_EQ(result, 0);
}

TEST_F(EventLog, ReturnsTheFlushesErrors) {
    RedirectedStandardError standardError(Output::file);
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    dup2(full, STDERR_FILENO);
    close(full);
    EXPECT_EQ(eventlog("text"), EOF);
    std::clearerr(stderr);
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
