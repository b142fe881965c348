#include "console.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>

#include "assertion/assertion.h"

namespace {

constexpr char SourcePath[] = "platform/console/console";

constexpr std::size_t max_bytes_per_line = 32;
constexpr std::size_t max_address_text = 2 + 2 * sizeof(void*);  // 0x and two digits a byte

// address, blank, "xx " a byte, a character a byte, line end, terminator
using dump_line = std::array<char, max_address_text + 1 + 4 * max_bytes_per_line + 2>;

constexpr char end_color[] = {'\033', '[', '0', '0', 'm'};

bool is_printable(unsigned char byte) {
    return byte >= 33 && byte <= 126;
}

// One line of a dump: `count` bytes laid out over `width` positions.
void format_dump_line(dump_line& line, const unsigned char* bytes, std::size_t count,
                      std::size_t width) {
    const int address_length =
        std::snprintf(line.data(), line.size(), "%p ", static_cast<const void*>(bytes));
    char* out = line.data() + address_length;
    for (std::size_t i = 0; i < width; i++) {
        if (i < count) {
            std::snprintf(out, 4, "%02x ", static_cast<unsigned int>(bytes[i]));
        } else {
            std::fill_n(out, 3, ' ');
        }
        out += 3;
    }
    for (std::size_t i = 0; i < width; i++) {
        if (i < count) {
            *out++ = is_printable(bytes[i]) ? static_cast<char>(bytes[i]) : '.';
        } else {
            *out++ = ' ';
        }
    }
    *out++ = '\n';
    *out = '\0';
}

}  // namespace

const char* const begin_colors[3] = {"\033[31m", "\033[32m", "\033[33m"};

con* current_console = nullptr;

int custom_printf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = current_console != nullptr ? con_vout(current_console, format, args)
                                                  : std::vfprintf(stderr, format, args);
    va_end(args);
    return result;
}

int custom_printf_color(int color, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int result = 0;
    if (current_console != nullptr) {
        result = con_vout(current_console, format, args);
    } else if (isatty(fileno(stderr)) != 0) {
        std::fputs(begin_colors[color], stderr);
        result = std::vfprintf(stderr, format, args);
        std::fwrite(end_color, 1, sizeof end_color, stderr);
    } else {
        result = std::vfprintf(stderr, format, args);
    }
    va_end(args);
    return result;
}

int con_vout(con* console, const char* format, va_list args) {
    if (console == nullptr) return -1;
    return console->vout(console, format, args);
}

int con_out(con* console, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = con_vout(console, format, args);
    va_end(args);
    return result;
}

int con_puts(con* console, const char* text) {
    if (console == nullptr) return -1;
    if (console->puts == nullptr) return con_out(console, "%s", text);
    return console->puts(console, text);
}

int con_write(con* console, const void* buffer, size_t length) {
    if (console == nullptr) return -1;
    if (console->write == nullptr) {
        const int precision = static_cast<int>(std::min<std::size_t>(length, INT_MAX));
        return con_out(console, "%.*s", precision, static_cast<const char*>(buffer));
    }
    return console->write(console, buffer, length);
}

int con_hexdump(con* console, const void* data, size_t length, unsigned int bytes_per_line) {
    PLATFORM_ASSERT(bytes_per_line);
    const std::size_t width = std::min<std::size_t>(bytes_per_line, max_bytes_per_line);
    const std::size_t lines = length / width + (length % width != 0 ? 1 : 0);
    if (console == nullptr && lines > 0) return -1;
    const auto* bytes = static_cast<const unsigned char*>(data);

    for (std::size_t i = 0; i < lines; i++) {
        const std::size_t first = i * width;
        dump_line line;
        format_dump_line(line, bytes + first, std::min(width, length - first), width);
        if (con_puts(console, line.data()) < 0) return -1;
    }
    return 0;
}
