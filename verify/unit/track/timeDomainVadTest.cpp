// The time-domain voice activity detector. In every test each frame's filters are compared with
// sums in double, and each median with the one before it; the tests add the decisions.

#include "track/timeDomainVad.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "gtest/gtest.h"
#include "kit/floatBits.h"
#include "kit/guardedFloats.h"
#include "models/detectorModels.h"

using namespace kit;
using namespace voxloc;

namespace {

constexpr std::size_t Frame = FRAME_SAMPLES;

bool agree(float actual, double expected, double limit) {
    if (std::isnan(expected)) return std::isnan(actual);
    return wide(actual) == expected || std::fabs(wide(actual) - expected) <= limit;
}

class TimeDomainVadTest : public testing::Test, protected TimeDomainVad {
  protected:
    TimeDomainVadTest() : TimeDomainVad{} { restart(); }

    void restart() {
        initializeTimeDomainActivityDetector(*this);
        model = {};
        clear();
    }

    void clear() { std::fill_n(frame.data(), frame.size(), 0.0f); }

    // One frame, looked at in every detail but the decision.
    int detect() {
        const reference::GuardedFloats kept = frame;
        const float* channel = frame.data() + ChannelOffset;
        const std::vector<double> samples(channel, channel + Frame);
        modelResult = model.update(samples.data()) ? 1 : 0;
        const float median = MedianOutput[Frame - 1], step = CurrentMedianFilterDifference;
        std::uint8_t result = 0xee;
        detectTimeDomainActivity(*this, frame.data(), &result);
        EXPECT_TRUE(frame.intact() && frame.sameBitsAs(kept));
        EXPECT_LE(result, 1);
        expectFilters();
        expectMedians(median, step);
        return result;
    }

    int detectSilence() {
        clear();
        return detect();
    }

    // As many products and sums as the filters have taps, at half an epsilon of the terms each.
    void expectFilters() {
        const auto& filters = reference::TimeVoiceFilters;
        const auto magnitudes = filters.magnitudes();
        const std::vector<double> heard = model.heard();
        std::vector<double> sizes = heard;
        for (double& size : sizes) size = std::fabs(size);
        const std::vector<double> band = filters.rectified(heard);
        const std::vector<double> bandSizes = magnitudes.rectified(sizes);
        for (std::size_t i = 0; i < 2080; i++) {
            ASSERT_TRUE(agree(FilterInput[i], band[i], (32 + 24) * Epsilon * bandSizes[i]))
                << "sample " << i << ": " << FilterInput[i] << ", expected " << band[i];
        }
        const std::vector<double> envelope = filters.envelope(heard);
        const std::vector<double> envelopeSizes = magnitudes.envelope(sizes);
        for (std::size_t i = 0; i < Frame; i++) {
            ASSERT_TRUE(
                agree(EnvelopeOutput[i], envelope[i], (32 + 24 + 32) * Epsilon * envelopeSizes[i]))
                << "sample " << i << ": " << EnvelopeOutput[i] << ", expected " << envelope[i];
        }
    }

    static double stepFrom(float median) {
        return std::isnan(median) ? 1e-12 : std::max(0.005 * wide(median), 1e-12);
    }

    // Each median lies one step from the one before it, on the envelope's side; below if equal. The
    // step is within two roundings of half a percent, the median within one.
    void expectMedians(float median, float step) {
        ASSERT_EQ(bitsOf(MedianOutput[0]), bitsOf(median));
        for (std::size_t i = 1; i < Frame; i++) {
            const float last = MedianOutput[i - 1];
            const double size = i == 1 ? wide(step) : stepFrom(last);
            const double expected = wide(last) + (EnvelopeOutput[i] > last ? size : -size);
            ASSERT_TRUE(agree(MedianOutput[i], expected,
                              Epsilon / 2 * std::fabs(expected) + Epsilon * size))
                << "sample " << i << ": " << MedianOutput[i] << " after " << last;
        }
        const double expected = stepFrom(MedianOutput[Frame - 1]);
        ASSERT_TRUE(agree(CurrentMedianFilterDifference, expected, Epsilon * expected));
    }

