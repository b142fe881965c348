// Talkers at known places, made up with exact delays. What the tracker may be off follows from its
// grid and from the lags, which are whole.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "initializedModule.h"
#include "models/geometryModel.h"
#include "models/productRows.h"
#include "syntheticArray.h"
#include "track/tracker.h"

namespace {

using reference::ProductRow;

double sineOfDegrees(float angle) {
    return std::sin(static_cast<double>(angle) * 0.017453292519943295);
}

// The spectra lag by a frame, the envelope's median takes four frames to catch up from silence, and
// the weights last for eight frames of steady sound: the position is read in between.
TrackerResult locate(std::int32_t product, float azimuthSine, float elevationSine, float range) {
    const InitializedModule module(product);
    SyntheticSource sound(1, reference::productRow(product).microphones);
    const Position source =
        reference::pointAt(std::asin(azimuthSine), std::asin(elevationSine), range);
    TrackerResult result{};
    for (int frame = 0; frame < 8; ++frame) {
        voxloc_calculate(sound.next(source), 24, 0, &result);
    }
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_TD_VOICE, result.flags), 1);
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_POSITION_VALID, result.flags), 1);
    return result;
}

class Localisation : public ::testing::TestWithParam<ProductRow> {
  protected:
    const ProductRow& row() const { return GetParam(); }
    float azimuthSine(float index) const {
        return row().minimumAzimuth + index * row().angleInterval;
    }
    float elevationSine(float index) const {
        return row().minimumElevation + index * row().angleInterval;
    }
    const Position& microphone(int index) const {
        return row().microphones[static_cast<std::size_t>(index)];
    }

    // Seen along an axis, a lag is 1/(551.7241·spacing) of sine: half of one is lost where the
    // correlation is sampled and half where the table is rounded. A step of the grid comes on top.
    double sineLimit(double spacing) const {
        return static_cast<double>(row().angleInterval) + 1.0 / (551.7241 * spacing);
    }
    double azimuthLimit() const {
        float widest = 0.0f;
        for (const auto& pair : row().azimuthPair) {
            widest = std::max(widest, std::abs(microphone(pair[0]).y - microphone(pair[1]).y));
        }
        return sineLimit(static_cast<double>(widest));
    }
    double elevationLimit() const {
        float tallest = 0.0f;
        for (const auto& pair : row().elevationPair) {
            tallest = std::max(tallest, std::abs(microphone(pair[0]).z - microphone(pair[1]).z));
        }
        return sineLimit(static_cast<double>(tallest));
    }
    // The bend of the wave front tells the range: a pair at y1 and y2 sees (y1² - y2²)/2r of it.
    double rangeLimit(double range) const {
        double lagsPerMetre = 0.0;
        for (const auto& pair : row().azimuthPair) {
            const double y1 = static_cast<double>(microphone(pair[0]).y);
            const double y2 = static_cast<double>(microphone(pair[1]).y);
            lagsPerMetre = std::max(lagsPerMetre,
                                    551.7241 * std::abs(y1 * y1 - y2 * y2) / (2.0 * range * range));
        }
        return 0.2 + 1.0 / lagsPerMetre;
    }

    void expectAzimuth(float index) const {
        SCOPED_TRACE(::testing::Message() << "azimuth " << index);
        const TrackerResult found = locate(row().type, azimuthSine(index), 0.0f, 3.1f);
        const double error = sineOfDegrees(found.azimuth) - static_cast<double>(azimuthSine(index));
        EXPECT_LE(std::abs(error), azimuthLimit());
    }
};

INSTANTIATE_TEST_SUITE_P(Every, Localisation, ::testing::ValuesIn(reference::productRows()),
                         reference::RowName());

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
    const bool isGannet = row().type == PRODUCT_GANNET;
    expectAzimuth(isGannet ? 5.0f : 0.0f);
    expectAzimuth(isGannet ? 222.0f : 226.0f);
}

TEST_P(Localisation, FindsTheRangeOfANearTalker) {
    for (const float index : {90.0f, 140.0f}) {
        SCOPED_TRACE(::testing::Message() << "azimuth " << index);
        const TrackerResult found = locate(row().type, azimuthSine(index), 0.0f, 1.1f);
        EXPECT_LE(std::abs(static_cast<double>(found.range) - 1.1), rangeLimit(1.1));
    }
}

std::vector<ProductRow> rowsWithElevationPairs() {
    std::vector<ProductRow> rows;
    for (const ProductRow& row : reference::productRows()) {
        if (row.elevationPairs > 0) rows.push_back(row);
    }
    return rows;
}

class LocalisationInElevation : public Localisation {};

INSTANTIATE_TEST_SUITE_P(Most, LocalisationInElevation,
                         ::testing::ValuesIn(rowsWithElevationPairs()), reference::RowName());

// The table of directions is made for the far field.
TEST_P(LocalisationInElevation, FindsTheElevationOfADistantTalker) {
    for (const float index : {20.0f, 64.5f, 110.0f}) {
        SCOPED_TRACE(::testing::Message() << "elevation " << index);
        const TrackerResult found =
            locate(row().type, azimuthSine(140.0f), elevationSine(index), 1000.0f);
        const double error =
            sineOfDegrees(found.elevation) - static_cast<double>(elevationSine(index));
        EXPECT_LE(std::abs(error), elevationLimit());
    }
}

// A talker straight ahead has lag 0 in all pairs of a straight array, like the points whose angle
// does not exist, and the first of those comes first.
TEST(LocalisationOfGannet, HasNoAzimuthForATalkerStraightAhead) {
    const TrackerResult found = locate(PRODUCT_GANNET, 0.0f, 0.0f, 9.9f);
    EXPECT_TRUE(std::isnan(found.azimuth)) << found.azimuth;
}

}  // namespace
