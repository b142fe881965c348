/* Finds a talker and reads the clock on musl; with --break it fails an assertion instead. */
#include <string.h>

#include "audunittest/audunittest_checks.h"
#include "console/audtime.h"
#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

AUDUNITTEST_TEST(finds_a_talker) {
    const float talker[3] = {0.26179939f, 0.07330383f, 5.6f}; /* 15 degrees, 4.2 degrees, 5.6 m */
    TrackerResult found;
    voxloc_initialize(PRODUCT_ASTER);
    AudioGenerator* microphones =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    for (int frame = 0; frame < 10; ++frame) {
        voxloc_calculate(getNextFrame(talker, 0, microphones), 24, 0, &found);
    }
    AUDUNITTEST_NEAR(found.azimuth, 15.0f, 1.0f);
    AUDUNITTEST_NEAR(found.elevation, 4.2f, 1.0f);
    AUDUNITTEST_NEAR(found.range, 5.6f, 0.5f);
    destroyAudioGenerator(microphones);
    voxloc_destroy();
}

AUDUNITTEST_TEST(reads_the_clock) {
    AUDUNITTEST_TRUE(NYRA_now64() > 0);
}

int main(int argc, char* argv[]) {
    if (argc > 1 && strcmp(argv[1], "--break") == 0) audunittest_set_context(NULL);
    return audunittest_main(argc, argv);
}
