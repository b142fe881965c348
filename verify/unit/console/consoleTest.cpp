#include "console/console.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
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

TEST_F(Printing, GoesToStandardErrorByDefaultAndReturnsTheCount) {
    ASSERT_EQ(current_console, nullptr);
    RedirectedStandardError standardError(Output::file);
    EXPECT_EQ(custom_printf("%s %d\n", "x", 12), 5);
    EXPECT_EQ(custom_printf_color(CONSOLE_GREEN, "y"), 1);
    EXPECT_EQ(standardError.text(), "x 12\ny");  // no colour on a file
}

TEST_F(Printing, InColourOnATerminalIsFramedBySequences) {
    SKIP_WITHOUT_PSEUDO_TERMINAL();
    RedirectedStandardError standardError(Output::terminal);
    custom_printf_color(0, "%d", 10);
    custom_printf_color(1, "x");
    custom_printf("plain");
    custom_printf_color(2, "y");
    EXPECT_EQ(standardError.text(), "\033[31m10\033[00m\033[32mx\033[00mplain\033[33my\033[00m");
}

TEST_F(Printing, OnAConsoleIsNeverColoured) {
    SKIP_WITHOUT_PSEUDO_TERMINAL();
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
    EXPECT_STREQ(begin_colors[CONSOLE_RED], "\033[31m");
    EXPECT_STREQ(begin_colors[CONSOLE_GREEN], "\033[32m");
    EXPECT_STREQ(begin_colors[CONSOLE_YELLOW], "\033[33m");
    EXPECT_EQ(CONSOLE_RED, 0);
    EXPECT_EQ(CONSOLE_GREEN, 1);
    EXPECT_EQ(CONSOLE_YELLOW, 2);
}

// ---- operations --------------------------------------------------------------------------------

// A console with all three operations, each of which notes its calls in its own way.
struct FullConsole {
    con operations{[](con* console, const char* format, va_list args) {
                       CapturedConsole formatted;
                       CapturedConsole::vout(&formatted.operations, format, args);
                       return note(console, "vout " + formatted.text, 101);
                   },
                   [](con* console, const char* text) {
                       return note(console, std::string("puts ") + text, 102);
                   },
                   [](con* console, const void* buffer, size_t length) {
                       return note(console,
                                   "write " + std::string(static_cast<const char*>(buffer), length),
                                   103);
                   }};
    std::vector<std::string> calls;

    static int note(con* console, const std::string& call, int result) {
        reinterpret_cast<FullConsole*>(console)->calls.push_back(call);
        return result;
    }
};

int voutWithArguments(con* console, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = con_vout(console, format, args);
    va_end(args);
    return result;
}

TEST(Console, HasItsOperationsInTheOrderVoutPutsWrite) {
    EXPECT_EQ(offsetof(con, vout), 0u);
    EXPECT_EQ(offsetof(con, puts), sizeof(void*));
    EXPECT_EQ(offsetof(con, write), 2 * sizeof(void*));
}

TEST(Console, HandsEachCallToItsOperation) {
    FullConsole console;
    const char bytes[] = {'a', '\0', 'b'};
    EXPECT_EQ(con_out(&console.operations, "%d%%", 5), 101);
    EXPECT_EQ(voutWithArguments(&console.operations, "%s-%d", "a", 7), 101);
    EXPECT_EQ(con_puts(&console.operations, "%s"), 102);
    EXPECT_EQ(con_write(&console.operations, bytes, sizeof bytes), 103);
    EXPECT_EQ(console.calls, (std::vector<std::string>{"vout 5%", "vout a-7", "puts %s",
                                                       std::string("write a\0b", 9)}));
}

TEST(Console, WorksThroughVoutAlone) {
    CapturedConsole console;
    EXPECT_EQ(con_out(&console.operations, "%d%%", 5), 2);
    EXPECT_EQ(con_puts(&console.operations, "%s;"), 3);
    EXPECT_EQ(con_write(&console.operations, "%defg", 4), 4);
    EXPECT_EQ(con_write(&console.operations, "unseen", 0), 0);
    EXPECT_EQ(console.text, "5%%s;%def");
}

// No more than a precision can say, rather than a negative one, which would mean all.
TEST(Console, IsWrittenToWithALengthThatVoutCanTake) {
    static int precision;
    con vout{[](con*, const char*, va_list args) { return precision = va_arg(args, int); }, nullptr,
             nullptr};
    for (const std::size_t beyond : {std::size_t{0}, std::size_t{1}, std::size_t{INT_MAX}}) {
        con_write(&vout, "text", INT_MAX + beyond);
        EXPECT_EQ(precision, INT_MAX) << beyond;
    }
}

