// What no converter gives, in frames of speech: it counts as silence to the bit, wherever it
// stands. And what is loud beyond measure and still let through: nothing of it stays, and it is
// over when voxloc.h says so.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kit/log.h"
#include "kit/temporaryFile.h"
#include "trackerRuns.h"

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float Largest = std::numeric_limits<float>::max();
constexpr float FullScale = 8388608.0f;
constexpr float AtTheBound = 64.0f * FullScale;

using Spoil = std::function<void(std::size_t index, float* frame)>;

Results runSpoilt(VoxlocTracker* tracker, const Scenario& scenario, const Spoil& spoil,
                  std::uint32_t bits = 24) {
    Results results;
    for (std::size_t i = 0; i < scenario.frames(); ++i) {
        std::vector<float> frame(scenario.frame(i), scenario.frame(i) + scenario.frameSamples);
        spoil(i, frame.data());
        TrackerResult result{};
        EXPECT_EQ(voxloc_track(tracker, frame.data(), bits, scenario.flags[i], &result), nullptr);
        results.push_back(result);
    }
    return results;
}

/** A talker in front of the array, at a share of the clip's level; a little noise beside. */
Scenario talk(std::int32_t product, std::size_t frames, float level = 1.0f) {
    const InitializedModule module(product);
    Clips clips;
    Scenario scenario{voxloc_getNumberOfChannels() * std::size_t{2048}, {}, {}};
    scenario.flags.resize(frames);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(-300.0f, 300.0f);
    for (std::size_t i = 0; i < frames; ++i) {
        const float* speech = clips.talker();
        for (std::size_t k = 0; k < scenario.frameSamples; ++k) {
            scenario.samples.push_back(std::round(level * speech[k] + noise(random)));
        }
    }
    return scenario;
}

OwnTracker quietTracker(std::int32_t product) {
    OwnTracker tracker = trackerOf(product);
    voxloc_setLog(
        tracker.get(), [](void*, const char*) {}, nullptr);
    return tracker;
}

/** Which of a tracker's numbers are none; empty when all are. */
std::string badState(const voxloc::Tracker& tracker) {
    std::string bad;
    const auto look = [&](const char* name, const float* values, int count) {
        const auto isBad = [](float value) { return !std::isfinite(value); };
        if (std::any_of(values, values + count, isBad)) bad += std::string(name) + ' ';
    };
    const int channels = tracker.NumberOfChannels, pairs = voxloc::numberOfPairs(tracker);
    look("InputAudio", tracker.InputAudio, channels * 4096);
    look("RawAudioInput1", tracker.RawAudioInput1, channels * 2048);
    look("RawAudioInput2", tracker.RawAudioInput2, channels * 2048);
    look("FftResult", tracker.FftResult, channels * 4098);
    look("Numerator1", tracker.Numerator1, pairs * 4098);
    look("Numerator2", tracker.Numerator2, pairs * 4098);
    look("NoisePowerEstimate", tracker.NoisePowerEstimate, channels * 2049);
    look("FrequencyWeight", tracker.FrequencyWeight, channels * 2049);
    look("AzimuthQuality", tracker.AzimuthQuality, tracker.NumberOfAzimuthPairs);
    look("ElevationQuality", tracker.ElevationQuality, tracker.NumberOfElevationPairs);
    look("AzimuthElevationResult", tracker.AzimuthElevationResult, 29737);
    look("AzimuthRangeResult", tracker.AzimuthRangeResult, 10896);
    look("NoiseLevel", tracker.Noise.NoiseLevel, 2049);
    look("FastLevel", tracker.Noise.FastLevel, 2049);
    look("SlowLevel", tracker.Noise.SlowLevel, 2049);
    look("NoiseAmplification", &tracker.Noise.NoiseAmplification, 1);
    look("AudioData", tracker.TimeDomain.AudioData, 6144);
    look("EnvelopeOutput", tracker.TimeDomain.EnvelopeOutput, 2104);
    look("MedianOutput", tracker.TimeDomain.MedianOutput, 2048);
    look("CurrentMedianFilterDifference", &tracker.TimeDomain.CurrentMedianFilterDifference, 1);
    look("UltraSoundLevel", tracker.UltraSound.UltraSoundLevel, channels);
    look("NeighborBandLevel", tracker.UltraSound.NeighborBandLevel, channels);
    return bad;
}

