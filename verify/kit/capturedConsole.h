/** A console object that remembers what was printed on it. */
#ifndef VERIFY_KIT_CAPTURED_CONSOLE_H
#define VERIFY_KIT_CAPTURED_CONSOLE_H

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "console/console.h"

struct CapturedConsole {
    con operations{&CapturedConsole::vout, nullptr, nullptr};  // first: a con* is a pointer to this
    std::string text;

    static int vout(con* console, const char* format, va_list args) {
        std::array<char, 1024> buffer{};
        const int count = std::vsnprintf(buffer.data(), buffer.size(), format, args);
        reinterpret_cast<CapturedConsole*>(console)->text += buffer.data();
        return count;
    }
};

#endif
