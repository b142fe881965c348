/**
 * Frames to be counted: hands a fixed mix of frames of one product, or the first ones of it, to
 * voxloc_calculate. Without arguments: the names of the products, a line each.
 */
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "kit/products.h"
#include "kit/talker.h"
#include "voxloc/voxloc.h"

namespace {

constexpr std::size_t MixFrames = 50;

void processFrames(std::int32_t product, std::size_t count) {
    voxloc_initialize(product);
    const kit::Scenario scenario = kit::mixedScenario(MixFrames);
    for (std::size_t i = 0; i < std::min(count, MixFrames); ++i) kit::processFrame(scenario, i);
    voxloc_destroy();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        for (const VoxlocProduct& product : kit::products()) std::puts(product.name);
        return EXIT_SUCCESS;
    }
    const VoxlocProduct* product = voxloc_findProductByName(argv[1]);
    if (product == nullptr) {
        std::fprintf(stderr, "usage: %s [PRODUCT [FRAMES]]\n", argv[0]);
        return EXIT_FAILURE;
    }
    processFrames(product->type, argc > 2 ? std::strtoul(argv[2], nullptr, 10) : MixFrames);
    return EXIT_SUCCESS;
}
