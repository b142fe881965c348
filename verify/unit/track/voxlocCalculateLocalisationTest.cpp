// Talkers at known places, made up with exact delays. What the tracker may be off follows from its
// grid and from the lags, which are whole.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "models/geometryModel.h"
#include "trackerRuns.h"

namespace {

double sineOfDegrees(float angle) {
    return std::sin(static_cast<double>(angle) * 0.017453292519943295);
}

// The spectra lag by a frame, the envelope's median takes four frames to catch up from silence, and
// the weights last for eight frames of steady sound: the position is read in between.
TrackerResult locate(const VoxlocProduct& product, float azimuthSine, float elevationSine,
                     float range) {
    const Position source =
        reference::pointAt(std::asin(azimuthSine), std::asin(elevationSine), range);
    const OwnTracker tracker = trackerOf(product.type);
    const TrackerResult result = run(tracker.get(), steadyScenario(product.array, source)).back();
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_TD_VOICE, result.flags), 1);
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_POSITION_VALID, result.flags), 1);
    return result;
}

class Localisation : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    const VoxlocArray& array() const { return GetParam()->array; }
    float azimuthSine(float index) const {
        return array().minimumAzimuth + index * array().angleInterval;
    }
    float elevationSine(float index) const {
        return array().minimumElevation + index * array().angleInterval;
    }
    // The largest of what a pair's two microphones give.
    template <class Measure>
    double largest(const VoxlocPair* pairs, int count, Measure measure) const {
        double result = 0.0;
        for (int k = 0; k < count; ++k) {
            const Position& a = array().microphone[pairs[k].first];
            const Position& b = array().microphone[pairs[k].second];
            result = std::max(result, std::abs(static_cast<double>(measure(a, b))));
        }
        return result;
    }

    // Seen along an axis, a lag is 1/(551.7241·spacing) of sine: half of one is lost where the
    // correlation is sampled and half where the table is rounded. A step of the grid comes on top.
    double sineLimit(double spacing) const {
        return static_cast<double>(array().angleInterval) + 1.0 / (551.7241 * spacing);
    }
    double azimuthLimit() const {
        return sineLimit(largest(array().azimuthPair, array().azimuthPairs,
                                 [](const Position& a, const Position& b) { return a.y - b.y; }));
    }
    double elevationLimit() const {
        return sineLimit(largest(array().elevationPair, array().elevationPairs,
                                 [](const Position& a, const Position& b) { return a.z - b.z; }));
    }
    // The bend of the wave front tells the range: a pair at y1 and y2 sees (y1² - y2²)/2r of it.
    double rangeLimit(double range) const {
        const double bend =
            largest(array().azimuthPair, array().azimuthPairs,
                    [](const Position& a, const Position& b) { return a.y * a.y - b.y * b.y; });
        return 0.2 + 2.0 * range * range / (551.7241 * bend);
    }

    void expectAzimuth(float index) const {
        SCOPED_TRACE(::testing::Message() << "azimuth " << index);
        const TrackerResult found = locate(*GetParam(), azimuthSine(index), 0.0f, 3.1f);
        const double error = sineOfDegrees(found.azimuth) - static_cast<double>(azimuthSine(index));
        EXPECT_LE(std::abs(error), azimuthLimit());
    }
};

INSTANTIATE_TEST_SUITE_P(Every, Localisation, ::testing::ValuesIn(allProducts()), ProductName());

TEST_P(Localisation, FindsATalkerOnTheGrid) {
    expectAzimuth(60.0f);
    expectAzimuth(150.0f);
}

TEST_P(Localisation, FindsATalkerBetweenGridPoints) {
    expectAzimuth(80.5f);
    expectAzimuth(170.3f);
}

// The angles that exist: gannet's grid reaches past the sines' range on both sides.
TEST_P(Localisation, FindsATalkerAtTheEdgeOfTheGrid) {
    const bool isGannet = GetParam()->type == PRODUCT_GANNET;
    expectAzimuth(isGannet ? 5.0f : 0.0f);
    expectAzimuth(isGannet ? 222.0f : 226.0f);
}

TEST_P(Localisation, FindsTheRangeOfANearTalker) {
    for (const float index : {90.0f, 140.0f}) {
        SCOPED_TRACE(::testing::Message() << "azimuth " << index);
        const TrackerResult found = locate(*GetParam(), azimuthSine(index), 0.0f, 1.1f);
        EXPECT_LE(std::abs(static_cast<double>(found.range) - 1.1), rangeLimit(1.1));
    }
}

std::vector<const VoxlocProduct*> productsWithElevationPairs() {
    std::vector<const VoxlocProduct*> products;
    for (const VoxlocProduct* product : allProducts()) {
        if (product->array.elevationPairs > 0) products.push_back(product);
    }
    return products;
}

class LocalisationInElevation : public Localisation {};

INSTANTIATE_TEST_SUITE_P(Most, LocalisationInElevation,
                         ::testing::ValuesIn(productsWithElevationPairs()), ProductName());

// The table of directions is made for the far field.
TEST_P(LocalisationInElevation, FindsTheElevationOfADistantTalker) {
    for (const float index : {20.0f, 64.5f, 110.0f}) {
        SCOPED_TRACE(::testing::Message() << "elevation " << index);
        const TrackerResult found =
            locate(*GetParam(), azimuthSine(140.0f), elevationSine(index), 1000.0f);
        const double error =
            sineOfDegrees(found.elevation) - static_cast<double>(elevationSine(index));
        EXPECT_LE(std::abs(error), elevationLimit());
    }
}

// A talker straight ahead has lag 0 in all pairs of a straight array, like the points whose angle
// does not exist, and the first of those comes first.
TEST(LocalisationOfGannet, HasNoAzimuthForATalkerStraightAhead) {
    const TrackerResult found = locate(*voxloc_findProduct(PRODUCT_GANNET), 0.0f, 0.0f, 9.9f);
    EXPECT_TRUE(std::isnan(found.azimuth)) << found.azimuth;
}

}  // namespace
