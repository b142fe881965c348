// Trackers in threads of their own, for a sanitiser of threads to watch: they share nothing that
// changes. A program of its own, so that one can be built for that alone.

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "trackerRuns.h"

namespace {

// What a thread does: a tracker is made, runs, is reset, runs again and is destroyed there.
struct Work {
    std::int32_t product;  // -1: the array of one's own
    Scenario scenario;
    Results first, afterReset;

    OwnTracker newTracker() const {
        const VoxlocArray array = fiveMicrophones();
        return OwnTracker(product < 0 ? voxloc_createTracker(&array, nullptr)
                                      : voxloc_createProductTracker(product, nullptr));
    }
    void operator()() {
        const OwnTracker tracker = newTracker();
        first = run(tracker.get(), scenario);
        voxloc_resetTracker(tracker.get());
        afterReset = run(tracker.get(), scenario);
    }
};

TEST(Threads, GiveEachTrackerTheBitsOfARunAlone) {
    std::vector<Work> works;
    for (const VoxlocProduct* product : allProducts()) {
        works.push_back({product->type, mixedScenarioOf(product->type, 32), {}, {}});
    }
    works.push_back({-1, steadyScenario(fiveMicrophones(), {2.0f, 0.7f, 0.2f}, 32), {}, {}});
    ASSERT_GE(works.size(), 8U);
    std::vector<std::thread> threads;
    for (Work& work : works) threads.emplace_back(std::ref(work));
    for (std::thread& thread : threads) thread.join();
    for (const Work& work : works) {
        SCOPED_TRACE(work.product);
        const Results alone = run(work.newTracker().get(), work.scenario);
        EXPECT_TRUE(sameBits(work.first, alone));
        EXPECT_TRUE(sameBits(work.afterReset, alone));
    }
}

}  // namespace
