#include <gtest/gtest.h>

#include "initializedModule.h"
#include "models/productRows.h"
#include "track/UltraSoundDistortionDetection.h"
#include "track/frequencyDomainVad.h"
#include "track/noiseLevel.h"
#include "track/timeDomainVad.h"
#include "track/tracker.h"

namespace {

using reference::ProductRow;

class Products : public ::testing::TestWithParam<ProductRow> {
  protected:
    const ProductRow& row() const { return GetParam(); }
    InitializedModule module_{GetParam().type};
};

INSTANTIATE_TEST_SUITE_P(Every, Products, ::testing::ValuesIn(reference::productRows()),
                         reference::RowName());

TEST_P(Products, HasItsNumbers) {
    EXPECT_EQ(voxloc::moduleTracker().ProductType, row().type);
    EXPECT_EQ(voxloc::moduleTracker().NumberOfChannels, row().channels);
    EXPECT_EQ(voxloc::moduleTracker().NumberOfAzimuthPairs, row().azimuthPairs);
    EXPECT_EQ(voxloc::moduleTracker().NumberOfElevationPairs, row().elevationPairs);
    EXPECT_EQ(voxloc::moduleTracker().MinimumAzimuth, row().minimumAzimuth);
    EXPECT_EQ(voxloc::moduleTracker().MinimumElevation, row().minimumElevation);
    EXPECT_EQ(voxloc::moduleTracker().AngleInterval, row().angleInterval);
    EXPECT_EQ(voxloc::moduleTracker().AttenuateLoudspeaker, row().attenuates);
    EXPECT_EQ(voxloc_getNumberOfChannels(), static_cast<std::uint32_t>(row().channels));
}

TEST_P(Products, HandsItsChannelsToTheDetectors) {
    EXPECT_EQ(voxloc::moduleTracker().FrequencyDomain.FdVadChannel1, row().voiceChannels[0]);
    EXPECT_EQ(voxloc::moduleTracker().FrequencyDomain.FdVadChannel2, row().voiceChannels[1]);
    EXPECT_EQ(voxloc::moduleTracker().Noise.NoiseLevelChannel1, row().noiseChannels[0]);
    EXPECT_EQ(voxloc::moduleTracker().Noise.NoiseLevelChannel2, row().noiseChannels[1]);
    EXPECT_EQ(voxloc::moduleTracker().TimeDomain.ChannelOffset, 2U * 2048U);
}

void expectPosition(const Position& actual, const Position& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

TEST_P(Products, PlacesItsMicrophonesAndLoudspeaker) {
    ASSERT_EQ(row().microphones.size(), static_cast<std::size_t>(row().channels));
    for (std::size_t c = 0; c < row().microphones.size(); ++c) {
        SCOPED_TRACE(c);
        expectPosition(voxloc::moduleTracker().Microphones[c], row().microphones[c]);
        EXPECT_EQ(voxloc_getMicrophoneCoordinates(static_cast<std::uint32_t>(c)),
                  &voxloc::moduleTracker().Microphones[c]);
    }
    expectPosition(*voxloc::moduleTracker().Loudspeaker, row().loudspeaker);
}

void expectPairs(const voxloc::MicrophonePair* pairs, int count, std::int16_t* table, int points,
                 const std::vector<std::array<int, 2>>& expected) {
    ASSERT_EQ(expected.size(), static_cast<std::size_t>(count));
    for (std::size_t p = 0; p < expected.size(); ++p) {
        SCOPED_TRACE(p);
        EXPECT_EQ(pairs[p].firstMicrophone, expected[p][0]);
        EXPECT_EQ(pairs[p].secondMicrophone, expected[p][1]);
        EXPECT_EQ(pairs[p].lookupTable, table + static_cast<std::ptrdiff_t>(p) * points);
    }
}

TEST_P(Products, ListsItsPairsInOrderEachWithItsSliceOfTheTable) {
    expectPairs(voxloc::moduleTracker().ElevationPairs, row().elevationPairs,
                voxloc::moduleTracker().AzimuthElevationLookupTable, 29737, row().elevationPair);
    expectPairs(voxloc::moduleTracker().AzimuthPairs, row().azimuthPairs,
                voxloc::moduleTracker().AzimuthRangeLookupTable, 10896, row().azimuthPair);
}

TEST(FindProduct, KnowsExactlyTheSevenTypes) {
    for (const ProductRow& row : reference::productRows()) {
        ASSERT_NE(voxloc_findProduct(row.type), nullptr) << row.name;
        EXPECT_EQ(voxloc_findProduct(row.type)->type, row.type);
    }
    for (const std::int32_t type : {INT32_MIN, -1, 3, 8, 9, INT32_MAX}) {
        EXPECT_EQ(voxloc_findProduct(type), nullptr) << type;
    }
}

TEST(ProductTypes, HaveTheirPublicNumbers) {
    EXPECT_EQ(PRODUCT_ASTER, 0);
    EXPECT_EQ(PRODUCT_BRAMBLE, 1);
    EXPECT_EQ(PRODUCT_CINDER, 2);
    EXPECT_EQ(PRODUCT_ELMWOOD, 4);
    EXPECT_EQ(PRODUCT_DOVETAIL, 5);
    EXPECT_EQ(PRODUCT_FOXGLOVE, 6);
    EXPECT_EQ(PRODUCT_GANNET, 7);
    EXPECT_EQ(VOXLOC_MAX_CHANNELS, 8);
    EXPECT_EQ(FRAME_SAMPLES, 2048);
}

}  // namespace
