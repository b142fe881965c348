/** Runs frames of a talker through a product, for estimate.py to count what they execute. */
#include <cstdio>
#include <cstdlib>

#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: estimate_frames PRODUCT FRAMES\n", stderr);
        return EXIT_FAILURE;
    }
    const float talker[3] = {0.26179939f, 0.07330383f, 5.6f};  // 15 degrees, 4.2 degrees, 5.6 m
    voxloc_initialize(std::atoi(argv[1]));
    AudioGenerator* microphones =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    for (int frame = 0; frame < std::atoi(argv[2]); ++frame) {
        TrackerResult found;
        voxloc_calculate(getNextFrame(talker, 0, microphones), 24, 0, &found);
    }
    destroyAudioGenerator(microphones);
    voxloc_destroy();
    return EXIT_SUCCESS;
}
