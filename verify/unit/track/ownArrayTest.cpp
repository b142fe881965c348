// Arrays of one's own: the talker is found, and the correlations are right however wide the pairs
// are and however many.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "models/geometryModel.h"
#include "track/phaseTransform.h"
#include "trackerRuns.h"
#include "wholeCorrelation.h"

namespace {

double sineOf(float degrees) {
    return std::sin(static_cast<double>(degrees) * 0.017453292519943295);
}

/** Pairs of microphones on both sides of the centre, that far apart. */
VoxlocArray symmetricArray(const std::vector<float>& spacings) {
    VoxlocArray array = fiveMicrophones();
    array.elevationPairs = 0;
    array.azimuthPairs = static_cast<std::int32_t>(spacings.size());
    array.channels = 2 * array.azimuthPairs;
    array.voiceChannels = array.noiseChannels = {0, 1};
    array.timeDomainVoiceChannel = 0;
    for (std::int32_t k = 0; k < array.azimuthPairs; ++k) {
        const float half = spacings[static_cast<std::size_t>(k)] / 2.0f;
        array.microphone[2 * k] = {0.0f, -half, 0.0f};
        array.microphone[2 * k + 1] = {0.0f, half, 0.0f};
        array.azimuthPair[k] = {2 * k, 2 * k + 1};
    }
    return array;
}

/**
 * Eight microphones in a ring of 1.2 m, eight pairs for each search. No pair goes through the
 * middle: such pairs alone could not tell a near talker from a far one farther to the side.
 */
VoxlocArray sixteenPairs() {
    VoxlocArray array = fiveMicrophones();
    array.channels = array.azimuthPairs = array.elevationPairs = 8;
    for (std::int32_t k = 0; k < 8; ++k) {
        const float angle = 0.78539816f * static_cast<float>(k) + 0.2f;
        array.microphone[k] = {0.0f, 0.6f * std::cos(angle), 0.6f * std::sin(angle)};
        array.azimuthPair[k] = {k, (k + 3) % 8};
        array.elevationPair[k] = {k, (k + 2) % 8};
    }
    return array;
}

// Steps of the grid from its corner; the range is one that the grid has.
constexpr int AzimuthStep = 150, ElevationStep = 80;

Position talkerAt(const VoxlocArray& array, int elevationStep, float range) {
    return reference::pointAt(
        reference::gridAngle(array.minimumAzimuth, array.angleInterval, AzimuthStep),
        elevationStep < 0
            ? 0.0f
            : reference::gridAngle(array.minimumElevation, array.angleInterval, elevationStep),
        range);
}

void expectWithinAStep(float degrees, float minimum, float interval, int step) {
    const double expected = static_cast<double>(minimum + static_cast<float>(step) * interval);
    EXPECT_LE(std::abs(sineOf(degrees) - expected), static_cast<double>(interval) * 1.001)
        << degrees;
}

void expectAzimuth(const TrackerResult& found, const VoxlocArray& array) {
    expectWithinAStep(found.azimuth, array.minimumAzimuth, array.angleInterval, AzimuthStep);
    EXPECT_GT(found.quality, 0.05f * static_cast<float>(array.azimuthPairs));
}

// The azimuth is searched at elevation 0, the elevation far away: a talker for each.
TEST(FiveMicrophones, FindATalkerWithinAGridStep) {
    const VoxlocArray array = fiveMicrophones();
    const OwnTracker ahead = trackerOf(array);
    const Scenario level = steadyScenario(array, talkerAt(array, -1, 3.1f));
    expectAzimuth(run(ahead.get(), level).back(), array);
    const OwnTracker above = trackerOf(array);
    const Scenario far = steadyScenario(array, talkerAt(array, ElevationStep, 1000.0f));
    expectWithinAStep(run(above.get(), far).back().elevation, array.minimumElevation,
                      array.angleInterval, ElevationStep);
}

TEST(SixteenPairs, FindATalkerWithinAGridStep) {
    const VoxlocArray array = sixteenPairs();
    const OwnTracker ahead = trackerOf(array);
    const Scenario level = steadyScenario(array, talkerAt(array, -1, 3.1f));
    expectAzimuth(run(ahead.get(), level).back(), array);
    const OwnTracker above = trackerOf(array);
    const Scenario far = steadyScenario(array, talkerAt(array, ElevationStep, 1000.0f));
    const TrackerResult found = run(above.get(), far).back();
    expectWithinAStep(found.elevation, array.minimumElevation, array.angleInterval, ElevationStep);
}

// The bend of the wave front tells a wide array the range to a step of 0.2 m.
TEST(WideArrays, FindATalkerWithinAGridStep) {
    for (const std::vector<float>& spacings :
         {std::vector<float>{1.5f, 3.0f}, {1.5f, 3.0f, 14.0f}}) {
        SCOPED_TRACE(spacings.back());
        const VoxlocArray array = symmetricArray(spacings);
        const OwnTracker own = trackerOf(array);
        const Scenario talk = steadyScenario(array, talkerAt(array, -1, 3.1f));
        const TrackerResult found = run(own.get(), talk).back();
        expectAzimuth(found, array);
        EXPECT_LE(std::abs(found.range - 3.1f), 0.21f);
    }
}

void expectWholeCorrelations(const voxloc::Tracker& tracker) {
    for (int p = 0; p < voxloc::numberOfPairs(tracker); ++p) {
        const voxloc::PairBlock& block = tracker.Blocks[p];
        const std::vector<float> whole =
            wholeCorrelation(tracker.PreviousNumerator + p * voxloc::SpectrumFloats,
                             block.pair->lowerBin, block.pair->upperBin + 2);
        for (int lag = 0; lag < voxloc::CorrelationLags; ++lag) {
            if (lag == block.reach) lag = voxloc::CorrelationLags - block.reach;
            ASSERT_LE(std::abs(block.kept[lag] - whole[static_cast<std::size_t>(lag)]),
                      WholeTolerance)
                << "pair " << p << " lag " << lag;
        }
        EXPECT_EQ(block.kept[voxloc::CorrelationLags], 0.0f);
    }
}

struct Spread {
    const char* name;
    VoxlocArray array;
    bool isBeyondNearLags, fitsClosely;
};

// Slots of the kept correlations overlap where nobody reads: never at a lag that somebody does.
TEST(OwnArrays, KeepTheCorrelationsOfTheWholeInverseTransform) {
    const Spread spreads[] = {
        {"five microphones", fiveMicrophones(), false, true},
        {"sixteen pairs", sixteenPairs(), true, false},
        {"1.5 and 3 m", symmetricArray({1.5f, 3.0f}), true, true},
        {"1.5, 3 and 14 m", symmetricArray({1.5f, 3.0f, 14.0f}), true, false},
        {"one pair of 14.8 m", symmetricArray({14.8f}), true, false},
    };
    for (const Spread& spread : spreads) {
        SCOPED_TRACE(spread.name);
        const OwnTracker own = trackerOf(spread.array);
        const voxloc::Tracker& tracker = own->tracker;
        const Scenario talk = steadyScenario(spread.array, talkerAt(spread.array, -1, 3.1f), 7);
        EXPECT_GT(run(own.get(), talk).back().quality, 0.05f);
        expectWholeCorrelations(tracker);
        int reach = 0;
        for (int p = 0; p < voxloc::numberOfPairs(tracker); ++p) {
            reach = std::max(reach, tracker.Blocks[p].reach);
        }
        EXPECT_EQ(reach > voxloc::NearLags, spread.isBeyondNearLags) << reach;
        EXPECT_EQ(tracker.Kept.distance < voxloc::CorrelationLags, spread.fitsClosely)
            << tracker.Kept.distance;
    }
}

}  // namespace
