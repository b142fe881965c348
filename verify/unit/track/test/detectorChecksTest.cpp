// What the detector and flag tests feed the module with, what they check, and what they report.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "recordedModule.h"
#include "track/test/testSupport.h"
#include "track/test/tests.h"
#include "unit/track/trackSupport.h"

namespace {

using namespace voxloc_tests;
using recordedModule::frames;
using recordedModule::lifetime;
using recordedModule::ProcessedFrame;
using trackSupport::Epsilon;
using trackSupport::logOf;
using trackSupport::next;
using trackSupport::previous;
using trackSupport::wide;

constexpr std::size_t Frame = FRAME_SAMPLES;

// The bits that a test checks after a frame (counted from 1), with what it expects.
using Checks = std::map<std::pair<std::size_t, unsigned>, int>;

// A module whose flags are as a test expects them, but for some bits after one frame.
recordedModule::Script answering(const Checks& checks, std::size_t wrongFrame = 0,
                                 std::uint32_t wrongBits = 0) {
    return {[=](std::size_t frame) -> TrackerResult {
                std::uint32_t flags = 0;
                for (const auto& [check, value] : checks) {
                    if (check.first == frame && value == 1) flags |= 1u << check.second;
                }
                if (frame == wrongFrame) flags ^= wrongBits;
                return {0, 0, 0, 0, flags};
            },
            {},
            0};
}

// Runs the test with each checked bit the other way round, which is to be one error with its
// report, and with all the other bits of each frame the other way round, which is to be none.
void expectChecks(unsigned (*test)(), const Checks& checks, std::size_t count) {
    for (const auto& [check, value] : checks) {
        const auto& [frame, bit] = check;
        recordedModule::start(answering(checks, frame, 1u << bit));
        unsigned errors = 99;
        const std::string log = logOf([&] { errors = test(); });
        EXPECT_EQ(errors, 1u) << "frame " << frame << " bit " << bit;
        EXPECT_EQ(log, "Flag failed\nBit position: " + std::to_string(bit) +
                           " Calculated: " + std::to_string(1 - value) +
                           " Expected: " + std::to_string(value) + "\n");
    }
    for (std::size_t frame = 1; frame <= count; frame++) {
        std::uint32_t unchecked = 0xffffffff;
        for (unsigned bit = 0; bit < 8; bit++) {
            if (checks.count({frame, bit}) != 0) unchecked &= ~(1u << bit);
        }
        recordedModule::start(answering(checks, frame, unchecked));
        EXPECT_EQ(logOf([&] { EXPECT_EQ(test(), 0u) << "frame " << frame; }), "");
    }
    ASSERT_EQ(frames.size(), count);
    EXPECT_FALSE(IsInitialized);
    EXPECT_EQ(AudioData, nullptr);
}

void expectSource(const ProcessedFrame& frame, double azimuth, double elevation, float range) {
    const double radians[2] = {azimuth * M_PI / 180, elevation * M_PI / 180};
    for (std::size_t i = 0; i < 2; i++) {
        EXPECT_TRUE(std::fabs(wide(frame.source[i]) - radians[i]) <=
                    1.5 * Epsilon * std::fabs(radians[i]))
            << frame.source[i];
    }
    EXPECT_EQ(frame.source[2], range);
}

void expectSpeechOrNoise(const ProcessedFrame& frame, int clip, std::uint32_t flags) {
    ASSERT_FALSE(frame.generated.empty());
    EXPECT_EQ(frame.product, PRODUCT_ASTER);
    EXPECT_EQ(frame.clip, clip);
    EXPECT_TRUE(frame.offsetSpeech);
    EXPECT_EQ(frame.bits, 24u);
    EXPECT_EQ(frame.flags, flags);
}

// A frame of speech from straight ahead, and a bit below, as the generator made it.
void expectSpeech(const ProcessedFrame& frame, std::uint32_t flags = 0) {
    expectSpeechOrNoise(frame, 0, flags);
    expectSource(frame, 0, -2, 3);
    EXPECT_EQ(frame.samples, frame.generated);
}

void expectSilence(const ProcessedFrame& frame, std::uint32_t flags = 0) {
    EXPECT_TRUE(frame.generated.empty());
    EXPECT_EQ(frame.product, PRODUCT_ASTER);
    EXPECT_EQ(frame.bits, 24u);
    EXPECT_EQ(frame.flags, flags);
    EXPECT_EQ(frame.samples, std::vector<float>(frame.samples.size()));
}

const std::vector<std::string> OneSetUp = {"initialize 0", "destroy"};

// --- Flag checks

TEST(CheckFlag, ReportsAMismatch) {
    EXPECT_EQ(logOf([] { EXPECT_EQ(checkFlag(3, 1, 0x08), 0u); }), "");
    EXPECT_EQ(logOf([] { EXPECT_EQ(checkFlag(3, 0, 0xf7), 0u); }), "");
    EXPECT_EQ(logOf([] { EXPECT_EQ(checkFlag(3, 1, 0xf7), 1u); }),
              "Flag failed\nBit position: 3 Calculated: 0 Expected: 1\n");
    EXPECT_EQ(logOf([] { EXPECT_EQ(checkFlag(5, 0, 0x20), 1u); }),
              "Flag failed\nBit position: 5 Calculated: 1 Expected: 0\n");
}

TEST(VadOnTest, ChecksAfterSilenceSevenFramesAndTheEighth) {
    expectChecks(vadOnTest,
                 {{{1, 0}, 0}, {{1, 1}, 1}, {{8, 0}, 0}, {{8, 1}, 1}, {{9, 0}, 1}, {{9, 1}, 1}}, 9);
    expectSilence(frames[0]);
    for (std::size_t i = 1; i < 9; i++) expectSpeech(frames[i]);
    EXPECT_EQ(lifetime, OneSetUp);
}

TEST(VadHangoverTest, ChecksTheHangoversLastFrameAndTheNext) {
    expectChecks(
        vadHangoverTest,
        {{{10, 0}, 1}, {{10, 1}, 1}, {{44, 0}, 1}, {{44, 1}, 1}, {{45, 0}, 0}, {{45, 1}, 1}}, 45);
    for (std::size_t i = 0; i < 10; i++) expectSpeech(frames[i]);
    for (std::size_t i = 10; i < 45; i++) expectSilence(frames[i]);
    EXPECT_EQ(lifetime, OneSetUp);
}

TEST(TimeDomainVadTest, ChecksTwoFramesWithoutVoiceAfterAClick) {
    expectChecks(timeDomainVadTest,
                 {{{15, 0}, 1},
                  {{15, 1}, 1},
                  {{16, 0}, 1},
                  {{16, 1}, 1},
                  {{17, 0}, 1},
                  {{17, 1}, 0},
                  {{18, 0}, 1},
                  {{18, 1}, 0},
                  {{19, 0}, 1},
                  {{19, 1}, 1}},
                 19);
    for (std::size_t i = 0; i < 19; i++) {
        if (i != 15) expectSpeech(frames[i]);
    }
    EXPECT_EQ(lifetime, OneSetUp);
}

TEST(TimeDomainVadTest, ClickIsTheLargestSampleOfChannel2TimesFive) {
    recordedModule::start(answering({}));
    logOf([] { timeDomainVadTest(); });
    ASSERT_EQ(frames.size(), 19u);
    const ProcessedFrame& frame = frames[15];
    expectSpeechOrNoise(frame, 0, 0);
    std::vector<float> expected = frame.generated;
    const auto first = expected.begin() + 2 * Frame;
    const auto isSmaller = [](float a, float b) { return std::fabs(a) < std::fabs(b); };
    *std::max_element(first, first + Frame, isSmaller) *= 5.0f;  // the first one on ties
    EXPECT_EQ(frame.samples, expected);
    EXPECT_NE(frame.samples, frame.generated);
}

TEST(TimeDomainVadTest, ClickIsTheFirstOfEquallyLargeSamples) {
    for (const std::vector<std::size_t>& places :
         {std::vector<std::size_t>{0}, {2047}, {0, 2047}, {700, 2047}, {0, 1, 2}}) {
        recordedModule::Script script = answering({});
        script.changeGenerated = [&](std::size_t frame, float* samples) {
            if (frame != 16) return;
            float sign = -1;
            for (const std::size_t place : places)
                samples[2 * Frame + place] = (sign = -sign) * 9e6f;
        };
        recordedModule::start(script);
        logOf([] { timeDomainVadTest(); });
        for (const std::size_t place : places) {
            EXPECT_EQ(std::fabs(frames[15].samples[2 * Frame + place]),
                      place == places[0] ? 45e6f : 9e6f);
        }
    }
}

TEST(SoundActivityTest, ChecksSpeechAndThreeSilentFrames) {
    expectChecks(soundActivityTest, {{{10, 2}, 1}, {{13, 2}, 0}}, 13);
    for (std::size_t i = 0; i < 10; i++) expectSpeech(frames[i]);
    for (std::size_t i = 10; i < 13; i++) expectSilence(frames[i]);
    EXPECT_EQ(lifetime, OneSetUp);
}

TEST(InputFlagTest, ChecksTheFlagsOfTheSameFrame) {
    expectChecks(inputFlagTest,
                 {{{1, 3}, 0},
                  {{1, 4}, 0},
                  {{2, 3}, 1},
                  {{2, 4}, 0},
                  {{3, 3}, 1},
                  {{3, 4}, 1},
                  {{4, 3}, 1},
                  {{4, 4}, 0},
                  {{5, 3}, 0},
                  {{5, 4}, 0}},
                 5);
    const std::uint32_t inputs[5] = {0, 1, 3, 1, 0};
    for (std::size_t i = 0; i < 5; i++) expectSilence(frames[i], inputs[i]);
    EXPECT_EQ(lifetime, OneSetUp);
}

TEST(InputFlagTest, KeepsItsResultToItself) {
    const TrackerResult before = {1, 2, 3, 4, 5};
    LastResult = before;
    recordedModule::start(answering({}));
    logOf([] { inputFlagTest(); });
    EXPECT_EQ(LastResult.flags, 5u);
    EXPECT_EQ(LastResult.quality, 4.0f);
}

TEST(RoomNoiseTest, ChecksEachOfFrames62To80) {
    Checks checks;
    for (std::size_t frame = 62; frame <= 80; frame++) {
        checks[{frame, 0}] = 0;
        checks[{frame, 1}] = 1;
    }
    expectChecks(roomNoiseTest, checks, 80);
    for (const ProcessedFrame& frame : frames) {
        expectSpeechOrNoise(frame, 1, 0);
        expectSource(frame, 0, -2, 3);
        EXPECT_EQ(frame.samples, frame.generated);
    }
    EXPECT_EQ(lifetime, OneSetUp);
}

TEST(RoomNoiseTest, CountsUpTo38Errors) {
    recordedModule::start({[](std::size_t) { return TrackerResult{0, 0, 0, 0, 1}; }, {}, 0});
    logOf([] { EXPECT_EQ(roomNoiseTest(), 38u); });
}

// --- Ultrasound

TEST(UltraSoundDistortionTest, ChecksTheLastFrameOfEachStimulus) {
    expectChecks(
        ultraSoundDistortionTest,
        {{{20, 5}, 0}, {{40, 5}, 0}, {{59, 5}, 0}, {{60, 5}, 1}, {{80, 5}, 0}, {{120, 5}, 0}}, 120);
    EXPECT_EQ(lifetime,
              (std::vector<std::string>{"initialize 0", "destroy", "initialize 0", "destroy",
                                        "initialize 0", "destroy", "initialize 0", "destroy"}));
}

// The tone is computed in single precision: its phase is off by a rounding of up to 6200 radians.
void expectTone(const ProcessedFrame& frame, double step) {
    expectSpeechOrNoise(frame, 0, 0);
    expectSource(frame, 0, -2, 3);
    for (std::size_t i = 0; i < frame.samples.size(); i++) {
        if (i / Frame != 3) {
            ASSERT_EQ(frame.samples[i], frame.generated[i]) << i;
            continue;
        }
        const double phase = static_cast<double>(i % Frame) * step;
        const double limit = 529321.2 * Epsilon * (phase + 2);
        ASSERT_TRUE(std::fabs(wide(frame.samples[i]) - 529321.2 * std::sin(phase)) <= limit) << i;
    }
    EXPECT_EQ(frame.samples[3 * Frame], 0.0f);
}

TEST(UltraSoundDistortionTest, StimuliAreSpeechClicksAndTwoTones) {
    recordedModule::start(answering({}));
    logOf([] { ultraSoundDistortionTest(); });
    ASSERT_EQ(frames.size(), 120u);
    for (std::size_t i = 0; i < 20; i++) expectSpeech(frames[i]);
    for (std::size_t i = 20; i < 40; i++) {
        expectSpeechOrNoise(frames[i], 0, 0);
        std::vector<float> expected = frames[i].generated;
        expected[2648] *= 25.0f;
        EXPECT_EQ(frames[i].samples, expected);
    }
    for (std::size_t i = 40; i < 60; i++) expectTone(frames[i], 2.7488937);
    for (std::size_t i = 60; i < 80; i++) expectSpeech(frames[i]);
    for (std::size_t i = 80; i < 120; i++) expectTone(frames[i], 2.9452434);
}

TEST(UltraSoundLevelTest, HearsRoomNoiseFor24Frames) {
    recordedModule::start(answering({}));
    logOf([] { ultraSoundLevelTest(); });
    ASSERT_EQ(frames.size(), 24u);
    for (const ProcessedFrame& frame : frames) {
        expectSpeechOrNoise(frame, 1, 0);
        expectSource(frame, -1, -7.4, 6);
        EXPECT_EQ(frame.samples, frame.generated);
    }
    EXPECT_EQ(lifetime, OneSetUp);
}

TEST(UltraSoundLevelTest, LevelLiesFromMinus35ToMinus30) {
    const std::pair<float, unsigned> cases[] = {
        {previous(-35), 1}, {-35, 0}, {-32.5f, 0}, {-30, 0}, {next(-30), 1}};
    for (const auto& [level, expected] : cases) {
        recordedModule::Script script = answering({});
        script.ultraSoundLevel = level;
        recordedModule::start(script);
        unsigned errors = 99;
        logOf([&errors] { errors = ultraSoundLevelTest(); });
        EXPECT_EQ(errors, expected) << level;
    }
}

TEST(UltraSoundLevelTest, AlwaysPrintsTheLevel) {
    for (const float level : {-32.5f, 7.0f}) {
        recordedModule::Script script = answering({});
        script.ultraSoundLevel = level;
        recordedModule::start(script);
        EXPECT_EQ(logOf([] { ultraSoundLevelTest(); }),
                  "Ultra sound level = " + std::to_string(level));
    }
}

// --- Far end

class FarEndVadTest : public testing::Test {
  protected:
    // The qualities after frames 10, 11 and 12.
    unsigned run(float before, float during, float after) {
        recordedModule::start({[=](std::size_t frame) -> TrackerResult {
                                   const float quality = frame == 10   ? before
                                                         : frame == 11 ? during
                                                         : frame == 12 ? after
                                                                       : 99;
                                   return {0, 0, 0, quality, 0};
                               },
                               {},
                               0});
        unsigned errors = 99;
        log = logOf([&] { errors = farEndVadTest(); });
        return errors;
    }