// --- Silenced samples ---------------------------------------------------------------------------

constexpr float BadValues[] = {NAN, Infinity, -Infinity, Largest, -Largest, 1e15f, 5.3687098e8f};

/** Where bad samples are put: some of a channel's, or of every channel's. */
struct Place {
    int channel;  // -1: all
    std::size_t first, last;
};

void put(float value, const Place& place, std::size_t channels, float* frame) {
    for (std::size_t c = 0; c < channels; ++c) {
        if (place.channel >= 0 && static_cast<std::size_t>(place.channel) != c) continue;
        std::fill(frame + c * 2048 + place.first, frame + c * 2048 + place.last + 1, value);
    }
}

class BadSamples : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    const std::int32_t product_ = GetParam()->type;
    std::size_t channels() const { return static_cast<std::size_t>(GetParam()->array.channels); }
};

INSTANTIATE_TEST_SUITE_P(Every, BadSamples, ::testing::ValuesIn(allProducts()), ProductName());

// At both ends of a frame and within, in each channel and in all; a frame for each place. Each
// value comes to each place in one product, which says it for all: channels share everything.
TEST_P(BadSamples, CountAsSilenceToTheBitWhereverTheyStand) {
    const Scenario scenario = talk(product_, 24);
    const OwnTracker tracker = quietTracker(product_);
    std::vector<Place> places = {{-1, 0, 0}, {-1, 2047, 2047}, {-1, 1000, 1003}, {-1, 0, 2047}};
    for (int c = 0; c < GetParam()->array.channels; ++c) {
        places.push_back({c, c % 2 == 0 ? 0U : 2047U, c % 2 == 0 ? 0U : 2047U});
    }
    std::size_t samples = 0;
    for (const Place& place : places) {
        samples += (place.last - place.first + 1) * (place.channel < 0 ? channels() : 1);
    }
    const std::size_t turns = product_ == PRODUCT_FOXGLOVE ? std::size(BadValues) : 2;
    for (std::size_t turn = 0; turn < turns; ++turn) {
        SCOPED_TRACE(turn);
        const auto spoil = [&](bool isBad) {
            return [&, isBad](std::size_t index, float* frame) {
                const std::size_t i = index - 8;
                if (index < 8 || i >= places.size()) return;
                const float bad = BadValues[(i + turn) % std::size(BadValues)];
                put(isBad ? bad : 0.0f, places[i], channels(), frame);
            };
        };
        voxloc_resetTracker(tracker.get());
        const Results expected = runSpoilt(tracker.get(), scenario, spoil(false));
        EXPECT_EQ(voxloc_getTrackerSilencedSamples(tracker.get()), 0U);
        voxloc_resetTracker(tracker.get());
        EXPECT_TRUE(sameBits(runSpoilt(tracker.get(), scenario, spoil(true)), expected));
        EXPECT_EQ(voxloc_getTrackerSilencedSamples(tracker.get()), samples);
    }
}

TEST_P(BadSamples, FrameAfterFrameAreSilence) {
    const Scenario scenario = talk(product_, 21);  // with an evaluation of the ultrasound
    const OwnTracker tracker = quietTracker(product_);
    const auto all = [&](float value) {
        return [&, value](std::size_t, float* frame) {
            std::fill_n(frame, scenario.frameSamples, value);
        };
    };
    const Results silent = runSpoilt(tracker.get(), scenario, all(0.0f));
    for (const float bad : {NAN, 2e38f}) {
        voxloc_resetTracker(tracker.get());
        EXPECT_TRUE(sameBits(runSpoilt(tracker.get(), scenario, all(bad)), silent)) << bad;
        EXPECT_EQ(voxloc_getTrackerUltraSoundLevel(tracker.get()), -Infinity);
    }
}

