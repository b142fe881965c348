// Every entry of the lag tables of every product, and the grids that they are made for.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "initializedModule.h"
#include "models/geometryModel.h"
#include "models/productRows.h"
#include "track/tracker.h"

namespace {

using reference::Azimuths;
using reference::ProductRow;

constexpr double Unit = 0x1p-24;

class LagTables : public ::testing::TestWithParam<ProductRow> {
  protected:
    const ProductRow& row() const { return GetParam(); }
    const Position& microphone(int index) const {
        return row().microphones[static_cast<std::size_t>(index)];
    }
    InitializedModule module_{GetParam().type};
};

INSTANTIATE_TEST_SUITE_P(Every, LagTables, ::testing::ValuesIn(reference::productRows()),
                         reference::RowName());

// One table seen as a grid: which angles and range each of its rows stands for.
struct Grid {
    const std::int16_t* lags;
    int rows;
    bool isElevation;

    float elevation(int r) const {
        return isElevation ? voxloc::moduleTracker().ElevationAngles[r] : 0.0f;
    }
    float range(int r) const { return isElevation ? 1000.0f : voxloc::moduleTracker().Ranges[r]; }
};

int countDifferences(const Grid& grid, const Position& first, const Position& second) {
    int differences = 0;
    for (int r = 0; r < grid.rows; ++r) {
        for (int a = 0; a < Azimuths; ++a) {
            const Position point = reference::pointAt(voxloc::moduleTracker().AzimuthAngles[a],
                                                      grid.elevation(r), grid.range(r));
            const int expected = reference::lagOf(point, first, second);
            if (grid.lags[r * Azimuths + a] != expected) ++differences;
        }
    }
    return differences;
}

TEST_P(LagTables, EqualTheSinglePrecisionFormulasEverywhere) {
    for (std::size_t p = 0; p < row().elevationPair.size(); ++p) {
        const auto [first, second] = row().elevationPair[p];
        const Grid grid{voxloc::moduleTracker().AzimuthElevationLookupTable + p * 29737, 131, true};
        EXPECT_EQ(countDifferences(grid, microphone(first), microphone(second)), 0)
            << "elevation pair " << p;
    }
    for (std::size_t p = 0; p < row().azimuthPair.size(); ++p) {
        const auto [first, second] = row().azimuthPair[p];
        const Grid grid{voxloc::moduleTracker().AzimuthRangeLookupTable + p * 10896, 48, false};
        EXPECT_EQ(countDifferences(grid, microphone(first), microphone(second)), 0)
            << "azimuth pair " << p;
    }
}

// A distance of about R is rounded four times on its way (coordinate, square, sum, root), there
// are two of them, and their difference turns into lags; rounding adds half a lag. Wrapped lags
// are on a grid of 2^-10.
double lagBound(double range) {
    return 0.5 + 2.0 * 4.0 * Unit * range * 551.7241 + 0x1p-10;
}

double worstExcess(const Grid& grid, const Position& first, const Position& second) {
    double worst = -1.0;
    for (int r = 0; r < grid.rows; ++r) {
        for (int a = 0; a < Azimuths; ++a) {
            const double azimuth = static_cast<double>(voxloc::moduleTracker().AzimuthAngles[a]);
            if (std::isnan(azimuth)) continue;
            const double elevation = static_cast<double>(grid.elevation(r));
            const double range = static_cast<double>(grid.range(r));
            const double lag = (reference::exactDistance(azimuth, elevation, range, first) -
                                reference::exactDistance(azimuth, elevation, range, second)) *
                               192000.0 / 348.0;
            const double error = reference::circularDistance(grid.lags[r * Azimuths + a], lag);
            worst = std::max(worst, error - lagBound(range + 1.0));
        }
    }
    return worst;
}

TEST_P(LagTables, AreWithinTheBoundOfExactGeometry) {
    for (std::size_t p = 0; p < row().elevationPair.size(); ++p) {
        const auto [first, second] = row().elevationPair[p];
        const Grid grid{voxloc::moduleTracker().AzimuthElevationLookupTable + p * 29737, 131, true};
        EXPECT_LE(worstExcess(grid, microphone(first), microphone(second)), 0.0)
            << "elevation pair " << p;
    }
    for (std::size_t p = 0; p < row().azimuthPair.size(); ++p) {
        const auto [first, second] = row().azimuthPair[p];
        const Grid grid{voxloc::moduleTracker().AzimuthRangeLookupTable + p * 10896, 48, false};
        EXPECT_LE(worstExcess(grid, microphone(first), microphone(second)), 0.0)
            << "azimuth pair " << p;
    }
}

TEST_P(LagTables, StayInsideTheCorrelation) {
    const int elevationEntries = row().elevationPairs * 29737;
    for (int i = 0; i < elevationEntries; ++i) {
        const int lag = voxloc::moduleTracker().AzimuthElevationLookupTable[i];
        ASSERT_TRUE(lag >= 0 && lag <= 16384) << i;
    }
    for (int i = 0; i < row().azimuthPairs * 10896; ++i) {
        const int lag = voxloc::moduleTracker().AzimuthRangeLookupTable[i];
        ASSERT_TRUE(lag >= 0 && lag <= 16384) << i;
    }
}

bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST_P(LagTables, HaveTheirGridsBitForBit) {
    for (int a = 0; a < 227; ++a) {
        const float expected = reference::gridAngle(row().minimumAzimuth, row().angleInterval, a);
        const float actual = voxloc::moduleTracker().AzimuthAngles[a];
        EXPECT_TRUE(sameBits(actual, expected) || (std::isnan(actual) && std::isnan(expected)))
            << "azimuth " << a << ": " << actual << ", " << expected;
    }
    for (int e = 0; e < 131; ++e) {
        const float expected = reference::gridAngle(row().minimumElevation, row().angleInterval, e);
        EXPECT_TRUE(sameBits(voxloc::moduleTracker().ElevationAngles[e], expected))
            << "elevation " << e;
    }
    for (int r = 0; r < 48; ++r) {
        const float expected = 0.5f + 0.2f * static_cast<float>(r);
        EXPECT_TRUE(sameBits(voxloc::moduleTracker().Ranges[r], expected)) << "range " << r;
    }
}

TEST(Grids, OfAsterStartWhereTheyShould) {
    const InitializedModule module(PRODUCT_ASTER);
    EXPECT_LE(
        std::abs(static_cast<double>(voxloc::moduleTracker().AzimuthAngles[0]) - std::asin(-0.905)),
        1e-6);
    EXPECT_LE(std::abs(static_cast<double>(voxloc::moduleTracker().AzimuthAngles[226]) -
                       std::asin(0.903)),
              1e-6);
    EXPECT_LE(std::abs(static_cast<double>(voxloc::moduleTracker().ElevationAngles[0]) -
                       std::asin(-0.52)),
              1e-6);
    EXPECT_EQ(voxloc::moduleTracker().Ranges[0], 0.5f);
    EXPECT_FLOAT_EQ(voxloc::moduleTracker().Ranges[1], 0.7f);
    EXPECT_FLOAT_EQ(voxloc::moduleTracker().Ranges[47], 9.9f);
}

TEST(Grids, OfElmwoodEndBelowTheMirrorOfTheirStart) {
    const InitializedModule module(PRODUCT_ELMWOOD);
    EXPECT_LE(std::abs(static_cast<double>(voxloc::moduleTracker().ElevationAngles[130]) -
                       std::asin(0.399)),
              1e-6);
}

class GannetColumns : public ::testing::Test {
  protected:
    static bool isOutside(int azimuth) { return azimuth <= 4 || azimuth >= 223; }
    InitializedModule module_{PRODUCT_GANNET};
};

TEST_F(GannetColumns, OutsideTheUnitIntervalHoldNaNAngles) {
    for (int a = 0; a < 227; ++a) {
        EXPECT_EQ(std::isnan(voxloc::moduleTracker().AzimuthAngles[a]), isOutside(a)) << a;
    }
    for (const float angle : voxloc::moduleTracker().ElevationAngles)
        EXPECT_FALSE(std::isnan(angle));
}

TEST_F(GannetColumns, OutsideTheUnitIntervalHaveLagZero) {
    for (int row = 0; row < 2 * 131; ++row) {
        for (int a = 0; a < 227; ++a) {
            if (!isOutside(a)) continue;
            ASSERT_EQ(voxloc::moduleTracker().AzimuthElevationLookupTable[row * 227 + a], 0)
                << row << ", " << a;
        }
    }
    for (int row = 0; row < 3 * 48; ++row) {
        for (int a = 0; a < 227; ++a) {
            if (!isOutside(a)) continue;
            ASSERT_EQ(voxloc::moduleTracker().AzimuthRangeLookupTable[row * 227 + a], 0)
                << row << ", " << a;
        }
    }
}

}  // namespace
