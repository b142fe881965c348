// The ultrasound distortion detector: bands, thresholds from both sides, the kept maximum, its log.

#include "track/UltraSoundDistortionDetection.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "trackSupport.h"

// Names of the linker's --wrap: the detector calls __wrap_calloc, __real_calloc is the platform's.
extern "C" {
void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
}

namespace {

int callsUntilFailure = -1;  // allocations that still succeed before one fails; -1: none fails

}  // namespace

void* __wrap_calloc(std::size_t count, std::size_t size) {
    if (callsUntilFailure >= 0 && callsUntilFailure-- == 0) return nullptr;
    return __real_calloc(count, size);
}

using namespace trackSupport;
using namespace voxloc;

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr int FirstUltraSoundBin = 1728, LastUltraSoundBin = 1844;
constexpr int FirstNeighborBin = 1536, LastNeighborBin = 1705;
constexpr unsigned Channels = 5;

float decibels(float power) {
    return static_cast<float>(10 * std::log10(wide(power)) - 60.75550079345703);
}

// The highest power of at most that level.
float powerOf(float level) {
    auto power = static_cast<float>(std::pow(10.0, (wide(level) + 60.7555) / 10) * 1.00001);
    while (decibels(power) > level) power = previous(power);
    return power;
}

// The power whose level is that float and no neighbour.
float exactPowerOf(float level) {
    const float power = powerOf(level);
    EXPECT_EQ(decibels(power), level);
    return power;
}

class UltraSoundTest : public testing::Test, protected UltraSoundDetector {
  protected:
    UltraSoundTest() : UltraSoundDetector{} {
        initializeUltraSoundDistortionDetector(*this, Channels);
    }
    ~UltraSoundTest() override { destroyUltraSoundDistortionDetector(*this); }

    int detect() {
        std::uint8_t distorted = 0xee;
        detectUltraSoundDistortion(*this, Log{}, spectra.data(), &distorted);
        EXPECT_TRUE(spectra.floats().intact());
        EXPECT_LE(distorted, 1);
        return distorted;
    }

    // An evaluation that finds exactly these smoothed powers in one channel. A frame's band power
    // equal to the level so far leaves it as it is.
    int evaluate(float ultraSound, float neighbor, unsigned channel = 0) {
        AccCount = 19;
        UltraSoundLevel[channel] = ultraSound;
        NeighborBandLevel[channel] = neighbor;
        spectra.clear();
        setBandPower(channel, 1800, ultraSound);
        setBandPower(channel, 1600, neighbor);
        return detect();
    }

    void setBandPower(unsigned channel, int bin, float power) {
        // Some bins whose squares add up to the float exactly.
        double rest = wide(power);
        for (; rest > 0; bin++) {
            const auto root = static_cast<float>(std::sqrt(rest));
            float amplitude = floatFromBits(bitsOf(root) & 0xfffff000u);  // its square is exact
            if (wide(amplitude) * wide(amplitude) > rest) amplitude = previous(amplitude);
            if (amplitude == 0) break;
            spectra.set(channel, bin, amplitude);
            rest -= wide(amplitude) * wide(amplitude);
            if (rest < wide(power) * 1e-9) break;
        }
    }

    std::string logOfEvaluation(float ultraSound, float neighbor, unsigned channel = 0) {
        return logOf([&] { evaluate(ultraSound, neighbor, channel); });
    }

    Spectra spectra{Channels};
};

TEST(UltraSoundStatics, AreThereBeforeTheFirstInitialise) {
    EXPECT_EQ(UltraSoundDetector{}.MaxUltraSoundLevel_dB, -100.0f);
    EXPECT_EQ(UltraSoundDetector{}.LastMaxUltraSoundLevel_dB, -100.0f);
}

TEST_F(UltraSoundTest, InitialiseSetsAllState) {
    destroyUltraSoundDistortionDetector(*this);
    TimeSmoothingFactor = 1;
    AccCount = 5;
    WarningIssued = true;
    MaxUltraSoundLevel_dB = 1;
    LastMaxUltraSoundLevel_dB = 2;
    initializeUltraSoundDistortionDetector(*this, Channels);
    for (unsigned c = 0; c < Channels; c++) {
        EXPECT_EQ(bitsOf(UltraSoundLevel[c]), 0u);
        EXPECT_EQ(bitsOf(NeighborBandLevel[c]), 0u);
    }
    EXPECT_EQ(bitsOf(TimeSmoothingFactor), 0x3D782A00u);
    EXPECT_EQ(AccCount, 0);
    EXPECT_FALSE(WarningIssued);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -100.0f);
    EXPECT_EQ(LastMaxUltraSoundLevel_dB, -100.0f);
}

