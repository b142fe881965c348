// The built-in products: the library's rows against rows of the checks' own, and what the library
// tells about them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "models/productRows.h"
#include "trackerRuns.h"

namespace {

class Products : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    const VoxlocProduct& product() const { return *GetParam(); }
    const VoxlocArray& array() const { return GetParam()->array; }
};

INSTANTIATE_TEST_SUITE_P(Every, Products, ::testing::ValuesIn(allProducts()), ProductName());

bool operator==(const VoxlocPair& a, const VoxlocPair& b) {
    return a.first == b.first && a.second == b.second;
}
bool operator==(const Position& a, const Position& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

template <class Value, class Listed>
bool holds(const Value* values, int count, const std::vector<Listed>& expected) {
    return count == static_cast<int>(expected.size()) &&
           std::equal(expected.begin(), expected.end(), values,
                      [](const Listed& a, const Value& b) { return a == b; });
}

TEST_P(Products, IsWhatItsSecondRowSays) {
    const auto& rows = reference::productRows();
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [this](const auto& row) { return row.type == product().type; });
    ASSERT_NE(found, rows.end()) << "verify/models/productRows.h lacks a row, written from the "
                                    "product's description, for "
                                 << product().name;
    const reference::ProductRow& row = *found;
    EXPECT_STREQ(product().name, row.name);
    EXPECT_EQ(array().minimumAzimuth, row.minimumAzimuth);
    EXPECT_EQ(array().minimumElevation, row.minimumElevation);
    EXPECT_EQ(array().angleInterval, row.angleInterval);
    EXPECT_TRUE(array().voiceChannels == row.voiceChannels);
    EXPECT_TRUE(array().noiseChannels == row.noiseChannels);
    EXPECT_EQ(array().timeDomainVoiceChannel, row.timeDomainVoiceChannel);
    EXPECT_EQ(array().attenuateLoudspeaker != 0, row.attenuates);
    EXPECT_TRUE(array().loudspeaker == row.loudspeaker);
    EXPECT_TRUE(holds(array().microphone, array().channels, row.microphones));
    EXPECT_TRUE(holds(array().elevationPair, array().elevationPairs, row.elevationPair));
    EXPECT_TRUE(holds(array().azimuthPair, array().azimuthPairs, row.azimuthPair));
}

// No row of the checks is left without a product, and all are in the order of the types.
TEST(ProductList, HoldsTheRowsInTheOrderOfTheirTypes) {
    const auto products = allProducts();
    for (const reference::ProductRow& row : reference::productRows()) {
        EXPECT_NE(voxloc_findProduct(row.type), nullptr) << row.name;
    }
    for (std::size_t i = 1; i < products.size(); ++i) {
        EXPECT_LT(products[i - 1]->type, products[i]->type);
    }
    EXPECT_EQ(voxloc_getProduct(voxloc_getNumberOfProducts()), nullptr);
    EXPECT_EQ(voxloc_getProduct(UINT32_MAX), nullptr);
}

TEST_P(Products, IsFoundByItsTypeAndItsName) {
    EXPECT_EQ(voxloc_findProduct(product().type), &product());
    EXPECT_EQ(voxloc_findProductByName(std::string(product().name).c_str()), &product());
    std::string name = product().name;
    EXPECT_TRUE(std::all_of(name.begin(), name.end(), [](char c) { return c >= 'a' && c <= 'z'; }));
    EXPECT_EQ(voxloc_findProductByName((name + "s").c_str()), nullptr);
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
    EXPECT_EQ(voxloc_findProductByName(name.c_str()), nullptr);
}

TEST(FindProduct, KnowsNoOtherTypeAndName) {
    for (const std::int32_t type : {INT32_MIN, -1, 3, 1000, INT32_MAX}) {
        EXPECT_EQ(voxloc_findProduct(type), nullptr) << type;
    }
    EXPECT_EQ(voxloc_findProductByName(nullptr), nullptr);
    EXPECT_EQ(voxloc_findProductByName(""), nullptr);
}

TEST(ProductTypes, HaveTheirPublicNumbers) {
    const int types[] = {PRODUCT_ASTER,    PRODUCT_BRAMBLE,  PRODUCT_CINDER, PRODUCT_ELMWOOD,
                         PRODUCT_DOVETAIL, PRODUCT_FOXGLOVE, PRODUCT_GANNET};
    const int numbers[] = {0, 1, 2, 4, 5, 6, 7};
    EXPECT_TRUE(std::equal(std::begin(types), std::end(types), numbers));
    EXPECT_EQ(VOXLOC_MAX_CHANNELS, 8);
    EXPECT_EQ(FRAME_SAMPLES, 2048);
}

TEST(Version, IsThatOfTheHeader) {
    EXPECT_EQ(voxloc_getVersion(), std::to_string(VOXLOC_VERSION_MAJOR) + "." +
                                       std::to_string(VOXLOC_VERSION_MINOR) + "." +
                                       std::to_string(VOXLOC_VERSION_PATCH));
    EXPECT_EQ(voxloc_getLatency(), 2048U);  // the newest frame waits for the next call
}

