/**
 * The tests of voxloc: talkers to be found, detectors and flags to be checked. Each test sets the
 * module up, feeds it frames, tears it down and returns its number of errors; details go to the
 * event log. registration.cpp hands them to the harness.
 */
#ifndef VOXLOC_TESTS_H
#define VOXLOC_TESTS_H

#include "voxloc/voxloc.h"

namespace voxloc_tests {

/** A source: the layout that the generator takes. */
struct SourcePosition {
    float azimuth, elevation;  // radians
    float range;               // metres
};

/**
 * 0 when the result lies within 0.5 degrees of azimuth, elevationTolerance degrees of elevation and
 * 0.5 m of range from the expected position, else 1 and a report. The expected record is changed:
 * it stays in degrees afterwards, deliberately, so it serves for one call.
 */
unsigned verifyPosition(const TrackerResult* calculated, SourcePosition* expected,
                        float elevationTolerance);

unsigned stableSpeakerTestAster();
unsigned stableSpeakerTestBramble();
unsigned stableSpeakerTestCinder();
unsigned stableSpeakerTestDovetail();
unsigned stableSpeakerTestElmwood();
unsigned stableSpeakerTestFoxglove();
unsigned stableSpeakerTestGannet();
unsigned cinderElevationTest();

unsigned vadOnTest();
unsigned vadHangoverTest();
unsigned timeDomainVadTest();
unsigned soundActivityTest();
unsigned signalEnergyTest();
unsigned inputFlagTest();
unsigned farEndVadTest();
unsigned ultraSoundDistortionTest();
unsigned roomNoiseTest();
unsigned ultraSoundLevelTest();

/**
 * Runs every test once and logs its progress; another entry than the harness, for a debugger or a
 * target without a command line. Leaves the module initialised. Returns all errors.
 */
unsigned runAllUnitTests();

}  // namespace voxloc_tests

#endif
