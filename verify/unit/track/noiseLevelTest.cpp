// The noise-level estimator: its constants from both sides, its rules, and a run against the model.

#include "track/noiseLevel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "gtest/gtest.h"
#include "kit/floatBits.h"
#include "kit/guardedSpectra.h"
#include "models/detectorModels.h"

using namespace kit;
using namespace voxloc;

namespace {

// Silence unless a test says otherwise: the averages are then what the test puts into them, times
// their decay. 0.875 · 64 = 56 and 0.75 · 64 = 48 are exact.
class NoiseLevelTest : public testing::Test, protected NoiseLevelEstimator {
  protected:
    NoiseLevelTest() : NoiseLevelEstimator{} { restart(); }

    // With the start-up over.
    void restart() {
        intializeNoiseLevel(*this);
        setNoiseLevelChannels(*this, 0, 1);
        NoiseCountFromBoot = 0;
    }

    const float* calculate(unsigned freeze = 0) {
        const float* result = calculateNoiseLevel(*this, spectra.data(), freeze);
        EXPECT_TRUE(spectra.intact());
        return result;
    }

    // A slow band sum of 56 in this frame, and the level that it is compared with.
    void setLevel(float remembered) {
        SlowLevel[100] = 64;
        NoiseAmplification = remembered;
    }

    // Whether the estimate adapts quickly in this frame, seen in a bin outside the band.
    bool adaptsFast() {
        NoiseLevel[600] = 0;
        SlowLevel[600] = 1 / 0.875f;
        calculate();
        EXPECT_TRUE(NoiseLevel[600] == SlowLevel[600] * 0.0625f ||
                    NoiseLevel[600] == SlowLevel[600] * 0x1p-22f)
            << NoiseLevel[600];
        return NoiseLevel[600] > 0.01f;
    }

    // The duration limit of a stationary frame with these band sums.
    int limitAt(double fast, float estimate) {
        restart();
        setLevel(56);
        NoiseLevel[100] = estimate;
        FastLevel[100] = static_cast<float>(fast / 0.75);
        calculate();
        EXPECT_EQ(NoiseDetectionCounter, 1);
        return CurrentNoiseDurationLimit;
    }

