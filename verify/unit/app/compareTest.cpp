#include "locate/compare.h"

#include <gtest/gtest.h>

#include "common/failure.h"
#include "runRecords.h"

namespace {

constexpr float Nan = std::numeric_limits<float>::quiet_NaN();

/** A frame with an estimate. */
Record placed(float azimuth, float elevation = 0.0f, float range = 2.0f, float quality = 0.5f) {
    Record record = runRecord(1);
    record.result = {azimuth, elevation, range, quality, 0};
    return record;
}

Comparison compared(const std::vector<Record>& here, const std::vector<Record>& there,
                    double tolerance = 0.0) {
    const TemporaryFolder folder;
    Comparer comparer(writeRun(folder, "run", there), tolerance);
    for (const Record& record : here) comparer.add(record);
    return comparer.finish();
}

TEST(Compare, TakesAnglesTheShortWayRound) {
    EXPECT_FLOAT_EQ(differenceOf(placed(179.0f), placed(-179.0f)).azimuth, 2.0f);
    EXPECT_FLOAT_EQ(differenceOf(placed(-179.0f), placed(179.0f)).azimuth, -2.0f);
    EXPECT_FLOAT_EQ(differenceOf(placed(10.0f, 5.0f), placed(10.0f, -7.5f)).elevation, -12.5f);
}

TEST(Compare, MeasuresRangeAndQualityInDegrees) {
    EXPECT_NEAR(differenceOf(placed(0), placed(0, 0, 2.5f)).degrees, 5.0, 1e-5);
    EXPECT_NEAR(differenceOf(placed(0), placed(0, 0, 2, 0.6f)).degrees, 5.0, 1e-4);
}

TEST(Compare, TwoThatAreNoNumbersAreTheSame) {
    const FrameDifference difference = differenceOf(placed(Nan), placed(Nan));
    EXPECT_EQ(difference.azimuth, 0.0f);
    EXPECT_EQ(difference.degrees, 0.0);
}

TEST(Compare, OneThatIsNoNumberIsInfinitelyFar) {
    EXPECT_TRUE(std::isinf(differenceOf(placed(Nan), placed(1.0f)).azimuth));
    EXPECT_TRUE(std::isinf(differenceOf(placed(1.0f), placed(Nan)).degrees));
}

TEST(Compare, DoesNotLookAtPositionsWithoutEstimate) {
    Record here = placed(-60.0f), there = placed(60.0f);
    here.hasEstimate = there.hasEstimate = false;
    EXPECT_EQ(differenceOf(here, there).degrees, 0.0);
    there.hasEstimate = true;
    EXPECT_TRUE(differenceOf(here, there).estimate);
}

TEST(Compare, DoesNotLookAtElevationsOfAnArrayWithoutPairsForThem) {
    Record here = placed(0.0f, 10.0f);
    here.hasElevation = false;
    EXPECT_EQ(differenceOf(here, placed(0.0f, 20.0f)).degrees, 0.0);
}

TEST(Compare, NamesTheFlagsThatDiffer) {
    Record here = placed(0.0f), there = placed(0.0f);
    here.result.flags = 1u << VOXLOC_FLAG_VOICE | 1u << VOXLOC_FLAG_SOUND;
    there.result.flags = 1u << VOXLOC_FLAG_SOUND | 1u << VOXLOC_FLAG_POSITION_VALID;
    EXPECT_EQ(differenceOf(here, there).flags, 1u | 1u << 6);
}

TEST(Compare, ARunAgreesWithItself) {
    const Comparison result = compared(runRecords(100), runRecords(100));
    EXPECT_TRUE(result.agrees());
    EXPECT_EQ(result.frames, 100u);
    EXPECT_EQ(result.differing, 0u);
    EXPECT_TRUE(result.worst.empty());
}

TEST(Compare, ToleratesWhatItIsTold) {
    std::vector<Record> there = runRecords(10);
    there[6].result.azimuth += 1.5f;
    EXPECT_TRUE(compared(runRecords(10), there, 1.51).agrees());
    const Comparison result = compared(runRecords(10), there, 1.49);
    EXPECT_FALSE(result.agrees());
    EXPECT_EQ(result.beyond, 1u);
    EXPECT_FLOAT_EQ(result.azimuth, 1.5f);
}

TEST(Compare, NoToleranceIsForFlagsAndEstimates) {
    std::vector<Record> there = runRecords(10);
    there[6].result.flags ^= 1u << VOXLOC_FLAG_TD_VOICE;
    there[7].hasEstimate = !there[7].hasEstimate;
    const Comparison result = compared(runRecords(10), there, 360.0);
    EXPECT_EQ(result.beyond, 2u);
    EXPECT_EQ(result.flagChanges[1], 1u);
}

TEST(Compare, ListsTheWorstFramesFirst) {
    std::vector<Record> there = runRecords(200);
    for (std::size_t i = 0; i < there.size(); ++i) {
        if (there[i].hasEstimate) there[i].result.range += 0.001f * static_cast<float>(i);
    }
    const Comparison result = compared(runRecords(200), there, 0.0);
    ASSERT_EQ(result.worst.size(), Comparer::Listed);
    EXPECT_EQ(result.worst.front().frame, 199u);
    for (std::size_t i = 1; i < result.worst.size(); ++i) {
        EXPECT_GT(result.worst[i - 1].degrees, result.worst[i].degrees);
    }
}

TEST(Compare, CountsFramesThatOnlyOneRunHas) {
    std::vector<Record> here = runRecords(10), there = runRecords(13);
    here.erase(here.begin(), here.begin() + 2);
    there.erase(there.begin() + 5);
    const Comparison result = compared(here, there);
    EXPECT_EQ(result.frames, 7u);
    EXPECT_EQ(result.onlyHere, 1u);
    EXPECT_EQ(result.onlyThere, 5u);
    EXPECT_FALSE(result.agrees());
}

TEST(Compare, GivesTheOtherRunsRecordOfTheSameFrame) {
    const TemporaryFolder folder;
    std::vector<Record> there = runRecords(4);
    there.erase(there.begin() + 1);
    Comparer comparer(writeRun(folder, "run", there), 0.0);
    EXPECT_EQ(comparer.add(runRecord(0))->frame, 0u);
    EXPECT_EQ(comparer.add(runRecord(1)), nullptr);
    EXPECT_EQ(comparer.add(runRecord(2))->frame, 2u);
}

TEST(Compare, TellsWhatDiffers) {
    std::vector<Record> there = runRecords(10);
    there[6].result.azimuth += 1.5f;
    there[7].result.flags ^= 1u << VOXLOC_FLAG_VOICE;
    const std::string text = comparisonToText(compared(runRecords(10), there, 1.0));
    EXPECT_NE(text.find(": 10 frames compared, 2 differ, 2 beyond the tolerance of 1 degrees\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("largest differences: azimuth 1.50, elevation 0.00"), std::string::npos)
        << text;
    EXPECT_NE(text.find("frames whose flags differ: voice 1\n"), std::string::npos) << text;
    EXPECT_NE(text.find("       6     0.256      1.50"), std::string::npos) << text;
    EXPECT_NE(text.find("0.0000  voice\n"), std::string::npos) << text;
}

TEST(Compare, DamageOfTheOtherRunIsSaid) {
    const TemporaryFolder folder;
    const std::string path = writeRun(folder, "run", runRecords(3));
    const std::string text = folder.read("run");
    folder.write("run", text.substr(0, text.rfind('#')));
    Comparer comparer(path, 0.0);
    EXPECT_EQ(refusalOf<BadData>([&comparer] { comparer.finish(); }),
              path + ": line 5: is the last one; the run was cut off before its summary");
}

}  // namespace
