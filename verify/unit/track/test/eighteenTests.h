/** The eighteen tests as they are registered, reported and announced, in that order. */
#ifndef VERIFY_TRACK_TEST_EIGHTEEN_TESTS_H
#define VERIFY_TRACK_TEST_EIGHTEEN_TESTS_H

#include <string>
#include <vector>

#include "track/test/tests.h"

// clang-format off
/** Function, name behind "test__voxloc__", line of its reports, words of its progress lines. */
#define VERIFY_EIGHTEEN_TESTS(X)                                                           \
    X(stableSpeakerTestAster,    stable_speaker_aster,     6, "stable speaker test")          \
    X(stableSpeakerTestBramble,  stable_speaker_bramble,  11, "stable speaker bramble test")  \
    X(stableSpeakerTestCinder,   stable_speaker_cinder,   16, "stable speaker cinder test")   \
    X(stableSpeakerTestDovetail, stable_speaker_dovetail, 21, "stable speaker dovetail test") \
    X(stableSpeakerTestElmwood,  stable_speaker_elmwood,  26, "stable speaker elmwood test")  \
    X(stableSpeakerTestFoxglove, stable_speaker_foxglove, 31, "stable speaker foxglove test") \
    X(stableSpeakerTestGannet,   stable_speaker_gannet,   36, "stable speaker gannet test")   \
    X(vadOnTest,                 vad_on,                  41, "VAD on test")                  \
    X(vadHangoverTest,           vad_hangover,            46, "VAD hangover test")            \
    X(timeDomainVadTest,         time_domain_vad,         51, "TD VAD test")                  \
    X(soundActivityTest,         sound_activity,          56, "SAD test")                     \
    X(signalEnergyTest,          signal_energy,           61, "signal energy test")           \
    X(inputFlagTest,             input_flags,             66, "input flag test")              \
    X(farEndVadTest,             far_end_vad,             71, "FE VAD test")                  \
    X(ultraSoundDistortionTest,  ultra_sound_distortion,  76, "ultrasound test")              \
    X(roomNoiseTest,             room_noise,              81, "room noise test")              \
    X(ultraSoundLevelTest,       ultra_sound_level,       86, "ultra sound level test")       \
    X(cinderElevationTest,       cinder_elevation,        91, "cinder elevation test")
// clang-format on

struct EighteenTest {
    unsigned (*run)();
    std::string name;
    int line;
    std::string words;

    /** The progress of the run of all; the dovetail test finishes as cinder's. */
    std::string progress(const std::string& said = "") const {
        const bool isDovetail = run == voxloc_tests::stableSpeakerTestDovetail;
        return "Running " + words + "\n" + said + "Finished " +
               (isDovetail ? "stable speaker cinder test" : words) + "\n";
    }
};

#define VERIFY_ROW(function, name, line, words) \
    {voxloc_tests::function, "test__voxloc__" #name, line, words},
inline const std::vector<EighteenTest> EighteenTests = {VERIFY_EIGHTEEN_TESTS(VERIFY_ROW)};
#undef VERIFY_ROW

#endif
