// The time-domain voice activity detector: its filters against sums in double, its median tracker
// and decision bit for bit against plain loops, and each threshold from both sides.

#include "track/timeDomainVad.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "trackSupport.h"

using namespace trackSupport;
using namespace voxloc;

namespace {

constexpr std::size_t Frame = FRAME_SAMPLES;
constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

// The tables as designed: half-band low-pass, high-pass, 32-sample moving average.
const std::vector<float> LowPass = {
    0.0f,    -0.0012f, 0.002f,   -0.0021f, 0.0f, 0.0048f,  -0.0099f, 0.01f,
    -0.0f,   -0.0189f, 0.0362f,  -0.0347f, 0.0f, 0.0685f,  -0.1529f, 0.223f,
    0.7505f, 0.223f,   -0.1529f, 0.0685f,  0.0f, -0.0347f, 0.0362f,  -0.0189f,
    -0.0f,   0.01f,    -0.0099f, 0.0048f,  0.0f, -0.0021f, 0.002f,   -0.0012f};
const std::vector<float> HighPass = {0.0f,     -0.0013f, 0.0051f,  -0.0006f, -0.0122f, -0.009f,
                                     0.0302f,  0.0438f,  -0.0422f, -0.1475f, -0.0948f, 1.1146f,
                                     -1.7722f, 1.1146f,  -0.0948f, -0.1475f, -0.0422f, 0.0438f,
                                     0.0302f,  -0.009f,  -0.0122f, -0.0006f, 0.0051f,  -0.0013f};
const std::vector<float> Average(32, 0.03125f);

// A sum in double, and the sum of its terms' magnitudes, to derive an error bound from.
struct Bounded {
    double value = 0, magnitude = 0;
};

std::vector<Bounded> filter(const std::vector<Bounded>& x, const std::vector<float>& h) {
    std::vector<Bounded> y(x.size() - h.size() + 1);
    for (std::size_t i = 0; i < y.size(); i++) {
        for (std::size_t j = 0; j < h.size(); j++) {
            y[i].value += wide(h[j]) * x[i + j].value;
            y[i].magnitude += std::fabs(wide(h[j])) * x[i + j].magnitude;
        }
    }
    return y;
}

// What the detector hears of a channel: the last three frames, oldest first.
class History {
  public:
    void append(const float* frame) {
        samples_.erase(samples_.begin(), samples_.begin() + FRAME_SAMPLES);
        samples_.insert(samples_.end(), frame, frame + FRAME_SAMPLES);
    }

    // The envelope that belongs to the middle frame: 43 samples before it and 44 after it are
    // heard, too.
    std::vector<Bounded> envelope() const {
        std::vector<Bounded> x;
        for (std::size_t i = 2005; i <= 4139; i++) {
            x.push_back({wide(samples_[i]), std::fabs(wide(samples_[i]))});
        }
        std::vector<Bounded> band = filter(filter(x, LowPass), HighPass);
        for (Bounded& sample : band) sample.value = std::fabs(sample.value);
        std::vector<Bounded> result = filter(band, Average);
        result.resize(Frame);  // two more could be had
        return result;
    }

  private:
    std::vector<float> samples_ = std::vector<float>(3 * Frame);
};

// The tracker and the decision as plain loops over an envelope.
struct Tracker {
    float median = 0, step = 1e-12f;
    bool previousResult = true;
    float largest = 0;  // relative excess in the last frame
    std::vector<float> medians = std::vector<float>(Frame);

    int decide(const float* envelope) {
        medians[0] = median;
        for (std::size_t i = 1; i < Frame; i++) {
            medians[i] =
                envelope[i] > medians[i - 1] ? medians[i - 1] + step : medians[i - 1] - step;
            step = 0.005f * medians[i];
            if (!(step >= 1e-12f)) step = 1e-12f;
        }
        median = medians[Frame - 1];
        largest = 0;
        for (std::size_t i = 0; i < Frame; i++) {
            if (!(medians[i] > 1e-7f)) continue;
            const float excess = (envelope[i] - medians[i]) / medians[i];
            if (excess > largest) largest = excess;
        }
        const bool quiet = !(largest > 1.7f);
        const int result = quiet && previousResult;
        previousResult = quiet;
        return result;
    }
};

class TimeDomainVadTest : public testing::Test, protected TimeDomainVad {
  protected:
    TimeDomainVadTest() : TimeDomainVad{} {
        setTimeDomainVadChannel(*this, 0, 0);
        initializeTimeDomainActivityDetector(*this);
    }

