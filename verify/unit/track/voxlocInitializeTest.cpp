#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "initializedModule.h"
#include "models/productRows.h"
#include "track/UltraSoundDistortionDetection.h"
#include "track/frequencyDomainVad.h"
#include "track/noiseLevel.h"
#include "track/timeDomainVad.h"
#include "track/tracker.h"

namespace {

using reference::ProductRow;

class VoxlocInitialize : public ::testing::TestWithParam<ProductRow> {
  protected:
    InitializedModule module_{GetParam().type};
};

INSTANTIATE_TEST_SUITE_P(Every, VoxlocInitialize, ::testing::ValuesIn(reference::productRows()),
                         reference::RowName());

template <class Value>
bool isZero(const Value* values, int count) {
    return std::all_of(values, values + count, [](Value value) { return value == Value(0); });
}

TEST_P(VoxlocInitialize, StartsWithZeroedBuffers) {
    const int n = GetParam().channels;
    const int pairs = GetParam().elevationPairs + GetParam().azimuthPairs;
    EXPECT_TRUE(isZero(voxloc::moduleTracker().InputAudio, n * 4096));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().RawAudioInput1, n * 2048));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().RawAudioInput2, n * 2048));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().FftResult, n * 4098));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().Numerator1, pairs * 4098));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().Numerator2, pairs * 4098));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().NoisePowerEstimate, n * 2049));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().FrequencyWeight, n * 2049));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().TimeoutCounter, pairs * 2049));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().AzimuthQuality, GetParam().azimuthPairs));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().ElevationQuality, GetParam().elevationPairs));
}

TEST_P(VoxlocInitialize, PointsAtTheFirstBufferAsCurrentAndTheSecondAsPrevious) {
    EXPECT_EQ(voxloc::moduleTracker().CurrentRawAudioInput, voxloc::moduleTracker().RawAudioInput1);
    EXPECT_EQ(voxloc::moduleTracker().PreviousRawAudioInput,
              voxloc::moduleTracker().RawAudioInput2);
    EXPECT_EQ(voxloc::moduleTracker().CurrentNumerator, voxloc::moduleTracker().Numerator1);
    EXPECT_EQ(voxloc::moduleTracker().PreviousNumerator, voxloc::moduleTracker().Numerator2);
    EXPECT_NE(voxloc::moduleTracker().Numerator1, voxloc::moduleTracker().Numerator2);
    EXPECT_NE(voxloc::moduleTracker().RawAudioInput1, voxloc::moduleTracker().RawAudioInput2);
}

TEST_P(VoxlocInitialize, SetsTheShortTimeoutAndTheInitializedFlag) {
    EXPECT_EQ(voxloc::moduleTracker().TimeoutLimit, 2);
    EXPECT_TRUE(voxloc::moduleTracker().IsTransducersInitialized);
    EXPECT_EQ(voxloc::moduleTracker().recording, nullptr);
}

TEST_P(VoxlocInitialize, InitializesTheFourDetectors) {
    EXPECT_EQ(voxloc::moduleTracker().Noise.NoiseCountFromBoot, 40);
    EXPECT_TRUE(isZero(voxloc::moduleTracker().Noise.NoiseLevel, 2049));
    EXPECT_EQ(voxloc::moduleTracker().FrequencyDomain.HangCount, 0);
    EXPECT_EQ(voxloc::moduleTracker().TimeDomain.CurrentMedianFilterDifference, 1e-12f);
    EXPECT_TRUE(voxloc::moduleTracker().TimeDomain.PreviousResult);
    EXPECT_TRUE(isZero(voxloc::moduleTracker().UltraSound.UltraSoundLevel, GetParam().channels));
    EXPECT_TRUE(isZero(voxloc::moduleTracker().UltraSound.NeighborBandLevel, GetParam().channels));
    EXPECT_EQ(voxloc_getUltraSoundLevel(), -100.0f);
}

