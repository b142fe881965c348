// A host program that lets floating-point exceptions end it. Units that cannot trap have nothing to
// show here.

#include <fenv.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "trackerRuns.h"

#ifdef __GLIBC__

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();

/** Every exception traps, as far as the unit can, while an object of this kind lives. */
class Traps {
  public:
    Traps() {
        fegetenv(&before_);
        feclearexcept(FE_ALL_EXCEPT);
        isAble_ = feenableexcept(FE_ALL_EXCEPT) != -1 && fegetexcept() == FE_ALL_EXCEPT;
    }
    ~Traps() { fesetenv(&before_); }
    Traps(const Traps&) = delete;
    Traps& operator=(const Traps&) = delete;

    bool isAble() const { return isAble_; }

  private:
    fenv_t before_;
    bool isAble_;
};

bool canTrap() {
    return Traps().isAble();
}

/** Silence, noise, what no converter gives, silence. */
std::vector<std::vector<float>> allKindsOfFrames(int channels) {
    const std::vector<float> silence(static_cast<std::size_t>(channels) * 2048);
    std::vector<std::vector<float>> frames(3, silence);
    for (unsigned int i = 0; i < 25; ++i) frames.push_back(noiseFrame(channels, i));
    frames.insert(frames.end(), 3, silence);
    for (const float value : {NAN, Infinity, 3e38f, 1e-38f}) {
        frames.push_back(silence);
        std::fill_n(frames.back().begin(), 3000, value);
    }
    frames.insert(frames.end(), 3, silence);
    return frames;
}

Results runFrames(std::int32_t product, const std::vector<std::vector<float>>& frames) {
    const InitializedModule module(product);
    Results results(frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        voxloc_calculate(frames[i].data(), 24, 0, &results[i]);
    }
    return results;
}

class TrapsOfTheHost : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    void SetUp() override {
        if (!canTrap()) GTEST_SKIP() << "this floating-point unit cannot trap";
    }
};

INSTANTIATE_TEST_SUITE_P(Every, TrapsOfTheHost, ::testing::ValuesIn(allProducts()), ProductName());

TEST_P(TrapsOfTheHost, AreMaskedInTheModule) {
    const auto frames = allKindsOfFrames(GetParam()->array.channels);
    const Results expected = runFrames(GetParam()->type, frames);
    Results results;
    int enabled = 0, raised = 0;
    {
        const Traps traps;
        results = runFrames(GetParam()->type, frames);
        enabled = fegetexcept();
        raised = fetestexcept(FE_ALL_EXCEPT);
    }
    EXPECT_TRUE(sameBits(results, expected));
    EXPECT_EQ(enabled, FE_ALL_EXCEPT);
    EXPECT_EQ(raised, 0);
}

TEST_P(TrapsOfTheHost, AreMaskedInTrackersOfOnesOwn) {
    const auto frames = allKindsOfFrames(GetParam()->array.channels);
    TrackerResult result{};
    VoxlocGrid grid;
    const Traps traps;
    VoxlocTracker* own = voxloc_createProductTracker(GetParam()->type, nullptr);
    voxloc_getGrid(voxloc_getArray(own), &grid);
    voxloc_checkArray(voxloc_getArray(own), nullptr);
    for (const std::vector<float>& frame : frames) {
        voxloc_track(own, frame.data(), 24, 0, &result);
    }
    voxloc_resetTracker(own);
    voxloc_track(own, frames.front().data(), 24, 0, &result);
    voxloc_destroyTracker(own);
}

TEST(TrapsOfTheHostToo, AreMaskedForEnergiesAndRefusedArrays) {
    if (!canTrap()) GTEST_SKIP() << "this floating-point unit cannot trap";
    const auto frames = allKindsOfFrames(8);
    VoxlocArray array = voxloc_findProduct(PRODUCT_ASTER)->array;
    array.microphone[2].y = NAN;
    array.angleInterval = Infinity;
    char reason[VOXLOC_REASON_SIZE] = "";
    float energies[VOXLOC_MAX_CHANNELS];
    VoxlocGrid grid;
    {
        const Traps traps;
        for (const std::vector<float>& frame : frames) {
            voxloc_calculateSignalEnergy(frame.data(), 24, 8, energies);
        }
        voxloc_checkArray(&array, reason);
        voxloc_getGrid(&array, &grid);
    }
    EXPECT_NE(std::string(reason), "");
}

}  // namespace

#endif
