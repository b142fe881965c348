/* A program with two tests of the same name, of which only the first can be run by name. */
#include "audunittest/audunittest_checks.h"

AUDUNITTEST_TEST(passes) {
    AUDUNITTEST_TRUE(1);
}

AUDUNITTEST_REGISTER(register_once_more, passes)

AUDUNITTEST_MAIN
