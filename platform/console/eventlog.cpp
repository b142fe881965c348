#include "eventlog.h"

#include <cstdio>
#include <cstdlib>

namespace {

/**
 * The flush's result, or EOF: standard error has no buffer of its own as a rule, and then only the
 * write knows that nothing arrived.
 */
int flushed(bool is_written) {
    const int result = std::fflush(stderr);
    return is_written ? result : EOF;
}

}  // namespace

int veventlog(const char* format, va_list args) {
    return flushed(std::vfprintf(stderr, format, args) >= 0);
}

int eventlog(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = veventlog(format, args);
    va_end(args);
    return result;
}

int eventlogputs(const char* text) {
    return flushed(std::fputs(text, stderr) >= 0);
}

int eventlogwrite(const void* buffer, size_t length) {
    // Nothing may come from nowhere, which fwrite does not allow.
    return flushed(length == 0 || std::fwrite(buffer, 1, length, stderr) == length);
}

void eventlog_die(const char* format, ...) {
    va_list args;
    va_start(args, format);
    veventlog(format, args);
    va_end(args);
    std::abort();
}
