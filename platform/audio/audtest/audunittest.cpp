#include "audunittest.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "assertion/assertion.h"
#include "audunittest_internal.h"

namespace audunittest {

// Constant-initialised: registration runs before main, in no particular order among source files.
test_entry* tests = nullptr;
result total_result = {0, 0};
const char* current_context = nullptr;

}  // namespace audunittest

namespace {

using namespace audunittest;

constexpr char SourcePath[] = "platform/audio/audtest/audunittest";

constexpr result empty_result = {0, 0};

/**
 * Everything counted since the program began. Tests and runs are judged by what they added to it:
 * it is not theirs to reset.
 */
result tally = empty_result;

/** Runs that have begun and not ended, one within another, and the process that they began in. */
unsigned int unfinished_runs = 0;
pid_t running_process = 0;

constexpr char dashes[] = "--------------------------------\n";

const char* plural_mark(unsigned long count) {
    return count == 1 ? "" : "s";
}

// ---- reports -----------------------------------------------------------------------------------

// Failure reports have " in <context>" where something runs: these two, printed as "%s%s".
const char* context_lead() {
    return current_context != nullptr ? " in " : "";
}
const char* context_text() {
    return current_context != nullptr ? current_context : "";
}

void count_assertion() {
    total_result.assertions++;
    tally.assertions++;
}

void count_failure() {
    count_assertion();
    total_result.failed++;
    tally.failed++;
}

// ---- begin and end of a run --------------------------------------------------------------------

/** A test that ends the program has not passed, whatever status it ends it with. */
void fail_if_unfinished() {
    if (unfinished_runs == 0 || running_process != getpid()) return;  // a child may end as it likes
    std::fflush(nullptr);
    std::_Exit(1);
}

/** Returns the tally that the run's end is compared with. */
result begin_run() {
    if (running_process == 0) std::atexit(fail_if_unfinished);
    if (unfinished_runs++ == 0) running_process = getpid();
    current_context = nullptr;  // of a test that was left by a jump
    audunittest_reset();
    return tally;
}

result end_run(const result& at_begin) {
    unfinished_runs--;
    return {tally.assertions - at_begin.assertions, tally.failed - at_begin.failed};
}

// ---- time --------------------------------------------------------------------------------------

// Processor time of the calling thread, so that a busy machine does not lengthen a test.
timespec read_clock() {
    timespec now;
    if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now) != 0) std::abort();
    return now;
}

float elapsed_milliseconds(const timespec& begin, const timespec& end) {
    auto seconds = end.tv_sec - begin.tv_sec;
    auto nanoseconds = end.tv_nsec - begin.tv_nsec;
    if (nanoseconds < 0) {
        nanoseconds += 1000000000;
        seconds--;
    }
    return static_cast<float>(nanoseconds) * 1e-6f + static_cast<float>(seconds) * 1000.0f;
}

// ---- selection ---------------------------------------------------------------------------------

bool matches(const test_entry& entry, const char* search) {
    return search == nullptr || strcasestr(entry.name, search) != nullptr;
}

const test_entry* find_test(const char* name) {
    const test_entry* entry = tests;
    while (entry != nullptr && std::strcmp(entry->name, name) != 0) entry = entry->next;
    return entry;
}

void print_summary(const result& counts, unsigned long tests_run, double seconds) {
    const unsigned long assertions = counts.assertions;
    const unsigned long failed = counts.failed;

    custom_printf("%s", dashes);
    if (failed != 0) {
        custom_printf_color(CONSOLE_RED,
                            "Test failure: %lu failed assertion%s in %lu test%s "
                            "with %lu assertion%s [%.3f s].\n",
                            failed, plural_mark(failed), tests_run, plural_mark(tests_run),
                            assertions, plural_mark(assertions), seconds);
    } else {
        custom_printf_color(CONSOLE_GREEN,
                            "Test success: %lu test%s with %lu assertion%s [%.3f s].\n", tests_run,
                            plural_mark(tests_run), assertions, plural_mark(assertions), seconds);
    }
    custom_printf("%s", dashes);
}

// ---- the command line's actions; each returns an exit status -----------------------------------

void print_usage(const char* program) {
    custom_printf("Usage: %s [--run name] | [--runall [search]] | [--list [search]] | [--help]\n",
                  program != nullptr ? program : "");
}

unsigned int run_named(const char* name) {
    if (name == nullptr) {
        custom_printf_color(CONSOLE_RED, "Missing test name\n");
        return 1;
    }
    return run_test_with_name(name);
}

unsigned int run_matching(const char* search) {
    return run_all_tests_matching_name(search) != 0 ? 0 : 1;
}

unsigned int list_matching(const char* search) {
    unsigned long found = 0;
    for (const test_entry* entry = tests; entry != nullptr; entry = entry->next) {
        if (!matches(*entry, search)) continue;
        custom_printf("%s\n", entry->name);
        found++;
    }
    custom_printf_color(CONSOLE_YELLOW, "Found %lu test%s.\n", found, plural_mark(found));
    return 0;
}

}  // namespace

// ---- registration ------------------------------------------------------------------------------

