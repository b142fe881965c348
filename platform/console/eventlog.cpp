#include "eventlog.h"

#include <cstdio>
#include <cstdlib>

int veventlog(const char* format, va_list args) {
    std::vfprintf(stderr, format, args);
    return std::fflush(stderr);
}

int eventlog(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = veventlog(format, args);
    va_end(args);
    return result;
}

int eventlogputs(const char* text) {
    std::fputs(text, stderr);
    return std::fflush(stderr);
}

int eventlogwrite(const void* buffer, size_t length) {
    std::fwrite(buffer, 1, length, stderr);
    return std::fflush(stderr);
}

void eventlog_die(const char* format, ...) {
    va_list args;
    va_start(args, format);
    veventlog(format, args);
    va_end(args);
    std::abort();
}
