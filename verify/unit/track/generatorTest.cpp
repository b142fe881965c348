// The test audio generator: whole-sample delays, the clip's ends, scaling, preconditions.

#include "voxloc/unittestGenerator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "gtest/gtest.h"
#include "kit/floatBits.h"
#include "voxloc/voxloc.h"
#include "voxloc/voxlocParts.h"

using namespace kit;

namespace {

constexpr std::size_t Frame = FRAME_SAMPLES;
constexpr std::uint32_t Clip = CLIP_SAMPLES;

// The module that the generator asks, in a test's hands.
std::uint32_t channels = 0;
std::array<Position, VOXLOC_MAX_CHANNELS> microphones{};

std::uint32_t numberOfChannels() {
    return channels;
}

const Position* microphoneCoordinates(std::uint32_t channel) {
    return &microphones.at(channel);
}

class GeneratorTest : public testing::Test {
  protected:
    GeneratorTest() {
        channels = 2;
        microphones = {};
    }
    ~GeneratorTest() override { destroyAudioGenerator(generator); }

    void offsetSpeech() {
        destroyAudioGenerator(generator);
        generator = createAudioGenerator(numberOfChannels, microphoneCoordinates, 1);
    }

    const float* nextSpeech() { return getNextFrame(source.data(), 0, generator); }
    const float* nextNoise() { return getNextFrame(source.data(), 1, generator); }

    // Where in the clip a channel's block of a frame is read; `clip` has no two equal stretches.
    static void expectReadFrom(std::uint32_t start, const float* block, const float* clip) {
        for (std::uint32_t k = 0; k < Frame; k++) {
            ASSERT_EQ(bitsOf(block[k]), bitsOf(clip[(start + k) % Clip])) << "sample " << k;
        }
    }

    // A microphone a number of samples farther away than microphone 0 (nearer if negative).
    static void delay(std::size_t microphone, int samples) {
        microphones[microphone].x = -static_cast<float>(samples) * 348 / 48000;
    }

