/**
 * The event log: diagnostics on standard error, flushed after every write so that nothing is lost
 * if the process aborts next. No level, no time stamp.
 */
#ifndef PLATFORM_CONSOLE_EVENTLOG_H
#define PLATFORM_CONSOLE_EVENTLOG_H

#include <stdarg.h>
#include <stddef.h>

#ifdef __GNUC__
#define EVENTLOG_FORMAT(text, first) __attribute__((format(printf, text, first)))
#define EVENTLOG_NORETURN __attribute__((noreturn))
#else
#define EVENTLOG_FORMAT(text, first)
#define EVENTLOG_NORETURN
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Each returns 0, or EOF when not everything arrived: standard error is closed or full. That ends
 * nothing; a pipe whose reader has left raises SIGPIPE as for every writer.
 */

/** Prints as vprintf does. */
int veventlog(const char* format, va_list args) EVENTLOG_FORMAT(1, 0);

/** Prints as printf does. */
int eventlog(const char* format, ...) EVENTLOG_FORMAT(1, 2);

/** Prints text as it is, with no line end added. */
int eventlogputs(const char* text);

/** Writes length bytes of buffer. */
int eventlogwrite(const void* buffer, size_t length);

/** Prints as eventlog does, then aborts. */
void eventlog_die(const char* format, ...) EVENTLOG_FORMAT(1, 2) EVENTLOG_NORETURN;

#ifdef __cplusplus
}
#endif

#endif
