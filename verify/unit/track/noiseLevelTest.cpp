// The noise-level estimator: one constant, edge or rule a test, and an independent model in double.

#include "track/noiseLevel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "trackSupport.h"

using namespace trackSupport;
using namespace voxloc;

namespace {

constexpr int FirstBandBin = 12, LastBandBin = 511;
constexpr float Infinity = std::numeric_limits<float>::infinity();

// Silence unless a test says otherwise: the averages are then what the test puts into them, times
// their decay. 0.875 · 64 = 56 and 0.75 · 64 = 48 are exact.
class NoiseLevelTest : public testing::Test, protected NoiseLevelEstimator {
  protected:
    NoiseLevelTest() : NoiseLevelEstimator{} {
        intializeNoiseLevel(*this);
        setNoiseLevelChannels(*this, 0, 1);
        NoiseCountFromBoot = 0;
    }

    const float* calculate(unsigned freeze = 0) {
        const float* result = calculateNoiseLevel(*this, spectra.data(), freeze);
        EXPECT_TRUE(spectra.floats().intact());
        return result;
    }

    // A slow band sum of 56 in this frame, from one bin.
    void setSlowSumTo56() { SlowLevel[100] = 64; }

    // As if the level had been as it is now for a long time.
    void makeStationary() {
        setSlowSumTo56();
        NoiseAmplification = 56;
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

    // The duration limit of a stationary frame with that ratio of the fast level to the estimate.
    int limitAt(double decibels) {
        makeStationary();
        NoiseLevel[100] = 1;
        FastLevel[100] = static_cast<float>(std::pow(10.0, decibels / 20) / 0.75);
        calculate();
        return CurrentNoiseDurationLimit;
    }

    Spectra spectra{2};
};

TEST(NoiseLevelStatics, AreThereBeforeTheFirstInitialise) {
    const auto estimator = std::make_unique<NoiseLevelEstimator>();
    EXPECT_EQ(estimator->NoiseLevelChannel1, 1u);
    EXPECT_EQ(estimator->NoiseLevelChannel2, 2u);
    EXPECT_EQ(estimator->NoiseCountFromBoot, 40);
}

TEST_F(NoiseLevelTest, InitialiseSetsAllStateButTheChannels) {
    std::fill_n(NoiseLevel, SpectrumBins, 1.0f);
    std::fill_n(FastLevel, SpectrumBins, 2.0f);
    std::fill_n(SlowLevel, SpectrumBins, 3.0f);
    NoiseDetectionCounter = 4;
    CurrentNoiseDurationLimit = 5;
    NoiseAmplification = 6;
    NoiseCountFromBoot = 7;
    setNoiseLevelChannels(*this, 5, 3);

    intializeNoiseLevel(*this);

    for (int b = 0; b < SpectrumBins; b++) {
        EXPECT_EQ(NoiseLevel[b], 0.0f);
        EXPECT_EQ(FastLevel[b], 0.0f);
        EXPECT_EQ(SlowLevel[b], 0.0f);
    }
    EXPECT_EQ(NoiseDetectionCounter, 0);
    EXPECT_EQ(CurrentNoiseDurationLimit, 0);
    EXPECT_EQ(NoiseAmplification, 0.0f);
    EXPECT_EQ(NoiseCountFromBoot, 40);
    EXPECT_EQ(NoiseLevelChannel1, 5u);
    EXPECT_EQ(NoiseLevelChannel2, 3u);
}

TEST_F(NoiseLevelTest, ReturnsTheEstimate) {
    EXPECT_EQ(calculate(), NoiseLevel);
    EXPECT_EQ(calculate(1), NoiseLevel);
}

TEST_F(NoiseLevelTest, FreezeOfAnyValueChangesNothing) {
    for (const unsigned freeze : {1u, 2u, 255u, 256u, 0xffffffffu}) {
        makeStationary();
        NoiseLevel[300] = 7;
        FastLevel[2048] = 9;
        NoiseCountFromBoot = 17;
        NoiseDetectionCounter = 11;
        CurrentNoiseDurationLimit = 23;
        spectra.fill(3);

        EXPECT_EQ(calculate(freeze), NoiseLevel);

        EXPECT_EQ(NoiseLevel[300], 7.0f);
        EXPECT_EQ(FastLevel[2048], 9.0f);
        EXPECT_EQ(FastLevel[5], 0.0f);
        EXPECT_EQ(SlowLevel[100], 64.0f);
        EXPECT_EQ(SlowLevel[5], 0.0f);
        EXPECT_EQ(NoiseAmplification, 56.0f);
        EXPECT_EQ(NoiseCountFromBoot, 17);
        EXPECT_EQ(NoiseDetectionCounter, 11);
        EXPECT_EQ(CurrentNoiseDurationLimit, 23);
    }
}

TEST_F(NoiseLevelTest, AmplitudeIsTheMeanMagnitudeOfTheTwoChannels) {
    Spectra four(4);
    four.fill(1000);
    std::fill_n(four.channel(3), SpectrumFloats, 0.0f);
    std::fill_n(four.channel(1), SpectrumFloats, 0.0f);
    four.set(3, 20, 3, -4);   // 5
    four.set(1, 20, -5, 12);  // 13
    setNoiseLevelChannels(*this, 3, 1);
    calculateNoiseLevel(*this, four.data(), 0);
    EXPECT_EQ(FastLevel[20], 9.0f * 0.31830987f);
    EXPECT_EQ(SlowLevel[20], 9.0f * 0.15915494f);
    EXPECT_EQ(FastLevel[19], 0.0f);
    EXPECT_EQ(SlowLevel[21], 0.0f);
}

TEST_F(NoiseLevelTest, TakesInAmplitudesAtOneOverPiAndOneOverTwoPi) {
    for (int b = 0; b < SpectrumBins; b++) {
        spectra.set(0, b, 1);
        spectra.set(1, b, 0, -1);
    }
    calculate();
    for (int b = 0; b < SpectrumBins; b++) {
        EXPECT_EQ(FastLevel[b], 0.31830987f) << b;
        EXPECT_EQ(SlowLevel[b], 0.15915494f) << b;
    }
}

TEST_F(NoiseLevelTest, AveragesDecayByThreeQuartersAndSevenEighths) {
    std::fill_n(FastLevel, SpectrumBins, 64.0f);
    std::fill_n(SlowLevel, SpectrumBins, 64.0f);
    calculate();
    for (int b = 0; b < SpectrumBins; b++) {
        EXPECT_EQ(FastLevel[b], 48.0f) << b;
        EXPECT_EQ(SlowLevel[b], 56.0f) << b;
    }
}

TEST_F(NoiseLevelTest, ConstantAmplitudeSettlesAtFourOverPi) {
    for (int b = 0; b < SpectrumBins; b++) {
        spectra.set(0, b, 3);
        spectra.set(1, b, 3);
    }
    for (int frame = 0; frame < 200; frame++) calculate();
    // Three roundings a frame, summed up by the slow average's memory of 8 frames; 1/π is rounded.
    const double level = 3 * 4 / M_PI, limit = 16 * Epsilon * level;
    for (const int b : {0, 100, 2048}) {
        EXPECT_TRUE(std::fabs(wide(FastLevel[b]) - level) <= limit) << FastLevel[b];
        EXPECT_TRUE(std::fabs(wide(SlowLevel[b]) - level) <= limit) << SlowLevel[b];
    }
}

// --- Band sums

TEST_F(NoiseLevelTest, SlowSumCoversBins12To511) {
    for (const int b : {0, 11, 12, 13, 510, 511, 512, 2048}) {
        intializeNoiseLevel(*this);
        SlowLevel[b] = 64;
        calculate();
        EXPECT_EQ(NoiseAmplification, b < FirstBandBin || b > LastBandBin ? 0.0f : 56.0f) << b;
    }
}

TEST_F(NoiseLevelTest, SlowSumCountsEachBinOnce) {
    std::fill_n(SlowLevel, SpectrumBins, 64.0f);
    calculate();
    EXPECT_EQ(NoiseAmplification, 500 * 56.0f);
}

TEST_F(NoiseLevelTest, FastSumCoversBins12To511) {
    for (const int b : {0, 11, 12, 13, 510, 511, 512, 2048}) {
        intializeNoiseLevel(*this);
        makeStationary();
        NoiseLevel[100] = 1;
        FastLevel[b] = 4;  // 3 after the decay: 9.5 dB
        calculate();
        EXPECT_EQ(CurrentNoiseDurationLimit, b < FirstBandBin || b > LastBandBin ? 20 : 27) << b;
    }
}

TEST_F(NoiseLevelTest, EstimateSumCoversBins12To511) {
    for (const int b : {0, 11, 12, 13, 510, 511, 512, 2048}) {
        intializeNoiseLevel(*this);
        NoiseCountFromBoot = 0;
        setSlowSumTo56();
        NoiseLevel[b] = 57;
        EXPECT_EQ(adaptsFast(), b >= FirstBandBin && b <= LastBandBin) << b;
    }
}

TEST_F(NoiseLevelTest, SumsAreOfTheUpdatedAveragesAndOfTheEstimateBeforeItsUpdate) {
    // 9.5 dB above the estimate as it was; less above what the start-up makes of it.
    NoiseCountFromBoot = 10;
    makeStationary();
    NoiseLevel[100] = 1;
    FastLevel[100] = 4;
    calculate();
    EXPECT_EQ(CurrentNoiseDurationLimit, 27);
    EXPECT_EQ(NoiseLevel[100], 1 + 55 * 0.0625f);
}

// --- Start-up

TEST_F(NoiseLevelTest, StartUpAdaptsFastFor39FramesAndCountsDownToZero) {
    intializeNoiseLevel(*this);
    for (int frame = 1; frame <= 45; frame++) {
        setSlowSumTo56();
        NoiseAmplification = 0;  // never stationary
        std::fill_n(NoiseLevel, SpectrumBins, 0.0f);
        EXPECT_EQ(adaptsFast(), frame < 40) << frame;
        EXPECT_EQ(NoiseCountFromBoot, std::max(40 - frame, 0));
    }
}

TEST_F(NoiseLevelTest, SilentFrameRestartsTheStartUp) {
    NoiseCountFromBoot = 3;
    EXPECT_TRUE(adaptsFast());
    EXPECT_EQ(NoiseCountFromBoot, 40);
}

TEST_F(NoiseLevelTest, SilentInputKeepsTheStartUpGoing) {
    intializeNoiseLevel(*this);
    for (int frame = 0; frame < 100; frame++) {
        EXPECT_TRUE(adaptsFast());
        EXPECT_EQ(NoiseCountFromBoot, 40);
    }
}

TEST_F(NoiseLevelTest, SilenceIsASlowSumOfUpTo1e34th) {
    for (const double factor : {0.999999, 1.000001}) {
        SlowLevel[100] = static_cast<float>(1e-34 * factor / 0.875);
        NoiseCountFromBoot = 3;
        calculate();
        EXPECT_EQ(NoiseCountFromBoot, factor < 1 ? 40 : 2);
    }
}

// --- Stationarity

TEST_F(NoiseLevelTest, FirstFrameRemembersTheLevelAndIsNotStationary) {
    intializeNoiseLevel(*this);
    NoiseDetectionCounter = 5;
    setSlowSumTo56();
    calculate();
    EXPECT_EQ(NoiseDetectionCounter, 0);
    EXPECT_EQ(CurrentNoiseDurationLimit, 20);
    EXPECT_EQ(NoiseAmplification, 56.0f);
}

TEST_F(NoiseLevelTest, StationaryIsWithinOneSixteenthOfTheSlowSum) {
    const float distance = 56 * 0.0625f;
    const struct {
        float remembered;
        bool stationary;
    } cases[] = {{56 - distance, false},
                 {next(56 - distance), true},
                 {56, true},
                 {previous(56 + distance), true},
                 {56 + distance, false}};
    for (const auto& [remembered, stationary] : cases) {
        SCOPED_TRACE(remembered);
        setSlowSumTo56();
        NoiseLevel[100] = 1;
        NoiseAmplification = remembered;
        NoiseDetectionCounter = 5;
        calculate();
        EXPECT_EQ(NoiseDetectionCounter, stationary ? 6 : 0);
        EXPECT_EQ(NoiseAmplification, stationary ? remembered : 56.0f);
        EXPECT_EQ(CurrentNoiseDurationLimit, 20);
    }
}

TEST_F(NoiseLevelTest, DurationLimitIsThreeFramesForEachWholeDecibelFrom20To32) {
    const double margin = 1e-4;  // dB; a thousand roundings of the ratio
    EXPECT_EQ(limitAt(-3), 20);
    EXPECT_EQ(limitAt(7 - margin), 20);
    EXPECT_EQ(limitAt(7 + margin), 21);
    EXPECT_EQ(limitAt(8 - margin), 21);
    EXPECT_EQ(limitAt(8 + margin), 24);
    EXPECT_EQ(limitAt(9 - margin), 24);
    EXPECT_EQ(limitAt(9 + margin), 27);
    EXPECT_EQ(limitAt(10 - margin), 27);
    EXPECT_EQ(limitAt(10 + margin), 30);
    EXPECT_EQ(limitAt(11 - margin), 30);
    EXPECT_EQ(limitAt(11 + margin), 32);
    EXPECT_EQ(limitAt(60), 32);
}

TEST_F(NoiseLevelTest, FastSumOfZeroGivesTheLowestLimit) {
    makeStationary();
    NoiseLevel[100] = 1;
    calculate();
    EXPECT_EQ(CurrentNoiseDurationLimit, 20);
    EXPECT_EQ(NoiseDetectionCounter, 1);
}

TEST_F(NoiseLevelTest, AllZeroesAreNotStationary) {
    NoiseDetectionCounter = 5;
    calculate();
    EXPECT_EQ(NoiseDetectionCounter, 0);
    EXPECT_EQ(CurrentNoiseDurationLimit, 20);
}

TEST_F(NoiseLevelTest, InfiniteRatioGivesTheHighestLimit) {
    makeStationary();
    FastLevel[100] = 1e5f;  // over 1e-34: beyond the largest float
    calculate();
    EXPECT_EQ(CurrentNoiseDurationLimit, 32);
}

TEST_F(NoiseLevelTest, EstimateIsRaisedBy1e34thInTheRatio) {
    for (const double margin : {-1e-4, 1e-4}) {
        std::fill_n(NoiseLevel, SpectrumBins, 0.0f);
        makeStationary();
        FastLevel[100] = static_cast<float>(1e-34 * std::pow(10.0, (8 + margin) / 20) / 0.75);
        calculate();
        EXPECT_EQ(CurrentNoiseDurationLimit, margin < 0 ? 21 : 24);
    }
}

TEST_F(NoiseLevelTest, FollowsFastFromTheFrameInWhichTheCounterReachesTheLimit) {
    NoiseDetectionCounter = 18;
    for (const int expected : {19, 20, 20}) {
        makeStationary();
        std::fill_n(NoiseLevel, SpectrumBins, 0.0f);
        NoiseLevel[100] = 50;
        EXPECT_EQ(adaptsFast(), expected == 20);
        EXPECT_EQ(NoiseDetectionCounter, expected);
    }
}

TEST_F(NoiseLevelTest, CounterFallsToALowerLimit) {
    makeStationary();
    NoiseLevel[100] = 50;
    NoiseDetectionCounter = 31;
    EXPECT_TRUE(adaptsFast());
    EXPECT_EQ(NoiseDetectionCounter, 20);
}

TEST_F(NoiseLevelTest, HigherLimitMakesTheCounterWait) {
    makeStationary();
    NoiseLevel[100] = 1;
    FastLevel[100] = 4;  // 9.5 dB
    NoiseDetectionCounter = 20;
    EXPECT_FALSE(adaptsFast());
    EXPECT_EQ(NoiseDetectionCounter, 21);
}

TEST_F(NoiseLevelTest, EstimateAboveTheSlowSumAdaptsAtOnce) {
    for (const float remembered : {0.0f, 56.0f}) {  // not stationary, stationary
        for (const float estimate : {56.0f, next(56.0f)}) {
            std::fill_n(NoiseLevel, SpectrumBins, 0.0f);
            setSlowSumTo56();
            NoiseAmplification = remembered;
            NoiseDetectionCounter = 0;
            NoiseLevel[100] = estimate;
            EXPECT_EQ(adaptsFast(), estimate > 56) << remembered;
        }
    }
}

// --- Adaptation

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
    std::fill_n(SlowLevel, SpectrumBins, 64.0f);
    for (int b = 1; b < SpectrumBins; b += 2) {
        SlowLevel[b] = 0;
        NoiseLevel[b] = 1;
    }
    NoiseLevel[2048] = 1;  // the last bin sinks in one half of the test and rises in the other
    SlowLevel[2048] = 0;
    calculate();
    for (int b = 0; b < 2048; b++) {
        EXPECT_EQ(NoiseLevel[b], b % 2 == 0 ? 56 * 0x1p-22f : 1 - 0x1p-18f) << b;
    }
    EXPECT_EQ(NoiseLevel[2048], 1 - 0x1p-18f);

