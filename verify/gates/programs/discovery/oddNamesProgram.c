/* A program whose tests have names that mean something to CMake. */
#include "audunittest/audunittest_checks.h"

static void passes(void) {
    AUDUNITTEST_TRUE(1);
}

int main(int argc, char* argv[]) {
    static const char* const names[] = {
        "two words", "semi;colon", "[bracket", "${variable}", "back\\slash", "quo\"te", "#hash",
    };
    for (unsigned i = 0; i < sizeof names / sizeof names[0]; i++) {
        audunittest_register_test(passes, names[i]);
    }
    return audunittest_main(argc, argv);
}