TEST_F(UltraSoundTest, BandsReachFrom1728To1844AndFrom1536To1705) {
    for (const int bin :
         {0, 1535, 1536, 1537, 1704, 1705, 1706, 1727, 1728, 1729, 1843, 1844, 1845, 2048}) {
        SCOPED_TRACE(bin);
        destroyUltraSoundDistortionDetector(*this);
        initializeUltraSoundDistortionDetector(*this, Channels);
        spectra.clear();
        spectra.set(2, bin, 3, -4);
        detect();
        const bool inBand = bin >= FirstUltraSoundBin && bin <= LastUltraSoundBin;
        const bool inNeighbor = bin >= FirstNeighborBin && bin <= LastNeighborBin;
        EXPECT_EQ(UltraSoundLevel[2], inBand ? 25 * TimeSmoothingFactor : 0.0f);
        EXPECT_EQ(NeighborBandLevel[2], inNeighbor ? 25 * TimeSmoothingFactor : 0.0f);
        for (const unsigned other : {0u, 1u, 3u, 4u}) {
            EXPECT_EQ(UltraSoundLevel[other], 0.0f);
            EXPECT_EQ(NeighborBandLevel[other], 0.0f);
        }
    }
}

TEST_F(UltraSoundTest, EveryBinOfABandCountsOnceInEveryChannel) {
    spectra.fill(1);  // |X|² = 2
    detect();
    for (unsigned c = 0; c < Channels; c++) {
        EXPECT_EQ(UltraSoundLevel[c], 2 * 117 * TimeSmoothingFactor);
        EXPECT_EQ(NeighborBandLevel[c], 2 * 170 * TimeSmoothingFactor);
    }
}

TEST_F(UltraSoundTest, LevelsMoveByTheSmoothingFactorTowardsTheBandPower) {
    UltraSoundLevel[1] = 3;
    NeighborBandLevel[1] = 40;
    spectra.set(1, 1800, 4);
    spectra.set(1, 1600, 0, 3);
    detect();
    EXPECT_EQ(UltraSoundLevel[1], 3 + (16 - 3.0f) * TimeSmoothingFactor);
    EXPECT_EQ(NeighborBandLevel[1], 40 + (9 - 40.0f) * TimeSmoothingFactor);
}

// --- Evaluation

TEST_F(UltraSoundTest, EvaluatesOnEvery20thFrame) {
    spectra.fill(1e-4f);
    for (int frame = 1; frame <= 45; frame++) {
        detect();
        EXPECT_EQ(AccCount, frame % 20);
        EXPECT_EQ(MaxUltraSoundLevel_dB == -100.0f, frame < 20) << frame;
    }
}

TEST_F(UltraSoundTest, OnlyTheCountOf20Evaluates) {
    AccCount = 20;
    detect();
    EXPECT_EQ(AccCount, 21);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -100.0f);
}

TEST_F(UltraSoundTest, EvaluationStartsTheSmoothingFromZero) {
    spectra.fill(1);
    for (int frame = 0; frame < 20; frame++) detect();
    for (unsigned c = 0; c < Channels; c++) {
        EXPECT_EQ(bitsOf(UltraSoundLevel[c]), 0u);
        EXPECT_EQ(bitsOf(NeighborBandLevel[c]), 0u);
    }
}

TEST_F(UltraSoundTest, LevelIsTheSmoothedBandPowerInDecibels) {
    // Exact powers as levels: 10·log10(p) less 60.7555.
    evaluate(1, 0);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -60.7555f);
    evaluate(1024, 0);
    EXPECT_EQ(MaxUltraSoundLevel_dB, static_cast<float>(30.102999566398120 - 60.75550079345703));
}

TEST_F(UltraSoundTest, SilenceHasALevelOfMinusInfinityAndNoLog) {
    const std::string log = logOf([&] {
        for (int frame = 1; frame <= 20; frame++) EXPECT_EQ(detect(), 0);
    });
    EXPECT_EQ(log, "");
    EXPECT_EQ(MaxUltraSoundLevel_dB, -Infinity);
    EXPECT_EQ(LastMaxUltraSoundLevel_dB, -Infinity);
}

TEST_F(UltraSoundTest, LoudestChannelCounts) {
    UltraSoundLevel[1] = 100;
    EXPECT_NE(logOfEvaluation(1e5f, 10, 3).find("channel: 3 "), std::string::npos);
    EXPECT_EQ(MaxUltraSoundLevel_dB, decibels(1e5f));
}

TEST_F(UltraSoundTest, EqualLevelsKeepTheLowerChannel) {
    for (const unsigned c : {1u, 3u, 4u}) spectra.set(c, 1800, 512);
    // The neighbour bands tell which channel was taken.
    spectra.set(1, 1600, 1);
    const std::string log = logOf([&] {
        for (int frame = 0; frame < 20; frame++) detect();
    });
    EXPECT_NE(log.find("channel: 1 "), std::string::npos) << log;
}

