// What an array of one's own must be, and the words by which one is refused.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "track/pairGeometry.h"
#include "trackerRuns.h"

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();

struct Case {
    const char* text;  // what is said, or of an array that is accepted: what is at its limit
    std::function<void(VoxlocArray&)> change;
};

VoxlocArray changed(const Case& one) {
    VoxlocArray array = fiveMicrophones();
    one.change(array);
    return array;
}

const Case Refused[] = {
    {"channels: 0 is not 1 to 8", [](VoxlocArray& a) { a.channels = 0; }},
    {"channels: 9 is not 1 to 8", [](VoxlocArray& a) { a.channels = 9; }},
    {"channels: -2147483648 is not 1 to 8", [](VoxlocArray& a) { a.channels = INT32_MIN; }},
    {"azimuthPairs: 0 is not 1 to 8", [](VoxlocArray& a) { a.azimuthPairs = 0; }},
    {"azimuthPairs: 9 is not 1 to 8", [](VoxlocArray& a) { a.azimuthPairs = 9; }},
    {"elevationPairs: -1 is not 0 to 8", [](VoxlocArray& a) { a.elevationPairs = -1; }},
    {"elevationPairs: 9 is not 0 to 8", [](VoxlocArray& a) { a.elevationPairs = 9; }},
    {"microphone[0]: has a coordinate that is not a number",
     [](VoxlocArray& a) { a.microphone[0].x = NAN; }},
    {"microphone[3]: has a coordinate that is not a number",
     [](VoxlocArray& a) { a.microphone[3].y = Infinity; }},
    {"microphone[4]: has a coordinate that is not a number",
     [](VoxlocArray& a) { a.microphone[4].z = -Infinity; }},
    {"loudspeaker: has a coordinate that is not a number",
     [](VoxlocArray& a) { a.loudspeaker.y = NAN; }},
    {"microphone[2]: has a coordinate beyond 100 m",
     [](VoxlocArray& a) { a.microphone[2].x = 100.1f; }},
    {"microphone[4]: has a coordinate beyond 100 m",
     [](VoxlocArray& a) { a.microphone[4].y = -1e30f; }},
    {"loudspeaker: has a coordinate beyond 100 m", [](VoxlocArray& a) { a.loudspeaker.z = 1e8f; }},
    {"voiceChannels.first: 5 is not one of the channels",
     [](VoxlocArray& a) { a.voiceChannels.first = 5; }},
    {"voiceChannels.second: -1 is not one of the channels",
     [](VoxlocArray& a) { a.voiceChannels.second = -1; }},
    {"noiseChannels.first: 8 is not one of the channels",
     [](VoxlocArray& a) { a.noiseChannels.first = 8; }},
    {"noiseChannels.second: 2147483647 is not one of the channels",
     [](VoxlocArray& a) { a.noiseChannels.second = INT32_MAX; }},
    {"timeDomainVoiceChannel: 5 is not one of the channels",
     [](VoxlocArray& a) { a.timeDomainVoiceChannel = 5; }},
    {"timeDomainVoiceChannel: -7 is not one of the channels",
     [](VoxlocArray& a) { a.timeDomainVoiceChannel = -7; }},
    {"azimuthPair[0].first: 5 is not one of the channels",
     [](VoxlocArray& a) { a.azimuthPair[0].first = 5; }},
    {"azimuthPair[2].second: 7 is not one of the channels",
     [](VoxlocArray& a) { a.azimuthPair[2].second = 7; }},
    {"elevationPair[1].first: -1 is not one of the channels",
     [](VoxlocArray& a) { a.elevationPair[1].first = -1; }},
    {"azimuthPair[1]: is one microphone twice",
     [](VoxlocArray& a) {
         a.azimuthPair[1] = {3, 3};
     }},
    {"elevationPair[0]: is one microphone twice",
     [](VoxlocArray& a) {
         a.elevationPair[0] = {0, 0};
     }},
    {"azimuthPair[1]: has its microphones less than 1.03 cm apart",
     [](VoxlocArray& a) { a.microphone[2] = a.microphone[1]; }},
    {"elevationPair[0]: has its microphones less than 1.03 cm apart",
     [](VoxlocArray& a) {
         a.microphone[4] = a.microphone[1];
         a.microphone[4].z += 0.0102f;
     }},
    {"azimuthPair[0]: has its microphones more than 14.8 m apart",
     [](VoxlocArray& a) { a.microphone[3].y = 14.45f; }},
    {"elevationPair[0]: has its microphones more than 14.8 m apart",
     [](VoxlocArray& a) {
         a.microphone[4] = {9.0f, 9.0f, 9.0f};
     }},
    {"minimumAzimuth: nan is no sine", [](VoxlocArray& a) { a.minimumAzimuth = NAN; }},
    {"minimumAzimuth: -1.01 is no sine", [](VoxlocArray& a) { a.minimumAzimuth = -1.01f; }},
    {"minimumAzimuth: 1.01 is no sine", [](VoxlocArray& a) { a.minimumAzimuth = 1.01f; }},
    {"minimumElevation: nan is no sine", [](VoxlocArray& a) { a.minimumElevation = NAN; }},
    {"minimumElevation: 1.01 is no sine", [](VoxlocArray& a) { a.minimumElevation = 1.01f; }},
    {"minimumElevation: 1.5 is no sine", [](VoxlocArray& a) { a.minimumElevation = 1.5f; }},
    {"angleInterval: 0 is not a positive step", [](VoxlocArray& a) { a.angleInterval = 0.0f; }},
    {"angleInterval: -0.008 is not a positive step",
     [](VoxlocArray& a) { a.angleInterval = -0.008f; }},
    {"angleInterval: nan is not a positive step", [](VoxlocArray& a) { a.angleInterval = NAN; }},
    {"angleInterval: inf is not a positive step",
     [](VoxlocArray& a) { a.angleInterval = Infinity; }},
    {"angleInterval: 0.0085 takes the last of 227 azimuths beyond the sine of 90 degrees",
     [](VoxlocArray& a) { a.angleInterval = 0.0085f; }},
    {"angleInterval: 0.008 takes the last of 131 elevations beyond the sine of 90 degrees",
     [](VoxlocArray& a) { a.minimumElevation = -0.03f; }},
};

