/**
 * The one assertion of this code base: a broken precondition ends the process.
 *
 * Assertions are part of the behaviour, so they are active in every build type (NDEBUG changes
 * nothing). A failure reports on standard error and aborts. The report has the C library's own
 * words; glibc and musl write
 *
 *     program: path:line: function: Assertion `expression' failed.
 *     Assertion failed: expression (path: function: line)
 *
 * `path` is the source path without extension, relative to the top of the tree. A file names itself
 * once, before its first assertion, so that the report does not depend on where the tree lies or
 * how the compiler was called:
 *
 *     constexpr char SourcePath[] = "platform/audio/audtest/audunittest";
 *
 * Where users match on a path, the file keeps that path although its code has moved, and says so.
 */
#ifndef PLATFORM_ASSERTION_ASSERTION_H
#define PLATFORM_ASSERTION_ASSERTION_H

#include <cstdio>
#include <cstdlib>

/*
 * The assert() back end of the C library, which <assert.h> hides when NDEBUG is set. musl has no
 * macro to be known by: it is what is left on Linux. PLATFORM_ASSERTION_PLAIN leaves both aside.
 */
#if defined(__GLIBC__) && !defined(PLATFORM_ASSERTION_PLAIN)
extern "C" [[noreturn]] void __assert_fail(const char* expression, const char* path,
                                           unsigned int line, const char* function) noexcept;
#define PLATFORM_ASSERTION_FAILED __assert_fail
#elif defined(__linux__) && !defined(__BIONIC__) && !defined(PLATFORM_ASSERTION_PLAIN)
extern "C" [[noreturn]] void __assert_fail(const char* expression, const char* path, int line,
                                           const char* function);
#define PLATFORM_ASSERTION_FAILED __assert_fail
#else
/* Every other C library: the line above without the program, whose name is not known here. */
[[noreturn]] inline void platform_assertion_failed(const char* expression, const char* path,
                                                   int line, const char* function) {
    std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", path, line, function, expression);
    std::fflush(stderr);
    std::abort();
}
#define PLATFORM_ASSERTION_FAILED platform_assertion_failed
#endif

/** Aborts with `expression` as the text unless it is true. Needs `SourcePath` in scope. */
#define PLATFORM_ASSERT(expression) PLATFORM_ASSERT_AS(#expression, expression)

/** The same with a fixed text: reports keep their words when the code behind them changes. */
#define PLATFORM_ASSERT_AS(text, condition) PLATFORM_ASSERT_AS_AT(__LINE__, text, condition)

/** The same with a fixed line number, for reports whose line users already match on. */
#define PLATFORM_ASSERT_AT(line, expression) PLATFORM_ASSERT_AS_AT(line, #expression, expression)

/** Line and text both fixed. */
#define PLATFORM_ASSERT_AS_AT(line, text, condition) \
    ((condition) ? static_cast<void>(0)              \
                 : PLATFORM_ASSERTION_FAILED(text, SourcePath, line, __func__))

#endif