    NoiseLevel[2048] = 0;
    SlowLevel[2048] = 64;
    NoiseCountFromBoot = 0;
    calculate();
    EXPECT_EQ(NoiseLevel[2048], 56 * 0x1p-22f);
}

TEST_F(NoiseLevelTest, SinkingRateIsExactly2ToTheMinus18) {
    // No amplitude is negative; but only from 0 does a step that small survive the rounding whole.
    setSlowSumTo56();
    SlowLevel[600] = -64;
    calculate();
    EXPECT_EQ(NoiseLevel[600], -56 * 0x1p-18f);
}

TEST_F(NoiseLevelTest, StaysAsItIsAtTheLevel) {
    NoiseLevel[600] = 56;
    SlowLevel[600] = 64;
    setSlowSumTo56();
    calculate();
    EXPECT_EQ(NoiseLevel[600], 56.0f);
}

TEST_F(NoiseLevelTest, DropOfTheRoomLevelIsFollowedAtOnce) {
    intializeNoiseLevel(*this);
    spectra.fill(100);
    for (int frame = 0; frame < 200; frame++) calculate();
    const float before = NoiseLevel[100];
    spectra.fill(1);
    for (int frame = 0; frame < 30; frame++) calculate();
    EXPECT_LT(NoiseLevel[100], 0.5f * before);
}

TEST_F(NoiseLevelTest, NotANumberInTheBandIsNoStationaryLevel) {
    NoiseDetectionCounter = 7;
    makeStationary();
    spectra.set(0, 100, std::numeric_limits<float>::quiet_NaN());
    calculate();
    EXPECT_EQ(NoiseDetectionCounter, 0);
    EXPECT_EQ(CurrentNoiseDurationLimit, 20);
    EXPECT_EQ(FastLevel[101], 0.0f);
    EXPECT_EQ(NoiseLevel[101], 0.0f);
}

TEST_F(NoiseLevelTest, InfinityInTheBandIsNoStationaryLevel) {
    NoiseDetectionCounter = 7;
    makeStationary();
    spectra.set(0, 100, Infinity);
    calculate();
    EXPECT_EQ(NoiseDetectionCounter, 0);
    EXPECT_EQ(NoiseAmplification, Infinity);
}

// --- Against an independent model

// The same estimator per bin in double. Its decisions are compared by how clear they were.
struct Model {
    std::vector<double> noise = std::vector<double>(SpectrumBins), fast = noise, slow = noise;
    int counter = 0, limit = 0, boot = 40;
    double remembered = 0;
    double margin = 1;  // smallest relative distance from a threshold so far
    int slowFrames = 0, fastByCounter = 0, fastByEstimate = 0, silentFrames = 0, higherLimits = 0;

