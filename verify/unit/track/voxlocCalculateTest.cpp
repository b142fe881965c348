// The stages of a frame as they show in the module's state. The arithmetic of the stages has suites
// of its own; the results as a whole are held against a model elsewhere.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "initializedModule.h"
#include "models/doubleFft.h"
#include "oddPanel.h"
#include "track/crossSpectrum.h"
#include "track/gridSearch.h"
#include "track/tracker.h"

namespace {

constexpr double Unit = 0x1p-24;
constexpr float FullScale = 8388608.0f;
constexpr std::uint32_t FarEnd = 1U << VOXLOC_INPUT_FAR_END;
constexpr std::uint32_t NoiseFlag = 1U << VOXLOC_INPUT_NOISE_FLAG;

TrackerResult calculate(const std::vector<float>& frame, std::uint32_t flags = 0) {
    TrackerResult result{NAN, NAN, NAN, NAN, 0xffffffffU};
    voxloc_calculate(frame.data(), 24, flags, &result);
    return result;
}

bool isZero(const float* values, int count) {
    return std::all_of(values, values + count, [](float value) { return value == 0.0f; });
}

// Speech from a place, frame by frame.
class Speech {
  public:
    TrackerResult calculate(std::uint32_t flags = 0) {
        TrackerResult result{};
        voxloc_calculate(clips_.talker(), 24, flags, &result);
        return result;
    }
    TrackerResult calculateFrames(int frames) {
        TrackerResult result{};
        for (int i = 0; i < frames; ++i) result = calculate();
        return result;
    }

