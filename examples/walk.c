/*
 * A talker who walks across the room, 2.2 m in front of the array, as a recording:
 *
 *     walk [FILE]      walk.rec unless given
 *
 * The test audio generator stands in for the microphones.
 */
#include <math.h>
#include <stdio.h>
#include <voxloc/unittestGenerator.h>
#include <voxloc/voxloc.h>

enum { Frames = 81 }; /* 3.5 s; just under 4 MB with six microphones */

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "walk.rec";
    const float depth = 2.2f, from = -1.2f, to = 1.2f; /* metres: x, and y at both ends */
    TrackerResult found;
    voxloc_initialize(PRODUCT_ASTER);
    AudioGenerator* microphones =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    if (voxloc_record_start(path) == 0) {
        fprintf(stderr, "cannot write %s\n", path);
        return 1;
    }
    for (int frame = 0; frame < Frames; ++frame) {
        const float y = from + (to - from) * (float)frame / (Frames - 1);
        const float talker[3] = {atan2f(y, depth), 0.15f, hypotf(depth, y)};
        voxloc_calculate(getNextFrame(talker, 0, microphones), 24, 0, &found);
    }
    voxloc_record_stop();
    printf("azimuth at the end %.0f\n", (double)found.azimuth);
    destroyAudioGenerator(microphones);
    voxloc_destroy();
    return 0;
}
