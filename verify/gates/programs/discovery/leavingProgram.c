/* A program whose tests do not let their runs come to their ends, or hide how they end. */
#include <setjmp.h>
#include <stdlib.h>
#include <unistd.h>

#include "audunittest/audunittest_checks.h"

static jmp_buf outside;

static unsigned int run_within(const char* name) {
    const char* const arguments[] = {"program", "--run", name};
    return audunittest_commandline(3, arguments);
}

AUDUNITTEST_TEST(passes) {
    AUDUNITTEST_TRUE(1);
}

AUDUNITTEST_TEST(runs_within) {
    AUDUNITTEST_UINT(run_within("passes"), ==, 0);
}

AUDUNITTEST_TEST(bad_exit) {
    exit(0);
}

AUDUNITTEST_TEST(bad_exit_without_handlers) {
    _exit(0);
}

AUDUNITTEST_TEST(bad_exit_within) {
    AUDUNITTEST_TRUE(0);
    run_within("passes");
    exit(0);
}

AUDUNITTEST_TEST(bad_jump) {
    longjmp(outside, 1);
}

AUDUNITTEST_TEST(bad_reset) {
    AUDUNITTEST_TRUE(0);
    audunittest_reset();
}

AUDUNITTEST_TEST(bad_run_within) {
    AUDUNITTEST_TRUE(0);
    run_within("passes");
}

int main(int argc, char* argv[]) {
    if (setjmp(outside) != 0) return 0;
    return audunittest_main(argc, argv);
}
