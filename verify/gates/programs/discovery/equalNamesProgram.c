/* A program with two tests of the same name, of which only the first can be run by name. */
#include "audunittest/audunittest.h"

static void passes(void) {
    audunittest_succeed_test("tests", 1);
}

static void fails(void) {
    audunittest_fail_test("tests", 2);
}

int main(int argc, char* argv[]) {
    audunittest_register_test(passes, "passes");
    audunittest_register_test(fails, "passes");
    return (int)audunittest_commandline(argc, (const char* const*)argv);
}