    // A decision on a quantity of that scale was this far from the threshold.
    void note(double distance, double scale) {
        margin = std::min(margin, std::fabs(distance) / scale);
    }

    static double bandSum(const std::vector<double>& level) {
        double sum = 0;
        for (int b = FirstBandBin; b <= LastBandBin; b++) sum += level[static_cast<size_t>(b)];
        return sum;
    }

    int durationLimit(double fastSum, double noiseSum) {
        const double decibels = 20 * std::log10(fastSum / (noiseSum + 1e-34));
        if (!(decibels > 7)) return 20;
        if (decibels < 12) note(decibels - std::round(decibels), 20 / std::log(10));
        return std::min(3 * static_cast<int>(std::min(std::floor(decibels), 100.0)), 32);
    }

    void step(const Spectra& spectra) {
        for (int b = 0; b < SpectrumBins; b++) {
            const double amplitude =
                0.5 * (std::sqrt(spectra.power(0, b)) + std::sqrt(spectra.power(1, b)));
            const auto i = static_cast<size_t>(b);
            fast[i] = amplitude / M_PI + 0.75 * fast[i];
            slow[i] = amplitude / (2 * M_PI) + 0.875 * slow[i];
        }
        const double F = bandSum(fast), S = bandSum(slow), N = bandSum(noise);
        boot = S <= 1e-34 ? 40 : std::max(boot - 1, 0);
        silentFrames += S <= 1e-34;
        bool follow = false;
        if (S > 0) note(std::fabs(S - remembered) - S / 16, S);
        if (std::fabs(S - remembered) < S / 16) {
            limit = durationLimit(F, N);
            higherLimits += limit > 20;
            counter = std::min(counter + 1, limit);
            follow = limit <= counter;
            fastByCounter += follow;
        } else {
            counter = 0;
            limit = 20;
            remembered = S;
        }
        if (boot == 0) note(N - S, S);
        if (N > S) {
            follow = true;
            fastByEstimate++;
        }
        const bool quick = follow || boot != 0;
        slowFrames += !quick;
        for (size_t i = 0; i < noise.size(); i++) {
            const double d = slow[i] - noise[i];
            noise[i] += d * (quick ? 1 / 16.0 : d >= 0 ? 0x1p-22 : 0x1p-18);
        }
    }
};

// Noise of a room whose level jumps now and then, at times steady, at times restless or silent.
class Room {
  public:
    explicit Room(unsigned seed) : random_(seed) {}

