/** The sample program's test in C++. */
#include "audunittest/audunittest_checks.h"

AUDUNITTEST_TEST(TEST__sample__upper_case) {
    AUDUNITTEST_TRUE(true);
}
