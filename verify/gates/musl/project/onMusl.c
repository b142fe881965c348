/* Reads the clock on musl; with --break it fails an assertion instead. */
#include <string.h>

#include "audunittest/audunittest_checks.h"
#include "console/audtime.h"

AUDUNITTEST_TEST(reads_the_clock) {
    AUDUNITTEST_TRUE(NYRA_now64() > 0);
}

int main(int argc, char* argv[]) {
    if (argc > 1 && strcmp(argv[1], "--break") == 0) audunittest_set_context(NULL);
    return audunittest_main(argc, argv);
}