TEST(SilencedSamples, AreRecordedAsTheyCame) {
    const TemporaryFile file;
    const OwnTracker tracker = quietTracker(PRODUCT_FOXGLOVE);
    voxloc_startRecording(tracker.get(), file.path());
    std::vector<float> frame(4 * 2048, 1.0f);
    frame[0] = NAN;
    frame[8191] = -Largest;
    TrackerResult result{};
    voxloc_track(tracker.get(), frame.data(), 24, 0, &result);
    voxloc_stopRecording(tracker.get());
    EXPECT_TRUE(file.content() == "\xAC\x01\x06\x04" + recordOf(24, 0, frame));
}

TEST(SilencedSamples, OfTheModuleAreCountedSinceInitializeAndTold) {
    std::vector<float> frame(6 * 2048);
    std::fill_n(frame.begin() + 2048, 3, NAN);
    TrackerResult result{};
    const std::string log = kit::logOf([&] {
        const InitializedModule module(PRODUCT_ASTER);
        EXPECT_EQ(voxloc_getSilencedSamples(), 0U);
        for (int i = 0; i < 5; ++i) voxloc_calculate(frame.data(), 24, 0, &result);
        EXPECT_EQ(voxloc_getSilencedSamples(), 15U);
    });
    const std::string start = "Warning: Samples beyond 64 times full scale are taken as silence, ";
    EXPECT_EQ(log.substr(0, start.size()), start);
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1);
    EXPECT_NE(log.find("channel: 1 "), std::string::npos) << log;
    EXPECT_EQ(voxloc_getSilencedSamples(), 15U);
    const InitializedModule again(PRODUCT_FOXGLOVE);
    EXPECT_EQ(voxloc_getSilencedSamples(), 0U);
}

// A spell of the tracker before does not keep the next one's from the log.
TEST(SilencedSamples, AreToldAnewAfterAReset) {
    int texts = 0;
    const OwnTracker tracker = trackerOf(PRODUCT_FOXGLOVE);
    voxloc_setLog(
        tracker.get(), [](void* count, const char*) { ++*static_cast<int*>(count); }, &texts);
    const std::vector<float> frame(4 * 2048, NAN);
    TrackerResult result{};
    for (int i = 1; i < 4; ++i) {
        for (int k = 0; k < 3; ++k) voxloc_track(tracker.get(), frame.data(), 24, 0, &result);
        EXPECT_EQ(texts, i);
        EXPECT_EQ(voxloc_getTrackerSilencedSamples(tracker.get()), 3U * 8192U);
        voxloc_resetTracker(tracker.get());
        EXPECT_EQ(voxloc_getTrackerSilencedSamples(tracker.get()), 0U);
    }
}

// --- State --------------------------------------------------------------------------------------

