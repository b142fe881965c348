// What the detector and flag tests feed the module with, what they check, and what they report.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "kit/floatBits.h"
#include "kit/log.h"
#include "recordedModule.h"
#include "track/test/testSupport.h"
#include "track/test/tests.h"

namespace {

using namespace kit;
using namespace voxloc_tests;
using namespace recordedModule;

constexpr std::size_t Frame = FRAME_SAMPLES;
constexpr Degrees Talker = {0, -2, 3};
constexpr Degrees FarTalker = {-1, -7.4f, 6};

// The bits that a test checks after a frame (counted from 1), with what it expects.
using Checks = std::map<std::pair<std::size_t, unsigned>, int>;

// What a test expects of the voice and the time-domain voice flag after a frame.
struct Voices {
    std::size_t frame;
    int voice, timeDomain;
};

Checks checksOf(const std::vector<Voices>& rows) {
    Checks checks;
    for (const auto& [frame, voice, timeDomain] : rows) {
        checks[{frame, VOXLOC_FLAG_VOICE}] = voice;
        checks[{frame, VOXLOC_FLAG_TD_VOICE}] = timeDomain;
    }
    return checks;
}

// A module whose flags are as a test expects them, but for some bits after one frame.
Script answering(const Checks& checks, std::size_t wrongFrame, std::uint32_t wrongBits) {
    return {[=](std::size_t frame) -> TrackerResult {
        std::uint32_t flags = 0;
        for (const auto& [check, value] : checks) {
            if (check.first == frame && value == 1) flags |= 1u << check.second;
        }
        return {0, 0, 0, 0, frame == wrongFrame ? flags ^ wrongBits : flags};
    }};
}

// Runs the test with each checked bit the other way round, which is to be one error with its
// report, and with all the other bits of each frame the other way round, which is to be none.
void expectChecks(unsigned (*test)(), const Checks& checks, std::size_t count) {
    for (const auto& [check, value] : checks) {
        const auto& [frame, bit] = check;
        const auto [errors, log] = run(test, answering(checks, frame, 1u << bit));
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
        const auto [errors, log] = run(test, answering(checks, frame, unchecked));
        EXPECT_EQ(errors, 0u) << "frame " << frame;
        EXPECT_EQ(log, "");
    }
    ASSERT_EQ(frames.size(), count);
}

// Frames first to last - 1, counted from 0.
void expectSpeech(std::size_t first, std::size_t last, std::uint32_t flags = 0) {
    for (std::size_t i = first; i < last; i++) {
        expectGenerated(frames.at(i), PRODUCT_ASTER, 0, Talker, flags);
    }
}

void expectSilence(std::size_t first, std::size_t last, std::uint32_t flags = 0) {
    for (std::size_t i = first; i < last; i++) {
        const ProcessedFrame& frame = frames.at(i);
        EXPECT_TRUE(frame.generated.empty());
        EXPECT_EQ(frame.product, PRODUCT_ASTER);
        EXPECT_EQ(frame.bits, 24u);
        EXPECT_EQ(frame.flags, flags);
        EXPECT_EQ(frame.samples, std::vector<float>(frame.samples.size()));
    }
}

// --- Flag checks

TEST(VadOnTest, ChecksAfterSilenceSevenFramesAndTheEighth) {
    expectChecks(vadOnTest, checksOf({{1, 0, 1}, {8, 0, 1}, {9, 1, 1}}), 9);
    expectSilence(0, 1);
    expectSpeech(1, 9);
    expectSetUps({PRODUCT_ASTER});
}

TEST(VadHangoverTest, ChecksTheHangoversLastFrameAndTheNext) {
    expectChecks(vadHangoverTest, checksOf({{10, 1, 1}, {44, 1, 1}, {45, 0, 1}}), 45);
    expectSpeech(0, 10);
    expectSilence(10, 45);
    expectSetUps({PRODUCT_ASTER});
}

TEST(TimeDomainVadTest, ChecksTwoFramesWithoutVoiceAfterAClick) {
    expectChecks(timeDomainVadTest,
                 checksOf({{15, 1, 1}, {16, 1, 1}, {17, 1, 0}, {18, 1, 0}, {19, 1, 1}}), 19);
    expectSpeech(0, 15);
    expectChanged(frames[15], Talker);
    expectSpeech(16, 19);
    expectSetUps({PRODUCT_ASTER});
}

TEST(TimeDomainVadTest, ClickIsTheFirstOfTheLargestSamplesOfChannel2TimesFive) {
    for (const std::vector<std::size_t>& places :
         {std::vector<std::size_t>{0}, {2047}, {0, 2047}, {700, 2047}, {0, 1, 2}}) {
        Script script;
        script.changeGenerated = [&](std::size_t frame, float* samples) {
            if (frame != 16) return;
            float sign = -1;
            for (const std::size_t place : places)
                samples[2 * Frame + place] = (sign = -sign) * 9e6f;
        };
        run(timeDomainVadTest, script);
        std::vector<float> expected = frames.at(15).generated;
        expected[2 * Frame + places[0]] *= 5.0f;
        EXPECT_EQ(frames[15].samples, expected);
    }
}

TEST(SoundActivityTest, ChecksSpeechAndThreeSilentFrames) {
    expectChecks(soundActivityTest, {{{10, VOXLOC_FLAG_SOUND}, 1}, {{13, VOXLOC_FLAG_SOUND}, 0}},
                 13);
    expectSpeech(0, 10);
    expectSilence(10, 13);
    expectSetUps({PRODUCT_ASTER});
}

TEST(InputFlagTest, ChecksTheFlagsOfTheSameFrameAndKeepsItsResultToItself) {
    LastResult.quality = 4;
    const std::uint32_t inputs[5] = {0, 1, 3, 1, 0};
    Checks checks;
    for (std::size_t i = 0; i < 5; i++) {
        checks[{i + 1, VOXLOC_FLAG_FAR_END}] = static_cast<int>(inputs[i] & 1);
        checks[{i + 1, VOXLOC_FLAG_NOISE_INPUT}] = static_cast<int>(inputs[i] >> 1);
    }
    expectChecks(inputFlagTest, checks, 5);
    for (std::size_t i = 0; i < 5; i++) expectSilence(i, i + 1, inputs[i]);
    expectSetUps({PRODUCT_ASTER});
    EXPECT_EQ(LastResult.quality, 4.0f);
}

TEST(RoomNoiseTest, ChecksEachOfFrames62To80) {
    Checks checks;
    for (std::size_t frame = 62; frame <= 80; frame++) {
        checks.merge(checksOf({{frame, 0, 1}}));
    }
    expectChecks(roomNoiseTest, checks, 80);
    for (const ProcessedFrame& frame : frames) expectGenerated(frame, PRODUCT_ASTER, 1, Talker);
    expectSetUps({PRODUCT_ASTER});
    const Script allWrong = {[](std::size_t) { return TrackerResult{0, 0, 0, 0, 1}; }};
    EXPECT_EQ(run(roomNoiseTest, allWrong).errors, 38u);
}

// --- Ultrasound

// Computed in single precision: the phase is rounded, up to 6200 radians of it, and so are the sine
// and the product.
void expectSine(const float* samples, float amplitude, float step) {
    for (std::size_t n = 0; n < Frame; n++) {
        const double phase = static_cast<double>(n) * wide(step), shift = Epsilon / 2 * phase;
        const double limit = shift * std::fabs(std::cos(phase)) + shift * shift / 2 + Epsilon;
        ASSERT_TRUE(std::fabs(wide(samples[n]) / wide(amplitude) - std::sin(phase)) <=
                    (n == 0 ? 0 : limit))
            << "sample " << n << ": " << samples[n];
    }
}

void expectTone(const ProcessedFrame& frame, float step) {
    expectChanged(frame, Talker);
    const float* tone = frame.samples.data() + 3 * Frame;
    expectSine(tone, 529321.2f, step);
    std::vector<float> expected = frame.generated;
    std::copy(tone, tone + Frame, expected.begin() + 3 * Frame);
    EXPECT_EQ(frame.samples, expected);
}

TEST(UltraSoundDistortionTest, ChecksTheLastFrameOfSpeechClicksAndTwoTones) {
    Checks checks;
    for (const std::size_t frame : {20u, 40u, 59u, 60u, 80u, 120u}) {
        checks[{frame, VOXLOC_FLAG_ULTRASOUND}] = frame == 60 ? 1 : 0;
    }
    expectChecks(ultraSoundDistortionTest, checks, 120);
    expectSetUps({PRODUCT_ASTER, PRODUCT_ASTER, PRODUCT_ASTER, PRODUCT_ASTER});
    expectSpeech(0, 20);
    for (std::size_t i = 20; i < 40; i++) {
        expectChanged(frames[i], Talker);
        std::vector<float> expected = frames[i].generated;
        expected[2648] *= 25.0f;
        EXPECT_EQ(frames[i].samples, expected);
    }
    for (std::size_t i = 40; i < 60; i++) expectTone(frames[i], 2.7488937f);
    expectSpeech(60, 80);
    for (std::size_t i = 80; i < 120; i++) expectTone(frames[i], 2.9452434f);
}

TEST(UltraSoundLevelTest, HearsRoomNoiseAndPrintsALevelFromMinus35ToMinus30) {
    for (const float level : {previous(-35), -35.0f, -32.5f, -30.0f, next(-30), 7.0f}) {
        Script script;
        script.ultraSoundLevel = level;
        const auto [errors, log] = run(ultraSoundLevelTest, script);
        EXPECT_EQ(errors, level < -35 || level > -30 ? 1u : 0u) << level;
        EXPECT_EQ(log, "Ultra sound level = " + std::to_string(level));
        ASSERT_EQ(frames.size(), 24u);
        for (const ProcessedFrame& frame : frames) {
            expectGenerated(frame, PRODUCT_ASTER, 1, FarTalker);
        }
        expectSetUps({PRODUCT_ASTER});
    }
}

// --- Far end

TEST(FarEndVadTest, QualityFallsInTheFirstFrameAndIsGoneInTheSecond) {
    const struct {
        float during, after;  // qualities; before it is 0.8
        std::vector<const char*> reports;
    } rows[] = {{0.4f, 0, {}},
                {previous(0.8f), 1e-7f, {}},
                {1e-7f, 0, {}},
                {previous(1e-7f), 0, {"0.000000"}},
                {0.8f, 0, {"0.800000"}},
                {0.4f, next(1e-7f), {"0.000000"}},
                {0.4f, 0.25f, {"0.250000"}},
                {0.9f, 0.7f, {"0.900000", "0.700000"}}};
    for (const auto& [during, after, reports] : rows) {
        const std::map<std::size_t, float> qualities = {{10, 0.8f}, {11, during}, {12, after}};
        const auto [errors, log] =
            run(farEndVadTest, {[&](std::size_t frame) {
                    return TrackerResult{0, 0, 0, frame < 10 ? 99 : qualities.at(frame), 0};
                }});
        EXPECT_EQ(errors, reports.size()) << during << " " << after;
        std::string expected;
        for (const char* quality : reports) {
            expected += std::string("FE VAD test failed: Quality = ") + quality;
        }
        EXPECT_EQ(log, expected);
        ASSERT_EQ(frames.size(), 12u);
        for (std::size_t i = 0; i < 12; i++) {
            expectGenerated(frames[i], PRODUCT_ASTER, 0, FarTalker, i < 10 ? 0 : 1);
        }
        expectSetUps({PRODUCT_ASTER});
    }
}

// --- Signal energy

constexpr float Energies[6] = {10.22f, 40.9f, 92.05f, 163.64f, 255.68f, 368.18f};

// With one channel's energy changed by so much.
Outcome runSignalEnergy(std::size_t channel = 0, float change = 0) {
    Script script;
    std::copy(Energies, Energies + 6, script.energies.begin());
    script.energies[channel] += change;
    return run(signalEnergyTest, script);
}

TEST(SignalEnergyTest, MeasuresSixChannelsOfASineWithoutAModule) {
    const auto [errors, log] = runSignalEnergy();
    EXPECT_EQ(errors, 0u);
    EXPECT_EQ(log, "");
    ASSERT_EQ(energyCalls.size(), 1u);
    const auto& [frame, bits, channels] = energyCalls[0];
    EXPECT_EQ(bits, 24u);
    EXPECT_EQ(channels, 6);
    for (std::size_t c = 0; c < 6; c++) {
        expectSine(frame.data() + c * Frame, static_cast<float>(c + 1) * 838860.8f, 0.1308997f);
    }
    EXPECT_TRUE(frames.empty());
    expectSetUps({});
}

TEST(SignalEnergyTest, EndsAModuleThatATestLeftInitialised) {
    setUp(PRODUCT_CINDER);
    runSignalEnergy();
    EXPECT_EQ(lifetime, std::vector<std::string>{"destroy"});
    EXPECT_FALSE(IsInitialized);
}

TEST(SignalEnergyTest, EachChannelMayBe0Point3OffAndReportsIfItIsMore) {
    for (std::size_t c = 0; c < 6; c++) {
        for (const float change : {-0.3f, 0.3f}) {
            EXPECT_EQ(runSignalEnergy(c, change).errors, 0u) << c;
            const float roundings = 4 * static_cast<float>(Epsilon) * Energies[c];
            const auto [errors, log] =
                runSignalEnergy(c, change + (change < 0 ? -roundings : roundings));
            EXPECT_EQ(errors, 1u) << c;
            EXPECT_EQ(log.rfind("SignalEnergy: Channel " + std::to_string(c) + " failed. ", 0), 0u);
        }
    }
    EXPECT_EQ(runSignalEnergy(1, 0.6f).log,
              "SignalEnergy: Channel 1 failed. Current = 41.500000, correct = 40.900002");
}

}  // namespace