    // One frame of the module; `frame` is left behind as the test set it.
    int detect() {
        std::uint8_t result = 0xee;
        const std::vector<float> before = frame.content();
        detectTimeDomainActivity(*this, frame.data(), &result);
        EXPECT_TRUE(frame.intact());
        EXPECT_EQ(firstDifference(frame.data(), before.data(), before.size()), before.size());
        EXPECT_LE(result, 1);
        return result;
    }

    // 32 + 24 + 32 products and sums at half an epsilon of the terms each is the most that can be.
    void expectEnvelope(const std::vector<Bounded>& expected) {
        ASSERT_EQ(expected.size(), Frame);
        for (std::size_t i = 0; i < Frame; i++) {
            const double error = std::fabs(wide(EnvelopeOutput[i]) - expected[i].value);
            ASSERT_TRUE(error <= 88 * Epsilon * expected[i].magnitude)
                << "sample " << i << ": " << EnvelopeOutput[i] << ", expected "
                << expected[i].value;
        }
    }

    int detectSilence() {
        std::fill(frame.begin(), frame.end(), 0.0f);
        return detect();
    }

    // Two frames later the envelope is that of a click of this height at the sample whose response
    // ends in the first of the 2080 rectified values: E[0] alone is not 0.
    void sendLateTail(float height) {
        std::fill(frame.begin(), frame.end(), 0.0f);
        frame[2007] = height;
        detect();
        detectSilence();
    }

