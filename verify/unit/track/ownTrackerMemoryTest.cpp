// What trackers of one's own ask of the heap.

#include <gtest/gtest.h>

#include "heap.h"
#include "trackerRuns.h"

namespace {

class TrackerHeap : public ::testing::TestWithParam<const VoxlocProduct*> {};

INSTANTIATE_TEST_SUITE_P(Every, TrackerHeap, ::testing::ValuesIn(allProducts()), ProductName());

TEST_P(TrackerHeap, IsGivenEverythingBack) {
    const HeapWatch watch;
    VoxlocTracker* tracker = voxloc_createProductTracker(GetParam()->type, nullptr);
    ASSERT_NE(tracker, nullptr);
    EXPECT_GT(heap.open, 0);
    voxloc_destroyTracker(tracker);
    EXPECT_EQ(heap.open, 0);
}

TEST_P(TrackerHeap, IsNotAskedByFramesAndResets) {
    const Scenario scenario = mixedScenarioOf(GetParam()->type, 42);
    const OwnTracker tracker = trackerOf(GetParam()->type);
    Results results(scenario.frames());
    {
        const HeapWatch watch;
        for (int round = 0; round < 2; ++round) {
            for (std::size_t i = 0; i < results.size(); ++i) {
                voxloc_track(tracker.get(), scenario.frame(i), 24, scenario.flags[i], &results[i]);
            }
            voxloc_resetTracker(tracker.get());
        }
    }
    EXPECT_EQ(heap.allocations, 0);
    EXPECT_NE(results.back().flags, 0U);
}

}  // namespace
