/** Frames to be counted: hands a fixed mix of frames of one product, or the first ones of it, to
 * voxloc_calculate. */
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kit/talker.h"
#include "voxloc/voxloc.h"

using namespace voxloc_bench;

int main(int argc, char** argv) {
    constexpr std::size_t frames = 50;
    const std::size_t processed =
        argc > 2 ? std::min<std::size_t>(std::strtoul(argv[2], nullptr, 10), frames) : frames;
    for (const Product& product : Products) {
        if (argc < 2 || std::strcmp(argv[1], product.name) != 0) continue;
        voxloc_initialize(product.type);
        const Scenario scenario = mixedScenario(frames);
        TrackerResult result;
        for (std::size_t i = 0; i < processed; ++i) {
            voxloc_calculate(scenario.frame(i), SignificantBits, scenario.flags[i], &result);
        }
        voxloc_destroy();
        return 0;
    }
    std::fprintf(stderr, "usage: %s PRODUCT [FRAMES]\n", argv[0]);
    return 2;
}
