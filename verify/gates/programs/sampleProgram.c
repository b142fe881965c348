/* A program on the harness, in C: tests that pass, fail and do nothing, registered before main. */
#include <stdlib.h>

#include "audunittest/audunittest_checks.h"

AUDUNITTEST_TEST(test__sample__passes) {
    AUDUNITTEST_INT(1 + 2, ==, 2 + 1);
}

AUDUNITTEST_TEST(test__sample__asserts_nothing) {}

AUDUNITTEST_TEST(test__sample__fails_twice) {
    audunittest_fail_equals_uint("sample/tests", 6, 0, 3, "!=");
    audunittest_fail_test("sample/tests", 7);
}

/* There only where the environment says so: shows through what the program was started. */
static void test__sample__emulated(void) {
    AUDUNITTEST_STRING(getenv("SAMPLE_EMULATED"), !=, NULL);
}

__attribute__((constructor)) static void register_emulated(void) {
    if (getenv("SAMPLE_EMULATED") != NULL) {
        audunittest_register_test(test__sample__emulated, "test__sample__emulated");
    }
}

AUDUNITTEST_MAIN
