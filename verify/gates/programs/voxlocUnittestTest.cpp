#include <algorithm>
#include <cstddef>

#include "goldenText.h"

namespace {

const std::vector<std::string> Names = {
    "test__voxloc__cinder_elevation",
    "test__voxloc__far_end_vad",
    "test__voxloc__input_flags",
    "test__voxloc__room_noise",
    "test__voxloc__signal_energy",
    "test__voxloc__sound_activity",
    "test__voxloc__stable_speaker_aster",
    "test__voxloc__stable_speaker_bramble",
    "test__voxloc__stable_speaker_cinder",
    "test__voxloc__stable_speaker_dovetail",
    "test__voxloc__stable_speaker_elmwood",
    "test__voxloc__stable_speaker_foxglove",
    "test__voxloc__stable_speaker_gannet",
    "test__voxloc__time_domain_vad",
    "test__voxloc__ultra_sound_distortion",
    "test__voxloc__ultra_sound_level",
    "test__voxloc__vad_hangover",
    "test__voxloc__vad_on",
};

class VoxlocUnittest : public GoldenText {};
INSTANTIATE_GOLDEN_TEXT(VoxlocUnittest);

TEST_P(VoxlocUnittest, ListsItsEighteenTests) {
    std::string listing;
    for (const std::string& name : Names) listing += name + "\n";
    expect({"--list"}, 0, listing + yellow("Found 18 tests.\n"));
}

TEST_P(VoxlocUnittest, ListsWhatMatchesInAnyCase) {
    expect({"--list", "VAD"}, 0,
           "test__voxloc__far_end_vad\n"
           "test__voxloc__time_domain_vad\n"
           "test__voxloc__vad_hangover\n"
           "test__voxloc__vad_on\n" +
               yellow("Found 4 tests.\n"));
    expect({"--list", "vad_on"}, 0, "test__voxloc__vad_on\n" + yellow("Found 1 test.\n"));
}

TEST_P(VoxlocUnittest, RunsATestByName) {
    expect({"--run", "test__voxloc__vad_on"}, 0, success("test__voxloc__vad_on"));
}

TEST_P(VoxlocUnittest, RunsWhatMatchesInAnyCase) {
    expect({"--runall", "VAD"}, 0,
           success("test__voxloc__far_end_vad") + success("test__voxloc__time_domain_vad") +
               success("test__voxloc__vad_hangover") + success("test__voxloc__vad_on") +
               framed(green("Test success: 4 tests with 4 assertions [T s].\n")));
}

// What a report says between "Running <name>..." and the next test or the summary.
bool reportsSuccess(const std::string& report, const std::string& name) {
    const size_t begin = report.find("Running " + name + "...");
    if (begin == std::string::npos) return false;
    const size_t end = std::min(report.find("\nRunning ", begin), report.find("\n---", begin));
    return report.substr(begin, end - begin).find(" Success [") != std::string::npos;
}

TEST(VoxlocUnittestTogether, EachTestHasTheSameOutcomeAloneAndAmongAll) {
    const ProgramOutcome all = runProgram({"--runall"}, Output::file);
    EXPECT_EQ(all.status, 0) << all.standardError;
    EXPECT_EQ(all.standardOutput, "");
    for (const std::string& name : Names) {
        const ProgramOutcome alone = runProgram({"--run", name}, Output::file);
        EXPECT_EQ(reportsSuccess(all.standardError, name), alone.status == 0) << name;
        EXPECT_EQ(reportsSuccess(alone.standardError, name), alone.status == 0) << name;
    }
}

TEST(VoxlocUnittestTogether, EndsWithTheSummaryOfEighteenTests) {
    const std::string report = withoutTimes(runProgram({"--runall"}, Output::file).standardError);
    const std::string dashes(32, '-');
    const std::string summary =
        "\n" + dashes + "\nTest success: 18 tests with 18 assertions [T s].\n" + dashes + "\n";
    ASSERT_GE(report.size(), summary.size()) << report;
    EXPECT_EQ(report.substr(report.size() - summary.size()), summary);
}

}  // namespace
