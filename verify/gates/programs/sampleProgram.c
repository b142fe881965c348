/* A program on the harness, in C: tests that pass, fail and do nothing, registered before main. */
#include <stdlib.h>

#include "audunittest/audunittest.h"

#define BEFORE_MAIN __attribute__((constructor)) static void

static void passes(void) {
    audunittest_succeed_test("sample/tests", 1);
}

static void asserts_nothing(void) {}

static void fails_twice(void) {
    audunittest_fail_equals_uint("sample/tests", 6, 0, 3, "!=");
    audunittest_fail_test("sample/tests", 7);
}

BEFORE_MAIN register_tests(void) {
    audunittest_register_test(passes, "test__sample__passes");
    audunittest_register_test(fails_twice, "test__sample__fails_twice");
    audunittest_register_test(passes, "TEST__sample__upper_case");
    audunittest_register_test(asserts_nothing, "test__sample__asserts_nothing");
    /* There only where the environment says so: shows through what the program was started. */
    if (getenv("SAMPLE_EMULATED") != NULL) {
        audunittest_register_test(passes, "test__sample__emulated");
    }
}

int main(int argc, char* argv[]) {
    return (int)audunittest_commandline(argc, (const char* const*)argv);
}
