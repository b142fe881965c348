// What an array can tell apart, against closed formulas for far sources.

#include <gtest/gtest.h>

#include <cmath>

#include "arrays/arrayReport.h"
#include "arrays/resolution.h"

namespace {

constexpr double LagsPerMetre = 192000.0 / 348.0;
constexpr double Radian = 180.0 / M_PI;

/** Two microphones along y and two along z, half a metre and a tenth apart. */
VoxlocArray cross() {
    VoxlocArray array = {};
    array.channels = 4;
    array.microphone[0] = {0.0f, 0.25f, 0.0f};
    array.microphone[1] = {0.0f, -0.25f, 0.0f};
    array.microphone[2] = {0.0f, 0.0f, 0.05f};
    array.microphone[3] = {0.0f, 0.0f, -0.05f};
    array.azimuthPairs = 1;
    array.azimuthPair[0] = {1, 0};
    array.elevationPairs = 1;
    array.elevationPair[0] = {3, 2};
    array.minimumAzimuth = -0.904f;
    array.minimumElevation = -0.52f;
    array.angleInterval = 0.008f;
    return array;
}

TEST(Resolution, APairsLagsReachAcrossTheGrid) {
    const PairReach reach = Resolution(cross()).elevationPairs().at(0);
    const double ends = 0.1 * 0.52 * LagsPerMetre;  // at the sines of the lowest and the highest
    EXPECT_EQ(static_cast<int>(std::lround(-ends)), reach.leastLag);
    EXPECT_EQ(static_cast<int>(std::lround(ends)), reach.mostLag);
    EXPECT_NEAR(0.1, reach.spacing, 1e-6);
}

TEST(Resolution, ADirectionAliasesWhereAWaveFitsIntoTheReach) {
    const PairReach reach = Resolution(cross()).elevationPairs().at(0);
    EXPECT_NEAR(348.0 / (0.1 * 2 * 0.52), reach.aliasFrequency, 5.0);
    EXPECT_NEAR(348.0 / (2 * 0.1), reach.lowestFrequency, 11.72 / 2);
}

TEST(Resolution, OneLagOfElevationIsWorthWhatTheCosineSays) {
    const Resolution resolution(cross());
    for (const double elevation : {0.0, 20.0, 30.0}) {
        const double slope = 0.1 * LagsPerMetre * std::cos(elevation / Radian) / Radian;
        EXPECT_NEAR(1.0 / slope, resolution.at(0.0, elevation).elevationLag, 1e-4 / slope);
    }
}

TEST(Resolution, TwiceAsManyPairsTellAzimuthsApartByTheRootOfTwo) {
    VoxlocArray twice = cross();
    twice.azimuthPairs = 2;
    twice.azimuthPair[1] = twice.azimuthPair[0];
    const double once = Resolution(cross()).at(10.0, 0.0).azimuthLag;
    EXPECT_NEAR(once / std::sqrt(2.0), Resolution(twice).at(10.0, 0.0).azimuthLag, 1e-9);
}

TEST(Resolution, TheGridStepIsTheLeastThatCanBeToldApart) {
    const AngleResolution ahead = Resolution(cross()).at(0.0, 0.0);
    EXPECT_NEAR(0.008 * Radian, ahead.azimuthStep, 1e-4);
    EXPECT_EQ(ahead.azimuthStep, ahead.azimuthOf());     // the wide pair is finer than the grid
    EXPECT_EQ(ahead.elevationLag, ahead.elevationOf());  // the narrow one is coarser
}

TEST(Resolution, WithoutElevationPairsNoElevationIsToldApart) {
    VoxlocArray flat = cross();
    flat.elevationPairs = 0;
    EXPECT_TRUE(std::isinf(Resolution(flat).at(0.0, 0.0).elevationLag));
}

TEST(Resolution, OnePairAloneTellsNoRange) {
    for (const RangeResolution& one : Resolution(cross()).ranges(20.0)) {
        EXPECT_TRUE(std::isinf(one.metresPerLag)) << one.range;
        EXPECT_NEAR(0.0, one.lagsBeyond, 1e-3) << one.range;
    }
}

/** Pairs w wide, d to either side of the middle: each changes by w·d/r on the other's opposite. */
TEST(Resolution, TwoPairsSideBySideTellTheRangeByTheirParallax) {
    VoxlocArray array = cross();
    array.microphone[2] = {0.0f, 0.15f, 0.0f};
    array.microphone[3] = {0.0f, -0.15f, 0.0f};
    array.azimuthPairs = 2;
    array.azimuthPair[0] = {1, 3};
    array.azimuthPair[1] = {2, 0};
    array.elevationPairs = 0;
    const RangeResolution far = Resolution(array).ranges(0.0).back();
    const double slope = std::sqrt(2.0) * 0.1 * 0.2 / (far.range * far.range) * LagsPerMetre;
    EXPECT_NEAR(9.9, far.range, 1e-5);
    EXPECT_NEAR(1.0 / slope, far.metresPerLag, 0.01 / slope);
}

TEST(Resolution, TheReportShowsEveryPairAndRange) {
    const std::string report = reportOnArray({"cross", cross(), {}});
    EXPECT_NE(std::string::npos, report.find("array cross: 4 microphones"));
    EXPECT_NE(std::string::npos, report.find("1-0   azimuth        0.500"));
    EXPECT_NE(std::string::npos, report.find("3-2   elevation      0.100"));
    EXPECT_NE(std::string::npos, report.find("\n    9.9 "));
}

TEST(Resolution, TheListNamesEveryBuiltInArray) {
    const std::string list = listOfArrays();
    for (std::uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        EXPECT_NE(std::string::npos, list.find(std::string("\n") + voxloc_getProduct(i)->name));
    }
}

}  // namespace