    GuardedSpectra spectra{2};
};

TEST(NoiseLevelEstimator, ListensToChannels1And2UntilItIsTold) {
    const auto estimator = std::make_unique<NoiseLevelEstimator>();
    EXPECT_EQ(estimator->NoiseLevelChannel1, 1u);
    EXPECT_EQ(estimator->NoiseLevelChannel2, 2u);
    EXPECT_EQ(estimator->NoiseCountFromBoot, 40);
}

TEST_F(NoiseLevelTest, InitialiseSetsAllStateButTheChannels) {
    for (float* level : {NoiseLevel, FastLevel, SlowLevel}) std::fill_n(level, SpectrumBins, 1.0f);
    NoiseDetectionCounter = 4;
    CurrentNoiseDurationLimit = 5;
    NoiseAmplification = 6;
    NoiseCountFromBoot = 7;
    setNoiseLevelChannels(*this, 5, 3);

    intializeNoiseLevel(*this);

    for (const float* level : {NoiseLevel, FastLevel, SlowLevel}) {
        EXPECT_EQ(std::count(level, level + SpectrumBins, 0.0f), SpectrumBins);
    }
    EXPECT_EQ(NoiseDetectionCounter, 0);
    EXPECT_EQ(CurrentNoiseDurationLimit, 0);
    EXPECT_EQ(NoiseAmplification, 0.0f);
    EXPECT_EQ(NoiseCountFromBoot, 40);
    EXPECT_EQ(NoiseLevelChannel1, 5u);
    EXPECT_EQ(NoiseLevelChannel2, 3u);
}

TEST_F(NoiseLevelTest, FreezeOfAnyValueChangesNothingAndReturnsTheEstimate) {
    EXPECT_EQ(calculate(), NoiseLevel);
    setLevel(50);
    NoiseLevel[300] = 7;
    NoiseDetectionCounter = 11;
    spectra.fill(3);
    const NoiseLevelEstimator& state = *this;
    std::vector<unsigned char> before(sizeof state);
    std::memcpy(before.data(), &state, sizeof state);
    for (const unsigned freeze : {1u, 2u, 256u, 0xffffffffu}) {
        EXPECT_EQ(calculate(freeze), NoiseLevel);
        EXPECT_EQ(std::memcmp(before.data(), &state, sizeof state), 0) << freeze;
    }
}

TEST_F(NoiseLevelTest, AveragesTakeInTheMeanMagnitudeOfTheirTwoChannels) {
    GuardedSpectra four(4);
    four.fill(1000);
    four.fill(3, 0);
    four.fill(1, 0);
    four.set(3, 20, 3, -4);   // 5
    four.set(1, 20, -5, 12);  // 13
    setNoiseLevelChannels(*this, 3, 1);
    calculateNoiseLevel(*this, four.data(), 0);
    EXPECT_EQ(FastLevel[20], 9.0f * 0.31830987f);
    EXPECT_EQ(SlowLevel[20], 9.0f * 0.15915494f);
    EXPECT_EQ(FastLevel[19], 0.0f);
    EXPECT_EQ(SlowLevel[21], 0.0f);
}

TEST_F(NoiseLevelTest, AveragesDecayByThreeQuartersAndSevenEighths) {
    std::fill_n(FastLevel, SpectrumBins, 64.0f);
    std::fill_n(SlowLevel, SpectrumBins, 64.0f);
    calculate();
    EXPECT_EQ(std::count(FastLevel, FastLevel + SpectrumBins, 48.0f), SpectrumBins);
    EXPECT_EQ(std::count(SlowLevel, SlowLevel + SpectrumBins, 56.0f), SpectrumBins);
    EXPECT_EQ(NoiseAmplification, 500 * 56.0f);  // every bin of the band once
}

TEST_F(NoiseLevelTest, BandSumsCoverBins12To511) {
    for (const int b : {11, 12, 511, 512}) {
        SCOPED_TRACE(b);
        const bool inBand = b == 12 || b == 511;
        restart();
        SlowLevel[b] = 64;
        calculate();
        EXPECT_EQ(NoiseAmplification, inBand ? 56.0f : 0.0f);

        restart();
        setLevel(56);
        NoiseLevel[100] = 1;
        FastLevel[b] = 4;  // 3 after the decay: 9.5 dB
        calculate();
        EXPECT_EQ(CurrentNoiseDurationLimit, inBand ? 27 : 20);

        restart();
        setLevel(0);
        NoiseLevel[b] = 57;
        EXPECT_EQ(adaptsFast(), inBand);
    }
}

TEST_F(NoiseLevelTest, RatioIsToTheEstimateBeforeItsUpdate) {
    NoiseCountFromBoot = 10;
    setLevel(56);
    NoiseLevel[100] = 1;
    FastLevel[100] = 4;  // 9.5 dB; less above what the start-up makes of the estimate
    calculate();
    EXPECT_EQ(CurrentNoiseDurationLimit, 27);
    EXPECT_EQ(NoiseLevel[100], 1 + 55 * 0.0625f);
}

TEST_F(NoiseLevelTest, StartUpAdaptsFastFor39FramesAndCountsDownToZero) {
    NoiseCountFromBoot = 40;
    for (int frame = 1; frame <= 42; frame++) {
        setLevel(0);  // never stationary
        std::fill_n(NoiseLevel, SpectrumBins, 0.0f);
        EXPECT_EQ(adaptsFast(), frame < 40) << frame;
        EXPECT_EQ(NoiseCountFromBoot, std::max(40 - frame, 0));
    }
}

TEST_F(NoiseLevelTest, SilenceIsASlowSumOfUpTo1e34thAndRestartsTheStartUp) {
    for (const float sum : {0.0f, 1e-34f, next(1e-34f)}) {
        SlowLevel[100] = sum / 0.875f;
        while (SlowLevel[100] * 0.875f < sum) SlowLevel[100] = next(SlowLevel[100]);
        ASSERT_EQ(SlowLevel[100] * 0.875f, sum);
        NoiseCountFromBoot = 3;
        EXPECT_TRUE(adaptsFast());
        EXPECT_EQ(NoiseCountFromBoot, sum > 1e-34f ? 2 : 40) << sum;
    }
}

TEST_F(NoiseLevelTest, StationaryIsWithinOneSixteenthOfTheSlowSum) {
    const float distance = 56 * 0.0625f;
    const struct {
        float remembered;
        bool stationary;
    } rows[] = {{0, false},  // as in the first frame
                {56 - distance, false},
                {next(56 - distance), true},
                {previous(56 + distance), true},
                {56 + distance, false}};
    for (const auto& [remembered, stationary] : rows) {
        SCOPED_TRACE(remembered);
        setLevel(remembered);
        NoiseLevel[100] = 1;
        NoiseDetectionCounter = 5;
        CurrentNoiseDurationLimit = 25;
        calculate();
        EXPECT_EQ(NoiseDetectionCounter, stationary ? 6 : 0);
        EXPECT_EQ(NoiseAmplification, stationary ? remembered : 56.0f);
        EXPECT_EQ(CurrentNoiseDurationLimit, 20);
    }
}

TEST_F(NoiseLevelTest, LevelsWithoutAMeaningAreNotStationary) {
    for (const float sample : {0.0f, NotANumber, Infinity}) {
        restart();
        setLevel(56);
        if (sample == 0) SlowLevel[100] = NoiseAmplification = 0;  // 0 is not less than 0
        NoiseDetectionCounter = 7;
        spectra.set(0, 100, sample);
        calculate();
        EXPECT_EQ(NoiseDetectionCounter, 0) << sample;
        EXPECT_EQ(CurrentNoiseDurationLimit, 20) << sample;
        EXPECT_EQ(bitsOf(FastLevel[101]), 0u) << sample;
        EXPECT_EQ(bitsOf(NoiseLevel[101]), 0u) << sample;
    }
}

TEST_F(NoiseLevelTest, DurationLimitIsThreeFramesForEachWholeDecibelFrom20To32) {
    const double margin = 1e-4;  // dB; a thousand roundings of the ratio
    const struct {
        double decibels;
        int below, above;
    } rows[] = {{-3, 20, 20}, {7, 20, 21},  {8, 21, 24}, {9, 24, 27},
                {10, 27, 30}, {11, 30, 32}, {12, 32, 32}};
    for (const auto& [decibels, below, above] : rows) {
        EXPECT_EQ(limitAt(std::pow(10.0, (decibels - margin) / 20), 1), below) << decibels;
        EXPECT_EQ(limitAt(std::pow(10.0, (decibels + margin) / 20), 1), above) << decibels;
    }
    EXPECT_EQ(limitAt(0, 1), 20);          // minus infinity
    EXPECT_EQ(limitAt(0.75e5, 0), 32);     // over 1e-34: beyond the largest float
    EXPECT_EQ(limitAt(2.511e-34, 0), 21);  // 8 dB over 1e-34 from 2.51189 of it on
    EXPECT_EQ(limitAt(2.512e-34, 0), 24);
}

TEST_F(NoiseLevelTest, FollowsFastFromTheFrameInWhichTheCounterReachesTheLimit) {
    const struct {
        std::int16_t before;
        float estimate, fast;  // 50 and 0: limit 20; 1 and 3: limit 27
        int after;
        bool adaptsFast;
    } rows[] = {{18, 50, 0, 19, false},  {19, 50, 0, 20, true}, {20, 50, 0, 20, true},
                {31, 50, 0, 20, true},   {20, 1, 3, 21, false}, {26, 1, 3, 27, true},
                {32767, 50, 0, 20, true}};  // no frame makes it turn
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before);
        restart();
        setLevel(56);
        NoiseDetectionCounter = row.before;
        NoiseLevel[100] = row.estimate;
        FastLevel[100] = row.fast / 0.75f;
        EXPECT_EQ(adaptsFast(), row.adaptsFast);
        EXPECT_EQ(NoiseDetectionCounter, row.after);
    }
}

