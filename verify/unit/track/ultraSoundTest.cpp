// The ultrasound distortion detector: bands, thresholds from both sides, the kept maximum, its log.

#include "track/UltraSoundDistortionDetection.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kit/floatBits.h"
#include "kit/guardedSpectra.h"
#include "kit/log.h"
#include "models/detectorModels.h"

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

using namespace kit;
using namespace voxloc;

namespace {

constexpr int Channels = 5;

float decibels(float power) {
    return static_cast<float>(10 * std::log10(wide(power)) - 60.75550079345703);
}

// The highest power of at most that level.
float powerOf(float level) {
    auto power = static_cast<float>(std::pow(10.0, (wide(level) + 60.7555) / 10) * 1.00001);
    while (decibels(power) > level) power = previous(power);
    return power;
}

class UltraSoundTest : public testing::Test, protected UltraSoundDetector {
  protected:
    UltraSoundTest() : UltraSoundDetector{} {
        initializeUltraSoundDistortionDetector(*this, Channels);
    }
    ~UltraSoundTest() override { destroyUltraSoundDistortionDetector(*this); }

    int detect() {
        std::uint8_t byte = 0xee;
        detectUltraSoundDistortion(*this, Log{}, spectra.data(), &byte);
        EXPECT_TRUE(spectra.intact());
        EXPECT_LE(byte, 1);
        return byte;
    }

    // The log of an evaluation that finds these powers in one channel and nothing in the others.
    std::string logOfEvaluation(float ultraSound, float neighbor, std::size_t channel = 0) {
        AccCount = 19;
        UltraSoundLevel[channel] = ultraSound;
        NeighborBandLevel[channel] = neighbor;
        TimeSmoothingFactor = 0;  // the levels stay as they are
        return logOf([&] { distorted = detect(); });
    }
    // The same by level; the highest powers of at most these levels.
    std::string logAt(float ultraSound, float neighbor, std::size_t channel = 0) {
        return logOfEvaluation(powerOf(ultraSound), powerOf(neighbor), channel);
    }

    GuardedSpectra spectra{Channels};
    int distorted = 0xee;  // in the last evaluation
};

TEST_F(UltraSoundTest, InitialiseAndResetSetAllState) {
    EXPECT_EQ(UltraSoundDetector{}.MaxUltraSoundLevel_dB, -100.0f);
    EXPECT_EQ(UltraSoundDetector{}.LastMaxUltraSoundLevel_dB, -100.0f);
    for (const bool again : {false, true}) {
        if (again) {
            UltraSoundLevel[4] = NeighborBandLevel[4] = 1;
            resetUltraSoundDistortionDetector(*this);
        } else {
            destroyUltraSoundDistortionDetector(*this);
            initializeUltraSoundDistortionDetector(*this, Channels);
        }
        for (int c = 0; c < Channels; c++) {
            EXPECT_EQ(bitsOf(UltraSoundLevel[c]), 0u);
            EXPECT_EQ(bitsOf(NeighborBandLevel[c]), 0u);
        }
        EXPECT_EQ(bitsOf(TimeSmoothingFactor), 0x3D782A00u);
        EXPECT_EQ(AccCount, 0);
        EXPECT_FALSE(WarningIssued);
        EXPECT_EQ(MaxUltraSoundLevel_dB, -100.0f);
        EXPECT_EQ(LastMaxUltraSoundLevel_dB, -100.0f);
        TimeSmoothingFactor = 1;
        AccCount = 5;
        WarningIssued = true;
        MaxUltraSoundLevel_dB = LastMaxUltraSoundLevel_dB = 1;
    }
}

TEST_F(UltraSoundTest, BandsReachFrom1728To1844AndFrom1536To1705) {
    const struct {
        int bin;
        bool ultraSound, neighbor;
    } rows[] = {{1535, false, false}, {1536, false, true},  {1705, false, true},
                {1706, false, false}, {1727, false, false}, {1728, true, false},
                {1844, true, false},  {1845, false, false}, {2048, false, false}};
    for (const auto& row : rows) {
        resetUltraSoundDistortionDetector(*this);
        spectra.clear();
        spectra.set(2, row.bin, 3, -4);
        detect();
        for (int c = 0; c < Channels; c++) {
            const float share = c == 2 ? 25 * TimeSmoothingFactor : 0.0f;
            EXPECT_EQ(UltraSoundLevel[c], row.ultraSound ? share : 0.0f) << row.bin;
            EXPECT_EQ(NeighborBandLevel[c], row.neighbor ? share : 0.0f) << row.bin;
        }
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

TEST_F(UltraSoundTest, EvaluatesOnEvery20thFrameAndStartsTheSmoothingFromZero) {
    spectra.fill(1e-4f);
    for (int frame = 1; frame <= 45; frame++) {
        detect();
        EXPECT_EQ(AccCount, frame % 20);
        EXPECT_EQ(MaxUltraSoundLevel_dB == -100.0f, frame < 20) << frame;
        for (int c = 0; c < Channels; c++) {
            EXPECT_EQ(UltraSoundLevel[c] == 0 && NeighborBandLevel[c] == 0, frame % 20 == 0);
        }
    }
}

TEST_F(UltraSoundTest, OnlyTheCountOf20Evaluates) {
    AccCount = 20;
    detect();
    EXPECT_EQ(AccCount, 21);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -100.0f);
    AccCount = 32767;  // the count of 20 keeps it from here; it would turn and come back
    detect();
    EXPECT_EQ(AccCount, -32768);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -100.0f);
}

TEST_F(UltraSoundTest, LevelIsTheSmoothedBandPowerInDecibels) {
    logOfEvaluation(1, 0);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -60.7555f);
    logOfEvaluation(1024, 0);
    EXPECT_EQ(MaxUltraSoundLevel_dB, static_cast<float>(30.102999566398120 - 60.75550079345703));
}

