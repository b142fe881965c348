#include "console/console.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "kit/capturedConsole.h"
#include "kit/lastWords.h"
#include "kit/standardError.h"

namespace {

// ---- printing ----------------------------------------------------------------------------------

class Printing : public ::testing::Test {
  protected:
    void TearDown() override { current_console = nullptr; }
    CapturedConsole console_;
};

TEST_F(Printing, HasNoConsoleByDefault) {
    EXPECT_EQ(current_console, nullptr);
}

TEST_F(Printing, GoesToStandardErrorAndReturnsTheCount) {
    RedirectedStandardError standardError(Output::file);
    EXPECT_EQ(custom_printf("%s %d\n", "x", 12), 5);
    EXPECT_EQ(standardError.text(), "x 12\n");
}

TEST_F(Printing, InColourOnAFileIsTheTextAlone) {
    RedirectedStandardError standardError(Output::file);
    EXPECT_EQ(custom_printf_color(1, "x"), 1);
    EXPECT_EQ(standardError.text(), "x");
}

TEST_F(Printing, InColourOnATerminalIsFramedBySequences) {
    RedirectedStandardError standardError(Output::terminal);
    custom_printf_color(0, "%d", 10);
    custom_printf_color(1, "x");
    custom_printf_color(2, "y");
    EXPECT_EQ(standardError.text(), "\033[31m10\033[00m\033[32mx\033[00m\033[33my\033[00m");
}

TEST_F(Printing, WithoutColourOnATerminalIsTheTextAlone) {
    RedirectedStandardError standardError(Output::terminal);
    custom_printf("x");
    EXPECT_EQ(standardError.text(), "x");
}

TEST_F(Printing, OnAConsoleIsNeverColoured) {
    current_console = &console_.operations;
    RedirectedStandardError standardError(Output::terminal);
    EXPECT_EQ(custom_printf("a%d", 1), 2);
    EXPECT_EQ(custom_printf_color(0, "b%d", 23), 3);
    EXPECT_EQ(standardError.text(), "");
    EXPECT_EQ(console_.text, "a1b23");
}

TEST_F(Printing, OnAConsoleReturnsTheConsolesResult) {
    con refusing{[](con*, const char*, va_list) { return -7; }, nullptr, nullptr};
    current_console = &refusing;
    EXPECT_EQ(custom_printf("a"), -7);
    EXPECT_EQ(custom_printf_color(2, "a"), -7);
}

TEST(Colours, AreRedGreenYellow) {
    EXPECT_STREQ(begin_colors[0], "\033[31m");
    EXPECT_STREQ(begin_colors[1], "\033[32m");
    EXPECT_STREQ(begin_colors[2], "\033[33m");
    EXPECT_EQ(CONSOLE_RED, 0);
    EXPECT_EQ(CONSOLE_GREEN, 1);
    EXPECT_EQ(CONSOLE_YELLOW, 2);
}

// ---- operations --------------------------------------------------------------------------------

// A console with all three operations, each of which notes its calls in its own way.
struct FullConsole {
    con operations{
        [](con* console, const char* format, va_list args) {
            CapturedConsole formatted;
            CapturedConsole::vout(&formatted.operations, format, args);
            reinterpret_cast<FullConsole*>(console)->calls.push_back("vout " + formatted.text);
            return 101;
        },
        [](con* console, const char* text) {
            reinterpret_cast<FullConsole*>(console)->calls.push_back(std::string("puts ") + text);
            return 102;
        },
        [](con* console, const void* buffer, size_t length) {
            reinterpret_cast<FullConsole*>(console)->calls.push_back(
                "write " + std::string(static_cast<const char*>(buffer), length));
            return 103;
        }};
    std::vector<std::string> calls;
};

TEST(Console, HasItsOperationsInTheOrderVoutPutsWrite) {
    EXPECT_EQ(offsetof(con, vout), 0u);
    EXPECT_EQ(offsetof(con, puts), sizeof(void*));
    EXPECT_EQ(offsetof(con, write), 2 * sizeof(void*));
}

TEST(Console, HandsEachCallToItsOperation) {
    FullConsole console;
    const char bytes[] = {'a', '\0', 'b'};
    EXPECT_EQ(con_out(&console.operations, "%d%%", 5), 101);
    EXPECT_EQ(con_puts(&console.operations, "%s"), 102);
    EXPECT_EQ(con_write(&console.operations, bytes, sizeof bytes), 103);
    EXPECT_EQ(console.calls,
              (std::vector<std::string>{"vout 5%", "puts %s", std::string("write a\0b", 9)}));
}

TEST(Console, WorksThroughVoutAlone) {
    CapturedConsole console;
    EXPECT_EQ(con_out(&console.operations, "%d%%", 5), 2);
    EXPECT_EQ(con_puts(&console.operations, "%s;"), 3);
    EXPECT_EQ(con_write(&console.operations, "%defg", 4), 4);
    EXPECT_EQ(con_write(&console.operations, "unseen", 0), 0);
    EXPECT_EQ(console.text, "5%%s;%def");
}

int voutWithArguments(con* console, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = con_vout(console, format, args);
    va_end(args);
    return result;
}

TEST(Console, PassesAnArgumentListOn) {
    CapturedConsole console;
    EXPECT_EQ(voutWithArguments(&console.operations, "%s-%d", "a", 7), 3);
    EXPECT_EQ(console.text, "a-7");
}

TEST(Console, ThatIsNullRefusesEverything) {
    EXPECT_EQ(voutWithArguments(nullptr, "%d", 1), -1);
    EXPECT_EQ(con_out(nullptr, "%d", 1), -1);
    EXPECT_EQ(con_puts(nullptr, "a"), -1);
    EXPECT_EQ(con_write(nullptr, "a", 1), -1);
    EXPECT_EQ(con_hexdump(nullptr, "a", 1, 16), -1);
}

// ---- hexadecimal dump --------------------------------------------------------------------------

std::string addressOf(const void* place) {
    char text[32];
    std::snprintf(text, sizeof text, "%p ", place);
    return text;
}

std::string dump(const void* data, size_t length, unsigned int bytesPerLine) {
    CapturedConsole console;
    EXPECT_EQ(con_hexdump(&console.operations, data, length, bytesPerLine), 0);
    return console.text;
}

TEST(Hexdump, ShowsAddressBytesAndText) {
    const unsigned char data[] = {0x41, 0x20, 0x7F};
    EXPECT_EQ(dump(data, 3, 4), addressOf(data) + "41 20 7f    A.. \n");
}

TEST(Hexdump, PrintsTheCodes33To126AsText) {
    const unsigned char data[] = {0x00, 0x20, 0x21, 0x7E, 0x7F, 0x80, 0xFF};
    EXPECT_EQ(dump(data, 7, 7), addressOf(data) + "00 20 21 7e 7f 80 ff ..!~...\n");
}

TEST(Hexdump, BreaksLinesAtTheWidth) {
    const char data[] = {'a', 'b', 'c', 'd', 'e'};
    EXPECT_EQ(dump(data, 4, 2),
              addressOf(data) + "61 62 ab\n" + addressOf(data + 2) + "63 64 cd\n");
    EXPECT_EQ(dump(data, 5, 4),
              addressOf(data) + "61 62 63 64 abcd\n" + addressOf(data + 4) + "65          e   \n");
    EXPECT_EQ(dump(data, 1, 1), addressOf(data) + "61 a\n");
}

TEST(Hexdump, IsAtMost32BytesWide) {
    const std::string data(40, 'A');
    std::string first;
    for (int i = 0; i < 32; i++) first += "41 ";
    std::string second;
    for (int i = 0; i < 8; i++) second += "41 ";
    const std::string expected = addressOf(data.data()) + first + std::string(32, 'A') + "\n" +
                                 addressOf(data.data() + 32) + second + std::string(24 * 3, ' ') +
                                 std::string(8, 'A') + std::string(24, ' ') + "\n";
    EXPECT_EQ(dump(data.data(), 40, 64), expected);
    EXPECT_EQ(dump(data.data(), 40, 33), expected);
    EXPECT_EQ(dump(data.data(), 40, 32), expected);
    EXPECT_NE(dump(data.data(), 40, 31), expected);
}

TEST(Hexdump, OfNothingPrintsNothing) {
    FullConsole console;
    EXPECT_EQ(con_hexdump(&console.operations, "", 0, 16), 0);
    EXPECT_TRUE(console.calls.empty());
}

TEST(Hexdump, PutsEachLine) {
    FullConsole console;
    const char data[] = {'%', 's', 'n'};
    EXPECT_EQ(con_hexdump(&console.operations, data, 3, 2), 0);
    EXPECT_EQ(console.calls,
              (std::vector<std::string>{"puts " + addressOf(data) + "25 73 %s\n",
                                        "puts " + addressOf(data + 2) + "6e    n \n"}));
}

TEST(Hexdump, AcceptsALineThatCountsZero) {
    static int lines;
    lines = 0;
    con counting{nullptr, [](con*, const char*) { return lines++, 0; }, nullptr};
    EXPECT_EQ(con_hexdump(&counting, "abc", 3, 1), 0);
    EXPECT_EQ(lines, 3);
}

TEST(Hexdump, StopsAtTheFirstLineThatIsRefused) {
    static int lines;
    lines = 0;
    con refusing{nullptr, [](con*, const char*) { return ++lines == 2 ? -5 : 1; }, nullptr};
    EXPECT_EQ(con_hexdump(&refusing, "abc", 3, 1), -1);
    EXPECT_EQ(lines, 2);
}

TEST(HexdumpDeathTest, NeedsAWidth) {
    CapturedConsole console;
    EXPECT_EXIT(con_hexdump(&console.operations, "a", 1, 0), ::testing::KilledBySignal(SIGABRT),
                assertionReport("platform/console/console", "con_hexdump", "bytes_per_line"));
}

}  // namespace
