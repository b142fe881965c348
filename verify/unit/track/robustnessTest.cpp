// The same results each time, and bad audio: no abort, no undefined behaviour (the sanitisers run
// these, too), and the state that voxloc.h describes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "initializedModule.h"
#include "models/productRows.h"
#include "track/UltraSoundDistortionDetection.h"
#include "track/tracker.h"
#include "voxloc/unittestGenerator.h"

namespace {

using reference::ProductRow;

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float FullScale = 8388608.0f;
const float Source[3] = {0.3f, 0.1f, 2.0f};

// A change made to a frame before the module sees it.
using Spoil = std::function<void(int frameIndex, std::vector<float>& frame)>;

std::vector<TrackerResult> runSpeech(std::int32_t product, int frames, const Spoil& spoil = {}) {
    const InitializedModule module(product);
    std::fill_n(voxloc::moduleTracker().AzimuthElevationResult, 29737, 0.0f);  // as after start-up
    AudioGenerator* generator =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 0);
    std::vector<TrackerResult> results;
    for (int i = 0; i < frames; ++i) {
        const float* speech = getNextFrame(Source, 0, generator);
        std::vector<float> frame(speech, speech + voxloc_getNumberOfChannels() * 2048);
        if (spoil) spoil(i, frame);
        TrackerResult result{};
        voxloc_calculate(frame.data(), 24, 0, &result);
        results.push_back(result);
    }
    destroyAudioGenerator(generator);
    return results;
}

bool sameBytes(const std::vector<TrackerResult>& a, const std::vector<TrackerResult>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

bool hasFlag(const TrackerResult& result, std::uint32_t bit) {
    return voxloc_getFlag(bit, result.flags) == 1;
}

class Robustness : public ::testing::TestWithParam<ProductRow> {};

INSTANTIATE_TEST_SUITE_P(Every, Robustness, ::testing::ValuesIn(reference::productRows()),
                         reference::RowName());

TEST_P(Robustness, GivesBitIdenticalResultsTheSecondTime) {
    const auto first = runSpeech(GetParam().type, 25);
    EXPECT_TRUE(sameBytes(runSpeech(GetParam().type, 25), first));
    EXPECT_GT(first.back().quality, 0.1f);
}

TEST_P(Robustness, DoesNotDependOnTheProductBefore) {
    const auto alone = runSpeech(GetParam().type, 12);
    runSpeech(GetParam().type == PRODUCT_BRAMBLE ? PRODUCT_CINDER : PRODUCT_BRAMBLE, 12);
    EXPECT_TRUE(sameBytes(runSpeech(GetParam().type, 12), alone));
}

void expectSilent(const TrackerResult& result) {
    const float toDegrees = 57.295776f;
    const float azimuth = voxloc::moduleTracker().AzimuthAngles[0] * toDegrees;
    EXPECT_TRUE(result.azimuth == azimuth || (std::isnan(azimuth) && std::isnan(result.azimuth)));
    EXPECT_EQ(result.elevation, voxloc::moduleTracker().ElevationAngles[0] * toDegrees);
    EXPECT_EQ(result.range,
              (voxloc::moduleTracker().Ranges[0] + voxloc::moduleTracker().Ranges[47]) * 0.5f);
    EXPECT_EQ(result.quality, 0.0f);
}

TEST_P(Robustness, PutsSilenceAtTheStartOfTheGrids) {
    const auto silence = [](int, std::vector<float>& frame) {
        std::fill(frame.begin(), frame.end(), 0.0f);
    };
    const auto results = runSpeech(GetParam().type, 45, silence);
    for (const TrackerResult& result : results) {
        expectSilent(result);
        EXPECT_EQ(result.flags, 0x82U);  // no click, position valid
    }
    EXPECT_FLOAT_EQ(results[0].range, 5.2f);  // (0.5 + 9.9) / 2
}

TEST_P(Robustness, BearsFullScaleNoise) {
    std::mt19937 random(31);
    std::uniform_real_distribution<float> sample(-FullScale, FullScale);
    const auto noise = [&](int, std::vector<float>& frame) {
        for (float& value : frame) value = sample(random);
    };
    const auto results = runSpeech(GetParam().type, 45, noise);
    for (const TrackerResult& result : results) {
        EXPECT_TRUE(std::isfinite(result.elevation) && std::isfinite(result.quality));
        EXPECT_TRUE(result.range >= 0.5f && result.range <= 9.91f) << result.range;
        EXPECT_EQ(result.flags & ~0xbfU, 0U);
    }
}

// Bad values at frame 12 of speech, in all channels. Both analysis blocks that hold them spoil
// every bin for good: from then on no bin contributes, and it looks like silence.
class BadSamples : public ::testing::TestWithParam<float> {
  protected:
    // In one sample or in whole frames.
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

INSTANTIATE_TEST_SUITE_P(Each, BadSamples, ::testing::Values(NAN, Infinity, -Infinity, 3e38f));

TEST_P(BadSamples, InEveryChannelLeaveNoBinToContribute) {
    for (const ProductRow& row : reference::productRows()) {
        std::vector<std::size_t> all;
        for (std::size_t c = 0; c < static_cast<std::size_t>(row.channels); ++c) all.push_back(c);
        for (const bool whole : {false, true}) {
            SCOPED_TRACE(::testing::Message() << row.name << (whole ? " frame" : " sample"));
            const auto results = runSpeech(row.type, 25, spoilChannels(all, whole));
            const InitializedModule module(row.type);  // for its grids
            for (std::size_t i = 13; i < 25; ++i) {
                SCOPED_TRACE(i);
                expectSilent(results[i]);
            }
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
        EXPECT_EQ(std::isfinite(voxloc::moduleTracker().UltraSound.UltraSoundLevel[0]),
                  i < 13 || i >= 19)
            << i;
        EXPECT_FALSE(hasFlag(result, VOXLOC_FLAG_ULTRASOUND)) << i;
    }
    EXPECT_TRUE(std::isfinite(voxloc_getUltraSoundLevel()));
}

TEST_P(BadSamples, AreGoneAfterTheNextInitialize) {
    for (const ProductRow& row : reference::productRows()) {
        const auto before = runSpeech(row.type, 15);
        runSpeech(row.type, 15, spoilChannels({0, 1, 2, 3}, true));
        EXPECT_TRUE(sameBytes(runSpeech(row.type, 15), before)) << row.name;
    }
}

TEST_P(BadSamples, FrameAfterFrameDoNoHarm) {
    for (const ProductRow& row : reference::productRows()) {
        const auto spoil = [](int, std::vector<float>& frame) {
            std::fill(frame.begin(), frame.end(), GetParam());
        };
        const auto results = runSpeech(row.type, 22, spoil);
        const InitializedModule module(row.type);
        for (const TrackerResult& result : results) expectSilent(result);
    }
}

}  // namespace