TEST_F(UltraSoundTest, LoudestChannelCountsAndTheLowerOneOfEquals) {
    const struct {
        float powers[Channels];
        const char* channel;
    } rows[] = {{{0, 100, 0, 1e5f, 0}, "channel: 3 "},
                {{0, 1e5f, 0, 1e5f, 1e5f}, "channel: 1 "},
                {{1e5f, 1e5f, 1e5f, next(1e5f), 1e5f}, "channel: 3 "}};
    for (const auto& [powers, channel] : rows) {
        resetUltraSoundDistortionDetector(*this);
        std::copy(powers, powers + Channels, UltraSoundLevel);
        const std::string log = logOfEvaluation(powers[0], 0);
        EXPECT_NE(log.find(channel), std::string::npos) << log;
    }
}

TEST_F(UltraSoundTest, LevelIsKeptOrReplacedAndJudged) {
    const struct {
        const char* what;
        float level, neighbor, last, kept;
        int distorted;
    } rows[] = {{"stands out", -40, -60, -77, -40, 0},
                {"15 dB above its neighbour", -40, -55, -77, -40, 0},
                {"a bit less", previous(-40), -55, -77, -77, 0},
                {"quiet, so its neighbour does not matter", -60, -60, -77, -60, 0},
                {"a bit louder", next(-60), -60, -77, -77, 0},
                {"not yet too high", -25, -60, -77, -25, 0},
                {"too high", next(-25), -60, -77, next(-25), 1},
                {"too high, and no more than 15 dB above", -20, -35, -77, -20, 0},
                {"too high, and a bit more", next(-20), -35, -77, next(-20), 1},
                {"the kept one is judged in its place", -30, -40, -10, -10, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        resetUltraSoundDistortionDetector(*this);
        LastMaxUltraSoundLevel_dB = row.last;
        logAt(row.level, row.neighbor);
        EXPECT_EQ(MaxUltraSoundLevel_dB, row.kept);
        EXPECT_EQ(LastMaxUltraSoundLevel_dB, row.kept);
        EXPECT_EQ(distorted, row.distorted);
        EXPECT_EQ(WarningIssued, row.distorted == 1);
    }
}

TEST_F(UltraSoundTest, SilenceHasALevelOfMinusInfinityAndNoLog) {
    EXPECT_EQ(logOfEvaluation(0, 0), "");
    EXPECT_EQ(distorted, 0);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -Infinity);
    EXPECT_EQ(LastMaxUltraSoundLevel_dB, -Infinity);
}

TEST_F(UltraSoundTest, BroadbandSoundNeitherWarnsNorIsKept) {
    spectra.fill(50);
    EXPECT_EQ(logOf([&] {
                  for (int frame = 1; frame <= 60; frame++) EXPECT_EQ(detect(), 0);
              }),
              "");
    EXPECT_EQ(MaxUltraSoundLevel_dB, -100.0f);
}

// A beacon, then a noise in whose place the beacon's level is kept: as long as that stands above
// the noise's neighbour band, the byte stays.
TEST_F(UltraSoundTest, KeptLevelOfABeaconStaysTooHighAboveTheNoiseThatFollows) {
    logAt(-20, -60);
    EXPECT_EQ(distorted, 1);
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(logAt(-40, -40), "");
        EXPECT_EQ(distorted, 1);
        EXPECT_EQ(MaxUltraSoundLevel_dB, -20.0f);
    }
    EXPECT_NE(logAt(-30, -30), "");  // 10 dB below the kept level
    EXPECT_EQ(distorted, 0);
    EXPECT_EQ(MaxUltraSoundLevel_dB, -20.0f);
}

// --- Log

