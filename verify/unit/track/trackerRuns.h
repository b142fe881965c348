/** Trackers of one's own, what they listen to, and arrays for them: shared by the suites. */
#ifndef VERIFY_TRACK_TRACKER_RUNS_H
#define VERIFY_TRACK_TRACKER_RUNS_H

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "initializedModule.h"
#include "kit/talker.h"
#include "syntheticArray.h"
#include "track/tracker.h"

struct DestroyTracker {
    void operator()(VoxlocTracker* tracker) const { voxloc_destroyTracker(tracker); }
};
using OwnTracker = std::unique_ptr<VoxlocTracker, DestroyTracker>;

inline OwnTracker trackerOf(const VoxlocArray& array) {
    char reason[VOXLOC_REASON_SIZE] = "none";
    OwnTracker tracker(voxloc_createTracker(&array, reason));
    EXPECT_NE(tracker, nullptr) << reason;
    EXPECT_STREQ(reason, "");
    return tracker;
}

inline OwnTracker trackerOf(std::int32_t product) {
    return OwnTracker(voxloc_createProductTracker(product, nullptr));
}

/** The built-in products, for suites that run for each of them. */
inline std::vector<const VoxlocProduct*> allProducts() {
    std::vector<const VoxlocProduct*> products;
    for (std::uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        products.push_back(voxloc_getProduct(i));
    }
    return products;
}

/** Name of a test that is run for each product. */
struct ProductName {
    template <class Info>
    std::string operator()(const Info& info) const {
        return info.param->name;
    }
};

using kit::Scenario;

/** What the benchmarks listen to, for a product. */
inline Scenario mixedScenarioOf(std::int32_t product, std::size_t frames = 48) {
    const InitializedModule module(product);
    return kit::mixedScenario(frames);
}

/** A steady talker whom an array hears. */
inline Scenario steadyScenario(const VoxlocArray& array, const Position& talker,
                               std::size_t frames = 8) {
    SyntheticSource sound(1, {array.microphone, array.microphone + array.channels});
    const auto samples = static_cast<std::size_t>(array.channels) * FRAME_SAMPLES;
    Scenario scenario{samples, {}, std::vector<std::uint32_t>(frames)};
    for (std::size_t i = 0; i < frames; ++i) {
        const float* frame = sound.next(talker);
        scenario.samples.insert(scenario.samples.end(), frame, frame + samples);
    }
    return scenario;
}

using Results = std::vector<TrackerResult>;

/** The results of the scenario's frames from `first` up to `last`. */
inline Results run(VoxlocTracker* tracker, const Scenario& scenario, std::size_t first,
                   std::size_t last) {
    Results results;
    for (std::size_t i = first; i < last; ++i) {
        TrackerResult result{};
        EXPECT_EQ(voxloc_track(tracker, scenario.frame(i), 24, scenario.flags[i], &result),
                  nullptr);
        results.push_back(result);
    }
    return results;
}

inline Results run(VoxlocTracker* tracker, const Scenario& scenario) {
    return run(tracker, scenario, 0, scenario.frames());
}

inline bool sameBits(const Results& a, const Results& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

/** Four microphones in a row and one below the second. */
inline VoxlocArray fiveMicrophones() {
    VoxlocArray array = {};
    array.channels = 5;
    array.azimuthPairs = 3;
    array.elevationPairs = 2;
    array.minimumAzimuth = -0.904f;
    array.minimumElevation = -0.52f;
    array.angleInterval = 0.008f;
    array.voiceChannels = {1, 2};
    array.noiseChannels = {1, 2};
    array.timeDomainVoiceChannel = 2;
    const Position microphones[] = {{0.0f, -0.4f, 0.0f},
                                    {0.0f, -0.1f, 0.05f},
                                    {0.0f, 0.08f, 0.0f},
                                    {0.0f, 0.4f, 0.0f},
                                    {0.0f, -0.1f, -0.3f}};
    std::copy_n(microphones, 5, array.microphone);
    const VoxlocPair azimuth[] = {{0, 3}, {1, 2}, {0, 2}};
    std::copy_n(azimuth, 3, array.azimuthPair);
    array.elevationPair[0] = {1, 4};
    array.elevationPair[1] = {1, 2};
    return array;
}

#endif