    std::string log;
};

TEST_F(FarEndVadTest, TellsTheModuleThatTheFarEndTalksForTwoFrames) {
    EXPECT_EQ(run(0.8f, 0.4f, 0), 0u);
    EXPECT_EQ(log, "");
    ASSERT_EQ(frames.size(), 12u);
    for (std::size_t i = 0; i < 12; i++) {
        expectSpeechOrNoise(frames[i], 0, i < 10 ? 0 : 1);
        expectSource(frames[i], -1, -7.4, 6);
        EXPECT_EQ(frames[i].samples, frames[i].generated);
    }
    EXPECT_EQ(lifetime, OneSetUp);
    EXPECT_EQ(AudioData, nullptr);
}

TEST_F(FarEndVadTest, QualityFallsInTheFirstFrame) {
    EXPECT_EQ(run(0.8f, previous(0.8f), 0), 0u);
    EXPECT_EQ(run(0.8f, 0.8f, 0), 1u);
    EXPECT_EQ(log, "FE VAD test failed: Quality = 0.800000");
    EXPECT_EQ(run(0.8f, 1e-7f, 0), 0u);
    EXPECT_EQ(run(0.8f, previous(1e-7f), 0), 1u);
}

TEST_F(FarEndVadTest, QualityIsGoneInTheSecondFrame) {
    EXPECT_EQ(run(0.8f, 0.4f, 1e-7f), 0u);
    EXPECT_EQ(run(0.8f, 0.4f, next(1e-7f)), 1u);
    EXPECT_EQ(run(0.8f, 0.4f, 0.25f), 1u);
    EXPECT_EQ(log, "FE VAD test failed: Quality = 0.250000");
    EXPECT_EQ(run(0.8f, 0.9f, 0.9f), 2u);
}

// --- Signal energy

constexpr float Energies[6] = {10.22f, 40.9f, 92.05f, 163.64f, 255.68f, 368.18f};

class SignalEnergyTest : public testing::Test {
  protected:
    unsigned run(const float energies[6]) {
        recordedModule::Script script = answering({});
        std::copy(energies, energies + 6, script.energies.begin());
        recordedModule::start(script);
        unsigned errors = 99;
        log = logOf([&] { errors = signalEnergyTest(); });
        return errors;
    }