  private:
    Clips clips_;
};

class VoxlocCalculate : public ::testing::Test {
  protected:
    InitializedModule module_{PRODUCT_ASTER};
    voxloc::Tracker& tracker_ = voxloc::moduleTracker();
};

bool holdsBlock(int channel, const float* older, const std::vector<float>& newer) {
    const float* block = voxloc::moduleTracker().InputAudio + channel * 4096;
    for (int i = 0; i < 2048; ++i) {
        const float before = older == nullptr ? 0.0f : older[channel * 2048 + i] / FullScale;
        if (block[i] != before) return false;
        const float after = newer[static_cast<std::size_t>(channel * 2048 + i)] / FullScale;
        if (block[2048 + i] != after) return false;
    }
    return true;
}

TEST_F(VoxlocCalculate, JoinsTheFrameWithThePreviousOneForTheNextCall) {
    const std::vector<float> first = noiseFrame(6, 1);
    const std::vector<float> second = noiseFrame(6, 2);
    calculate(first);
    for (int c = 0; c < 6; ++c) EXPECT_TRUE(holdsBlock(c, nullptr, first)) << c;
    calculate(second);
    for (int c = 0; c < 6; ++c) EXPECT_TRUE(holdsBlock(c, first.data(), second)) << c;
}

TEST_F(VoxlocCalculate, AnalysesNothingInTheFirstCall) {
    calculate(noiseFrame(6, 1));
    EXPECT_TRUE(isZero(tracker_.FftResult, 6 * 4098));
    EXPECT_TRUE(isZero(tracker_.Numerator1, 6 * 4098));
    EXPECT_TRUE(isZero(tracker_.NoisePowerEstimate, 6 * 2049));
    calculate(noiseFrame(6, 2));
    EXPECT_FALSE(isZero(tracker_.FftResult, 6 * 4098));
}

// A call's spectra are those of the two frames before it. Transforming 4096 points rounds each bin
// twelve times at the level of the typical bin, and the bin itself a few times more.
TEST_F(VoxlocCalculate, TransformsTheWindowedBlockOfThePreviousCall) {
    calculate(noiseFrame(6, 1));
    calculate(noiseFrame(6, 2));
    const std::vector<float> blocks(tracker_.InputAudio, tracker_.InputAudio + 6 * 4096);
    calculate(noiseFrame(6, 3));
    for (std::size_t c = 0; c < 6; ++c) {
        std::vector<double> windowed(4096);
        double energy = 0.0;
        for (std::size_t i = 0; i < 4096; ++i) {
            const double angle = static_cast<double>(i) * 6.283185307179586 / 4095.0;
            windowed[i] =
                static_cast<double>(blocks[c * 4096 + i]) * (0.54 - 0.46 * std::cos(angle));
            energy += windowed[i] * windowed[i];
        }
        const reference::Spectrum expected = reference::realSpectrum(windowed);
        const double typical = std::sqrt(energy);  // the root mean square of the bins
        for (std::size_t k = 4; k < 2049; ++k) {
            const std::complex<double> actual(
                static_cast<double>(tracker_.FftResult[c * 4098 + 2 * k]),
                static_cast<double>(tracker_.FftResult[c * 4098 + 2 * k + 1]));
            EXPECT_LE(std::abs(actual - expected[k]),
                      12.0 * Unit * typical + 4.0 * Unit * std::abs(expected[k]))
                << c << " " << k;
        }
    }
}

TEST_F(VoxlocCalculate, SilencesTheLowestFourBins) {
    std::vector<float> offset(6 * 2048, FullScale / 2);
    calculate(offset);
    calculate(offset);
    calculate(noiseFrame(6, 1));
    for (int c = 0; c < 6; ++c) {
        EXPECT_TRUE(isZero(tracker_.FftResult + c * 4098, 8)) << c;
        EXPECT_NE(tracker_.FftResult[c * 4098 + 8], 0.0f) << c;
    }
}

TEST_F(VoxlocCalculate, WeighsEveryBinOfEveryChannel) {
    calculate(noiseFrame(6, 1));
    calculate(noiseFrame(6, 2));
    std::vector<float> noise(tracker_.NoisePowerEstimate, tracker_.NoisePowerEstimate + 6 * 2049);
    std::vector<float> weight(6 * 2049, NAN);
    calculate(noiseFrame(6, 3));
    for (std::size_t c = 0; c < 6; ++c) {
        voxloc::updateFrequencyWeights(tracker_.FftResult + c * 4098, 2049, &noise[c * 2049],
                                       &weight[c * 2049]);
    }
    EXPECT_TRUE(std::equal(noise.begin(), noise.end(), tracker_.NoisePowerEstimate));
    EXPECT_TRUE(std::equal(weight.begin(), weight.end(), tracker_.FrequencyWeight));
}

TEST_F(VoxlocCalculate, SwapsTheBuffers) {
    const float* numerators[] = {tracker_.Numerator1, tracker_.Numerator2};
    const float* inputs[] = {tracker_.RawAudioInput1, tracker_.RawAudioInput2};
    for (int frame = 0; frame < 4; ++frame) {
        EXPECT_EQ(tracker_.CurrentNumerator, numerators[frame % 2]);
        EXPECT_EQ(tracker_.PreviousNumerator, numerators[1 - frame % 2]);
        EXPECT_EQ(tracker_.CurrentRawAudioInput, inputs[frame % 2]);
        EXPECT_EQ(tracker_.PreviousRawAudioInput, inputs[1 - frame % 2]);
        calculate(noiseFrame(6, 1));
    }
}

TEST_F(VoxlocCalculate, ReadsTheFrameAndLeavesIt) {
    const std::vector<float> frame = noiseFrame(6, 1);
    const std::vector<float> copy(frame);
    calculate(frame);
    EXPECT_EQ(frame, copy);
}

TEST_F(VoxlocCalculate, UsesTheLongTimeoutWhileTheNearEndTalksAlone) {
    Speech speech;
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_VOICE, speech.calculate().flags), 0);
    EXPECT_EQ(tracker_.TimeoutLimit, 2);
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_VOICE, speech.calculateFrames(10).flags), 1);
    EXPECT_EQ(tracker_.TimeoutLimit, 35);
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_VOICE, speech.calculate(FarEnd).flags), 1);
    EXPECT_EQ(tracker_.TimeoutLimit, 2);
    speech.calculate();
    EXPECT_EQ(tracker_.TimeoutLimit, 35);
}

// No bin is updated: the short timeout zeroes them all, the updated ones in the second frame.
TEST_F(VoxlocCalculate, LetsThePositionDecayWhileTheFarEndTalks) {
    Speech speech;
    EXPECT_GT(speech.calculateFrames(12).quality, 0.5f);
    const std::vector<float> held(tracker_.PreviousNumerator,
                                  tracker_.PreviousNumerator + 6 * 4098);
    speech.calculate(FarEnd);
    for (std::size_t i = 0; i < held.size(); ++i) {
        const float now = tracker_.PreviousNumerator[i];
        ASSERT_TRUE(now == held[i] || now == 0.0f) << i;
    }
    const TrackerResult result = speech.calculate(FarEnd);
    EXPECT_TRUE(isZero(tracker_.PreviousNumerator, 6 * 4098));
    EXPECT_EQ(result.quality, 0.0f);
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_FAR_END, result.flags), 1);
}

