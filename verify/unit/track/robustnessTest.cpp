// The same results each time, silence, and the loudest noise. What no converter gives is fed in
// badSamplesTest.cpp.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "trackerRuns.h"

namespace {

// A change made to a frame before the module sees it.
using Spoil = std::function<void(int frameIndex, std::vector<float>& frame)>;

Results runSpeech(std::int32_t product, int frames, const Spoil& spoil = {}) {
    const InitializedModule module(product);
    std::fill_n(voxloc::moduleTracker().AzimuthElevationResult, 29737, 0.0f);  // as after start-up
    Clips clips;
    Results results;
    for (int i = 0; i < frames; ++i) {
        const float* speech = clips.talker();
        std::vector<float> frame(speech, speech + voxloc_getNumberOfChannels() * 2048);
        if (spoil) spoil(i, frame);
        TrackerResult result{};
        voxloc_calculate(frame.data(), 24, 0, &result);
        results.push_back(result);
    }
    return results;
}

class Robustness : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    const std::int32_t product_ = GetParam()->type;
};

INSTANTIATE_TEST_SUITE_P(Every, Robustness, ::testing::ValuesIn(allProducts()), ProductName());

TEST_P(Robustness, GivesTheSameBitsEachTimeWhateverTheProductBefore) {
    const auto first = runSpeech(product_, 25);
    EXPECT_TRUE(sameBits(runSpeech(product_, 25), first));
    runSpeech(product_ == PRODUCT_BRAMBLE ? PRODUCT_CINDER : PRODUCT_BRAMBLE, 12);
    EXPECT_TRUE(sameBits(runSpeech(product_, 25), first));
    EXPECT_GT(first.back().quality, 0.1f);
}

// The grid's corner; the whole first column is one flat run of ranges.
void expectSilent(const TrackerResult& result) {
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    const float azimuth = tracker.AzimuthAngles[0] * 57.295776f;
    EXPECT_TRUE(result.azimuth == azimuth || (std::isnan(azimuth) && std::isnan(result.azimuth)));
    EXPECT_EQ(result.elevation, tracker.ElevationAngles[0] * 57.295776f);
    EXPECT_FLOAT_EQ(result.range, 5.2f);  // (0.5 + 9.9) / 2
    EXPECT_EQ(result.quality, 0.0f);
}

TEST_P(Robustness, PutsSilenceAtTheStartOfTheGrids) {
    const auto silence = [](int, std::vector<float>& frame) {
        std::fill(frame.begin(), frame.end(), 0.0f);
    };
    for (const TrackerResult& result : runSpeech(product_, 45, silence)) {
        expectSilent(result);
        EXPECT_EQ(result.flags, 0x82U);  // no click, position valid
    }
}

TEST_P(Robustness, BearsFullScaleNoise) {
    const auto noise = [](int index, std::vector<float>& frame) {
        frame = noiseFrame(static_cast<int>(frame.size() / 2048), static_cast<unsigned>(index),
                           8388608.0f);
    };
    for (const TrackerResult& result : runSpeech(product_, 45, noise)) {
        EXPECT_TRUE(std::isfinite(result.elevation) && std::isfinite(result.quality));
        EXPECT_TRUE(result.range >= 0.5f && result.range <= 9.91f) << result.range;
        EXPECT_EQ(result.flags & ~0xbfU, 0U);
    }
}

}  // namespace