    // One channel's energy changed by so much.
    unsigned runWith(std::size_t channel, float change) {
        float energies[6];
        std::copy(Energies, Energies + 6, energies);
        energies[channel] += change;
        return run(energies);
    }

    std::string log;
};

TEST_F(SignalEnergyTest, MeasuresSixChannelsOfASine) {
    EXPECT_EQ(run(Energies), 0u);
    EXPECT_EQ(log, "");
    ASSERT_EQ(recordedModule::energyCalls.size(), 1u);
    const auto& [frame, bits, channels] = recordedModule::energyCalls[0];
    EXPECT_EQ(bits, 24u);
    EXPECT_EQ(channels, 6);
    for (std::size_t i = 0; i < 6 * Frame; i++) {
        const double amplitude = static_cast<double>(i / Frame + 1) * 838860.8;
        const double phase = static_cast<double>(i % Frame) * 0.1308997;
        ASSERT_TRUE(std::fabs(wide(frame[i]) - amplitude * std::sin(phase)) <=
                    amplitude * Epsilon * (phase + 2))
            << i;
    }
}

TEST_F(SignalEnergyTest, NeedsNoModule) {
    run(Energies);
    EXPECT_TRUE(lifetime.empty());
    EXPECT_TRUE(frames.empty());
    EXPECT_EQ(AudioData, nullptr);
}

TEST_F(SignalEnergyTest, EndsAModuleThatATestLeftInitialised) {
    recordedModule::start(answering({}));
    setUp(PRODUCT_CINDER);
    run(Energies);
    EXPECT_EQ(lifetime, std::vector<std::string>{"destroy"});
    EXPECT_FALSE(IsInitialized);
}

TEST_F(SignalEnergyTest, EachChannelMayBe0Point3Off) {
    for (std::size_t c = 0; c < 6; c++) {
        for (const float sign : {-1.0f, 1.0f}) {
            EXPECT_EQ(runWith(c, sign * 0.3f), 0u) << c;
            EXPECT_EQ(runWith(c, sign * 0.2999f), 0u) << c;
            const float roundings = 4 * static_cast<float>(Epsilon) * Energies[c];
            EXPECT_EQ(runWith(c, sign * (0.3f + roundings)), 1u) << c;
        }
    }
}

TEST_F(SignalEnergyTest, ReportsEachFailingChannel) {
    const float energies[6] = {10.22f, 41.5f, 92.05f, 163.64f, 255.68f, 0};
    EXPECT_EQ(run(energies), 2u);
    EXPECT_EQ(log,
              "SignalEnergy: Channel 1 failed. Current = 41.500000, correct = 40.900002"
              "SignalEnergy: Channel 5 failed. Current = 0.000000, correct = 368.179993");
}

}  // namespace
