#include "audunittest/audunittest.h"

int main(int argc, char* argv[]) {
    return static_cast<int>(audunittest_commandline(argc, argv));
}