// The loudest signals that are let through: steady, in one bin of each detector's band, alternating
// and random, with absurd values between. At the bound everything is still a number.
TEST_P(BadSamples, LeaveEveryStateANumberAtAnyLevel) {
    const OwnTracker tracker = quietTracker(product_);
    std::mt19937 random(7);
    const auto sample = [&](int kind, std::size_t n) {
        const double turns = kind == 1 ? 20900.0 / 48000.0 : 30.0 / 4096.0;
        switch (kind) {
            case 0:
                return AtTheBound;
            case 1:
            case 2:
                return std::sin(6.283185307179586 * turns * static_cast<double>(n)) < 0.0
                           ? -AtTheBound
                           : AtTheBound;
            case 3:
                return random() % 2 == 0 ? AtTheBound : -AtTheBound;
            case 4:
                return BadValues[random() % std::size(BadValues)];
            default:
                return random() % 3 == 0 ? NAN : 1.0f;
        }
    };
    std::size_t n = 0;
    std::vector<float> frame(channels() * 2048);
    for (int i = 0; i < 44; ++i) {
        for (float& value : frame) value = sample(i < 22 ? 1 : i % 6, n++);
        n -= (channels() - 1) * 2048;  // the channels begin together
        TrackerResult result{};
        const std::uint32_t bits = i % 7 == 6 ? 1 + static_cast<std::uint32_t>(random() % 32) : 24;
        voxloc_track(tracker.get(), frame.data(), bits, 0, &result);
        ASSERT_EQ(badState(tracker->tracker), "") << i;
        ASSERT_TRUE(std::isfinite(result.quality)) << i;
    }
}

TEST(ModuleState, StaysANumberWithAnyNumberOfBits) {
    const InitializedModule module(PRODUCT_FOXGLOVE);
    std::mt19937 random(7);
    std::vector<float> frame(4 * 2048);
    kit::logOf([&] {
        for (const std::uint32_t bits : {0U, 1U, 2U, 15U, 31U, 33U, 127U, 128U, 200U, UINT32_MAX}) {
            for (float& value : frame) {
                const auto pattern = static_cast<std::uint32_t>(random());  // any float there is
                std::memcpy(&value, &pattern, sizeof value);
            }
            TrackerResult result{};
            voxloc_calculate(frame.data(), bits, 0, &result);
            ASSERT_EQ(badState(voxloc::moduleTracker()), "") << bits;
        }
    });
}

TEST(Bits, From0To32AreAScaleAndFrom128OnSilence) {
    const InitializedModule module(PRODUCT_FOXGLOVE);
    const std::vector<float> frame(4 * 2048, FullScale);
    const struct {
        std::uint32_t bits;
        float scaled;
    } rows[] = {{20, 16.0f},      {24, 1.0f},  {25, 0.5f},  {32, 0x1p-8f},     {100, 0x1p-76f},
                {127, 0x1p-103f}, {128, 0.0f}, {200, 0.0f}, {UINT32_MAX, 0.0f}};
    TrackerResult result{};
    for (const auto& row : rows) {
        voxloc_calculate(frame.data(), row.bits, 0, &result);
        EXPECT_EQ(voxloc::moduleTracker().PreviousRawAudioInput[8191], row.scaled) << row.bits;
    }
    voxloc_calculate(std::vector<float>(4 * 2048, 3.0f).data(), 0, 0, &result);
    EXPECT_EQ(voxloc::moduleTracker().PreviousRawAudioInput[0], 6.0f);
}

// The noise flag keeps the noise level at 0, so that a steady tone is speech without a pause.
TEST(Voice, DropsOutAfter32767FramesWithoutAPause) {
    const OwnTracker tracker = quietTracker(PRODUCT_FOXGLOVE);
    std::vector<float> frame(4 * 2048);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        frame[i] = static_cast<float>(
            1e5 * std::sin(6.283185307179586 * 36.0 / 4096.0 * static_cast<double>(i % 2048)));
    }
    for (int i = 1; i <= 120; ++i) {
        if (i == 60) tracker->tracker.FrequencyDomain.TemporalCount = 32767 - 20;
        TrackerResult result{};
        voxloc_track(tracker.get(), frame.data(), 24, 1U << VOXLOC_INPUT_NOISE_FLAG, &result);
        const bool isVoice = voxloc_getFlag(VOXLOC_FLAG_VOICE, result.flags) == 1;
        EXPECT_EQ(isVoice, i >= 8 && i < 60 + 20 + 34) << i;
    }
}

// --- Recovery -----------------------------------------------------------------------------------

constexpr std::uint32_t AllFlags = ~0U, VoiceFlag = 1U << VOXLOC_FLAG_VOICE;

