/** Hands the eighteen tests to the harness before main. */
#include "audunittest/audunittest_checks.h"
#include "tests.h"

namespace {

// Every report names this path and the lines below; they are what users match on, so they stay as
// they are wherever the tests move.
constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/test/tests";

void assertNoErrors(unsigned errors, int line) {
    if (errors == 0) {
        audunittest_succeed_test(SourcePath, line);
    } else {
        audunittest_fail_equals_uint(SourcePath, line, 0, errors, "!=");
    }
}

}  // namespace

#define REGISTER_TEST(name, function, line)             \
    static void test__voxloc__##name() {                \
        assertNoErrors(voxloc_tests::function(), line); \
    }                                                   \
    AUDUNITTEST_REGISTER(register_voxloc_##name, test__voxloc__##name)

// clang-format off
REGISTER_TEST(stable_speaker_aster,    stableSpeakerTestAster,     6)
REGISTER_TEST(stable_speaker_bramble,  stableSpeakerTestBramble,  11)
REGISTER_TEST(stable_speaker_cinder,   stableSpeakerTestCinder,   16)
REGISTER_TEST(stable_speaker_dovetail, stableSpeakerTestDovetail, 21)
REGISTER_TEST(stable_speaker_elmwood,  stableSpeakerTestElmwood,  26)
REGISTER_TEST(stable_speaker_foxglove, stableSpeakerTestFoxglove, 31)
REGISTER_TEST(stable_speaker_gannet,   stableSpeakerTestGannet,   36)
REGISTER_TEST(vad_on,                  vadOnTest,                 41)
REGISTER_TEST(vad_hangover,            vadHangoverTest,           46)
REGISTER_TEST(time_domain_vad,         timeDomainVadTest,         51)
REGISTER_TEST(sound_activity,          soundActivityTest,         56)
REGISTER_TEST(signal_energy,           signalEnergyTest,          61)
REGISTER_TEST(input_flags,             inputFlagTest,             66)
REGISTER_TEST(far_end_vad,             farEndVadTest,             71)
REGISTER_TEST(ultra_sound_distortion,  ultraSoundDistortionTest,  76)
REGISTER_TEST(room_noise,              roomNoiseTest,             81)
REGISTER_TEST(ultra_sound_level,       ultraSoundLevelTest,       86)
REGISTER_TEST(cinder_elevation,        cinderElevationTest,       91)
// clang-format on
