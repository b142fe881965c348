// A frame's scaling, with nothing else of the tracker: which samples are silenced, what is counted
// and what the log is told.

#include "track/frameScaling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "kit/guardedFloats.h"
#include "kit/noise.h"
#include "voxloc/voxloc.h"

namespace {

using reference::GuardedFloats;
using voxloc::SilencedSamples;

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float Largest = std::numeric_limits<float>::max();
constexpr float AtTheBound = 536870912.0f;      // 64 times 2^23
constexpr float BeyondTheBound = 536870976.0f;  // the next float
constexpr float Denormal = 1e-40f;

/** The scaling of frames, with its log. */
struct Scaling {
    SilencedSamples silenced{};
    std::vector<std::string> texts;
    voxloc::Log log{[](void* context, const char* text) {
                        static_cast<std::vector<std::string>*>(context)->push_back(text);
                    },
                    &texts};

    std::vector<float> operator()(const std::vector<float>& frame, std::uint32_t bits = 24) {
        const GuardedFloats in(frame);
        GuardedFloats out(frame.size());
        const GuardedFloats before = in;
        scaleFrame(silenced, log, in.data(), bits, static_cast<int>(frame.size() / FRAME_SAMPLES),
                   out.data());
        EXPECT_TRUE(in.sameBitsAs(before) && out.intact());
        return {out.data(), out.data() + out.size()};
    }
};

std::vector<float> frameWith(std::size_t at, float value, std::size_t channels = 2) {
    std::vector<float> frame(channels * FRAME_SAMPLES, 100.0f);
    frame[at] = value;
    return frame;
}

TEST(ScaleFrame, GivesTheBitsOfNormalizeInputForWhatConvertersGive) {
    std::vector<float> frame = reference::noise(8 * FRAME_SAMPLES, 5);
    for (float& sample : frame) sample = std::round(sample * 8388608.0f);
    frame[7] = -0.0f;
    frame[8] = 8388607.0f;
    frame[9] = -8388608.0f;
    Scaling scale;
    for (const std::uint32_t bits : {19U, 24U, 32U}) {
        std::vector<float> expected(frame.size());
        voxloc_normalizeInput(frame.data(), expected.data(), bits, 8);
        const std::vector<float> scaled = scale(frame, bits);
        EXPECT_EQ(std::memcmp(scaled.data(), expected.data(), 4 * scaled.size()), 0) << bits;
    }
    EXPECT_EQ(scale.silenced.count, 0U);
    EXPECT_TRUE(scale.texts.empty());
}

TEST(ScaleFrame, LetsTheBoundThroughAndSilencesTheNextFloatAnywhere) {
    ASSERT_EQ(std::nextafter(AtTheBound, Infinity), BeyondTheBound);
    for (const float sign : {1.0f, -1.0f}) {
        for (std::size_t at = 0; at < 2 * FRAME_SAMPLES; at += at % 2048 < 64 ? 1 : 331) {
            Scaling scale;
            EXPECT_EQ(scale(frameWith(at, sign * AtTheBound))[at], sign * 64.0f);
            EXPECT_EQ(scale.silenced.count, 0U);
            std::vector<float> expected(2 * FRAME_SAMPLES, 100.0f / 8388608.0f);
            expected[at] = 0.0f;
            EXPECT_EQ(scale(frameWith(at, sign * BeyondTheBound)), expected) << at;
            EXPECT_EQ(scale.silenced.count, 1U);
        }
    }
}

TEST(ScaleFrame, SilencesWhatIsNoNumberAndWhatIsAbsurdAtAnyScale) {
    const float signalling = std::numeric_limits<float>::signaling_NaN();
    for (const float bad : {NAN, -NAN, signalling, Infinity, -Infinity, Largest, -Largest, 2e38f}) {
        for (const std::uint32_t bits : {0U, 1U, 16U, 24U, 32U, 100U}) {
            for (const std::size_t at : {std::size_t{0}, std::size_t{2047}, std::size_t{4095}}) {
                Scaling scale;
                EXPECT_EQ(scale(frameWith(at, bad), bits)[at], 0.0f) << bad << ' ' << bits;
                EXPECT_EQ(scale.silenced.count, bits < 2 ? 4096U : 1U);  // 100 is absurd there
            }
        }
    }
}

TEST(ScaleFrame, LetsTinyNumbersThrough) {
    Scaling scale;
    for (const float tiny : {Denormal, -Denormal, 0.0f, -0.0f, 1e-30f}) {
        EXPECT_LE(std::abs(scale(frameWith(9, tiny))[9]), 2e-37f);
    }
    EXPECT_EQ(scale.silenced.count, 0U);
}

TEST(ScaleFrame, TakesAnyNumberOfBits) {
    const std::vector<float> frame(FRAME_SAMPLES, 3.0f);
    Scaling scale;
    EXPECT_EQ(scale(frame, 0)[5], 6.0f);
    EXPECT_EQ(scale(frame, 1)[5], 3.0f);
    EXPECT_EQ(scale(frame, 25)[5], 3.0f / 16777216.0f);
    EXPECT_EQ(scale(frame, 127)[5], 3.0f * 0x1p-126f);
    EXPECT_EQ(scale(frame, 1000)[5], 0.0f);
    EXPECT_EQ(scale(frame, UINT32_MAX)[5], 0.0f);
    EXPECT_EQ(scale.silenced.count, 0U);
    EXPECT_EQ(scale(std::vector<float>(FRAME_SAMPLES, Infinity), UINT32_MAX)[5], 0.0f);
    EXPECT_EQ(scale.silenced.count, 2048U);
}

TEST(ScaleFrame, TellsTheLogOfTheFirstSampleOfASpell) {
    Scaling scale;
    std::vector<float> frame = frameWith(3 * FRAME_SAMPLES - 1, -Infinity, 4);
    frame[3 * FRAME_SAMPLES] = NAN;
    scale(frame, 20);
    scale(frame, 20);
    EXPECT_EQ(scale.texts, (std::vector<std::string>{
                               "Warning: Samples beyond 64 times full scale are taken as silence, "
                               "channel: 2 value: -inf bits: 20\n"}));
    EXPECT_EQ(scale.silenced.count, 4U);
}

TEST(ScaleFrame, EndsASpellAfterASecondWithout) {
    for (const int good : {23, 24}) {
        Scaling scale;
        const std::vector<float> clean(2 * FRAME_SAMPLES, 1.0f);
        for (int spell = 0; spell < 3; ++spell) {
            scale(frameWith(100, 1e9f));
            for (int i = 0; i < good; ++i) scale(clean);
        }
        EXPECT_EQ(scale.texts.size(), good < 24 ? 1U : 3U);
        EXPECT_EQ(scale.silenced.count, 3U);
    }
}

TEST(ScaleFrame, CountsPastWhat32BitsHold) {
    Scaling scale;
    scale.silenced.count = UINT32_MAX;
    scale(std::vector<float>(8 * FRAME_SAMPLES, NAN));
    EXPECT_EQ(scale.silenced.count, 4294967295U + std::uint64_t{16384});
}

}  // namespace