    GuardedFloats frame{std::vector<float>(Frame)};
};

TEST_F(TimeDomainVadTest, InitialiseSetsAllState) {
    std::fill_n(EnvelopeOutput, EnvelopeSamples, 1.0f);
    std::fill_n(MedianOutput, FRAME_SAMPLES, 1.0f);
    std::fill_n(FilterInput, FilterInputSamples, 1.0f);
    std::fill_n(AudioData, HistorySamples, 1.0f);
    PreviousResult = false;
    CurrentMedianFilterDifference = 5;
    setTimeDomainVadChannel(*this, 3, 0);

    initializeTimeDomainActivityDetector(*this);

    EXPECT_EQ(std::count(EnvelopeOutput, EnvelopeOutput + EnvelopeSamples, 0.0f), EnvelopeSamples);
    EXPECT_EQ(std::count(MedianOutput, MedianOutput + FRAME_SAMPLES, 0.0f), FRAME_SAMPLES);
    EXPECT_EQ(std::count(FilterInput, FilterInput + FilterInputSamples, 0.0f), FilterInputSamples);
    EXPECT_EQ(std::count(AudioData, AudioData + HistorySamples, 0.0f), HistorySamples);
    EXPECT_TRUE(PreviousResult);
    EXPECT_EQ(bitsOf(CurrentMedianFilterDifference), bitsOf(1e-12f));
    EXPECT_EQ(ChannelOffset, 3u * 2048);
}

TEST_F(TimeDomainVadTest, SecondChannelArgumentIsIgnored) {
    setTimeDomainVadChannel(*this, 5, 7);
    EXPECT_EQ(ChannelOffset, 10240u);
    setTimeDomainVadChannel(*this, 5, 0);
    EXPECT_EQ(ChannelOffset, 10240u);
}

TEST_F(TimeDomainVadTest, SilenceIsVoiceFromTheFirstFrameOn) {
    for (int i = 0; i < 10; i++) {
        EXPECT_EQ(detectSilence(), 1);
        for (const float median : MedianOutput) {
            ASSERT_TRUE(std::fabs(wide(median)) <= 3e-12);
        }
    }
}

TEST_F(TimeDomainVadTest, HistoryIsThreeFramesOldestFirst) {
    for (int i = 1; i <= 4; i++) {
        std::fill(frame.begin(), frame.end(), static_cast<float>(i));
        detect();
    }
    for (std::size_t i = 0; i < 3 * Frame; i++) {
        ASSERT_EQ(AudioData[i], 2 + static_cast<float>(i / Frame)) << i;
    }
}

// --- Filters

TEST_F(TimeDomainVadTest, ClickAnywhereGivesTheResponseOfTheThreeFilters) {
    // At the edges of what the frame's envelope hears, and inside; heard in the frame after it.
    for (const std::size_t at : {0u, 1u, 42u, 43u, 44u, 1000u, 2004u, 2005u, 2006u, 2007u, 2047u}) {
        SCOPED_TRACE(at);
        initializeTimeDomainActivityDetector(*this);
        History history;
        for (int later = 0; later < 4; later++) {
            SCOPED_TRACE(later);
            std::fill(frame.begin(), frame.end(), 0.0f);
            if (later == 0) frame[at] = 1;
            history.append(frame.data());
            detect();
            expectEnvelope(history.envelope());
        }
    }
}

TEST_F(TimeDomainVadTest, ClickIsHeardOneFrameLate) {
    frame[1000] = 1;
    detect();
    EXPECT_EQ(*std::max_element(EnvelopeOutput, EnvelopeOutput + Frame), 0.0f);
    detectSilence();
    EXPECT_GT(*std::max_element(EnvelopeOutput, EnvelopeOutput + Frame), 0.03f);
    detectSilence();
    EXPECT_EQ(*std::max_element(EnvelopeOutput, EnvelopeOutput + Frame), 0.0f);
}

TEST_F(TimeDomainVadTest, FirstSampleHeardIs43BeforeTheFrame) {
    // The filters' zero first taps hide two more; the third one's tail is all of E[0].
    for (const std::size_t at : {2006u, 2007u}) {
        initializeTimeDomainActivityDetector(*this);
        std::fill(frame.begin(), frame.end(), 0.0f);
        frame[at] = 1;
        detect();
        detectSilence();
        detectSilence();
        const double tail = at == 2007 ? 0.0012 * 0.0013 / 32 : 0;
        EXPECT_TRUE(std::fabs(wide(EnvelopeOutput[0]) - tail) <= 4 * Epsilon * tail)
            << EnvelopeOutput[0];
        EXPECT_EQ(EnvelopeOutput[1], 0.0f);
    }
}

TEST_F(TimeDomainVadTest, EveryTapIsWhatItShouldBe) {
    // The rectified response to one click, in reverse order; a tap off by 1 in the last of its four
    // decimals would stand out by 1e-4 times a tap of the other filter.
    frame[1000] = 1;
    detect();
    detectSilence();
    std::vector<Bounded> x(2135);
    x[1000 + 43] = {1, 1};
    const std::vector<Bounded> expected = filter(filter(x, LowPass), HighPass);
    for (std::size_t i = 0; i < 2080; i++) {
        const double error = std::fabs(wide(FilterInput[i]) - std::fabs(expected[i].value));
        ASSERT_TRUE(error <= 56 * Epsilon * expected[i].magnitude) << i;
    }
}

TEST_F(TimeDomainVadTest, ConstantAndHighestFrequencyAreFilteredOut) {
    // The sum of the high-pass is 0.0017, that of the low-pass with alternating signs 0.0011.
    double low = 0, high = 0;
    for (std::size_t j = 0; j < LowPass.size(); j++) {
        low += wide(LowPass[j]) * (j % 2 == 0 ? 1 : -1);
    }
    for (const float tap : HighPass) high += wide(tap);
    for (const bool alternating : {false, true}) {
        initializeTimeDomainActivityDetector(*this);
        for (std::size_t i = 0; i < Frame; i++) frame[i] = alternating && i % 2 == 1 ? -1 : 1;
        for (int i = 0; i < 3; i++) detect();
        const double limit = alternating ? 5 * std::fabs(low) : 2 * std::fabs(high);
        EXPECT_TRUE(wide(EnvelopeOutput[1000]) <= limit) << EnvelopeOutput[1000];
        EXPECT_LT(EnvelopeOutput[1000], 0.02f);
    }
}

// --- Channel

TEST_F(TimeDomainVadTest, HearsOneChannelOfTheFrame) {
    GuardedFloats four(std::vector<float>(4 * Frame, 1000.0f));
    for (std::size_t i = 0; i < Frame; i++) four[2 * Frame + i] = static_cast<float>(i);
    setTimeDomainVadChannel(*this, 2, 0);
    std::uint8_t result = 0;
    detectTimeDomainActivity(*this, four.data(), &result);
    for (std::size_t i = 0; i < Frame; i++)
        ASSERT_EQ(AudioData[2 * Frame + i], static_cast<float>(i));
}

TEST_F(TimeDomainVadTest, ChangeOfChannelKeepsTheHistory) {
    GuardedFloats two(std::vector<float>(2 * Frame));
    std::fill(two.begin(), two.begin() + Frame, 1.0f);
    std::fill(two.begin() + Frame, two.end(), 2.0f);
    std::uint8_t result = 0;
    for (int i = 0; i < 3; i++) detectTimeDomainActivity(*this, two.data(), &result);
    setTimeDomainVadChannel(*this, 1, 0);
    for (std::size_t newFrames = 1; newFrames <= 3; newFrames++) {
        detectTimeDomainActivity(*this, two.data(), &result);
        for (std::size_t block = 0; block < 3; block++) {
            EXPECT_EQ(AudioData[block * Frame], block + newFrames >= 3 ? 2.0f : 1.0f);
            EXPECT_EQ(AudioData[block * Frame + Frame - 1], block + newFrames >= 3 ? 2.0f : 1.0f);
        }
    }
}

// --- Median tracker. E[0] alone is not 0, or all of E is 0; the median starts where a test puts
// it.

TEST_F(TimeDomainVadTest, MedianFallsByHalfAPercentASampleOnSilence) {
    MedianOutput[2047] = 1;
    CurrentMedianFilterDifference = 0.25f;
    detectSilence();
    EXPECT_EQ(MedianOutput[0], 1.0f);
    EXPECT_EQ(MedianOutput[1], 0.75f);
    EXPECT_EQ(MedianOutput[2], 0.75f - 0.005f * 0.75f);
    Tracker tracker;
    tracker.median = 1;
    tracker.step = 0.25f;
    tracker.decide(std::vector<float>(Frame).data());
    EXPECT_EQ(firstDifference(MedianOutput, tracker.medians.data(), Frame), Frame);
    EXPECT_EQ(bitsOf(CurrentMedianFilterDifference), bitsOf(tracker.step));
}

TEST_F(TimeDomainVadTest, EqualityLowersTheMedian) {
    detectSilence();  // E is 0 and so is M[0]
    EXPECT_EQ(MedianOutput[1], -1e-12f);
    EXPECT_EQ(MedianOutput[2], -1e-12f + 1e-12f);  // 0 > -1e-12 raises it again
    EXPECT_EQ(MedianOutput[3], -1e-12f);
}

TEST_F(TimeDomainVadTest, FirstEnvelopeSampleTakesNoPartInTheTracker) {
    MedianOutput[2047] = 1e-3f;
    sendLateTail(1e3f);
    MedianOutput[2047] = 1e-9f;
    CurrentMedianFilterDifference = 1e-10f;
    detectSilence();
    ASSERT_GT(EnvelopeOutput[0], 1e-6f);
    EXPECT_EQ(MedianOutput[0], 1e-9f);
    EXPECT_EQ(MedianOutput[1], 1e-9f - 1e-10f);
}

TEST_F(TimeDomainVadTest, StepIsAtLeast1e12th) {
    MedianOutput[2047] = 1.5e-10f;  // half a percent of it is just below 1e-12
    CurrentMedianFilterDifference = 1e-12f;
    detectSilence();
    EXPECT_EQ(MedianOutput[2], MedianOutput[1] - 1e-12f);
    MedianOutput[2047] = 2.1e-10f;  // and of this a bit more
    detectSilence();
    EXPECT_EQ(MedianOutput[2], MedianOutput[1] - 0.005f * MedianOutput[1]);
    EXPECT_LT(MedianOutput[1] - MedianOutput[2], 1.05e-12f);
}

TEST_F(TimeDomainVadTest, NotANumberMedianHasTheSmallestStep) {
    MedianOutput[2047] = NotANumber;
    EXPECT_EQ(detectSilence(), 1);
    EXPECT_EQ(CurrentMedianFilterDifference, 1e-12f);
}

TEST_F(TimeDomainVadTest, NotANumberInTheSignalLowersTheMedianAndPassesBy) {
    MedianOutput[2047] = 1;
    CurrentMedianFilterDifference = 0.005f;
    frame[1000] = NotANumber;
    detect();
    MedianOutput[2047] = 1;
    CurrentMedianFilterDifference = 0.005f;
    EXPECT_EQ(detectSilence(), 1);  // the frame with it is heard now
    ASSERT_TRUE(std::isnan(EnvelopeOutput[1000]));
    for (std::size_t i = 1; i < Frame; i++) ASSERT_TRUE(MedianOutput[i] < MedianOutput[i - 1]) << i;
    EXPECT_EQ(detectSilence(), 1);
    for (std::size_t i = 0; i < Frame; i++) ASSERT_EQ(EnvelopeOutput[i], 0.0f) << i;
}

TEST_F(TimeDomainVadTest, InfinityInTheSignalLeavesTheMedianFinite) {
    frame[1000] = Infinity;
    detect();
    for (int i = 0; i < 3; i++) {
        detectSilence();
        for (const float median : MedianOutput) ASSERT_TRUE(std::isfinite(median));
    }
    for (std::size_t i = 0; i < Frame; i++) ASSERT_EQ(EnvelopeOutput[i], 0.0f) << i;
}

// --- Decision

// The decision of the frame that hears the tail of a click in E[0], with this median before it.
class DecisionTest : public TimeDomainVadTest {
  protected:
    int decideWith(float median) {
        sendLateTail(height);
        MedianOutput[2047] = median;
        CurrentMedianFilterDifference = 1e-12f;
        PreviousResult = true;
        return detectSilence();
    }