    void nextFrame(Spectra* spectra) {
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
        for (unsigned channel = 0; channel < 2; channel++) {
            for (int b = 0; b < SpectrumBins; b++) {
                spectra->set(channel, b, static_cast<float>(level * uniform(random_)),
                             static_cast<float>(level * uniform(random_)));
            }
        }
    }

  private:
    std::mt19937 random_;
    double level_ = 1;
    bool isSteady_ = true;
    int framesLeft_ = 80;
};

TEST_F(NoiseLevelTest, AgreesWithTheModelOverALongRun) {
    Model total;
    for (const unsigned seed : {1u, 2u, 3u, 4u}) {
        SCOPED_TRACE(seed);
        intializeNoiseLevel(*this);
        Model model;
        Room room(seed);
        for (int frame = 0; frame < 400; frame++) {
            SCOPED_TRACE(frame);
            room.nextFrame(&spectra);
            calculate();
            model.step(spectra);

            // A run that comes as close to a threshold as the roundings of the sums of 500 bins
            // (half an epsilon times the root of 500 each, three times that) would prove nothing.
            ASSERT_GT(model.margin, 3 * 11.2 * Epsilon);
            ASSERT_EQ(NoiseDetectionCounter, model.counter);
            ASSERT_EQ(CurrentNoiseDurationLimit, model.limit);
            ASSERT_EQ(NoiseCountFromBoot, model.boot);
            // The averages: an amplitude is within 3 epsilon, and 1.5 epsilon of rounding a frame
            // add up over a memory of 4 and of 8 frames. The estimate is behind them by a memory
            // of 16 frames, and on slow frames, whose steps are that small, by a rounding each.
            const double averages = (3 + 1.5 * 8) * Epsilon;
            const double estimate = averages + (1.5 * 16 + 0.5 * model.slowFrames) * Epsilon;
            const double tiny = 1e-44;  // the spacing of the smallest floats
            for (size_t b = 0; b < static_cast<size_t>(SpectrumBins); b++) {
                ASSERT_TRUE(std::fabs(wide(FastLevel[b]) - model.fast[b]) <=
                            averages * model.fast[b] + tiny)
                    << b;
                ASSERT_TRUE(std::fabs(wide(SlowLevel[b]) - model.slow[b]) <=
                            averages * model.slow[b] + tiny)
                    << b;
                ASSERT_TRUE(std::fabs(wide(NoiseLevel[b]) - model.noise[b]) <=
                            estimate * std::max(model.noise[b], model.slow[b]) + tiny)
                    << b << ": " << NoiseLevel[b] << ", model " << model.noise[b];
            }
        }
        total.slowFrames += model.slowFrames;
        total.fastByCounter += model.fastByCounter;
        total.fastByEstimate += model.fastByEstimate;
        total.higherLimits += model.higherLimits;
    }
    // The runs went through every branch often enough to matter.
    EXPECT_GT(total.slowFrames, 50);
    EXPECT_GT(total.fastByCounter, 50);
    EXPECT_GT(total.fastByEstimate, 50);
    EXPECT_GT(total.higherLimits, 50);
}

TEST_F(NoiseLevelTest, InitialiseAndTheSameInputGiveTheSameBits) {
    std::vector<float> first;
    for (int run = 0; run < 2; run++) {
        intializeNoiseLevel(*this);
        Room room(9);
        for (int frame = 0; frame < 60; frame++) {
            room.nextFrame(&spectra);
            calculate();
        }
        if (run == 0) first.assign(NoiseLevel, NoiseLevel + SpectrumBins);
    }
    EXPECT_EQ(firstDifference(first.data(), NoiseLevel, SpectrumBins),
              static_cast<size_t>(SpectrumBins));
}

}  // namespace
