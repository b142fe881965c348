// What the module asks of the heap.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "heap.h"
#include "models/geometryModel.h"
#include "trackerRuns.h"

namespace {

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
    {
        const HeapWatch watch;
        voxloc_initialize(GetParam()->type);
    }
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

}  // namespace
