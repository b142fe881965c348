#include "track/pairGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "initializedModule.h"
#include "models/productRows.h"
#include "track/loudspeakerZone.h"
#include "track/tracker.h"

namespace {

using voxloc::MicrophonePair;

constexpr float Unit = 0x1p-24f;
constexpr float Pi = 3.14159265f;

Position cartesian(float azimuth, float elevation, float range) {
    const float spherical[3] = {azimuth, elevation, range};
    Position point{NAN, NAN, NAN};
    voxloc_sphericalToCartesian(spherical, &point);
    return point;
}

TEST(SphericalToCartesian, PointsStraightAheadAtAngleZero) {
    const Position point = cartesian(0.0f, 0.0f, 2.0f);
    EXPECT_EQ(point.x, 2.0f);
    EXPECT_EQ(point.y, 0.0f);
    EXPECT_EQ(point.z, 0.0f);
}

// The float nearest to pi/2 is off by less than a rounding unit of 2.
TEST(SphericalToCartesian, TurnsTowardsPlusYWithAzimuth) {
    const Position point = cartesian(Pi / 2.0f, 0.0f, 1.0f);
    EXPECT_LE(std::abs(point.x), 2.0f * Unit);
    EXPECT_LE(std::abs(point.y - 1.0f), 2.0f * Unit);
    EXPECT_EQ(point.z, 0.0f);
}

TEST(SphericalToCartesian, PointsUpWithElevation) {
    const Position point = cartesian(0.0f, Pi / 2.0f, 1.0f);
    EXPECT_LE(std::abs(point.x), 2.0f * Unit);
    EXPECT_EQ(point.y, 0.0f);
    EXPECT_LE(std::abs(point.z - 1.0f), 2.0f * Unit);
}

// Signs and the mixture of both angles; each coordinate is a product of at most three rounded
// factors.
TEST(SphericalToCartesian, MixesTheAngles) {
    const Position point = cartesian(-0.4f, 0.3f, 5.0f);
    EXPECT_LE(std::abs(static_cast<double>(point.x) - 5.0 * std::cos(0.3) * std::cos(-0.4)), 2e-6);
    EXPECT_LE(std::abs(static_cast<double>(point.y) - 5.0 * std::cos(0.3) * std::sin(-0.4)), 2e-6);
    EXPECT_LE(std::abs(static_cast<double>(point.z) - 5.0 * std::sin(0.3)), 2e-6);
}

TEST(CalculateDistance, IsEuclideanAndSymmetric) {
    const Position a{1.0f, -2.0f, 3.0f};
    const Position b{3.0f, 1.0f, -3.0f};
    EXPECT_EQ(voxloc_calculateDistance(&a, &b), 7.0f);
    EXPECT_EQ(voxloc_calculateDistance(&b, &a), 7.0f);
    EXPECT_EQ(voxloc_calculateDistance(&a, &a), 0.0f);
}

TEST(DistanceToSampleDelay, ConvertsMetresToLags) {
    EXPECT_EQ(voxloc_distanceToSampleDelay(0.1f), 55);
    EXPECT_EQ(voxloc_distanceToSampleDelay(1.0f), 552);
    EXPECT_EQ(voxloc_distanceToSampleDelay(10.0f),
              5517);  // 5517.241; 551.72 or 551.73 differ at 29
    EXPECT_EQ(voxloc_distanceToSampleDelay(29.0f), 16000);  // 15999.9989
    EXPECT_EQ(voxloc_distanceToSampleDelay(0.0f), 0);
}

TEST(DistanceToSampleDelay, WrapsNegativeDifferencesToTheEnd) {
    EXPECT_EQ(voxloc_distanceToSampleDelay(-0.1f), 16329);
    EXPECT_EQ(voxloc_distanceToSampleDelay(-1.0f), 15832);
    EXPECT_EQ(voxloc_distanceToSampleDelay(-0.0f), 0);
}

TEST(DistanceToSampleDelay, IsOnePastTheLastLagJustBelowZero) {
    EXPECT_EQ(voxloc_distanceToSampleDelay(-0.0005f), 16384);
    EXPECT_EQ(voxloc_distanceToSampleDelay(-0.0009f), 16384);  // -0.4966 lags
    EXPECT_EQ(voxloc_distanceToSampleDelay(-0.0010f), 16383);  // -0.5517 lags
    EXPECT_EQ(voxloc_distanceToSampleDelay(-1e-30f), 16384);
}

TEST(DistanceToSampleDelay, RoundsHalfUp) {
    EXPECT_EQ(voxloc_distanceToSampleDelay(0.0009f), 0);   // 0.4966 lags
    EXPECT_EQ(voxloc_distanceToSampleDelay(0.00091f), 1);  // 0.5021 lags
    EXPECT_EQ(voxloc_distanceToSampleDelay(0.0027f), 1);   // 1.4897 lags
    EXPECT_EQ(voxloc_distanceToSampleDelay(0.00272f), 2);  // 1.5007 lags
}

TEST(DistanceToSampleDelay, GivesZeroForNaN) {
    EXPECT_EQ(voxloc_distanceToSampleDelay(std::numeric_limits<float>::quiet_NaN()), 0);
}

// No table comes near these; the conversion is defined all the same.
TEST(DistanceToSampleDelay, SaturatesFarOutside) {
    EXPECT_EQ(voxloc_distanceToSampleDelay(1e30f), 32767);
    EXPECT_EQ(voxloc_distanceToSampleDelay(-1e30f), -32768);
    EXPECT_EQ(voxloc_distanceToSampleDelay(std::numeric_limits<float>::infinity()), 32767);
}

std::uint16_t lowerBinAtSpacing(float spacing) {
    const Position a{0.0f, 0.0f, 0.0f};
    const Position b{0.0f, spacing, 0.0f};
    std::uint16_t upper = 0;
    std::uint16_t lower = 0;
    voxloc_setCutoffCoefficients(&a, &b, &upper, &lower);
    EXPECT_EQ(upper, 1451);
    return lower;
}

TEST(SetCutoffCoefficients, StartsWhereHalfAWavelengthEqualsTheSpacing) {
    EXPECT_EQ(lowerBinAtSpacing(0.15f), 99);     // 98.987
    EXPECT_EQ(lowerBinAtSpacing(0.0609f), 244);  // 243.81
    EXPECT_EQ(lowerBinAtSpacing(1.0f), 15);      // 14.848
    EXPECT_EQ(lowerBinAtSpacing(1.02f), 15);     // 14.557
    EXPECT_EQ(lowerBinAtSpacing(1.03f), 14);     // 14.416
    EXPECT_EQ(lowerBinAtSpacing(0.01f), 1485);   // 1484.8: above the upper bin, nothing in use
}

// Not a number of any product: the conversions are defined all the same.
TEST(SetCutoffCoefficients, IsDefinedForCoincidentMicrophones) {
    EXPECT_EQ(lowerBinAtSpacing(0.0f), 65535);
}

TEST(LoudspeakerZone, IsNarrowForEqualDistances) {
    for (const float distance : {0.3f, 0.5f, 2.0f}) {
        const voxloc::LoudspeakerZone zone = voxloc::loudspeakerZone(distance, distance);
        EXPECT_EQ(zone.lag, 0);
        EXPECT_EQ(zone.halfWidth, 2);  // 0.003 m: 1.655 lags
        EXPECT_EQ(zone.gain, 0.4f * distance);
    }
}

TEST(LoudspeakerZone, HasALeastGainOfATenth) {
    EXPECT_EQ(voxloc::loudspeakerZone(0.24f, 0.24f).gain, 0.1f);
    EXPECT_EQ(voxloc::loudspeakerZone(0.26f, 0.26f).gain, 0.4f * 0.26f);
    EXPECT_EQ(voxloc::loudspeakerZone(0.1f, 0.9f).gain, 0.1f);  // of the nearer microphone
    EXPECT_EQ(voxloc::loudspeakerZone(0.9f, 0.3f).gain, 0.4f * 0.3f);
}

TEST(LoudspeakerZone, WidensWithTheRatioOfTheDistances) {
    EXPECT_EQ(voxloc::loudspeakerZone(0.4f, 0.44f).halfWidth, 8);  // 0.0137 m: 7.56 lags
    EXPECT_EQ(voxloc::loudspeakerZone(0.44f, 0.4f).halfWidth, 8);
    EXPECT_EQ(voxloc::loudspeakerZone(0.4f, 0.56f).halfWidth, 25);  // 0.0458 m: 25.27 lags
    EXPECT_EQ(voxloc::loudspeakerZone(0.4f, 0.58f).halfWidth, 28);  // capped at 0.05 m: 27.59 lags
    EXPECT_EQ(voxloc::loudspeakerZone(0.4f, 40.0f).halfWidth, 28);
}

TEST(LoudspeakerZone, LiesAtThePathDifference) {
    EXPECT_EQ(voxloc::loudspeakerZone(0.5f, 0.4f).lag, 55);
    EXPECT_EQ(voxloc::loudspeakerZone(0.4f, 0.5f).lag, 16329);
}

// The pair records of the products that attenuate, worked out by hand.
struct PairRecord {
    int first, second, lowerBin, lag, halfWidth;
    double gain;
};

void expectRecords(const MicrophonePair* pairs, std::initializer_list<PairRecord> expected) {
    for (const PairRecord& record : expected) {
        SCOPED_TRACE(::testing::Message() << "(" << record.first << "," << record.second << ")");
        EXPECT_EQ(pairs->firstMicrophone, record.first);
        EXPECT_EQ(pairs->secondMicrophone, record.second);
        EXPECT_EQ(pairs->upperBin, 1451);
        EXPECT_EQ(pairs->lowerBin, record.lowerBin);
        EXPECT_EQ(pairs->loudspeakerLag, record.lag);
        EXPECT_EQ(pairs->loudspeakerHalfWidth, record.halfWidth);
        // positions, differences, squares, root and product: less than eight roundings
        EXPECT_LE(std::abs(static_cast<double>(pairs->loudspeakerGain) - record.gain),
                  8.0 * static_cast<double>(Unit) * record.gain);
        ++pairs;
    }
}

TEST(PairRecords, OfCinder) {
    const InitializedModule module(PRODUCT_CINDER);
    expectRecords(voxloc::moduleTracker().ElevationPairs, {{3, 4, 243, 0, 2, 0.1592718882916882},
                                                           {3, 5, 87, 88, 28, 0.1},
                                                           {2, 4, 87, 16296, 28, 0.1}});
    expectRecords(voxloc::moduleTracker().AzimuthPairs, {{3, 2, 93, 88, 28, 0.1},
                                                         {3, 0, 22, 74, 28, 0.10591097393565976},
                                                         {1, 0, 93, 16297, 28, 0.1}});
}

TEST(PairRecords, OfDovetail) {
    const InitializedModule module(PRODUCT_DOVETAIL);
    expectRecords(voxloc::moduleTracker().ElevationPairs,
                  {{2, 5, 243, 16384, 2, 0.14560169251763525},
                   {3, 4, 243, 16384, 2, 0.20947900339652184},
                   {2, 4, 87, 16296, 28, 0.14560169251763525}});
    expectRecords(voxloc::moduleTracker().AzimuthPairs, {{4, 5, 93, 88, 27, 0.14584269904249578},
                                                         {2, 1, 31, 139, 28, 0.1},
                                                         {1, 0, 93, 16297, 28, 0.1}});
}

void expectNoZone(const MicrophonePair* pairs, int count, const std::vector<int>& lowerBins) {
    ASSERT_EQ(lowerBins.size(), static_cast<std::size_t>(count));
    for (std::size_t p = 0; p < lowerBins.size(); ++p) {
        SCOPED_TRACE(p);
        EXPECT_EQ(pairs[p].upperBin, 1451);
        EXPECT_EQ(pairs[p].lowerBin, lowerBins[p]);
        EXPECT_EQ(pairs[p].loudspeakerHalfWidth, 0);
        EXPECT_EQ(pairs[p].loudspeakerLag, 0);
        EXPECT_EQ(pairs[p].loudspeakerGain, 1.0f);
    }
}

void expectNoZones(std::int32_t product, const std::vector<int>& elevationBins,
                   const std::vector<int>& azimuthBins) {
    const InitializedModule module(product);
    expectNoZone(voxloc::moduleTracker().ElevationPairs,
                 voxloc::moduleTracker().NumberOfElevationPairs, elevationBins);
    expectNoZone(voxloc::moduleTracker().AzimuthPairs, voxloc::moduleTracker().NumberOfAzimuthPairs,
                 azimuthBins);
}

// The others do not attenuate, elmwood in spite of the place of its loudspeaker.
TEST(PairRecords, OfAster) {
    expectNoZones(PRODUCT_ASTER, {74, 74, 33}, {33, 99, 99});
}
TEST(PairRecords, OfBramble) {
    expectNoZones(PRODUCT_BRAMBLE, {87, 87, 29, 29, 30}, {30, 23, 87, 87});
}
TEST(PairRecords, OfElmwood) {
    expectNoZones(PRODUCT_ELMWOOD, {186, 83, 83, 186}, {93, 27, 93});
}
TEST(PairRecords, OfFoxglove) {
    expectNoZones(PRODUCT_FOXGLOVE, {}, {82, 93, 82});
}
TEST(PairRecords, OfGannet) {
    expectNoZones(PRODUCT_GANNET, {371, 371}, {115, 139, 112});
}

TEST(InitializeSinglePair, ClearsTheLookupTable) {
    const InitializedModule module(PRODUCT_ASTER);
    MicrophonePair pair{};
    std::int16_t lag = 0;
    pair.lookupTable = &lag;
    voxloc::initializeSinglePair(voxloc::moduleTracker(), &pair, 4, 2);
    EXPECT_EQ(pair.lookupTable, nullptr);
    EXPECT_EQ(pair.firstMicrophone, 4);
    EXPECT_EQ(pair.secondMicrophone, 2);
}

TEST(InitializeSinglePair, PutsTheZoneAtZeroForALoudspeakerBetweenTheMicrophones) {
    const InitializedModule module(PRODUCT_CINDER);
    *voxloc::moduleTracker().Loudspeaker = {0.0f, 0.0f,
                                            0.0305f};  // as far from microphone 0 as from 3
    MicrophonePair pair{};
    voxloc::initializeSinglePair(voxloc::moduleTracker(), &pair, 0, 3);
    EXPECT_EQ(pair.loudspeakerLag, 0);
    EXPECT_EQ(pair.loudspeakerHalfWidth, 2);
    EXPECT_EQ(pair.loudspeakerGain, 0.4f * 0.33f);
}

}  // namespace
