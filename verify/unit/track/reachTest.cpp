/** The lags that a frame computes cover every lag that its tables read. */
#include <gtest/gtest.h>

#include "track/pairGeometry.h"
#include "track/phaseTransform.h"
#include "track/tracker.h"

namespace {

using namespace voxloc;

void expectWithinReach(const MicrophonePair& pair, int points) {
    const int lags = reachInLags(moduleTracker().Microphones[pair.firstMicrophone],
                                 moduleTracker().Microphones[pair.secondMicrophone]);
    EXPECT_EQ(lags % 2, 0);
    EXPECT_LE(lags, NearLags);
    for (int i = 0; i < points; ++i) {
        const int lag = pair.lookupTable[i];
        ASSERT_TRUE(lag < lags || lag >= CorrelationLags - lags) << lag << " at point " << i;
        ASSERT_LE(lag, CorrelationLags);
    }
}

class Reach : public testing::TestWithParam<int> {};

TEST_P(Reach, CoversTheLagTables) {
    voxloc_initialize(GetParam());
    for (int k = 0; k < moduleTracker().NumberOfElevationPairs; ++k) {
        expectWithinReach(moduleTracker().ElevationPairs[k], AzimuthElevationPoints);
    }
    for (int k = 0; k < moduleTracker().NumberOfAzimuthPairs; ++k) {
        expectWithinReach(moduleTracker().AzimuthPairs[k], AzimuthRangePoints);
    }
    voxloc_destroy();
}

INSTANTIATE_TEST_SUITE_P(EveryProduct, Reach, testing::Values(0, 1, 2, 4, 5, 6, 7));

TEST(ReachInLags, IsTheSpacingRoundedUpWithTwoToSpareAndEven) {
    EXPECT_EQ(reachInLags({0, 0, 0}, {0, 0.1f, 0}), 58);    // 55.2: 56, 58
    EXPECT_EQ(reachInLags({0, 0, 0}, {0, 0, 0.102f}), 60);  // 56.3: 57, 59, 60
}

}  // namespace
