// What the module asks of the heap, and which check reports that it is exhausted.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "heap.h"
#include "kit/lastWords.h"
#include "models/geometryModel.h"
#include "trackerRuns.h"

namespace {

void initializeWithFailing(std::int32_t product, int failing, bool failsOnwards) {
    const HeapWatch watch(failing, failsOnwards);
    voxloc_initialize(product);
}

// Who reports the failure of each allocation, in the order in which they are made.
std::string tracker(const std::string& function, const std::string& expression) {
    return assertionReport("functional/audio/voxloc/cmod/track/voxloc", function, expression);
}

std::string ultrasound(const std::string& line, const std::string& expression) {
    return lastWords(
        "[^\n]*: functional/audio/voxloc/cmod/track/UltraSoundDistortionDetection:" + line +
        ": initializeUltraSoundDistortionDetector: Assertion `" + expression + "' failed\\.\n");
}

constexpr std::size_t ElevationPairRecords = 14;  // their place among the allocations

std::vector<std::string> reports() {
    std::vector<std::string> list;
    for (const char* buffer :
         {"InputAudio", "RawAudioInput1", "RawAudioInput2", "FftResult", "Numerator1", "Numerator2",
          "NoisePowerEstimate", "FrequencyWeight", "TimeoutCounter", "AzimuthElevationLookupTable",
          "AzimuthRangeLookupTable", "Microphones", "Loudspeaker", "AzimuthPairs"}) {
        list.push_back(tracker("checkMemoryAllocation", buffer));
    }
    // The elevation pairs are not among the checked buffers, so that the last check reports them.
    list.push_back(tracker("voxloc_initialize", "IsTransducersInitialized"));
    list.push_back(tracker("checkMemoryAllocation", "AzimuthQuality"));
    list.push_back(tracker("checkMemoryAllocation", "ElevationQuality"));
    list.push_back(tracker("checkMemoryAllocation", "KeptCorrelations"));
    list.push_back(ultrasound("38", "UltraSoundLevel"));
    list.push_back(ultrasound("39", "NeighborBandLevel"));
    return list;
}

class Allocations : public ::testing::TestWithParam<const VoxlocProduct*> {};

INSTANTIATE_TEST_SUITE_P(Every, Allocations, ::testing::ValuesIn(allProducts()), ProductName());

// Nothing is asked for as one element: some libraries give null for no bytes.
std::size_t atLeastOne(std::size_t bytes, std::size_t element) {
    return bytes > 0 ? bytes : element;
}

// The slots of the correlations lie as close as the widest pair's two ends allow, each with room
// for the search to read 64 floats on; the last one is whole.
std::size_t keptCorrelations(const VoxlocArray& array) {
    float widest = 0.0f;
    const auto look = [&](const VoxlocPair* pairs, int count) {
        for (int k = 0; k < count; ++k) {
            widest = std::max(widest, reference::distance(array.microphone[pairs[k].first],
                                                          array.microphone[pairs[k].second]));
        }
    };
    look(array.elevationPair, array.elevationPairs);
    look(array.azimuthPair, array.azimuthPairs);
    const auto lags =
        static_cast<std::size_t>(std::ceil(static_cast<double>(widest) * 551.7241)) + 2;
    const std::size_t slot = 2 * (lags + lags % 2) + 64;
    const auto pairs = static_cast<std::size_t>(array.elevationPairs + array.azimuthPairs);
    return ((pairs - 1) * slot + 16384 + 8 + 64) * sizeof(float);
}

TEST_P(Allocations, AreTheBuffersInOrder) {
    const auto n = static_cast<std::size_t>(GetParam()->array.channels);
    const auto azimuth = static_cast<std::size_t>(GetParam()->array.azimuthPairs);
    const auto elevation = static_cast<std::size_t>(GetParam()->array.elevationPairs);
    const std::size_t pairs = azimuth + elevation;
    const std::vector<std::size_t> expected{
        n * 4096 * 4,                          // InputAudio
        n * 2048 * 4,                          // RawAudioInput1
        n * 2048 * 4,                          // RawAudioInput2
        n * 4098 * 4,                          // FftResult
        pairs * 4098 * 4,                      // Numerator1
        pairs * 4098 * 4,                      // Numerator2
        n * 2049 * 4,                          // NoisePowerEstimate
        n * 2049 * 4,                          // FrequencyWeight
        pairs * 2049,                          // TimeoutCounter
        atLeastOne(elevation * 29737 * 2, 2),  // AzimuthElevationLookupTable
        azimuth * 10896 * 2,                   // AzimuthRangeLookupTable
        n * 12,                                // Microphones
        12,                                    // Loudspeaker
        azimuth * sizeof(voxloc::MicrophonePair),
        atLeastOne(elevation * sizeof(voxloc::MicrophonePair), sizeof(voxloc::MicrophonePair)),
        azimuth * 4,                   // AzimuthQuality
        atLeastOne(elevation * 4, 4),  // ElevationQuality
        keptCorrelations(GetParam()->array),
        n * 4,  // UltraSoundLevel
        n * 4,  // NeighborBandLevel
    };
    initializeWithFailing(GetParam()->type, 0, false);
    EXPECT_EQ(heap.bytes, expected);
    EXPECT_EQ(heap.allocations, static_cast<int>(expected.size()));
    voxloc_destroy();
}

TEST_P(Allocations, AreNoneWhileFramesAreProcessed) {
    voxloc_initialize(GetParam()->type);
    Clips clips;
    const float source[3] = {0.2f, 0.1f, 3.0f};
    TrackerResult result{};
    {
        const HeapWatch watch;
        for (int frame = 0; frame < 45; ++frame) {  // two evaluations of the ultrasound detector
            voxloc_calculate(clips.next(source, frame / 25), 24, 0, &result);
        }
    }
    EXPECT_EQ(heap.allocations, 0);
    EXPECT_NE(result.flags, 0U);
    voxloc_destroy();
}

class AllocationsDeathTest : public ::testing::TestWithParam<const VoxlocProduct*> {};

INSTANTIATE_TEST_SUITE_P(Every, AllocationsDeathTest, ::testing::ValuesIn(allProducts()),
                         ProductName());

TEST_P(AllocationsDeathTest, ThatFailAreReportedByTheCheckOfTheBuffer) {
    const std::vector<std::string> expected = reports();
    for (std::size_t k = 0; k < expected.size(); ++k) {
        if (k == ElevationPairRecords && GetParam()->array.elevationPairs == 0)
            continue;  // not missed
        SCOPED_TRACE(k);
        EXPECT_EXIT(initializeWithFailing(GetParam()->type, static_cast<int>(k) + 1, false),
                    ::testing::KilledBySignal(SIGABRT), expected[k]);
    }
}

// Out of memory from some point on: the ultrasound detector's check is the first to be made.
TEST_P(AllocationsDeathTest, ThatFailFromSomePointOnAreReportedByTheFirstCheck) {
    const std::vector<std::string> expected = reports();
    for (std::size_t k = 0; k < expected.size(); ++k) {
        SCOPED_TRACE(k);
        const bool neighborOnly = k + 1 == expected.size();
        EXPECT_EXIT(initializeWithFailing(GetParam()->type, static_cast<int>(k) + 1, true),
                    ::testing::KilledBySignal(SIGABRT),
                    neighborOnly ? expected[k] : expected[expected.size() - 2]);
    }
}

}  // namespace