TEST_F(NoiseLevelTest, EstimateAboveTheSlowSumAdaptsAtOnce) {
    for (const float remembered : {0.0f, 56.0f}) {  // not stationary, stationary
        for (const float estimate : {56.0f, next(56.0f)}) {
            restart();
            setLevel(remembered);
            NoiseLevel[100] = estimate;
            EXPECT_EQ(adaptsFast(), estimate > 56) << remembered;
        }
    }
}

TEST_F(NoiseLevelTest, FastAdaptationGoesASixteenthOfTheWay) {
    NoiseCountFromBoot = 10;
    std::fill_n(SlowLevel, SpectrumBins, 64.0f);
    for (int b = 0; b < SpectrumBins; b++) NoiseLevel[b] = b % 2 == 0 ? 40.0f : 88.0f;
    calculate();
    for (int b = 0; b < SpectrumBins; b++) {
        EXPECT_EQ(NoiseLevel[b], b % 2 == 0 ? 41.0f : 86.0f) << b;
    }
}

TEST_F(NoiseLevelTest, SlowAdaptationRisesBy2ToTheMinus22AndSinksBy2ToTheMinus18) {
    const struct {
        float slowBefore, estimate, expected;
    } rows[] = {{64, 0, 56 * 0x1p-22f},
                {64, 56, 56},
                {0, 1, 1 - 0x1p-18f},
                // No level is negative; but only from 0 does a step that small survive rounding.
                {-64, 0, -56 * 0x1p-18f}};
    for (const auto& row : rows) {
        for (const int b : {0, 600, 2047, 2048}) {
            restart();
            setLevel(0);
            SlowLevel[b] = row.slowBefore;
            NoiseLevel[b] = row.estimate;
            calculate();
            EXPECT_EQ(NoiseLevel[b], row.expected) << "bin " << b;
        }
    }
}