TEST_F(UltraSoundTest, WarnsOnceAndSaysOnceThatItIsOver) {
    EXPECT_EQ(logAt(-20, -60, 4),
              "Warning: Ultrasound level is too high, channel: 4 ultrasound level: -20.0 "
              "neighborband level: -60.0\n");
    EXPECT_EQ(logAt(-20, -60, 4), "");
    EXPECT_EQ(logAt(-30, -60, 4),
              "Ultrasound level is ok, ultrasound level: -30.0 neighborband level: -60.0\n");
    EXPECT_EQ(logAt(-30, -60, 4), "");
    EXPECT_NE(logAt(-20, -60, 4), "");
    EXPECT_EQ(logOfEvaluation(0, 0, 4),
              "Ultrasound level is ok, ultrasound level: -inf neighborband level: -inf\n");
}

TEST_F(UltraSoundTest, ToneSetsTheByteOnEvery20thFrameAndLogsItsBeginningAndItsEnd) {
    const auto logOfTone = [&](float amplitude, int expected) {
        spectra.set(3, 1792, amplitude);
        return logOf([&] {
            for (int frame = 1; frame <= 60; frame++) {
                EXPECT_EQ(detect(), frame % 20 == 0 ? expected : 0) << frame;
            }
        });
    };
    spectra.set(3, 1600, 0.5f);
    // 20 frames of smoothing reach 1 - (1-α)^20 = 0.7136 of the power: 1.47 dB less.
    EXPECT_EQ(logOfTone(100, 1),
              "Warning: Ultrasound level is too high, channel: 3 ultrasound level: -22.2 "
              "neighborband level: -68.2\n");
    EXPECT_EQ(logOfTone(1, 0),
              "Ultrasound level is ok, ultrasound level: -62.2 neighborband level: -68.2\n");
}

TEST_F(UltraSoundTest, LogGoesWhereItIsTold) {
    std::string text;
    const Log log{
        [](void* context, const char* line) { *static_cast<std::string*>(context) += line; },
        &text};
    AccCount = 19;
    spectra.set(2, 1800, 400);
    std::uint8_t byte = 0;
    EXPECT_EQ(logOf([&] { detectUltraSoundDistortion(*this, log, spectra.data(), &byte); }), "");
    EXPECT_EQ(text,
              "Warning: Ultrasound level is too high, channel: 2 ultrasound level: -20.9 "
              "neighborband level: -inf\n");
}

// --- Against the model

TEST_F(UltraSoundTest, AgreesWithTheModelOverALongRun) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> uniform(-1, 1);
    reference::UltrasoundModel model;
    float scale = 1, contrast = 1;
    int distortedFrames = 0, keptFrames = 0;
    logOf([&] {
        for (int frame = 1; frame <= 400; frame++) {
            if (frame % 20 == 1) {
                scale = std::exp(5 * uniform(random));
                contrast = std::exp(4 * uniform(random));
            }
            std::vector<reference::Spectrum> heard;
            for (std::size_t c = 0; c < Channels; c++) {
                for (int b = 1500; b <= 1900; b++) {
                    const float factor = b <= 1705 ? scale : scale * contrast;
                    const float real = factor * uniform(random);
                    spectra.set(c, b, real, factor * uniform(random));
                }
                heard.push_back(spectra.channel(c));
            }
            ASSERT_EQ(detect(), model.update(heard) ? 1 : 0) << frame;
            if (frame % 20 != 0) continue;
            distortedFrames += WarningIssued;
            keptFrames += model.isReplaced;
            // Sums of up to 170 positive terms and 20 frames of smoothing: at most 110 epsilon of
            // the power, 4.34 times that in dB, and the rounding of a float of up to 128.
            ASSERT_TRUE(std::fabs(wide(MaxUltraSoundLevel_dB) - model.level) <=
                        (110 * 4.35 + 64) * Epsilon)
                << frame;
        }
    });
    EXPECT_GT(distortedFrames, 1);
    EXPECT_GT(keptFrames, 3);
}

// --- Memory

TEST(UltraSoundDeathTest, EachAllocationIsAsserted) {
    const char* const expected[] = {
        "38: initializeUltraSoundDistortionDetector: "
        "Assertion `UltraSoundLevel' failed",
        "39: initializeUltraSoundDistortionDetector: "
        "Assertion `NeighborBandLevel' failed"};
    for (int succeeding = 0; succeeding < 2; succeeding++) {
        UltraSoundDetector detector{};
        EXPECT_DEATH(
            {
                callsUntilFailure = succeeding;
                initializeUltraSoundDistortionDetector(detector, 3);
            },
            std::string("functional/audio/voxloc/cmod/track/UltraSoundDistortionDetection:") +
                expected[succeeding]);
    }
}

}  // namespace