/** Azimuth and elevation by no more than one step of the grid, quality by no more than 0.001. */
bool isRight(const TrackerResult& result, const TrackerResult& undisturbed, std::uint32_t flags) {
    const auto isNear = [](float a, float b, float limit) {
        return (std::isnan(a) && std::isnan(b)) || std::abs(a - b) <= limit;
    };
    return (result.flags & flags) == (undisturbed.flags & flags) &&
           isNear(result.azimuth, undisturbed.azimuth, 1.1f) &&
           isNear(result.elevation, undisturbed.elevation, 1.1f) &&
           isNear(result.quality, undisturbed.quality, 0.001f);
}

/** Frames from the disturbance on until results are right for good. */
int framesUntilRight(const Results& results, const Results& undisturbed, std::size_t disturbance,
                     std::uint32_t flags) {
    std::size_t wrong = disturbance;
    for (std::size_t i = disturbance; i < results.size(); ++i) {
        if (!isRight(results[i], undisturbed[i], flags)) wrong = i + 1;
    }
    return static_cast<int>(wrong - disturbance);
}

/** A frame of the sharpest noise there is, in every channel. */
Spoil burst(std::size_t disturbance, std::size_t samples, float peak) {
    return [=](std::size_t index, float* frame) {
        if (index != disturbance) return;
        std::mt19937 random(5);
        for (std::size_t i = 0; i < samples; ++i) frame[i] = random() % 2 == 0 ? peak : -peak;
    };
}

struct Disturbance {
    float peak;
    int frames;  // until results are right, at most
};

struct Talker {
    std::int32_t product;
    float level;
};

// A talker at -11 dB of full scale or 20 dB below, the room known for three seconds.
TEST(Burst, IsOverWhenTheHeaderSaysSo) {
    constexpr std::size_t disturbance = 70;
    for (const auto& [product, level] : {Talker{PRODUCT_ASTER, 1.0f}, Talker{PRODUCT_BRAMBLE, 0.1f},
                                         Talker{PRODUCT_GANNET, 1.0f}}) {
        const Scenario scenario = talk(product, disturbance + 75, level);
        const OwnTracker tracker = quietTracker(product);
        const Results undisturbed = run(tracker.get(), scenario);
        for (const auto& [peak, frames] :
             {Disturbance{NAN, 30}, Disturbance{FullScale, 40}, Disturbance{AtTheBound, 60}}) {
            voxloc_resetTracker(tracker.get());
            const Results results =
                runSpoilt(tracker.get(), scenario, burst(disturbance, scenario.frameSamples, peak));
            const int until = framesUntilRight(results, undisturbed, disturbance, AllFlags);
            EXPECT_TRUE(until > 0 && until <= frames) << peak << ' ' << product << ' ' << until;
        }
    }
}

// The estimate of the room's noise takes in whatever comes in its first 40 frames.
TEST(BurstAtTheStart, IsOverWhenTheHeaderSaysSo) {
    constexpr std::size_t disturbance = 12;
    const Scenario scenario = talk(PRODUCT_FOXGLOVE, disturbance + 230, 0.1f);
    const OwnTracker tracker = quietTracker(PRODUCT_FOXGLOVE);
    const Results undisturbed = run(tracker.get(), scenario);
    for (const auto& [peak, frames] :
         {Disturbance{NAN, 30}, Disturbance{FullScale, 120}, Disturbance{AtTheBound, 210}}) {
        voxloc_resetTracker(tracker.get());
        const Results results =
            runSpoilt(tracker.get(), scenario, burst(disturbance, scenario.frameSamples, peak));
        const int until = framesUntilRight(results, undisturbed, disturbance, VoiceFlag);
        EXPECT_TRUE(until > frames * 2 / 3 || peak != peak) << until;  // it is no less, either
        EXPECT_LE(until, frames) << peak;
    }
}

}  // namespace