TEST_P(VoxlocInitialize, FillsTheTransformTables) {
    std::vector<float> window(4096);
    voxloc_generateHammingWindow(window.data());
    EXPECT_TRUE(
        std::equal(window.begin(), window.end(), voxloc::moduleTracker().Tables.HammingWindow));

    std::vector<float> twiddles(4096);
    std::vector<float> a(4096);
    std::vector<float> b(4096);
    voxloc_generateTwiddleFactors(twiddles.data(), 2048);
    voxloc_generateAbTables(a.data(), b.data(), 2048);
    EXPECT_TRUE(std::equal(twiddles.begin(), twiddles.end(),
                           voxloc::moduleTracker().Tables.TwiddleFactors));
    EXPECT_TRUE(std::equal(a.begin(), a.end(), voxloc::moduleTracker().Tables.ATable));
    EXPECT_TRUE(std::equal(b.begin(), b.end(), voxloc::moduleTracker().Tables.BTable));
}

TEST_P(VoxlocInitialize, FillsTheUpsampledTransformTables) {
    std::vector<float> twiddles(16384);
    std::vector<float> a(16384);
    std::vector<float> b(16384);
    voxloc_generateTwiddleFactors(twiddles.data(), 8192);
    voxloc_generateAbTables(a.data(), b.data(), 8192);
    EXPECT_TRUE(std::equal(twiddles.begin(), twiddles.end(),
                           voxloc::moduleTracker().Tables.TwiddleFactorsUpsampled));
    EXPECT_TRUE(std::equal(a.begin(), a.end(), voxloc::moduleTracker().Tables.ATableUpsampled));
    EXPECT_TRUE(std::equal(b.begin(), b.end(), voxloc::moduleTracker().Tables.BTableUpsampled));
}

TEST(VoxlocGetters, AnswerForTheInitializedProduct) {
    {
        const InitializedModule module(PRODUCT_BRAMBLE);
        const Position& microphone = *voxloc_getMicrophoneCoordinates(1);
        EXPECT_EQ(microphone.x, 0.028f);
        EXPECT_EQ(microphone.y, -0.244f);
        EXPECT_EQ(microphone.z, 0.085f);
    }
    const InitializedModule module(PRODUCT_FOXGLOVE);
    EXPECT_EQ(voxloc_getNumberOfChannels(), 4U);
}

TEST(VoxlocDestroy, ClearsTheInitializedFlagAndMayBeCalledAgain) {
    voxloc_destroy();  // never initialised
    voxloc_initialize(PRODUCT_GANNET);
    voxloc_destroy();
    EXPECT_FALSE(voxloc::moduleTracker().IsTransducersInitialized);
    voxloc_destroy();
    EXPECT_FALSE(voxloc::moduleTracker().IsTransducersInitialized);
}

TEST(VoxlocDestroy, LeavesTheModuleReadyForAnotherProduct) {
    for (const ProductRow& row : reference::productRows()) {
        const InitializedModule module(row.type);
        EXPECT_EQ(voxloc_getNumberOfChannels(), static_cast<std::uint32_t>(row.channels));
    }
}

TEST(VoxlocInitializeAgain, KeepsTheCountOfBlockedFrames) {
    {
        const InitializedModule module(PRODUCT_ASTER);
        voxloc::moduleTracker().BlockedCounter = 57;
    }
    const InitializedModule module(PRODUCT_ASTER);
    EXPECT_EQ(voxloc::moduleTracker().BlockedCounter, 57);
}

TEST(VoxlocInitializeAgain, SetsTheShortTimeoutAndTheBufferPointers) {
    voxloc_initialize(PRODUCT_ASTER);
    voxloc::moduleTracker().TimeoutLimit = 35;
    std::swap(voxloc::moduleTracker().CurrentNumerator, voxloc::moduleTracker().PreviousNumerator);
    std::swap(voxloc::moduleTracker().CurrentRawAudioInput,
              voxloc::moduleTracker().PreviousRawAudioInput);
    voxloc_destroy();
    const InitializedModule module(PRODUCT_BRAMBLE);
    EXPECT_EQ(voxloc::moduleTracker().TimeoutLimit, 2);
    EXPECT_EQ(voxloc::moduleTracker().CurrentNumerator, voxloc::moduleTracker().Numerator1);
    EXPECT_EQ(voxloc::moduleTracker().PreviousNumerator, voxloc::moduleTracker().Numerator2);
    EXPECT_EQ(voxloc::moduleTracker().CurrentRawAudioInput, voxloc::moduleTracker().RawAudioInput1);
    EXPECT_EQ(voxloc::moduleTracker().PreviousRawAudioInput,
              voxloc::moduleTracker().RawAudioInput2);
}

}  // namespace
