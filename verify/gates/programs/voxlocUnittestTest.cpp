#include "goldenText.h"

namespace {

const char* const Names[] = {
    "cinder_elevation",
    "far_end_vad",
    "input_flags",
    "room_noise",
    "signal_energy",
    "sound_activity",
    "stable_speaker_aster",
    "stable_speaker_bramble",
    "stable_speaker_cinder",
    "stable_speaker_dovetail",
    "stable_speaker_elmwood",
    "stable_speaker_foxglove",
    "stable_speaker_gannet",
    "time_domain_vad",
    "ultra_sound_distortion",
    "ultra_sound_level",
    "vad_hangover",
    "vad_on",
};

class VoxlocUnittest : public GoldenText {
  protected:
    static std::string nameOf(const std::string& test) { return "test__voxloc__" + test; }
};
INSTANTIATE_GOLDEN_TEXT(VoxlocUnittest);

TEST_P(VoxlocUnittest, ListsItsEighteenTests) {
    std::string listing;
    for (const char* test : Names) listing += nameOf(test) + "\n";
    expect({"--list"}, 0, listing + yellow("Found 18 tests.\n"));
    expect({"--list", "VAD_ON"}, 0, nameOf("vad_on") + "\n" + yellow("Found 1 test.\n"));
}

TEST_P(VoxlocUnittest, RunsWhatMatchesInAnyCase) {
    expect({"--runall", "VAD"}, 0,
           success(nameOf("far_end_vad")) + success(nameOf("time_domain_vad")) +
               success(nameOf("vad_hangover")) + success(nameOf("vad_on")) +
               framed(green("Test success: 4 tests with 4 assertions [T s].\n")));
}

// The tests share the module: each must have the same outcome alone and after the others.
using VoxlocUnittestOnAFile = VoxlocUnittest;
INSTANTIATE_TEST_SUITE_P(Output, VoxlocUnittestOnAFile, ::testing::Values(Output::file));

TEST_P(VoxlocUnittestOnAFile, PassesEachTestAloneAndAmongAll) {
    const ProgramOutcome all = runProgram({"--runall"}, Output::file);
    const std::string report = withoutTimes(all.standardError);
    EXPECT_EQ(all.status, 0) << report;
    EXPECT_EQ(all.standardOutput, "");
    std::size_t place = 0;
    for (const char* test : Names) {
        // The tests' own words may stand between, from the event log.
        const std::size_t begin = report.find(running(nameOf(test)), place);
        ASSERT_NE(begin, std::string::npos) << test << " is missing or out of order in " << report;
        place = report.find(" Success [T ms]\n", begin);
        ASSERT_LT(place, report.find("\nRunning ", begin))
            << test << " does not pass in " << report;
        EXPECT_EQ(runProgram({"--run", nameOf(test)}, Output::file).status, 0) << test;
    }
    EXPECT_EQ(report.substr(place + 16),
              framed("Test success: 18 tests with 18 assertions [T s].\n"));
}

}  // namespace