// --- What initialise makes of a row -------------------------------------------------------------

TEST_P(Products, IsWhatTheInitializedModuleIs) {
    const InitializedModule module(product().type);
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    EXPECT_EQ(tracker.ProductType, product().type);
    EXPECT_EQ(tracker.NumberOfChannels, array().channels);
    EXPECT_EQ(tracker.NumberOfAzimuthPairs, array().azimuthPairs);
    EXPECT_EQ(tracker.NumberOfElevationPairs, array().elevationPairs);
    EXPECT_EQ(tracker.MinimumAzimuth, array().minimumAzimuth);
    EXPECT_EQ(tracker.MinimumElevation, array().minimumElevation);
    EXPECT_EQ(tracker.AngleInterval, array().angleInterval);
    EXPECT_EQ(tracker.AttenuateLoudspeaker, array().attenuateLoudspeaker != 0);
    EXPECT_EQ(static_cast<int>(tracker.FrequencyDomain.FdVadChannel1), array().voiceChannels.first);
    EXPECT_EQ(static_cast<int>(tracker.FrequencyDomain.FdVadChannel2),
              array().voiceChannels.second);
    EXPECT_EQ(static_cast<int>(tracker.Noise.NoiseLevelChannel1), array().noiseChannels.first);
    EXPECT_EQ(static_cast<int>(tracker.Noise.NoiseLevelChannel2), array().noiseChannels.second);
    EXPECT_EQ(static_cast<int>(tracker.TimeDomain.ChannelOffset),
              2048 * array().timeDomainVoiceChannel);
    EXPECT_TRUE(*tracker.Loudspeaker == array().loudspeaker);
    EXPECT_EQ(voxloc_getNumberOfChannels(), static_cast<std::uint32_t>(array().channels));
    for (std::uint32_t c = 0; c < voxloc_getNumberOfChannels(); ++c) {
        EXPECT_EQ(voxloc_getMicrophoneCoordinates(c), &tracker.Microphones[c]);
        EXPECT_TRUE(tracker.Microphones[c] == array().microphone[c]) << c;
    }
}

void expectPairs(const voxloc::MicrophonePair* pairs, int count, const VoxlocPair* expected,
                 const std::int16_t* table, int points) {
    for (int p = 0; p < count; ++p) {
        EXPECT_EQ(pairs[p].firstMicrophone, expected[p].first) << p;
        EXPECT_EQ(pairs[p].secondMicrophone, expected[p].second) << p;
        EXPECT_EQ(pairs[p].lookupTable, table + p * points) << p;
    }
}

TEST_P(Products, ListsItsPairsInOrderEachWithItsSliceOfTheTable) {
    const InitializedModule module(product().type);
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    expectPairs(tracker.ElevationPairs, array().elevationPairs, array().elevationPair,
                tracker.AzimuthElevationLookupTable, 29737);
    expectPairs(tracker.AzimuthPairs, array().azimuthPairs, array().azimuthPair,
                tracker.AzimuthRangeLookupTable, 10896);
}

// --- The grid that an array is searched on ------------------------------------------------------

double degreesOf(float minimum, float interval, int index) {
    const double sine = static_cast<double>(minimum) + index * static_cast<double>(interval);
    return std::asin(std::clamp(sine, -1.0, 1.0)) * 57.29577951308232;
}

TEST_P(Products, HasItsGrid) {
    VoxlocGrid grid = {};
    voxloc_getGrid(&array(), &grid);
    EXPECT_EQ(grid.azimuths, 227);
    EXPECT_EQ(grid.elevations, 131);
    EXPECT_EQ(grid.ranges, 48);
    EXPECT_EQ(grid.angleInterval, array().angleInterval);
    const float step = array().angleInterval;
    // Angles near 90 degrees magnify the rounding of their sines.
    EXPECT_NEAR(grid.lowestAzimuth, degreesOf(array().minimumAzimuth, step, 0), 1e-4);
    EXPECT_NEAR(grid.highestAzimuth, degreesOf(array().minimumAzimuth, step, 226), 1e-4);
    EXPECT_NEAR(grid.lowestElevation, degreesOf(array().minimumElevation, step, 0), 1e-4);
    EXPECT_NEAR(grid.highestElevation, degreesOf(array().minimumElevation, step, 130), 1e-4);
    EXPECT_EQ(grid.nearestRange, 0.5f);
    EXPECT_EQ(grid.rangeInterval, 0.2f);
    EXPECT_FLOAT_EQ(grid.farthestRange, 9.9f);
}

TEST(Grid, OfGannetEndsAt90Degrees) {
    VoxlocGrid grid = {};
    voxloc_getGrid(&voxloc_findProduct(PRODUCT_GANNET)->array, &grid);
    EXPECT_NEAR(grid.lowestAzimuth, -90.0f, 1e-4f);
    EXPECT_NEAR(grid.highestAzimuth, 90.0f, 1e-4f);
    EXPECT_TRUE(grid.lowestAzimuth >= -90.0f && grid.highestAzimuth <= 90.0f);
}

}  // namespace
