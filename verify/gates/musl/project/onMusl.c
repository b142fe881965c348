/* Finds a talker and reads the clock on musl; with --break it fails an assertion instead. */
#include <math.h>
#include <string.h>

#include "audunittest/audunittest.h"
#include "console/audtime.h"
#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

static void check_near(int line, float found, float expected, float tolerance) {
    if (fabsf(found - expected) <= tolerance) {
        audunittest_succeed_test("onMusl", line);
    } else {
        audunittest_fail_equals_double("onMusl", line, found, expected, "!=");
    }
}

static void finds_a_talker(void) {
    const float talker[3] = {0.26179939f, 0.07330383f, 5.6f}; /* 15 degrees, 4.2 degrees, 5.6 m */
    TrackerResult found;
    voxloc_initialize(PRODUCT_ASTER);
    AudioGenerator* microphones =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    for (int frame = 0; frame < 10; ++frame) {
        voxloc_calculate(getNextFrame(talker, 0, microphones), 24, 0, &found);
    }
    check_near(__LINE__, found.azimuth, 15.0f, 1.0f);
    check_near(__LINE__, found.elevation, 4.2f, 1.0f);
    check_near(__LINE__, found.range, 5.6f, 0.5f);
    destroyAudioGenerator(microphones);
    voxloc_destroy();
}

static void reads_the_clock(void) {
    if (NYRA_now64() > 0) {
        audunittest_succeed_test("onMusl", __LINE__);
    } else {
        audunittest_fail_test("onMusl", __LINE__);
    }
}

int main(int argc, char* argv[]) {
    if (argc > 1 && strcmp(argv[1], "--break") == 0) audunittest_set_context(NULL);
    audunittest_register_test(finds_a_talker, "finds_a_talker");
    audunittest_register_test(reads_the_clock, "reads_the_clock");
    return (int)audunittest_commandline(argc, (const char* const*)argv);
}