TEST_F(UltraSoundTest, StrictlyLouderChannelWins) {
    for (unsigned c = 0; c < Channels; c++) spectra.set(c, 1800, 512);
    spectra.set(3, 1800, 513);
    const std::string log = logOf([&] {
        for (int frame = 0; frame < 20; frame++) detect();
    });
    EXPECT_NE(log.find("channel: 3 "), std::string::npos) << log;
}

// --- Kept maximum

TEST_F(UltraSoundTest, LevelThatStandsOutReplacesTheKeptOne) {
    evaluate(exactPowerOf(-40), exactPowerOf(-60));
    EXPECT_EQ(MaxUltraSoundLevel_dB, -40.0f);
    EXPECT_EQ(LastMaxUltraSoundLevel_dB, -40.0f);
    evaluate(exactPowerOf(-45), exactPowerOf(-70));
    EXPECT_EQ(MaxUltraSoundLevel_dB, -45.0f);
}

TEST_F(UltraSoundTest, LevelLessThan15DecibelsAboveItsNeighbourIsNotKept) {
    LastMaxUltraSoundLevel_dB = -77;
    const float neighbor = exactPowerOf(-55);
    evaluate(exactPowerOf(-40), neighbor);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -40.0f);
    LastMaxUltraSoundLevel_dB = -77;
    evaluate(powerOf(previous(-40)), neighbor);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -77.0f);
    EXPECT_EQ(LastMaxUltraSoundLevel_dB, -77.0f);
}

TEST_F(UltraSoundTest, LevelOfUpToMinus60IsAlwaysKept) {
    LastMaxUltraSoundLevel_dB = -77;
    evaluate(exactPowerOf(-60), exactPowerOf(-60));
    EXPECT_EQ(MaxUltraSoundLevel_dB, -60.0f);
    LastMaxUltraSoundLevel_dB = -77;
    evaluate(powerOf(next(-60)), exactPowerOf(-60));
    EXPECT_EQ(MaxUltraSoundLevel_dB, -77.0f);
}

TEST_F(UltraSoundTest, BroadbandSoundNeitherWarnsNorIsKept) {
    const std::string log = logOf([&] {
        spectra.fill(50);
        for (int frame = 1; frame <= 60; frame++) EXPECT_EQ(detect(), 0);
    });
    EXPECT_EQ(log, "");
    EXPECT_EQ(MaxUltraSoundLevel_dB, -100.0f);
}

// --- Warning

TEST_F(UltraSoundTest, DistortedIsALevelAboveMinus25) {
    const float neighbor = exactPowerOf(-60);
    EXPECT_EQ(logOfEvaluation(exactPowerOf(-25), neighbor), "");
    EXPECT_FALSE(WarningIssued);
    EXPECT_NE(logOfEvaluation(powerOf(next(-25)), neighbor), "");
    EXPECT_TRUE(WarningIssued);
}

TEST_F(UltraSoundTest, DistortedStandsMoreThan15DecibelsAboveItsNeighbour) {
    const float neighbor = exactPowerOf(-35);
    EXPECT_EQ(logOfEvaluation(exactPowerOf(-20), neighbor), "");
    EXPECT_EQ(MaxUltraSoundLevel_dB, -20.0f);  // 15 is enough to be kept
    EXPECT_NE(logOfEvaluation(powerOf(next(-20)), neighbor), "");
}

TEST_F(UltraSoundTest, KeptMaximumInThePlaceOfALevelIsJudgedToo) {
    // A level that is not kept leaves the last one, here a distorted one, to be compared.
    LastMaxUltraSoundLevel_dB = -10;
    const std::string log = logOfEvaluation(exactPowerOf(-30), exactPowerOf(-40), 2);
    EXPECT_EQ(log,
              "Warning: Ultrasound level is too high, channel: 2 ultrasound level: -10.0 "
              "neighborband level: -40.0\n");
}

TEST_F(UltraSoundTest, WarnsOnceAndSaysOnceThatItIsOver) {
    const float loud = exactPowerOf(-20), faint = exactPowerOf(-60);
    EXPECT_EQ(logOfEvaluation(loud, faint, 4),
              "Warning: Ultrasound level is too high, channel: 4 ultrasound level: -20.0 "
              "neighborband level: -60.0\n");
    EXPECT_EQ(logOfEvaluation(loud, faint, 4), "");
    EXPECT_EQ(logOfEvaluation(exactPowerOf(-30), faint, 4),
              "Ultrasound level is ok, ultrasound level: -30.0 neighborband level: -60.0\n");
    EXPECT_EQ(logOfEvaluation(exactPowerOf(-30), faint, 4), "");
    EXPECT_NE(logOfEvaluation(loud, faint, 4), "");
}

