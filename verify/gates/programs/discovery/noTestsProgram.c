/* A program on the harness that has no tests. */
#include "audunittest/audunittest.h"

int main(int argc, char* argv[]) {
    return (int)audunittest_commandline(argc, (const char* const*)argv);
}
