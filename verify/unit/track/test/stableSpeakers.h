/** Where the talkers of the localisation tests stand, by product. */
#ifndef VERIFY_TRACK_TEST_STABLE_SPEAKERS_H
#define VERIFY_TRACK_TEST_STABLE_SPEAKERS_H

#include <string>

#include "gtest/gtest.h"
#include "recordedModule.h"
#include "track/test/tests.h"

struct StableSpeaker {
    const char* name;
    unsigned (*test)();
    int product;
    recordedModule::Degrees first, second;
    float tolerance;  // of the elevation, in degrees
};

// clang-format off
inline const StableSpeaker StableSpeakers[] = {
    {"Aster",    voxloc_tests::stableSpeakerTestAster,    0, {-1, -7.4f, 6},       {15, 4.2f, 5.6f},    0.35f},
    {"Bramble",  voxloc_tests::stableSpeakerTestBramble,  1, {-0.5f, -7.4f, 6.5f}, {15, 2.2f, 5.6f},    0.35f},
    {"Cinder",   voxloc_tests::stableSpeakerTestCinder,   2, {0.8f, -7.5f, 1.8f},  {-23, -12.5f, 4},    1},
    {"Dovetail", voxloc_tests::stableSpeakerTestDovetail, 5, {8.8f, -4.5f, 1.8f},  {-14.2f, 10, 7.5f},  1},
    {"Elmwood",  voxloc_tests::stableSpeakerTestElmwood,  4, {0.82f, -5.5f, 1.9f}, {-25, 4.9f, 3.6f},   0.5f},
    {"Foxglove", voxloc_tests::stableSpeakerTestFoxglove, 6, {4, 0, 2.9f},         {-25, 0, 4.6f},      90},
    {"Gannet",   voxloc_tests::stableSpeakerTestGannet,   7, {10, -15, 2},         {-12, -20, 4.5f},    3}};
// clang-format on

inline std::string nameOf(const testing::TestParamInfo<StableSpeaker>& speaker) {
    return speaker.param.name;
}

inline void PrintTo(const StableSpeaker& speaker, std::ostream* stream) {
    *stream << speaker.name;
}

#endif