TEST_F(UltraSoundTest, SilenceEndsAWarning) {
    WarningIssued = true;
    EXPECT_EQ(logOfEvaluation(0, 0),
              "Ultrasound level is ok, ultrasound level: -inf neighborband level: -inf\n");
    EXPECT_FALSE(WarningIssued);
}

TEST_F(UltraSoundTest, ToneSetsTheByteOnEvery20thFrameAndLogsItsBeginningAndItsEnd) {
    spectra.set(3, 1792, 100);
    spectra.set(3, 1600, 0.5f);
    const std::string log = logOf([&] {
        for (int frame = 1; frame <= 60; frame++) EXPECT_EQ(detect(), frame % 20 == 0) << frame;
    });
    // 20 frames of smoothing reach 1 - (1-α)^20 = 0.7136 of the power: 1.47 dB less.
    EXPECT_EQ(log,
              "Warning: Ultrasound level is too high, channel: 3 ultrasound level: -22.2 "
              "neighborband level: -68.2\n");

    spectra.set(3, 1792, 1);
    const std::string end = logOf([&] {
        for (int frame = 1; frame <= 60; frame++) EXPECT_EQ(detect(), 0) << frame;
    });
    EXPECT_EQ(end, "Ultrasound level is ok, ultrasound level: -62.2 neighborband level: -68.2\n");
}

// --- Against an independent model

TEST_F(UltraSoundTest, AgreesWithAModelOverALongRun) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> uniform(-1, 1);
    std::vector<double> ultraSound(Channels), neighbor(Channels);
    const double smoothing = wide(floatFromBits(0x3D782A00));
    float scale = 1, contrast = 1;
    double last = -100;
    int distortedFrames = 0, keptFrames = 0;
    const std::string log = logOf([&] {
        for (int frame = 1; frame <= 400; frame++) {
            if (frame % 20 == 1) {
                scale = std::exp(5 * uniform(random));
                contrast = std::exp(4 * uniform(random));
            }
            for (unsigned c = 0; c < Channels; c++) {
                double powers[2] = {0, 0};
                for (int b = FirstNeighborBin; b <= LastUltraSoundBin; b++) {
                    const bool isNeighbor = b <= LastNeighborBin;
                    const float factor = isNeighbor ? scale : scale * contrast;
                    spectra.set(c, b, factor * uniform(random), factor * uniform(random));
                    if (isNeighbor || b >= FirstUltraSoundBin) {
                        powers[isNeighbor ? 1 : 0] += spectra.power(c, b);
                    }
                }
                ultraSound[c] += (powers[0] - ultraSound[c]) * smoothing;
                neighbor[c] += (powers[1] - neighbor[c]) * smoothing;
            }
            const int distorted = detect();
            if (frame % 20 != 0) {
                ASSERT_EQ(distorted, 0);
                continue;
            }
            std::size_t k = 0;
            for (std::size_t c = 1; c < Channels; c++) {
                if (ultraSound[c] > ultraSound[k]) k = c;
            }
            double U = 10 * std::log10(ultraSound[k]) - 60.7555;
            const double B = 10 * std::log10(neighbor[k]) - 60.7555;
            if (U > -60 && U - B < 15) {
                U = last;
                keptFrames++;
            }
            last = U;
            ASSERT_EQ(distorted, U > -25 && U - B > 15) << frame;
            distortedFrames += distorted;
            // Sums of up to 170 positive terms and 20 frames of smoothing: at most 110 epsilon of
            // the power, 4.34 times that in dB, and the rounding of a float of up to 128.
            ASSERT_TRUE(std::fabs(wide(MaxUltraSoundLevel_dB) - U) <= (110 * 4.35 + 64) * Epsilon)
                << frame;
            std::fill(ultraSound.begin(), ultraSound.end(), 0.0);
            std::fill(neighbor.begin(), neighbor.end(), 0.0);
        }
    });
    EXPECT_GT(distortedFrames, 1);
    EXPECT_GT(keptFrames, 3);
}

// --- Memory

TEST(UltraSoundDeathTest, EachAllocationIsAsserted) {
    UltraSoundDetector detector{};
    EXPECT_DEATH(
        {
            callsUntilFailure = 0;
            initializeUltraSoundDistortionDetector(detector, 3);
        },
        "functional/audio/voxloc/cmod/track/UltraSoundDistortionDetection:38: "
        "initializeUltraSoundDistortionDetector: Assertion `UltraSoundLevel' failed");
    EXPECT_DEATH(
        {
            callsUntilFailure = 1;
            initializeUltraSoundDistortionDetector(detector, 3);
        },
        "functional/audio/voxloc/cmod/track/UltraSoundDistortionDetection:39: "
        "initializeUltraSoundDistortionDetector: Assertion `NeighborBandLevel' failed");
}

}  // namespace