void audunittest_register_test(audunittest_function function, const char* name) {
    PLATFORM_ASSERT(function);
    PLATFORM_ASSERT(name);

    test_entry** link = &tests;
    while (*link != nullptr && std::strcmp(name, (*link)->name) >= 0) link = &(*link)->next;

    auto* entry = static_cast<test_entry*>(std::malloc(sizeof(test_entry)));
    if (entry == nullptr) std::abort();
    *entry = {function, name, *link};
    *link = entry;
}

// ---- assertions of a test ----------------------------------------------------------------------

void audunittest_succeed_test(const char*, int) {
    count_assertion();
}

void audunittest_fail_test(const char* file, int line) {
    count_failure();
    custom_printf_color(CONSOLE_RED, "\nFailed: %s:%d%s%s\n", file, line, context_lead(),
                        context_text());
}

void audunittest_fail_equals(const char* file, int line, const char* left, const char* right,
                             const char* operator_text) {
    count_failure();
    custom_printf_color(CONSOLE_RED, "\nFailed: %s:%d%s%s: %s %s %s\n", file, line, context_lead(),
                        context_text(), left, operator_text, right);
}

void audunittest_fail_equals_int(const char* file, int line, long left, long right,
                                 const char* operator_text) {
    count_failure();
    custom_printf_color(CONSOLE_RED, "\nFailed: %s:%d%s%s: %ld %s %ld\n", file, line,
                        context_lead(), context_text(), left, operator_text, right);
}

void audunittest_fail_equals_uint(const char* file, int line, unsigned long left,
                                  unsigned long right, const char* operator_text) {
    count_failure();
    custom_printf_color(CONSOLE_RED, "\nFailed: %s:%d%s%s: %lu %s %lu\n", file, line,
                        context_lead(), context_text(), left, operator_text, right);
}

void audunittest_fail_equals_double(const char* file, int line, double left, double right,
                                    const char* operator_text) {
    count_failure();
    custom_printf_color(CONSOLE_RED, "\nFailed: %s:%d%s%s: %f %s %f\n", file, line, context_lead(),
                        context_text(), left, operator_text, right);
}

void audunittest_set_context(const char* context) {
    PLATFORM_ASSERT(context);
    current_context = context;
}

void audunittest_reset(void) {
    total_result = empty_result;
}

uint32_t audunittest_num_assertions(void) {
    return total_result.assertions;
}

uint32_t audunittest_num_failed(void) {
    return total_result.failed;
}

// ---- running -----------------------------------------------------------------------------------

void audunittest::run_test(const test_entry* entry) {
    const std::uint32_t failed_before = tally.failed;
    custom_printf_color(CONSOLE_YELLOW, "Running %s...", entry->name);

    current_context = entry->name;
    const timespec begin = read_clock();
    entry->function();
    const timespec end = read_clock();
    current_context = nullptr;

    if (tally.failed == failed_before) custom_printf_color(CONSOLE_GREEN, " Success");
    custom_printf(" [%.3f ms]\n", static_cast<double>(elapsed_milliseconds(begin, end)));
}

unsigned int audunittest::run_all_tests_matching_name(const char* search) {
    const result at_begin = begin_run();
    unsigned long tests_run = 0;

    const timespec begin = read_clock();
    for (const test_entry* entry = tests; entry != nullptr; entry = entry->next) {
        if (!matches(*entry, search)) continue;
        run_test(entry);
        tests_run++;
    }
    const timespec end = read_clock();

    const float seconds = elapsed_milliseconds(begin, end) * 0.001f;
    const result counts = end_run(at_begin);
    print_summary(counts, tests_run, static_cast<double>(seconds));
    return counts.failed == 0 ? 1 : 0;
}

unsigned int audunittest::run_test_with_name(const char* name) {
    PLATFORM_ASSERT(name);

    const test_entry* entry = find_test(name);
    if (entry == nullptr) {
        custom_printf_color(CONSOLE_RED, "Could not find unit test '%s'\n", name);
        return 1;
    }
    const result at_begin = begin_run();
    run_test(entry);
    return end_run(at_begin).failed != 0 ? 1 : 0;
}

// ---- command line ------------------------------------------------------------------------------

unsigned int audunittest_commandline(int argc, const char* const argv[]) {
    if (argc < 2) {
        print_usage(argv[0]);
        return 0;
    }
    const char* const option = argv[1];
    const char* const argument = argc > 2 ? argv[2] : nullptr;
    const auto is = [option](const char* text) { return std::strcmp(option, text) == 0; };

    if (is("--run") || is("--rununittest")) return run_named(argument);
    if (is("--runall") || is("--runallunittests")) return run_matching(argument);
    if (is("--list") || is("--listunittest")) return list_matching(argument);
    const bool help = is("--help") || is("-h");
    if (!help) custom_printf_color(CONSOLE_RED, "Unknown argument '%s'\n", option);
    print_usage(argv[0]);
    return help ? 0 : 1;
}

unsigned int audunittest_commandline_with_console(int argc, const char* const argv[],
                                                  con* console) {
    con* const previous_console = current_console;
    current_console = console;
    const unsigned int status = audunittest_commandline(argc, argv);
    current_console = previous_console;
    return status;
}