    std::array<float, 3> source{0, 0, 3};  // straight ahead
    AudioGenerator* generator = createAudioGenerator(numberOfChannels, microphoneCoordinates, 0);
};

TEST_F(GeneratorTest, NewGeneratorIsSilentAndAtTheStart) {
    for (std::size_t i = 0; i < VOXLOC_MAX_CHANNELS * Frame; i++) {
        ASSERT_EQ(bitsOf(generator->frame[i]), 0u) << i;
    }
    EXPECT_EQ(generator->position, 0u);
    EXPECT_EQ(generator->getNumberOfChannels, numberOfChannels);
    EXPECT_EQ(generator->getMicrophoneCoordinates, microphoneCoordinates);
    EXPECT_EQ(generator->offsetSpeech, 0);
}

TEST_F(GeneratorTest, ClipIdSelectsTheClipAndBothShareThePositionAndTheFrame) {
    expectReadFrom(0, nextSpeech(), femaleSpeech);
    expectReadFrom(2048, nextNoise(), roomNoise);
    EXPECT_EQ(nextSpeech(), generator->frame);
    EXPECT_EQ(nextNoise(), generator->frame);
    EXPECT_EQ(generator->position, 8192u);
}

TEST_F(GeneratorTest, FartherMicrophonesReadEarlierSamples) {
    constexpr int Delays[] = {0, 1, 10, 25, 1000, -1, -25, -100};
    channels = 8;
    for (std::size_t c = 0; c < 8; c++) delay(c, Delays[c]);
    generator->position = 2048;
    const float* frame = nextSpeech();
    for (std::size_t c = 0; c < 8; c++) {
        SCOPED_TRACE(c);
        expectReadFrom(static_cast<std::uint32_t>(2048 - Delays[c]), frame + c * Frame,
                       femaleSpeech);
    }
}

TEST_F(GeneratorTest, EqualDistancesGiveIdenticalChannels) {
    channels = 8;
    for (std::size_t c = 0; c < 8; c++) {  // on a circle about the axis of the source
        const double angle = static_cast<double>(c) * M_PI / 4;
        microphones[c] = {0, static_cast<float>(0.3 * std::cos(angle)),
                          static_cast<float>(0.3 * std::sin(angle))};
    }
    const float* frame = nextSpeech();
    for (std::size_t c = 1; c < 8; c++) {
        EXPECT_EQ(firstDifference(frame + c * Frame, frame, Frame), Frame) << c;
    }
}

TEST_F(GeneratorTest, ChannelsBeyondTheCountKeepWhatTheyHeld) {
    channels = 3;
    nextSpeech();
    for (std::size_t i = 3 * Frame; i < 8 * Frame; i++) ASSERT_EQ(generator->frame[i], 0.0f) << i;
    const std::vector<float> before(generator->frame, generator->frame + 3 * Frame);
    channels = 1;
    nextSpeech();
    EXPECT_EQ(firstDifference(generator->frame + Frame, before.data() + Frame, 2 * Frame),
              2 * Frame);
    EXPECT_LT(firstDifference(generator->frame, before.data(), Frame), Frame);
}

// --- Delays

TEST_F(GeneratorTest, StartBeforeTheClipWrapsThrough2ToThe32) {
    for (const std::uint32_t samples : {1u, 25u, 1000u}) {
        SCOPED_TRACE(samples);
        generator->position = 0;
        delay(1, static_cast<int>(samples));
        const float* block = nextSpeech() + Frame;
        // 2^32 modulo 48,000 is 23,296: that is where the samples before the clip come from. The
        // index reaches 2^32, which is 0 again, where the clip begins.
        for (std::uint32_t k = 0; k < Frame; k++) {
            const std::uint32_t index = k < samples ? 23296 - samples + k : k - samples;
            ASSERT_EQ(bitsOf(block[k]), bitsOf(femaleSpeech[index])) << "sample " << k;
        }
        // The next frame's start lies inside the clip again.
        expectReadFrom(2048 - samples, nextSpeech() + Frame, femaleSpeech);
    }
}

TEST_F(GeneratorTest, DelayIsTheDistanceTimes137Point93103RoundedHalfUp) {
    const float factor = 137.93103f;
    // From 51 km on, a factor of one float more or less gives another delay.
    std::vector<float> distances = {51000, 53000, 55000};
    for (int step = 0; step < 100; step++) distances.push_back(0.0173f * static_cast<float>(step));
    for (int samples = 0; samples < 20; samples++) {
        const float half = static_cast<float>(samples) + 0.5f;
        float distance = half / factor;
        while (distance * factor < half) distance = next(distance);
        if (distance * factor == half) distances.push_back(distance);
    }
    ASSERT_GT(distances.size(), 105u);
    source = {0, 0, 1};
    microphones[0] = {1, 0, 0};
    for (const float distance : distances) {
        SCOPED_TRACE(distance);
        generator->position = 20000;
        microphones[1] = {1, distance, 0};
        const auto samples = static_cast<int>(std::floor(wide(distance * factor) + 0.5));
        expectReadFrom(static_cast<std::uint32_t>(20000 - samples), nextSpeech() + Frame,
                       femaleSpeech);
    }
}

TEST_F(GeneratorTest, SourceIsInTheModulesSphericalConvention) {
    // Along +y by the azimuth, up by the elevation.
    generator->position = 10000;
    microphones[1] = {0, 0.348f, 0};  // 48 samples
    source = {static_cast<float>(M_PI / 2), 0, 5};
    expectReadFrom(10000 + 48, nextSpeech() + Frame, femaleSpeech);
    generator->position = 10000;
    microphones[1] = {0, 0, 0.348f};
    source = {0, static_cast<float>(M_PI / 2), 5};
    expectReadFrom(10000 + 48, nextSpeech() + Frame, femaleSpeech);
}

// --- Position

TEST_F(GeneratorTest, PositionRunsOverTheEndOfTheClip) {
    delay(1, 25);
    for (int i = 0; i < 23; i++) nextSpeech();
    EXPECT_EQ(generator->position, 47104u);
    const float* frame = nextSpeech();
    expectReadFrom(47104, frame, femaleSpeech);
    expectReadFrom(47104 - 25, frame + Frame, femaleSpeech);
    EXPECT_EQ(frame[895], femaleSpeech[47999]);
    EXPECT_EQ(frame[896], femaleSpeech[0]);
    EXPECT_EQ(generator->position, 1152u);
}

// Nothing but a program that writes to it puts the position there.
TEST_F(GeneratorTest, PositionWrapsAt2ToThe32) {
    generator->position = UINT32_MAX - 999;
    const float* frame = nextSpeech();
    for (std::uint32_t k = 0; k < Frame; k++) {
        const std::uint32_t index = k < 1000 ? (UINT32_MAX - 999 + k) % Clip : k - 1000;
        ASSERT_EQ(bitsOf(frame[k]), bitsOf(femaleSpeech[index])) << "sample " << k;
    }
    EXPECT_EQ(generator->position, 1048u);
}

TEST_F(GeneratorTest, SourceMayMoveFromFrameToFrame) {
    nextSpeech();
    source = {0.3f, 0.1f, 5};
    expectReadFrom(2048, nextSpeech(), femaleSpeech);
}

// --- Scaling

TEST_F(GeneratorTest, OffsetSpeechIsRaisedByFullScaleAndATenth) {
    offsetSpeech();
    EXPECT_EQ(generator->offsetSpeech, 1);
    for (int i = 0; i < 24; i++) {
        const std::uint32_t start = generator->position;
        const float* frame = nextSpeech();
        for (std::uint32_t k = 0; k < Frame; k++) {
            const float product = 0.1f * femaleSpeech[(start + k) % Clip];
            ASSERT_EQ(bitsOf(frame[k]), bitsOf(838860.8f + product)) << k;
        }
    }
}

TEST_F(GeneratorTest, AnyNonZeroOptionOffsetsSpeechButNeverRoomNoise) {
    generator->offsetSpeech = -2;
    EXPECT_EQ(nextSpeech()[0], 838860.8f + 0.1f * femaleSpeech[0]);
    expectReadFrom(2048, nextNoise(), roomNoise);
}

// --- Preconditions

using GeneratorDeathTest = GeneratorTest;

constexpr char CountAssertion[] =
    "functional/audio/voxloc/cmod/track/unittestGenerator:71: getNextFrame: "
    "Assertion `numChannels > 0 && numChannels <= VOXLOC_MAX_CHANNELS' failed";
constexpr char ClipAssertion[] =
    "functional/audio/voxloc/cmod/track/unittestGenerator:[0-9]+: clipInfoFromId: "
    "Assertion `false' failed";

TEST_F(GeneratorDeathTest, ChannelCountIsOneToEight) {
    for (const std::uint32_t count : {0u, 9u, 0xffffffffu}) {
        channels = count;
        EXPECT_DEATH(nextSpeech(), CountAssertion) << count;
    }
    for (const std::uint32_t count : {1u, 8u}) {
        channels = count;
        nextSpeech();
    }
}

TEST_F(GeneratorDeathTest, ClipIsZeroOrOneAndCheckedBeforeTheChannelCount) {
    channels = 0;
    for (const int id : {-1, 2, 100}) {
        EXPECT_DEATH(getNextFrame(source.data(), id, generator), ClipAssertion) << id;
    }
}

// --- With the module's own geometry

TEST(GeneratorOnTheModule, ServesEveryProduct) {
    for (std::uint32_t i = 0; i < voxloc_getNumberOfProducts(); i++) {
        SCOPED_TRACE(voxloc_getProduct(i)->name);
        voxloc_initialize(voxloc_getProduct(i)->type);
        AudioGenerator* generator =
            createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 0);
        generator->position = 10000;
        const float source[3] = {0.3f, 0.1f, 4};
        const float* frame = getNextFrame(source, 0, generator);
        Position point;
        voxloc_sphericalToCartesian(source, &point);
        const auto delay = [&](std::uint32_t channel) {
            const Position* microphone = voxloc_getMicrophoneCoordinates(channel);
            return static_cast<int>(
                std::floor(0.5f + voxloc_calculateDistance(&point, microphone) * 137.93103f));
        };
        for (std::uint32_t c = 0; c < voxloc_getNumberOfChannels(); c++) {
            const int start = 10000 - (delay(c) - delay(0));
            EXPECT_EQ(firstDifference(frame + c * Frame, femaleSpeech + start, Frame), Frame) << c;
        }
        destroyAudioGenerator(generator);
        voxloc_destroy();
    }
}

}  // namespace