    float height = 20;
};

TEST_F(DecisionTest, BurstIsAnExcessOf1Point7TimesTheMedian) {
    // The excess of one median and of the next lie some roundings apart; of many envelopes there
    // are some with an excess just at the threshold.
    for (int step = 0; step < 40; step++) {
        SCOPED_TRACE(step);
        height = 2e6f + 12345 * static_cast<float>(step);
        decideWith(1);
        const float envelope = EnvelopeOutput[0];
        ASSERT_GT(envelope, 0.05f);
        // The highest median that still makes the excess larger than 1.7, and the next float.
        float median = envelope / 2.7f * 1.00001f;
        while (!((envelope - median) / median > 1.7f)) median = previous(median);
        EXPECT_EQ(decideWith(median), 0);
        EXPECT_FALSE(PreviousResult);
        EXPECT_EQ(decideWith(next(median)), 1);
        EXPECT_TRUE(PreviousResult);
    }
}

TEST_F(DecisionTest, MedianOf1e7thOrLessIsSkipped) {
    ASSERT_EQ(decideWith(0.9e-7f), 1);
    ASSERT_GT(EnvelopeOutput[0], 9e-7f);
    EXPECT_EQ(decideWith(1e-7f), 1);
    EXPECT_EQ(decideWith(next(1e-7f)), 0);
}

TEST_F(DecisionTest, MedianOfZeroOrBelowIsSkipped) {
    for (const float median : {0.0f, -0.0f, -1.0f}) {
        height = 2e6f;
        // The first sample only: the median is at or below 0 all along, or it climbs too slowly.
        EXPECT_EQ(decideWith(median), 1) << median;
    }
}

TEST_F(DecisionTest, BurstClearsTheDecisionForTwoFrames) {
    height = 2e6f;
    EXPECT_EQ(decideWith(1e-3f), 0);
    EXPECT_EQ(detectSilence(), 0);
    EXPECT_EQ(detectSilence(), 1);
    EXPECT_EQ(detectSilence(), 1);
}

TEST_F(TimeDomainVadTest, ClickInSteadyNoiseClearsTheDecisionForTwoFrames) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> uniform(-0.1f, 0.1f);
    const auto makeNoise = [&] {
        for (float& sample : frame) sample = uniform(random);
    };
    int results[20];
    for (int i = 0; i < 20; i++) {
        makeNoise();
        if (i == 15) frame[700] += 20;
        results[i] = detect();
    }
    // Once the median has settled; the click of frame 15 is heard in frame 16.
    for (int i = 8; i < 20; i++) EXPECT_EQ(results[i], i == 16 || i == 17 ? 0 : 1) << i;
}