// Silence is not an update either: a position is held for 34 frames while voice lasts.
TEST_F(VoxlocCalculate, HoldsThePositionOverASilence) {
    Speech speech;
    const TrackerResult talking = speech.calculateFrames(14);
    ASSERT_EQ(voxloc_getFlag(VOXLOC_FLAG_VOICE, talking.flags), 1);
    const std::vector<float> silence(6 * 2048);
    TrackerResult result{};
    for (int frame = 0; frame < 20; ++frame) result = calculate(silence);
    EXPECT_EQ(result.azimuth, talking.azimuth);
    EXPECT_EQ(result.elevation, talking.elevation);
    EXPECT_GT(result.quality, 0.5f);
    for (int frame = 0; frame < 40; ++frame) result = calculate(silence);
    EXPECT_EQ(result.quality, 0.0f);
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_VOICE, result.flags), 0);
}

TEST_F(VoxlocCalculate, CopiesTheInputFlags) {
    const std::vector<float> silence(6 * 2048);
    EXPECT_EQ(calculate(silence, 0).flags, 0x82U);
    EXPECT_EQ(calculate(silence, FarEnd).flags, 0x8aU);
    EXPECT_EQ(calculate(silence, NoiseFlag).flags, 0x92U);
    EXPECT_EQ(calculate(silence, FarEnd | NoiseFlag).flags, 0x9aU);
    EXPECT_EQ(calculate(silence, ~(FarEnd | NoiseFlag)).flags, 0x82U);  // others mean nothing
}

TEST_F(VoxlocCalculate, FreezesTheNoiseLevelWithTheNoiseFlag) {
    Speech speech;
    speech.calculateFrames(5);
    const std::vector<float> before(tracker_.Noise.NoiseLevel, tracker_.Noise.NoiseLevel + 2049);
    speech.calculate(NoiseFlag);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), tracker_.Noise.NoiseLevel));
    speech.calculate();
    EXPECT_FALSE(std::equal(before.begin(), before.end(), tracker_.Noise.NoiseLevel));
}

TEST_F(VoxlocCalculate, ReportsTheFirstMaximaOfTheGrids) {
    Speech speech;
    speech.calculateFrames(5);
    for (int frame = 0; frame < 8; ++frame) {
        const TrackerResult result = speech.calculate();
        const float* directions = tracker_.AzimuthElevationResult;
        const float* places = tracker_.AzimuthRangeResult;
        const auto direction = std::max_element(directions, directions + 29737) - directions;
        const auto place = std::max_element(places, places + 10896) - places;
        const voxloc::RangeRows rows = voxloc::flatRangeRows(places, static_cast<int>(place));
        EXPECT_EQ(result.elevation, tracker_.ElevationAngles[direction / 227] * 57.295776f);
        EXPECT_EQ(result.azimuth, tracker_.AzimuthAngles[place % 227] * 57.295776f);
        EXPECT_EQ(result.range, (tracker_.Ranges[rows.first] + tracker_.Ranges[rows.last]) * 0.5f);
        EXPECT_EQ(result.quality, places[place] + directions[direction]);
    }
}

// --- A product without elevation pairs ----------------------------------------------------------

TEST(VoxlocCalculateFoxglove, SearchesWhateverTheGridOfDirectionsHolds) {
    const InitializedModule module(PRODUCT_FOXGLOVE);
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    float* directions = voxloc::moduleTracker().AzimuthElevationResult;
    std::fill_n(directions, 29737, 0.0f);
    const std::vector<float> silence(4 * 2048);
    EXPECT_EQ(calculate(silence).elevation, tracker.ElevationAngles[0] * 57.295776f);
    EXPECT_EQ(calculate(silence).quality, 0.0f);
    directions[50 * 227 + 3] = 0.75f;
    EXPECT_EQ(calculate(silence).elevation, tracker.ElevationAngles[50] * 57.295776f);
    EXPECT_EQ(calculate(silence).quality, 0.75f);
    EXPECT_EQ(directions[50 * 227 + 3], 0.75f);
}

