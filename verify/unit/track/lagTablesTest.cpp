// Every entry of the lag tables of every product, and the grids that they are made for.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "models/geometryModel.h"
#include "track/pairGeometry.h"
#include "track/phaseTransform.h"
#include "trackerRuns.h"

namespace {

using reference::Azimuths;

// A point of a pair's table: where it is and its lag.
struct Entry {
    float azimuth, elevation, range;
    int lag;
};

class LagTables : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    // Calls with each pair's microphones, its reach and each entry of its table.
    template <class Check>
    void forEveryEntry(Check check) const {
        const voxloc::Tracker& tracker = voxloc::moduleTracker();
        for (int p = 0; p < voxloc::numberOfPairs(tracker); ++p) {
            const voxloc::MicrophonePair& pair = *tracker.Blocks[p].pair;
            const bool isElevation = p < tracker.NumberOfElevationPairs;
            for (int i = 0; i < Azimuths * (isElevation ? 131 : 48); ++i) {
                const float azimuth = tracker.AzimuthAngles[i % Azimuths];
                const int row = i / Azimuths;
                const Entry entry =
                    isElevation
                        ? Entry{azimuth, tracker.ElevationAngles[row], 1000.0f, pair.lookupTable[i]}
                        : Entry{azimuth, 0.0f, tracker.Ranges[row], pair.lookupTable[i]};
                check(entry, array().microphone[pair.firstMicrophone],
                      array().microphone[pair.secondMicrophone], tracker.Blocks[p].reach);
            }
        }
    }
    const VoxlocArray& array() const { return GetParam()->array; }

    InitializedModule module_{GetParam()->type};
};

INSTANTIATE_TEST_SUITE_P(Every, LagTables, ::testing::ValuesIn(allProducts()), ProductName());

TEST_P(LagTables, EqualTheSinglePrecisionFormulasEverywhere) {
    int differences = 0;
    forEveryEntry([&](const Entry& e, const Position& first, const Position& second, int) {
        const Position point = reference::pointAt(e.azimuth, e.elevation, e.range);
        if (e.lag != reference::lagOf(point, first, second)) ++differences;
    });
    EXPECT_EQ(differences, 0);
}

// A distance of about R is rounded four times on its way (coordinate, square, sum, root), there
// are two of them, and their difference turns into lags; rounding adds half a lag. Wrapped lags
// are on a grid of 2^-10.
TEST_P(LagTables, AreWithinTheBoundOfExactGeometry) {
    double worst = -1.0;
    forEveryEntry([&](const Entry& e, const Position& first, const Position& second, int) {
        if (std::isnan(e.azimuth)) return;
        const auto distanceTo = [&](const Position& microphone) {
            return reference::exactDistance(static_cast<double>(e.azimuth),
                                            static_cast<double>(e.elevation),
                                            static_cast<double>(e.range), microphone);
        };
        const double exact = (distanceTo(first) - distanceTo(second)) * 192000.0 / 348.0;
        const double bound =
            0.5 + 2.0 * 4.0 * 0x1p-24 * (static_cast<double>(e.range) + 1.0) * 551.7241 + 0x1p-10;
        worst = std::max(worst, reference::circularDistance(e.lag, exact) - bound);
    });
    EXPECT_LE(worst, 0.0);
}

// What a frame computes of a correlation covers all that the tables read.
TEST_P(LagTables, StayWithinTheReachOfTheirPair) {
    int outside = 0;
    forEveryEntry([&](const Entry& e, const Position&, const Position&, int reach) {
        EXPECT_LE(reach, voxloc::NearLags);
        const bool isNear = e.lag >= 0 && e.lag < reach;
        if (!isNear && (e.lag < 16384 - reach || e.lag > 16384)) ++outside;
    });
    EXPECT_EQ(outside, 0);
}

TEST(ReachInLags, IsTheSpacingRoundedUpWithTwoToSpareAndEven) {
    EXPECT_EQ(voxloc::reachInLags({0, 0, 0}, {0, 0.1f, 0}), 58);    // 55.2: 56, 58
    EXPECT_EQ(voxloc::reachInLags({0, 0, 0}, {0, 0, 0.102f}), 60);  // 56.3: 57, 59, 60
    EXPECT_LE(voxloc::reachInLags({0, 0, 0}, {voxloc::LargestSpacing, 0, 0}), voxloc::LargestReach);
}

bool sameAngle(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

TEST_P(LagTables, HaveTheirGridsBitForBit) {
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    for (int a = 0; a < 227; ++a) {
        const float angle = reference::gridAngle(array().minimumAzimuth, array().angleInterval, a);
        EXPECT_TRUE(sameAngle(tracker.AzimuthAngles[a], angle)) << a;
        const double sine = static_cast<double>(array().minimumAzimuth) +
                            a * static_cast<double>(array().angleInterval);
        EXPECT_EQ(std::isnan(angle), sine < -1.0 || sine > 1.0) << a;
        if (std::isnan(angle)) continue;
        EXPECT_NEAR(std::sin(static_cast<double>(angle)), sine, 1e-6);
    }
    for (int e = 0; e < 131; ++e) {
        const float angle =
            reference::gridAngle(array().minimumElevation, array().angleInterval, e);
        EXPECT_TRUE(sameAngle(tracker.ElevationAngles[e], angle)) << e;
        EXPECT_FALSE(std::isnan(angle)) << e;
    }
    for (int r = 0; r < 48; ++r) EXPECT_EQ(tracker.Ranges[r], reference::gridRange(r)) << r;
}

// Gannet's first five and last four azimuths are the sines of nothing: angles NaN, lags 0.
TEST(GannetColumns, OutsideTheUnitIntervalHaveNoAngleAndLagZero) {
    const InitializedModule module(PRODUCT_GANNET);
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    for (int a = 0; a < 227; ++a) {
        const bool isOutside = a <= 4 || a >= 223;
        EXPECT_EQ(std::isnan(tracker.AzimuthAngles[a]), isOutside) << a;
        for (int row = 0; row < 2 * 131 && isOutside; ++row) {
            ASSERT_EQ(tracker.AzimuthElevationLookupTable[row * 227 + a], 0) << row << ", " << a;
        }
        for (int row = 0; row < 3 * 48 && isOutside; ++row) {
            ASSERT_EQ(tracker.AzimuthRangeLookupTable[row * 227 + a], 0) << row << ", " << a;
        }
    }
}

TEST(Grids, StartAndEndWhereTheyShould) {
    {
        const InitializedModule aster(PRODUCT_ASTER);
        const voxloc::Tracker& tracker = voxloc::moduleTracker();
        EXPECT_NEAR(tracker.AzimuthAngles[0], std::asin(-0.905), 1e-6);
        EXPECT_NEAR(tracker.AzimuthAngles[226], std::asin(0.903), 1e-6);
        EXPECT_NEAR(tracker.ElevationAngles[0], std::asin(-0.52), 1e-6);
        EXPECT_FLOAT_EQ(tracker.Ranges[47], 9.9f);
    }
    const InitializedModule elmwood(PRODUCT_ELMWOOD);
    EXPECT_NEAR(voxloc::moduleTracker().ElevationAngles[130], std::asin(0.399), 1e-6);
}

}  // namespace