TEST_F(TimeDomainVadTest, AgreesWithThePlainLoopsOverALongRun) {
    int bursts = 0, changes = 0;
    for (const unsigned seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::normal_distribution<float> noise(0, 1);
        std::uniform_int_distribution<std::size_t> anySample(0, Frame - 1);
        initializeTimeDomainActivityDetector(*this);
        History history;
        Tracker tracker;
        int before = 1;
        for (int i = 0; i < 60; i++) {
            SCOPED_TRACE(i);
            const float level = i % 20 == 13 ? 0 : 0.01f * (1 + static_cast<float>(i / 20));
            for (float& sample : frame) sample = level * noise(random);
            if (i % 7 == 5) frame[anySample(random)] += 4;
            history.append(frame.data());

            const int result = detect();

            expectEnvelope(history.envelope());
            ASSERT_EQ(result, tracker.decide(EnvelopeOutput));
            ASSERT_EQ(firstDifference(MedianOutput, tracker.medians.data(), Frame), Frame);
            ASSERT_EQ(bitsOf(CurrentMedianFilterDifference), bitsOf(tracker.step));
            ASSERT_EQ(PreviousResult, tracker.previousResult);
            bursts += !tracker.previousResult;
            changes += result != before;
            before = result;
        }
    }
    EXPECT_GT(bursts, 10);
    EXPECT_GT(changes, 10);
}

}  // namespace