    // The decision of a frame in which E[0] alone is not 0, with this median before it: two frames
    // ago came a click at the sample whose response ends in the first of the rectified values.
    int decideWith(float median, float height) {
        clear();
        frame[2007] = height;
        detect();
        detectSilence();
        MedianOutput[2047] = median;
        CurrentMedianFilterDifference = 1e-12f;
        PreviousResult = true;
        return detectSilence();
    }

    reference::GuardedFloats frame{3 * Frame};
    reference::TimeVoiceModel model;
    int modelResult = 0;
};

TEST_F(TimeDomainVadTest, InitialiseSetsAllStateButTheChannel) {
    const auto set = [](auto& buffer) { std::fill(std::begin(buffer), std::end(buffer), 1.0f); };
    const auto isClear = [](const auto& buffer) {
        return std::all_of(std::begin(buffer), std::end(buffer), [](float x) { return x == 0; });
    };
    set(EnvelopeOutput);
    set(MedianOutput);
    set(FilterInput);
    set(AudioData);
    PreviousResult = false;
    CurrentMedianFilterDifference = 5;
    setTimeDomainVadChannel(*this, 3, 7);  // the 7 is ignored

    initializeTimeDomainActivityDetector(*this);

    EXPECT_TRUE(isClear(EnvelopeOutput));
    EXPECT_TRUE(isClear(MedianOutput));
    EXPECT_TRUE(isClear(FilterInput));
    EXPECT_TRUE(isClear(AudioData));
    EXPECT_TRUE(PreviousResult);
    EXPECT_EQ(bitsOf(CurrentMedianFilterDifference), bitsOf(1e-12f));
    EXPECT_EQ(ChannelOffset, 3u * 2048);
}

TEST_F(TimeDomainVadTest, SilenceIsVoiceFromTheFirstFrameOn) {
    for (int i = 0; i < 10; i++) {
        EXPECT_EQ(detectSilence(), 1);
        for (const float median : MedianOutput) ASSERT_TRUE(std::fabs(wide(median)) <= 3e-12);
    }
}

TEST_F(TimeDomainVadTest, ClickAnywhereGivesTheResponseOfTheThreeFiltersOneFrameLate) {
    // At the edges of what the frame's envelope hears, and inside: of the 43 samples before the
    // frame the filters' zero first taps hide two, of the 44 after it the last two make outputs too
    // many.
    for (const std::size_t at : {0u, 1u, 41u, 42u, 43u, 1000u, 2005u, 2006u, 2007u, 2047u}) {
        restart();
        frame[at] = 1;
        const bool heard[4] = {at <= 41, true, at >= 2007, false};
        for (int later = 0; later < 4; later++, clear()) {
            SCOPED_TRACE(testing::Message() << "sample " << at << ", " << later << " later");
            detect();
            EXPECT_EQ(*std::max_element(EnvelopeOutput, EnvelopeOutput + Frame) > 0, heard[later]);
        }
    }
}

TEST_F(TimeDomainVadTest, ChangeOfChannelKeepsTheHistory) {
    for (std::size_t i = 0; i < frame.size(); i++) {
        frame[i] = std::sin(static_cast<float>(i % 97) * static_cast<float>(1 + i / Frame));
    }
    for (const std::uint32_t channel : {1u, 2u}) {
        setTimeDomainVadChannel(*this, channel, 0);
        for (int i = 0; i < 4; i++) detect();
    }
}

// --- Median

TEST_F(TimeDomainVadTest, MedianGoesOnFromWhereItWas) {
    const struct {
        float median, step;
    } rows[] = {{1, 0.25f},
                {1.5e-10f, 1e-12f},  // half a percent of it is just below the smallest step
                {2.1e-10f, 1e-12f},  // and of this a bit more
                {0, 1e-12f},         // the envelope of silence equals it
                {NotANumber, 1}};
    for (const auto& [median, step] : rows) {
        MedianOutput[2047] = median;
        CurrentMedianFilterDifference = step;
        EXPECT_EQ(detectSilence(), 1);
    }
    EXPECT_EQ(CurrentMedianFilterDifference, 1e-12f);  // of a NaN
}

TEST_F(TimeDomainVadTest, SamplesWithoutAMeaningPassBy) {
    for (const float sample : {NotANumber, Infinity}) {
        restart();
        frame[1000] = sample;
        detect();
        MedianOutput[2047] = 1;
        EXPECT_EQ(detectSilence(), std::isnan(sample) ? 1 : 0);
        ASSERT_TRUE(std::isnan(EnvelopeOutput[1000]));
        for (const float median : MedianOutput) ASSERT_TRUE(std::isfinite(median));
        detectSilence();
        EXPECT_EQ(std::count(EnvelopeOutput, EnvelopeOutput + Frame, 0.0f), FRAME_SAMPLES);
    }
}

// --- Decision

TEST_F(TimeDomainVadTest, BurstIsAnExcessOf1Point7TimesTheMedian) {
    // The excess of one median and of the next lie some roundings apart; of many envelopes there
    // are some with an excess just at the threshold.
    for (int i = 0; i < 40; i++) {
        SCOPED_TRACE(i);
        const float height = 2e6f + 12345 * static_cast<float>(i);
        decideWith(1, height);
        const float envelope = EnvelopeOutput[0];
        ASSERT_GT(envelope, 0.05f);
        // The highest median that still makes the excess larger than 1.7, and the next float.
        float median = envelope / 2.7f * 1.00001f;
        while (!((envelope - median) / median > 1.7f)) median = previous(median);
        EXPECT_EQ(decideWith(median, height), 0);
        EXPECT_FALSE(PreviousResult);
        EXPECT_EQ(decideWith(next(median), height), 1);
        EXPECT_TRUE(PreviousResult);
    }
}

TEST_F(TimeDomainVadTest, MedianOf1e7thOrLessIsSkipped) {
    for (const float median : {-1.0f, -0.0f, 0.0f, 1e-7f, next(1e-7f)}) {
        EXPECT_EQ(decideWith(median, 20), median > 1e-7f ? 0 : 1) << median;
        ASSERT_GT(EnvelopeOutput[0], 9e-7f);
    }
}

TEST_F(TimeDomainVadTest, BurstClearsTheDecisionForTwoFrames) {
    EXPECT_EQ(decideWith(1e-3f, 2e6f), 0);
    EXPECT_EQ(detectSilence(), 0);
    EXPECT_EQ(detectSilence(), 1);
    EXPECT_EQ(detectSilence(), 1);
}

TEST_F(TimeDomainVadTest, AgreesWithTheModelOverALongRun) {
    int bursts = 0, changes = 0;
    for (const unsigned seed : {1u, 2u, 3u}) {
        std::mt19937 random(seed);
        std::normal_distribution<float> noise(0, 1);
        std::uniform_int_distribution<std::size_t> anySample(0, Frame - 1);
        restart();
        int before = 1;
        for (int i = 0; i < 60; i++) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << " frame " << i);
            const float level = i % 20 == 13 ? 0 : 0.01f * (1 + static_cast<float>(i / 20));
            std::generate_n(frame.data(), Frame, [&] { return level * noise(random); });
            // Once the median has settled, this clears two decisions.
            if (i % 7 == 5) frame[anySample(random)] += 4;
            const int result = detect();
            ASSERT_EQ(result, modelResult);
            bursts += !PreviousResult;
            changes += result != before;
            before = result;
        }
    }
    EXPECT_GT(bursts, 10);
    EXPECT_GT(changes, 10);
}

}  // namespace
