/*
 * One array, one talker: ten frames, then where the talker is. The test audio generator stands in
 * for the microphones.
 */
#include <stdio.h>
#include <voxloc/unittestGenerator.h>
#include <voxloc/voxloc.h>

int main(void) {
    const float talker[3] = {0.26179939f, 0.07330383f, 5.6f}; /* 15 degrees, 4.2 degrees, 5.6 m */
    TrackerResult found;
    voxloc_initialize(PRODUCT_ASTER);
    AudioGenerator* microphones =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    for (int frame = 0; frame < 10; ++frame) {
        voxloc_calculate(getNextFrame(talker, 0, microphones), 24, 0, &found);
    }
    printf("azimuth %.1f elevation %.1f range %.1f\n", found.azimuth, found.elevation, found.range);
    destroyAudioGenerator(microphones);
    voxloc_destroy();
    return 0;
}