TEST(CheckArray, SaysWhatIsWrongBeginningWithTheField) {
    for (const Case& one : Refused) {
        SCOPED_TRACE(one.text);
        const VoxlocArray array = changed(one);
        char reason[VOXLOC_REASON_SIZE] = "none";
        EXPECT_EQ(voxloc_checkArray(&array, reason), 0);
        EXPECT_STREQ(reason, one.text);
        char sameReason[VOXLOC_REASON_SIZE] = "none";
        EXPECT_EQ(voxloc_createTracker(&array, sameReason), nullptr);
        EXPECT_STREQ(sameReason, one.text);
        EXPECT_EQ(voxloc_checkArray(&array, nullptr), 0);
        EXPECT_EQ(voxloc_createTracker(&array, nullptr), nullptr);
    }
}

TEST(CheckArray, SaysThatNoneIsGiven) {
    char reason[VOXLOC_REASON_SIZE] = "none";
    EXPECT_EQ(voxloc_checkArray(nullptr, reason), 0);
    EXPECT_STREQ(reason, "array: none given");
    EXPECT_EQ(voxloc_createTracker(nullptr, reason), nullptr);
    EXPECT_STREQ(reason, "array: none given");
    EXPECT_EQ(voxloc_createTracker(nullptr, nullptr), nullptr);
}

