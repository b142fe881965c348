/* A program on the harness that has no tests. */
#include "audunittest/audunittest_checks.h"

AUDUNITTEST_MAIN
