#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "trackerRuns.h"

namespace {

class VoxlocInitialize : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    InitializedModule module_{GetParam()->type};
    const voxloc::Tracker& tracker_ = voxloc::moduleTracker();
};

INSTANTIATE_TEST_SUITE_P(Every, VoxlocInitialize, ::testing::ValuesIn(allProducts()),
                         ProductName());

template <class Value>
bool isZero(const Value* values, int count) {
    return std::all_of(values, values + count, [](Value value) { return value == Value(0); });
}

TEST_P(VoxlocInitialize, StartsWithZeroedBuffers) {
    const int n = GetParam()->array.channels;
    const int pairs = GetParam()->array.elevationPairs + GetParam()->array.azimuthPairs;
    const struct {
        const float* buffer;
        int count;
    } buffers[] = {
        {tracker_.InputAudio, n * 4096},
        {tracker_.RawAudioInput1, n * 2048},
        {tracker_.RawAudioInput2, n * 2048},
        {tracker_.FftResult, n * 4098},
        {tracker_.Numerator1, pairs * 4098},
        {tracker_.Numerator2, pairs * 4098},
        {tracker_.NoisePowerEstimate, n * 2049},
        {tracker_.FrequencyWeight, n * 2049},
        {tracker_.AzimuthQuality, GetParam()->array.azimuthPairs},
        {tracker_.ElevationQuality, GetParam()->array.elevationPairs},
        {tracker_.UltraSound.UltraSoundLevel, n},
        {tracker_.UltraSound.NeighborBandLevel, n},
        {tracker_.Noise.NoiseLevel, 2049},
    };
    for (const auto& [buffer, count] : buffers) EXPECT_TRUE(isZero(buffer, count));
    EXPECT_TRUE(isZero(tracker_.TimeoutCounter, pairs * 2049));
}

TEST_P(VoxlocInitialize, InitializesTheFourDetectors) {
    EXPECT_EQ(tracker_.Noise.NoiseCountFromBoot, 40);
    EXPECT_EQ(tracker_.FrequencyDomain.HangCount, 0);
    EXPECT_EQ(tracker_.TimeDomain.CurrentMedianFilterDifference, 1e-12f);
    EXPECT_TRUE(tracker_.TimeDomain.PreviousResult);
    EXPECT_EQ(voxloc_getUltraSoundLevel(), -100.0f);
    EXPECT_TRUE(tracker_.IsTransducersInitialized);
    EXPECT_EQ(voxloc_record_isOpen(), 0);
}

void expectTables(std::size_t half, const float* twiddles, const float* a, const float* b) {
    std::vector<float> expected[3];
    for (std::vector<float>& table : expected) table.resize(2 * half);
    voxloc_generateTwiddleFactors(expected[0].data(), static_cast<int>(half));
    voxloc_generateAbTables(expected[1].data(), expected[2].data(), static_cast<int>(half));
    EXPECT_TRUE(std::equal(expected[0].begin(), expected[0].end(), twiddles)) << half;
    EXPECT_TRUE(std::equal(expected[1].begin(), expected[1].end(), a)) << half;
    EXPECT_TRUE(std::equal(expected[2].begin(), expected[2].end(), b)) << half;
}

TEST_P(VoxlocInitialize, FillsTheTransformTables) {
    const voxloc::TransformTables& tables = tracker_.Tables;
    std::vector<float> window(4096);
    voxloc_generateHammingWindow(window.data());
    EXPECT_TRUE(std::equal(window.begin(), window.end(), tables.HammingWindow));
    expectTables(2048, tables.TwiddleFactors, tables.ATable, tables.BTable);
    expectTables(8192, tables.TwiddleFactorsUpsampled, tables.ATableUpsampled,
                 tables.BTableUpsampled);
}

void expectFirstBuffers() {
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    EXPECT_EQ(tracker.TimeoutLimit, 2);
    EXPECT_EQ(tracker.CurrentNumerator, tracker.Numerator1);
    EXPECT_EQ(tracker.PreviousNumerator, tracker.Numerator2);
    EXPECT_EQ(tracker.CurrentRawAudioInput, tracker.RawAudioInput1);
    EXPECT_EQ(tracker.PreviousRawAudioInput, tracker.RawAudioInput2);
    EXPECT_NE(tracker.Numerator1, tracker.Numerator2);
    EXPECT_NE(tracker.RawAudioInput1, tracker.RawAudioInput2);
}

TEST_P(VoxlocInitialize, PointsAtTheFirstBuffersWithTheShortTimeout) {
    expectFirstBuffers();
}

TEST(VoxlocInitializeAgain, KeepsTheCountOfBlockedFramesAndNothingElse) {
    voxloc::Tracker& tracker = voxloc::moduleTracker();
    {
        const InitializedModule module(PRODUCT_ASTER);
        tracker.BlockedCounter = 57;
        tracker.TimeoutLimit = 35;
        std::swap(tracker.CurrentNumerator, tracker.PreviousNumerator);
        std::swap(tracker.CurrentRawAudioInput, tracker.PreviousRawAudioInput);
    }
    const InitializedModule module(PRODUCT_BRAMBLE);
    EXPECT_EQ(tracker.BlockedCounter, 57);
    expectFirstBuffers();
}

TEST(VoxlocDestroy, ClearsTheInitializedFlagAndMayBeCalledAgain) {
    voxloc_destroy();  // never initialised
    voxloc_initialize(PRODUCT_GANNET);
    for (int i = 0; i < 2; ++i) {
        voxloc_destroy();
        EXPECT_FALSE(voxloc::moduleTracker().IsTransducersInitialized);
    }
}

}  // namespace
