// What trackers of one's own ask of the heap, and what they do when it is exhausted.

#include <gtest/gtest.h>

#include "heap.h"
#include "trackerRuns.h"

namespace {

VoxlocTracker* createWithFailing(std::int32_t product, int failing, bool failsOnwards,
                                 char* reason) {
    const HeapWatch watch(failing, failsOnwards);
    return voxloc_createProductTracker(product, reason);
}

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

TEST_P(TrackerHeap, ThatIsExhaustedAtAnyPointIsSaidAndNothingLeaks) {
    voxloc_destroyTracker(createWithFailing(GetParam()->type, 0, false, nullptr));
    const int allocations = heap.failable;
    EXPECT_EQ(allocations, 1 + 18 + 2);  // the tracker, its buffers, the ultrasound levels
    for (int k = 1; k <= allocations; ++k) {
        for (const bool onwards : {false, true}) {
            SCOPED_TRACE(k);
            char reason[VOXLOC_REASON_SIZE] = "none";
            VoxlocTracker* tracker = createWithFailing(GetParam()->type, k, onwards, reason);
            EXPECT_EQ(tracker, nullptr);
            EXPECT_STREQ(reason, "out of memory");
            EXPECT_EQ(heap.open, 0);
        }
    }
}

TEST(ArrayTrackerHeap, ThatIsExhaustedIsSaidForAnArrayToo) {
    const VoxlocArray array = fiveMicrophones();
    const HeapWatch watch(3, true);
    char reason[VOXLOC_REASON_SIZE] = "none";
    EXPECT_EQ(voxloc_createTracker(&array, reason), nullptr);
    EXPECT_STREQ(reason, "out of memory");
    EXPECT_EQ(voxloc_createTracker(&array, nullptr), nullptr);
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