const Case Accepted[] = {
    {"as it is", [](VoxlocArray&) {}},
    {"one pair of two microphones",
     [](VoxlocArray& a) {
         a.channels = 2;
         a.azimuthPairs = 1;
         a.elevationPairs = 0;
         a.azimuthPair[0] = {0, 1};
         a.voiceChannels = a.noiseChannels = {0, 1};
         a.timeDomainVoiceChannel = 1;
     }},
    {"one microphone for both channels of a detector",
     [](VoxlocArray& a) {
         a.voiceChannels = a.noiseChannels = {4, 4};
     }},
    {"eight of everything",
     [](VoxlocArray& a) {
         a.channels = a.azimuthPairs = a.elevationPairs = 8;
         for (VoxlocPair& pair : a.azimuthPair) pair = {3, 0};
         for (VoxlocPair& pair : a.elevationPair) pair = {0, 4};
     }},
    {"microphones out of use may be anywhere",
     [](VoxlocArray& a) {
         a.microphone[5] = {NAN, Infinity, 1e30f};
     }},
    {"pairs out of use may be anything",
     [](VoxlocArray& a) {
         a.azimuthPair[3] = {-1, 99};
         a.elevationPair[2] = {7, 7};
     }},
    {"microphones 1.03 cm apart",
     [](VoxlocArray& a) {
         a.microphone[4] = a.microphone[1];
         a.microphone[4].x = 0.0103f;
     }},
    {"microphones 14.8 m apart", [](VoxlocArray& a) { a.microphone[3].y = 14.4f; }},
    {"the largest spacing itself",
     [](VoxlocArray& a) {
         a.microphone[0] = {0.0f, 0.0f, 0.0f};
         a.microphone[3] = {0.0f, voxloc::LargestSpacing, 0.0f};
     }},
    {"coordinates of 100 m",
     [](VoxlocArray& a) {
         for (Position& p : a.microphone) p.z -= 99.7f;
         a.loudspeaker = {100.0f, -100.0f, 100.0f};
     }},
    {"a grid from -90 degrees on",
     [](VoxlocArray& a) { a.minimumAzimuth = a.minimumElevation = -1.0f; }},
    {"a grid up to 90 degrees of azimuth",
     [](VoxlocArray& a) {
         a.minimumAzimuth = -1.0f;
         a.angleInterval = 0.0088495f;
     }},
    {"a grid up to 90 degrees of elevation",
     [](VoxlocArray& a) { a.minimumElevation = -0.04001f; }},
    {"a very fine grid", [](VoxlocArray& a) { a.angleInterval = 1e-30f; }},
};

// Each can be tracked with, too: in a sanitised build that is where a fault would show.
TEST(CheckArray, AcceptsWhatIsAtTheLimit) {
    for (const Case& one : Accepted) {
        SCOPED_TRACE(one.text);
        const VoxlocArray array = changed(one);
        char reason[VOXLOC_REASON_SIZE] = "none";
        EXPECT_EQ(voxloc_checkArray(&array, reason), 1);
        EXPECT_STREQ(reason, "");
        EXPECT_EQ(voxloc_checkArray(&array, nullptr), 1);
        const OwnTracker tracker = trackerOf(array);
        ASSERT_NE(tracker, nullptr);
        const Results results = run(tracker.get(), steadyScenario(array, {2.0f, 0.5f, 0.1f}));
        for (const TrackerResult& result : results) EXPECT_TRUE(std::isfinite(result.quality));
    }
}

// Every lag of every table lies where the correlations are computed and kept.
TEST(CheckArray, AcceptsNoArrayWhoseLagsLieBeyondItsCorrelations) {
    for (const Case& one : Accepted) {
        SCOPED_TRACE(one.text);
        const OwnTracker own = trackerOf(changed(one));
        const voxloc::Tracker& tracker = own->tracker;
        for (int p = 0; p < voxloc::numberOfPairs(tracker); ++p) {
            const voxloc::PairBlock& block = tracker.Blocks[p];
            const bool isElevation = p < tracker.NumberOfElevationPairs;
            const int points =
                isElevation ? voxloc::AzimuthElevationPoints : voxloc::AzimuthRangePoints;
            EXPECT_LE(block.reach, voxloc::LargestReach);
            for (int i = 0; i < points; ++i) {
                const int lag = block.pair->lookupTable[i];
                ASSERT_TRUE(lag >= 0 && (lag < block.reach || lag >= 16384 - block.reach)) << lag;
                ASSERT_LE(lag, 16384);
            }
        }
    }
}

// All built-in products but the one whose grid goes beyond the sines.
TEST(CheckArray, AcceptsTheProductsExceptGannet) {
    for (const VoxlocProduct* product : allProducts()) {
        char reason[VOXLOC_REASON_SIZE] = "none";
        const bool isGannet = product->type == PRODUCT_GANNET;
        EXPECT_EQ(voxloc_checkArray(&product->array, reason), isGannet ? 0 : 1) << product->name;
        EXPECT_STREQ(reason, isGannet ? "minimumAzimuth: -1.045 is no sine" : "");
    }
}

}  // namespace
