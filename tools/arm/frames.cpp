/**
 * Runs frames of a talker through a product, for estimate.py to count what they execute. Without
 * arguments: the names of the products, a line each.
 */
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

namespace {

void printProducts() {
    for (uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        std::puts(voxloc_getProduct(i)->name);
    }
}

void runFrames(std::int32_t product, int count) {
    const float talker[3] = {0.26179939f, 0.07330383f, 5.6f};  // 15 degrees, 4.2 degrees, 5.6 m
    voxloc_initialize(product);
    AudioGenerator* microphones =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    for (int frame = 0; frame < count; ++frame) {
        TrackerResult found;
        voxloc_calculate(getNextFrame(talker, 0, microphones), 24, 0, &found);
    }
    destroyAudioGenerator(microphones);
    voxloc_destroy();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        printProducts();
        return EXIT_SUCCESS;
    }
    const VoxlocProduct* product = voxloc_findProductByName(argv[1]);
    if (argc != 3 || product == nullptr) {
        std::fputs("usage: estimate_frames [PRODUCT FRAMES]\n", stderr);
        return EXIT_FAILURE;
    }
    runFrames(product->type, std::atoi(argv[2]));
    return EXIT_SUCCESS;
}