TEST(Console, ThatIsNullRefusesEverything) {
    EXPECT_EQ(voutWithArguments(nullptr, "%d", 1), -1);
    EXPECT_EQ(con_out(nullptr, "%d", 1), -1);
    EXPECT_EQ(con_puts(nullptr, "a"), -1);
    EXPECT_EQ(con_write(nullptr, "a", 1), -1);
    EXPECT_EQ(con_hexdump(nullptr, "a", 1, 16), -1);
    EXPECT_EQ(con_hexdump(nullptr, nullptr, SIZE_MAX, 16), -1);
    EXPECT_EQ(con_hexdump(nullptr, nullptr, 0, 16), 0);
}

// ---- hexadecimal dump --------------------------------------------------------------------------

std::string addressOf(const void* place) {
    char text[32];
    std::snprintf(text, sizeof text, "%p ", place);
    return text;
}

std::string repeated(int count, const std::string& text) {
    std::string result;
    while (count-- > 0) result += text;
    return result;
}

// The dump of `data`, checked to begin each line with its address, without the addresses.
std::string dump(const std::string& data, unsigned int bytesPerLine, unsigned int width) {
    CapturedConsole console;
    EXPECT_EQ(con_hexdump(&console.operations, data.data(), data.size(), bytesPerLine), 0);
    std::string& text = console.text;
    std::size_t line = 0;
    for (std::size_t first = 0; first < data.size(); first += width) {
        const std::string address = addressOf(data.data() + first);
        if (text.compare(line, address.size(), address) != 0) return "no address in: " + text;
        text.erase(line, address.size());
        line = text.find('\n', line) + 1;
    }
    return text;
}

TEST(Hexdump, ShowsAddressBytesAndText) {
    EXPECT_EQ(dump("A \x7F", 4, 4), "41 20 7f    A.. \n");
    EXPECT_EQ(dump(std::string("\0 !~\x7F\x80\xFF", 7), 7, 7), "00 20 21 7e 7f 80 ff ..!~...\n");
    EXPECT_EQ(dump("abcd", 2, 2), "61 62 ab\n63 64 cd\n");
    EXPECT_EQ(dump("abcde", 4, 4), "61 62 63 64 abcd\n65          e   \n");
    EXPECT_EQ(dump("a", 1, 1), "61 a\n");
    EXPECT_EQ(dump("", 16, 16), "");
}

TEST(Hexdump, IsAtMost32BytesWide) {
    const std::string expected = repeated(32, "41 ") + repeated(32, "A") + "\n" +
                                 repeated(8, "41 ") + repeated(24, "   ") + repeated(8, "A") +
                                 repeated(24, " ") + "\n";
    for (const unsigned int width : {32u, 33u, 64u, ~0u}) {
        EXPECT_EQ(dump(repeated(40, "A"), width, 32), expected) << width;
    }
    EXPECT_EQ(dump(repeated(32, "A"), 31, 31), repeated(31, "41 ") + repeated(31, "A") + "\n" +
                                                   "41 " + repeated(30, "   ") + "A" +
                                                   repeated(30, " ") + "\n");
}

TEST(Hexdump, PutsEachLine) {
    FullConsole console;
    const char data[] = {'%', 's', 'n'};
    EXPECT_EQ(con_hexdump(&console.operations, data, 0, 16), 0);
    EXPECT_EQ(con_hexdump(&console.operations, data, 3, 2), 0);
    EXPECT_EQ(console.calls,
              (std::vector<std::string>{"puts " + addressOf(data) + "25 73 %s\n",
                                        "puts " + addressOf(data + 2) + "6e    n \n"}));
}

TEST(Hexdump, StopsAtTheFirstLineThatIsRefused) {
    static int lines;
    con counting{nullptr, [](con*, const char*) { return lines++, 0; }, nullptr};
    con refusing{nullptr, [](con*, const char*) { return ++lines == 2 ? -5 : 1; }, nullptr};
    lines = 0;
    EXPECT_EQ(con_hexdump(&counting, "abc", 3, 1), 0);  // a count of zero is no refusal
    EXPECT_EQ(lines, 3);
    lines = 0;
    EXPECT_EQ(con_hexdump(&refusing, "abc", 3, 1), -1);
    EXPECT_EQ(lines, 2);
}

TEST(Hexdump, BeginsWhateverTheLength) {
    static std::string first;
    con refusing{nullptr, [](con*, const char* text) { return first = text, -1; }, nullptr};
    const std::string line = addressOf("A\n") + "41 0a A.\n";
    for (const std::size_t length : {std::size_t{INT_MAX} + 1, SIZE_MAX - 1, SIZE_MAX}) {
        first.clear();
        EXPECT_EQ(con_hexdump(&refusing, "A\n", length, 2), -1) << length;
        EXPECT_EQ(first.substr(first.find(' ')), line.substr(line.find(' '))) << length;
    }
}

TEST(HexdumpDeathTest, NeedsAWidth) {
    CapturedConsole console;
    EXPECT_EXIT(con_hexdump(&console.operations, "a", 1, 0), ::testing::KilledBySignal(SIGABRT),
                assertionReport("platform/console/console", "con_hexdump", "bytes_per_line"));
}

}  // namespace