// --- A panel mounted upside down ----------------------------------------------------------------

float upsideDownRatio() {
    const float* e = voxloc::moduleTracker().ElevationQuality;
    const float* a = voxloc::moduleTracker().AzimuthQuality;
    return (e[0] + e[1]) / (a[0] + a[1] + a[2] + e[2]);
}

bool isValid(const TrackerResult& result) {
    return voxloc_getFlag(VOXLOC_FLAG_POSITION_VALID, result.flags) == 1;
}

bool isVoice(const TrackerResult& result) {
    return voxloc_getFlag(VOXLOC_FLAG_VOICE, result.flags) == 1;
}

TEST(UpsideDown, InvalidatesThePositionAboveTheRatio) {
    float highestBelow = 0.0f, lowestAbove = 10.0f;
    for (const double shared : {0.0, 0.2, 0.295, 0.5}) {  // the third comes close to the limit
        const InitializedModule module(PRODUCT_ASTER);
        voxloc::moduleTracker().BlockedCounter = 0;
        OddPanel panel(shared);
        int blocked = 0;
        for (int frame = 0; frame < 16; ++frame) {
            SCOPED_TRACE(::testing::Message() << shared << ", frame " << frame);
            const TrackerResult result = calculate(panel.next());
            const float ratio = upsideDownRatio();
            const bool isBlocked = isVoice(result) && ratio > 1.8f;
            EXPECT_EQ(isValid(result), !isBlocked);
            if (isBlocked) ++blocked;
            EXPECT_EQ(voxloc::moduleTracker().BlockedCounter, blocked);
            if (isVoice(result) && ratio <= 1.8f) highestBelow = std::max(highestBelow, ratio);
            if (isVoice(result) && ratio > 1.8f) lowestAbove = std::min(lowestAbove, ratio);
        }
    }
    EXPECT_GT(highestBelow, 1.791f);
    EXPECT_LT(lowestAbove, 1.809f);
}

TEST(UpsideDown, IsOnlyJudgedWhileThereIsVoice) {
    const InitializedModule module(PRODUCT_ASTER);
    OddPanel panel(0.0);
    bool judged = false;
    for (int frame = 0; frame < 8; ++frame) {
        const TrackerResult result = calculate(panel.next());
        if (isVoice(result)) continue;
        EXPECT_TRUE(isValid(result)) << frame;
        judged = judged || upsideDownRatio() > 1.8f;
    }
    EXPECT_TRUE(judged);
}

TEST(UpsideDown, IsJudgedForAsterOnly) {
    const InitializedModule module(PRODUCT_ASTER);
    OddPanel panel(0.0);
    voxloc::moduleTracker().ProductType = PRODUCT_CINDER;  // everything else stays the same
    voxloc::moduleTracker().BlockedCounter = 0;
    bool judged = false;
    for (int frame = 0; frame < 14; ++frame) {
        const TrackerResult result = calculate(panel.next());
        EXPECT_TRUE(isValid(result)) << frame;
        judged = judged || (isVoice(result) && upsideDownRatio() > 1.8f);
    }
    EXPECT_TRUE(judged);
    EXPECT_EQ(voxloc::moduleTracker().BlockedCounter, 0);
}

TEST(UpsideDown, IsWarnedOfInEveryHundredthFrame) {
    const InitializedModule module(PRODUCT_ASTER);
    OddPanel panel(0.0);
    voxloc::moduleTracker().BlockedCounter = 97;
    int blocked = 0;
    for (int frame = 0; frame < 16; ++frame) {
        const std::vector<float> audio = panel.next();
        ::testing::internal::CaptureStderr();
        const TrackerResult result = calculate(audio);
        const std::string log = ::testing::internal::GetCapturedStderr();
        const bool isBlocked = !isValid(result);
        if (isBlocked) ++blocked;
        const bool isHundredth = isBlocked && blocked == 3;
        EXPECT_EQ(
            log, isHundredth ? "Warning: The front panel is most likely mounted upside down\n" : "")
            << frame;
        EXPECT_EQ(voxloc::moduleTracker().BlockedCounter, blocked < 3 ? 97 + blocked : blocked - 3)
            << frame;
    }
    EXPECT_GT(blocked, 5);
}

}  // namespace