// --- Against the model

// Noise of a room whose level jumps now and then, at times steady, at times restless or silent.
class Room {
  public:
    explicit Room(unsigned seed) : random_(seed) {}

    void nextFrame(GuardedSpectra& spectra) {
        if (framesLeft_-- == 0) {
            framesLeft_ = std::uniform_int_distribution<int>(5, 120)(random_);
            const int kind = std::uniform_int_distribution<int>(0, 9)(random_);
            level_ = std::exp(std::uniform_real_distribution<double>(-7, 5)(random_));
            isSteady_ = kind < 7;
            if (kind == 9 && framesLeft_ > 60) level_ = 0;
        }
        std::normal_distribution<double> restless(0, isSteady_ ? 0.005 : 0.8);
        const double level = level_ * std::exp(restless(random_));
        std::uniform_real_distribution<double> uniform(-1, 1);
        const auto sample = [&] { return static_cast<float>(level * uniform(random_)); };
        for (std::size_t channel = 0; channel < 2; channel++) {
            for (int b = 0; b < SpectrumBins; b++) {
                const float real = sample();
                spectra.set(channel, b, real, sample());
            }
        }
    }

  private:
    std::mt19937 random_;
    double level_ = 1;
    bool isSteady_ = true;
    int framesLeft_ = 80;
};

void expectClose(const float* levels, const std::vector<double>& model,
                 const std::vector<double>& scale, double limit) {
    const double tiny = 1e-44;  // the spacing of the smallest floats
    for (std::size_t b = 0; b < model.size(); b++) {
        ASSERT_TRUE(std::fabs(wide(levels[b]) - model[b]) <=
                    limit * std::max(model[b], scale[b]) + tiny)
            << "bin " << b << ": " << levels[b] << ", model " << model[b];
    }
}

TEST_F(NoiseLevelTest, AgreesWithTheModelOverALongRun) {
    int slowFrames = 0, fastByCounter = 0, fastByEstimate = 0, higherLimits = 0;
    for (const unsigned seed : {1u, 2u, 3u, 4u}) {
        intializeNoiseLevel(*this);
        reference::NoiseLevelModel model;
        Room room(seed);
        int slow = 0;
        for (int frame = 0; frame < 400; frame++) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << " frame " << frame);
            room.nextFrame(spectra);
            calculate();
            model.update(spectra.channel(0), spectra.channel(1), false);

            // The roundings of the sums of 500 bins: half an epsilon times the root of 500 each,
            // three times that.
            ASSERT_GT(model.clearance.smallest(), 3 * 11.2 * Epsilon);
            ASSERT_EQ(NoiseDetectionCounter, model.counter);
            ASSERT_EQ(CurrentNoiseDurationLimit, model.limit);
            ASSERT_EQ(NoiseCountFromBoot, model.startUp);
            // The averages: an amplitude is within 3 epsilon, and 1.5 epsilon of rounding a frame
            // add up over a memory of 4 and of 8 frames. The estimate is behind them by a memory
            // of 16 frames, and on slow frames, whose steps are that small, by a rounding each.
            slow += !model.followsQuickly;
            const double averages = (3 + 1.5 * 8) * Epsilon;
            expectClose(FastLevel, model.fast, model.fast, averages);
            expectClose(SlowLevel, model.slow, model.slow, averages);
            expectClose(NoiseLevel, model.noise, model.slow,
                        averages + (1.5 * 16 + 0.5 * slow) * Epsilon);
            if (HasFatalFailure()) return;
            fastByEstimate += model.isAboveTheLevel;
            fastByCounter += model.counter == model.limit;
            higherLimits += model.limit > 20;
        }
        slowFrames += slow;
    }
    // The runs went through every branch often enough to matter.
    for (const int count : {slowFrames, fastByCounter, fastByEstimate, higherLimits}) {
        EXPECT_GT(count, 50);
    }
}

}  // namespace
