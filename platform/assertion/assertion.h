/**
 * The one assertion of this code base: a broken precondition ends the process.
 *
 * Assertions are part of the behaviour, so they are active in every build type (NDEBUG changes
 * nothing). A failure reports on standard error and aborts. The report has the C library's own
 * words; glibc writes
 *
 *     program: path:line: function: Assertion `expression' failed.
 *
 * `path` is the source path without extension, relative to the top of the tree. A unit names
 * itself once, before its first assertion:
 *
 *     constexpr char SourcePath[] = "platform/audio/audtest/audunittest";
 *
 * so that the report does not depend on where the tree lies or how the compiler was called, and so
 * that a unit keeps its name when a part of it moves into a file of its own.
 */
#ifndef PLATFORM_ASSERTION_ASSERTION_H
#define PLATFORM_ASSERTION_ASSERTION_H

#if !defined(__GLIBC__) && defined(__has_include)
#if __has_include(<features.h>)
#include <features.h>
#endif
#endif
#ifndef __GLIBC__
#error "no assertion reporter for this C library: add its assert() back end here"
#endif

/* glibc's assert() back end; <assert.h> hides the declaration when NDEBUG is set. */
extern "C" [[noreturn]] void __assert_fail(const char* expression, const char* path,
                                           unsigned int line, const char* function) noexcept;

/** Aborts with `expression` as the text unless it is true. Needs `SourcePath` in scope. */
#define PLATFORM_ASSERT(expression) PLATFORM_ASSERT_AS(#expression, expression)

/** The same with a fixed text: reports keep their words when the code behind them changes. */
#define PLATFORM_ASSERT_AS(text, condition) PLATFORM_ASSERT_AS_AT(__LINE__, text, condition)

/** The same with a fixed line number, for reports whose line users already match on. */
#define PLATFORM_ASSERT_AT(line, expression) PLATFORM_ASSERT_AS_AT(line, #expression, expression)

/** Line and text both fixed. */
#define PLATFORM_ASSERT_AS_AT(line, text, condition) \
    ((condition) ? static_cast<void>(0) : __assert_fail(text, SourcePath, line, __func__))

#endif
