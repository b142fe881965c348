/**
 * The console: where the test harness prints.
 *
 * Output goes to standard error, in colour when that is a terminal, or to a console object that the
 * program supplies. Nothing here ever writes to standard output. Single-threaded: `current_console`
 * is plain state without a lock.
 */
#ifndef PLATFORM_CONSOLE_CONSOLE_H
#define PLATFORM_CONSOLE_CONSOLE_H

#include <stdarg.h>
#include <stddef.h>

#ifdef __GNUC__
#define CONSOLE_FORMAT(text, first) __attribute__((format(printf, text, first)))
#else
#define CONSOLE_FORMAT(text, first)
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct con con;

/**
 * A console object: three operations. It belongs to whoever creates it, the services below only
 * borrow it; a console with state of its own makes this the first member of its structure.
 */
struct con {
    /** Prints as vprintf does. Returns the count printed or a negative error. Mandatory. */
    int (*vout)(con* console, const char* format, va_list args);
    /** Prints text as it is. Returns a count or a negative error. May be null: vout serves. */
    int (*puts)(con* console, const char* text);
    /** Writes length bytes. Returns a count or a negative error. May be null: vout serves. */
    int (*write)(con* console, const void* buffer, size_t length);
};

/** Colours of custom_printf_color: indices into begin_colors. */
enum { CONSOLE_RED = 0, CONSOLE_GREEN = 1, CONSOLE_YELLOW = 2 };

/** The terminal's start sequences of red, green and yellow; each ends with "\033[00m". */
extern const char* const begin_colors[3];

/** The console that the harness prints on; null (the default) means standard error. Borrowed. */
extern con* current_console;

/**
 * Prints on current_console, or on standard error if that is null.
 * Returns the count printed, or the console's own result.
 */
int custom_printf(const char* format, ...) CONSOLE_FORMAT(1, 2);

/**
 * As custom_printf, in colour when the output is a terminal. On a console object and on a standard
 * error that is not a terminal the text is printed alone.
 *
 * color: CONSOLE_RED, CONSOLE_GREEN or CONSOLE_YELLOW; not checked.
 * Returns the count of the text, without the colour sequences, or the console's own result.
 */
int custom_printf_color(int color, const char* format, ...) CONSOLE_FORMAT(2, 3);

/*
 * Operations on a console object. Each returns -1 and does nothing when console is null, otherwise
 * what the console's operation returns.
 */

/** Prints as vprintf does. */
int con_vout(con* console, const char* format, va_list args) CONSOLE_FORMAT(2, 0);

/** Prints as printf does. */
int con_out(con* console, const char* format, ...) CONSOLE_FORMAT(2, 3);

/** Prints text as it is, with no line end added. Goes through vout where puts is missing. */
int con_puts(con* console, const char* text);

/**
 * Writes length bytes of buffer. Where write is missing they go through vout as text, which ends
 * at the first zero byte or after INT_MAX bytes.
 */
int con_write(con* console, const void* buffer, size_t length);

/**
 * Dumps length bytes at data, a line for every bytes_per_line of them: the address, the bytes in
 * hexadecimal and the bytes as text, with '.' for all but the codes 33 to 126. A short last line is
 * filled with blanks. Each line is one con_puts.
 *
 * bytes_per_line: capped at 32; zero fails an assertion.
 * Returns 0 when every line was written (also when length is 0), or -1 at the first line that was
 * refused; the dump stops there. A null console refuses the first, and data is not looked at.
 */
int con_hexdump(con* console, const void* data, size_t length, unsigned int bytes_per_line);

#ifdef __cplusplus
}
#endif

#endif
