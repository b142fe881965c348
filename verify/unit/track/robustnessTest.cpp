// The same results each time, and bad audio: no abort, no undefined behaviour (the sanitisers run
// these, too), and the state that voxloc.h describes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "trackerRuns.h"

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();

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

bool hasFlag(const TrackerResult& result, std::uint32_t bit) {
    return voxloc_getFlag(bit, result.flags) == 1;
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

// Bad values at frame 12 of speech, in one sample of some channels or in all.
class BadSamples : public ::testing::TestWithParam<float> {
  protected:
    static Spoil spoilChannels(std::vector<std::size_t> channels, bool whole) {
        return [channels, whole, bad = GetParam()](int index, std::vector<float>& frame) {
            if (index != 12) return;
            for (const std::size_t c : channels) {
                for (std::size_t i = 0; i < 2048; ++i) {
                    if (whole || i == 1000) frame[c * 2048 + i] = bad;
                }
            }
        };
    }
};

struct BadSampleName {
    template <class Info>
    std::string operator()(const Info& info) const {
        const char* const names[] = {"NaN", "Infinity", "MinusInfinity", "Huge"};
        return names[info.index];
    }
};

INSTANTIATE_TEST_SUITE_P(Each, BadSamples, ::testing::Values(NAN, Infinity, -Infinity, 3e38f),
                         BadSampleName());

// Both analysis blocks that hold them spoil every bin for good: from then on no bin contributes,
// and it looks like silence, until the next initialise.
TEST_P(BadSamples, InEveryChannelLeaveNoBinToContribute) {
    for (const VoxlocProduct* product : allProducts()) {
        std::vector<std::size_t> all;
        for (std::size_t c = 0; c < static_cast<std::size_t>(product->array.channels); ++c) {
            all.push_back(c);
        }
        const auto clean = runSpeech(product->type, 15);
        for (const bool whole : {false, true}) {
            SCOPED_TRACE(::testing::Message() << product->name << (whole ? " frame" : " sample"));
            const auto results = runSpeech(product->type, 25, spoilChannels(all, whole));
            for (std::size_t i = 13; i < 25; ++i) expectSilent(results[i]);  // its grids are there
            EXPECT_TRUE(sameBits(runSpeech(product->type, 15), clean));
        }
    }
}

// Once the noise level holds the value: no sound, and no voice when the hangover has run out, which
// takes 34 frames at most.
TEST_P(BadSamples, InADetectorsChannelsEndItsDecisions) {
    const auto results = runSpeech(PRODUCT_ASTER, 70, spoilChannels({1, 2}, false));
    for (std::size_t i = 13; i < 70; ++i) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(hasFlag(results[i], VOXLOC_FLAG_SOUND));
        const bool wasVoice = hasFlag(results[i - 1], VOXLOC_FLAG_VOICE);
        EXPECT_TRUE(wasVoice || !hasFlag(results[i], VOXLOC_FLAG_VOICE));  // only ends
    }
    EXPECT_TRUE(hasFlag(results[20], VOXLOC_FLAG_VOICE));
    EXPECT_FALSE(hasFlag(results[13 + 34], VOXLOC_FLAG_VOICE));
}

TEST_P(BadSamples, InOneMicrophoneLeaveTheOtherPairsAtWork) {
    const auto clean = runSpeech(PRODUCT_ASTER, 50);
    for (const bool whole : {false, true}) {
        SCOPED_TRACE(whole ? "frame" : "sample");
        const auto spoilt = runSpeech(PRODUCT_ASTER, 50, spoilChannels({0}, whole));
        // Two of six pairs have dropped out, at the end of the timeout at the latest.
        EXPECT_LT(spoilt[13 + 35].quality, 0.8f * clean[13 + 35].quality);
        for (std::size_t i = 0; i < 50; ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(spoilt[i].flags, clean[i].flags);  // no detector listens to microphone 0
            EXPECT_TRUE(std::isfinite(spoilt[i].quality));
            if (i < 13) {
                EXPECT_EQ(spoilt[i].quality, clean[i].quality);
            } else {
                EXPECT_GT(spoilt[i].quality, 0.2f);
                // Two wide pairs remain: a few grid steps of 0.5 degrees.
                EXPECT_LE(std::abs(spoilt[i].azimuth - clean[i].azimuth), 3.0f);
            }
        }
    }
}

// The waveform detector looks at three frames, and its median has caught up a few frames later.
TEST_P(BadSamples, LeaveTheTimeDomainDetectorSoon) {
    const auto clean = runSpeech(PRODUCT_ASTER, 40);
    const auto spoilt = runSpeech(PRODUCT_ASTER, 40, spoilChannels({2}, true));
    for (std::size_t i = 24; i < 40; ++i) {
        EXPECT_EQ(hasFlag(spoilt[i], VOXLOC_FLAG_TD_VOICE), hasFlag(clean[i], VOXLOC_FLAG_TD_VOICE))
            << i;
    }
}

// Its levels start anew at each evaluation, every 20 frames.
TEST_P(BadSamples, LeaveTheUltrasoundDetectorAtItsNextEvaluation) {
    const InitializedModule module(PRODUCT_ASTER);
    TrackerResult result{};
    std::vector<float> frame(6 * 2048);
    for (int i = 0; i < 40; ++i) {
        frame[1000] = i == 12 ? GetParam() : 1000.0f;
        voxloc_calculate(frame.data(), 24, 0, &result);
        const float level = voxloc::moduleTracker().UltraSound.UltraSoundLevel[0];
        EXPECT_EQ(std::isfinite(level), i < 13 || i >= 19) << i;
        EXPECT_FALSE(hasFlag(result, VOXLOC_FLAG_ULTRASOUND)) << i;
    }
    EXPECT_TRUE(std::isfinite(voxloc_getUltraSoundLevel()));
}

TEST_P(BadSamples, FrameAfterFrameDoNoHarm) {
    for (const VoxlocProduct* product : allProducts()) {
        const auto spoil = [](int, std::vector<float>& frame) {
            std::fill(frame.begin(), frame.end(), GetParam());
        };
        for (const TrackerResult& result : runSpeech(product->type, 22, spoil)) {
            expectSilent(result);
        }
    }
}

}  // namespace
