#include "track/pairGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "initializedModule.h"
#include "track/tracker.h"

namespace {

using voxloc::MicrophonePair;

constexpr float Pi = 3.14159265f;
constexpr float Infinity = std::numeric_limits<float>::infinity();

// Each coordinate is a product of at most three rounded factors; the float nearest to pi/2 is off
// by less than a rounding unit of 2. Straight ahead is exact.
TEST(SphericalToCartesian, TurnsTowardsPlusYAndUp) {
    struct {
        float azimuth, elevation, range;
        double x, y, z, limit;
    } const cases[] = {
        {0.0f, 0.0f, 2.0f, 2.0, 0.0, 0.0, 0.0},
        {Pi / 2, 0.0f, 1.0f, 0.0, 1.0, 0.0, 0x1p-23},
        {0.0f, Pi / 2, 1.0f, 0.0, 0.0, 1.0, 0x1p-23},
        {-0.4f, 0.3f, 5.0f, 5.0 * std::cos(0.3) * std::cos(0.4),
         -5.0 * std::cos(0.3) * std::sin(0.4), 5.0 * std::sin(0.3), 2e-6},
    };
    for (const auto& c : cases) {
        const float spherical[3] = {c.azimuth, c.elevation, c.range};
        Position point{NAN, NAN, NAN};
        voxloc_sphericalToCartesian(spherical, &point);
        EXPECT_LE(std::abs(static_cast<double>(point.x) - c.x), c.limit) << c.azimuth;
        EXPECT_LE(std::abs(static_cast<double>(point.y) - c.y), c.limit) << c.azimuth;
        EXPECT_LE(std::abs(static_cast<double>(point.z) - c.z), c.limit) << c.azimuth;
    }
}

TEST(CalculateDistance, IsEuclideanAndSymmetric) {
    const Position a{1.0f, -2.0f, 3.0f};
    const Position b{3.0f, 1.0f, -3.0f};
    EXPECT_EQ(voxloc_calculateDistance(&a, &b), 7.0f);
    EXPECT_EQ(voxloc_calculateDistance(&b, &a), 7.0f);
    EXPECT_EQ(voxloc_calculateDistance(&a, &a), 0.0f);
}

TEST(DistanceToSampleDelay, ConvertsMetresToLags) {
    struct {
        float metres;
        int lag;
    } const cases[] = {
        {0.1f, 55},
        {1.0f, 552},
        {10.0f, 5517},   // 5517.241; 551.72 or 551.73 differ
                         // at 29
        {29.0f, 16000},  // 15999.9989
        {0.0f, 0},
        {-0.1f, 16329},  // negative ones wrap to the end
        {-1.0f, 15832},
        {-0.0f, 0},
        {-0.0005f, 16384},  // one past the last lag just
                            // below zero
        {-0.0009f, 16384},  // -0.4966 lags
        {-0.0010f, 16383},  // -0.5517 lags
        {-1e-30f, 16384},
        {0.0009f, 0},   // half up: 0.4966 lags
        {0.00091f, 1},  // 0.5021 lags
        {0.0027f, 1},   // 1.4897 lags
        {0.00272f, 2},  // 1.5007 lags
        {NAN, 0},
        {29.5f, 16276},  // the last one of each side and what lies beyond
        {29.8f, 16441},
        {59.3f, 32717},
        {59.4f, 32767},
        {-29.6f, 53},
        {-29.8f, -57},
        {-89.0f, -32719},
        {-89.1f, -32768},
        {1e30f, 32767},  // no table comes near these; the
                         // conversion is defined all the same
        {-1e30f, -32768},
        {Infinity, 32767},
    };
    for (const auto& c : cases)
        EXPECT_EQ(voxloc_distanceToSampleDelay(c.metres), c.lag) << c.metres;
}

TEST(SetCutoffCoefficients, StartsWhereHalfAWavelengthEqualsTheSpacing) {
    struct {
        float spacing;
        int lower;
    } const cases[] = {
        {0.15f, 99},     // 98.987
        {0.0609f, 244},  // 243.81
        {1.0f, 15},      // 14.848
        {1.02f, 15},     // 14.557
        {1.03f, 14},     // 14.416
        {0.01f, 1485},   // 1484.8: above the upper bin, nothing in use
        {0.0f, 65535},   // of no product: defined all the same
        {1e-30f, 65535},
        {Infinity, 0},
        {NAN, 0},
        {voxloc::SmallestSpacing, voxloc::HighestBin - 1},  // 1449.6
        {voxloc::LargestSpacing, 1},
    };
    for (const auto& c : cases) {
        const Position a{0.0f, 0.0f, 0.0f};
        const Position b{0.0f, c.spacing, 0.0f};
        std::uint16_t upper = 0, lower = 0;
        voxloc_setCutoffCoefficients(&a, &b, &upper, &lower);
        EXPECT_EQ(upper, 1451) << c.spacing;
        EXPECT_EQ(lower, c.lower) << c.spacing;
    }
}

// The pair records of the products, worked out by hand. Elmwood does not attenuate in spite of the
// place of its loudspeaker.
struct PairRecord {
    int lowerBin;
    int lag = 0, halfWidth = 0;
    double gain = 1.0;
};

void expectRecords(const MicrophonePair* pairs, int count,
                   const std::vector<PairRecord>& expected) {
    ASSERT_EQ(expected.size(), static_cast<std::size_t>(count));
    for (const PairRecord& record : expected) {
        SCOPED_TRACE(::testing::Message()
                     << "(" << pairs->firstMicrophone << "," << pairs->secondMicrophone << ")");
        EXPECT_EQ(pairs->upperBin, 1451);
        EXPECT_EQ(pairs->lowerBin, record.lowerBin);
        EXPECT_EQ(pairs->loudspeakerLag, record.lag);
        EXPECT_EQ(pairs->loudspeakerHalfWidth, record.halfWidth);
        // positions, differences, squares, root and product: less than eight roundings
        EXPECT_LE(std::abs(static_cast<double>(pairs->loudspeakerGain) - record.gain),
                  record.halfWidth == 0 ? 0.0 : 8.0 * 0x1p-24 * record.gain);
        ++pairs;
    }
}

TEST(PairRecords, AreAsWorkedOutByHand) {
    struct {
        std::int32_t product;
        std::vector<PairRecord> elevation, azimuth;
    } const cases[] = {
        {PRODUCT_ASTER, {{74}, {74}, {33}}, {{33}, {99}, {99}}},
        {PRODUCT_BRAMBLE, {{87}, {87}, {29}, {29}, {30}}, {{30}, {23}, {87}, {87}}},
        {PRODUCT_CINDER,
         {{243, 0, 2, 0.1592718882916882}, {87, 88, 28, 0.1}, {87, 16296, 28, 0.1}},
         {{93, 88, 28, 0.1}, {22, 74, 28, 0.10591097393565976}, {93, 16297, 28, 0.1}}},
        {PRODUCT_ELMWOOD, {{186}, {83}, {83}, {186}}, {{93}, {27}, {93}}},
        {PRODUCT_DOVETAIL,
         {{243, 16384, 2, 0.14560169251763525},
          {243, 16384, 2, 0.20947900339652184},
          {87, 16296, 28, 0.14560169251763525}},
         {{93, 88, 27, 0.14584269904249578}, {31, 139, 28, 0.1}, {93, 16297, 28, 0.1}}},
        {PRODUCT_FOXGLOVE, {}, {{82}, {93}, {82}}},
        {PRODUCT_GANNET, {{371}, {371}}, {{115}, {139}, {112}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(voxloc_findProduct(c.product)->name);
        const InitializedModule module(c.product);
        const voxloc::Tracker& tracker = voxloc::moduleTracker();
        expectRecords(tracker.ElevationPairs, tracker.NumberOfElevationPairs, c.elevation);
        expectRecords(tracker.AzimuthPairs, tracker.NumberOfAzimuthPairs, c.azimuth);
    }
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

}  // namespace
