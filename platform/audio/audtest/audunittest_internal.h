/**
 * What is inside the harness: its state and its runner. Not installed; for the harness itself and
 * for its verification.
 */
#ifndef PLATFORM_AUDIO_AUDTEST_AUDUNITTEST_INTERNAL_H
#define PLATFORM_AUDIO_AUDTEST_AUDUNITTEST_INTERNAL_H

#include <cstdint>

#include "audunittest.h"

namespace audunittest {

/** One registered test; on the heap, never freed. */
struct test_entry {
    audunittest_function function;
    const char* name;  // the caller's
    test_entry* next;  // null at the end
};

struct result {
    std::uint32_t assertions;  // passed and failed
    std::uint32_t failed;
};

/** The registered tests in strcmp order of their names; null while there are none. */
extern test_entry* tests;

/** The counters of the run. */
extern result total_result;

/** What is running now, or null. */
extern const char* current_context;

/** Runs one test, with its progress line and its time. */
void run_test(const test_entry* entry);

/**
 * Runs every test whose name contains search in any case, or every test when search is null, and
 * prints the summary. Returns 1 when no assertion failed, else 0.
 */
unsigned int run_all_tests_matching_name(const char* search);

/**
 * Runs the first test with exactly this name; name must not be null.
 * Returns an exit status (the other way round from run_all_tests_matching_name): 0 when no
 * assertion failed, 1 when one did or when there is no such test.
 */
unsigned int run_test_with_name(const char* name);

}  // namespace audunittest

#endif
