/**
 * audunittest: a small harness for unit tests.
 *
 * A test is a function that takes nothing and returns nothing and reports what it found through the
 * calls below. It is registered by name before main, and main hands over to the command line:
 *
 *     #include <audunittest/audunittest.h>
 *
 *     static void test__sum__is_commutative(void) {
 *         if (1 + 2 == 2 + 1) {
 *             audunittest_succeed_test(__FILE__, __LINE__);
 *         } else {
 *             audunittest_fail_equals_int(__FILE__, __LINE__, 1 + 2, 2 + 1, "!=");
 *         }
 *     }
 *
 *     __attribute__((constructor)) static void register_is_commutative(void) {
 *         audunittest_register_test(test__sum__is_commutative, "test__sum__is_commutative");
 *     }
 *
 *     int main(int argc, char* argv[]) {
 *         return (int)audunittest_commandline(argc, (const char* const*)argv);
 *     }
 *
 * audunittest_checks.h has macros that write all of this: the comparison and its report, the
 * registration and main.
 *
 * The report goes to standard error (see console.h), nothing goes to standard output. A failed
 * assertion never stops a test or a run; it shows in the report and in the exit status. The harness
 * is single-threaded.
 *
 * A run that a test does not let come to its end has failed: a program that a test ends by exit, or
 * that goes on after leaving a test by longjmp or an exception, has the exit status 1. (_exit and
 * its like end it as they say; ctest demands the report of success as well.) What was left shows in
 * no later run. A run within a test resets the counters, too; its failures are the test's.
 */
#ifndef PLATFORM_AUDIO_AUDTEST_AUDUNITTEST_H
#define PLATFORM_AUDIO_AUDTEST_AUDUNITTEST_H

#include <stdint.h>

#include "console/console.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A test. */
typedef void (*audunittest_function)(void);

/**
 * Adds a test to the list, which is kept in the byte order of the names (upper-case letters before
 * lower-case ones). A name may be registered more than once; equal names keep their order, and only
 * the first can be run by name.
 *
 * function, name: not null, else an assertion aborts. name is kept, not copied: it must live as
 * long as the process. Out of memory aborts.
 */
void audunittest_register_test(audunittest_function function, const char* name);

/** Records one passed assertion. Prints nothing; file and line are not used. */
void audunittest_succeed_test(const char* file, int line);

/** Records one failed assertion and prints where: file, line and the test that runs. */
void audunittest_fail_test(const char* file, int line);

/*
 * Failed comparisons: each records one failed assertion, as audunittest_fail_test does, and prints
 * where, and after it the left value, operator_text (such as "!=") and the right value. They only
 * report: the caller has compared, and operator_text says what turned out to be true.
 */

/** Of two strings. */
void audunittest_fail_equals(const char* file, int line, const char* left, const char* right,
                             const char* operator_text);

/** Of two signed numbers. */
void audunittest_fail_equals_int(const char* file, int line, long left, long right,
                                 const char* operator_text);

/** Of two unsigned numbers. */
void audunittest_fail_equals_uint(const char* file, int line, unsigned long left,
                                  unsigned long right, const char* operator_text);

/** Of two floating-point numbers, printed with six decimals. */
void audunittest_fail_equals_double(const char* file, int line, double left, double right,
                                    const char* operator_text);

/**
 * Sets the name that failure reports give for what is running. The runner sets it to each test's
 * name and clears it after the test. context: not null, else an assertion aborts; kept, not copied.
 */
void audunittest_set_context(const char* context);

/**
 * Sets both counters to zero. Every run begins with it. A run's summary and exit status tell all
 * that was counted in the run, whatever its tests reset.
 */
void audunittest_reset(void);

/** Assertions recorded since the last reset, passed and failed. */
uint32_t audunittest_num_assertions(void);

/** Failed assertions recorded since the last reset. */
uint32_t audunittest_num_failed(void);

/**
 * The command line of a test program; main returns its value.
 *
 *     (nothing), --help, -h        prints the usage
 *     --run, --rununittest NAME    runs the test with exactly this name
 *     --runall, --runallunittests [SEARCH]
 *                                  runs the tests whose name contains SEARCH in any case, or all
 *     --list, --listunittest [SEARCH]
 *                                  lists the same tests
 *
 * argc, argv: as main received them. Arguments beyond these are ignored.
 * Returns the exit status: 0, or 1 when an assertion failed, a name was missing or not found, or
 * the option is unknown.
 */
unsigned int audunittest_commandline(int argc, const char* const argv[]);

/**
 * The same with all of the report going to console (null: standard error), without colour; the
 * console that was current before is current again afterwards.
 */
unsigned int audunittest_commandline_with_console(int argc, const char* const argv[], con* console);

#ifdef __cplusplus
}
#endif

#endif
