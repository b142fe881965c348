// What prints: the dump of any bytes in lines of any width, consoles with and without operations
// that take any number of calls, the event log, and the harness's reports.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "audunittest/audunittest.h"
#include "console/console.h"
#include "console/eventlog.h"
#include "fuzz.h"

namespace {

/** Remembers what it takes, and takes a number of calls. */
struct Console {
    con operations{vout, nullptr, nullptr};
    std::string text;
    int callsLeft = 0;

    int take(const std::string& part) {
        if (callsLeft-- <= 0) return -3;
        text += part;
        return static_cast<int>(part.size());
    }
    static Console& of(con* console) { return *reinterpret_cast<Console*>(console); }
    static int vout(con* console, const char* format, va_list args) {
        va_list again;
        va_copy(again, args);
        const int length = std::vsnprintf(nullptr, 0, format, args);
        demand(length >= 0, "a format that can be printed");
        std::string part(static_cast<std::size_t>(length) + 1, '\0');
        std::vsnprintf(part.data(), part.size(), format, again);
        va_end(again);
        part.pop_back();
        return of(console).take(part);
    }
    static int puts(con* console, const char* text) { return of(console).take(text); }
    static int write(con* console, const void* buffer, std::size_t length) {
        return of(console).take({static_cast<const char*>(buffer), length});
    }
};

std::string dumpLine(const char* bytes, std::size_t count, std::size_t width) {
    char part[32];
    std::snprintf(part, sizeof part, "%p ", static_cast<const void*>(bytes));
    std::string line = part, text;
    for (std::size_t i = 0; i < width; ++i) {
        const auto byte = i < count ? static_cast<unsigned char>(bytes[i]) : ' ';
        std::snprintf(part, sizeof part, "%02x ", static_cast<unsigned int>(byte));
        line += i < count ? part : "   ";
        text += i < count && (byte < 33 || byte > 126) ? '.' : static_cast<char>(byte);
    }
    return line + text + "\n";
}

void dump(InputReader& input, Console& console) {
    const auto width = input.take<std::uint8_t>();
    const auto wide = static_cast<unsigned int>(width == 255 ? -1 : width + 1);
    const std::string data(input.rest());
    const int lines = std::max(console.callsLeft, 0);
    const int result = con_hexdump(&console.operations, data.data(), data.size(), wide);
    const std::size_t step = std::min(wide, 32u);
    std::string expected;
    int count = 0;
    for (std::size_t at = 0; at < data.size(); at += step, ++count) {
        if (count < lines) {
            expected += dumpLine(data.data() + at, std::min(step, data.size() - at), step);
        }
    }
    demand(console.text == expected, "a dump's lines");
    demand(result == (count > lines ? -1 : 0), "a dump's result");
}

void printTexts(InputReader& input, Console& console) {
    const std::string data(input.rest()), text = data.c_str();
    console.callsLeft = 3;
    demand(con_puts(&console.operations, text.c_str()) == static_cast<int>(text.size()), "puts");
    con_write(&console.operations, data.data(), data.size());
    con_out(&console.operations, "%s|%d", text.c_str(), 7);
    const std::string& written = console.operations.write == nullptr ? text : data;
    demand(console.text == text + written + text + "|7", "the texts of a console");
    demand(con_puts(&console.operations, "more") < 0, "a console's refusal is handed on");
}

void report(InputReader& input, Console& console) {
    const int line = input.take<std::int32_t>();
    const long number = input.take<std::int32_t>();
    const auto real = input.take<double>();
    const std::string first(input.bytes(200)), second(input.rest());
    current_console = &console.operations;
    console.callsLeft = 5;
    audunittest_reset();
    audunittest_fail_equals(first.c_str(), line, first.c_str(), second.c_str(), "!=");
    audunittest_fail_equals_int(first.c_str(), line, number, -number, "<");
    audunittest_fail_equals_uint(first.c_str(), line, 0, static_cast<unsigned long>(number), ">");
    audunittest_fail_equals_double(first.c_str(), line, real, -real, second.c_str());
    audunittest_fail_test(first.c_str(), line);
    current_console = nullptr;
    demand(audunittest_num_failed() == 5 && audunittest_num_assertions() == 5, "counts of reports");
    const std::string place = first.c_str() + (":" + std::to_string(line));
    const std::string head = "\nFailed: " + place + ": " + first.c_str() + " != ";
    demand(console.text.compare(0, head.size(), head) == 0, "a report's beginning");
    const std::string end = "\nFailed: " + place + "\n";
    demand(console.text.size() >= end.size() &&
               console.text.compare(console.text.size() - end.size(), end.size(), end) == 0,
           "a report's end");
}

/** Standard error as a file in memory for the time of some texts. */
void log(InputReader& input) {
    static const int file = memfd_create("log", MFD_CLOEXEC);
    static const int before = dup(STDERR_FILENO);
    const std::string data(input.rest()), text = data.c_str();
    demand(file >= 0 && ftruncate(file, 0) == 0 && lseek(file, 0, SEEK_SET) == 0, "a file");
    dup2(file, STDERR_FILENO);
    const bool isLogged = eventlogputs(text.c_str()) == 0 &&
                          eventlogwrite(data.data(), data.size()) == 0 &&
                          eventlog("%s", text.c_str()) == 0;
    dup2(before, STDERR_FILENO);
    demand(isLogged, "the log's results");
    std::string expected = text + data + text, found(expected.size() + 1, '\0');
    const ssize_t size = pread(file, found.data(), found.size(), 0);
    demand(size >= 0 && found.substr(0, static_cast<std::size_t>(size)) == expected,
           "the log's texts");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const int what = input.below(4);
    const auto choices = input.take<std::uint8_t>();
    Console console;
    if ((choices & 1) != 0) console.operations.puts = Console::puts;
    if ((choices & 2) != 0) console.operations.write = Console::write;
    console.callsLeft = choices >> 2;
    if (what == 0) dump(input, console);
    if (what == 1) printTexts(input, console);
    if (what == 2) report(input, console);
    if (what == 3) log(input);
    return 0;
}
