// Trackers of one's own, as the public header describes them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "kit/temporaryFile.h"
#include "oddPanel.h"
#include "trackerRuns.h"

namespace {

const Position Talker = {2.0f, 0.7f, 0.2f};

/** voxloc_calculate as a new process has it: nothing of another product in the maps. */
Results calculated(std::int32_t product, const Scenario& scenario) {
    const InitializedModule module(product);
    std::fill_n(voxloc::moduleTracker().AzimuthElevationResult, 29737, 0.0f);
    Results results(scenario.frames());
    for (std::size_t i = 0; i < results.size(); ++i) {
        voxloc_calculate(scenario.frame(i), 24, scenario.flags[i], &results[i]);
    }
    return results;
}

class ProductTracker : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    const std::int32_t product_ = GetParam()->type;
    const Scenario scenario_ = mixedScenarioOf(product_);
    const OwnTracker tracker_ = trackerOf(product_);
};

INSTANTIATE_TEST_SUITE_P(Every, ProductTracker, ::testing::ValuesIn(allProducts()), ProductName());

TEST_P(ProductTracker, GivesTheBitsOfTheClassicInterface) {
    const Results results = run(tracker_.get(), scenario_);
    EXPECT_TRUE(sameBits(results, calculated(product_, scenario_)));
    EXPECT_TRUE(std::any_of(results.begin(), results.end(),
                            [](const TrackerResult& r) { return r.quality > 0.1f; }));
}

TEST_P(ProductTracker, GivesTheBitsOfANewOneAfterAReset) {
    const Results fresh = run(tracker_.get(), scenario_);
    for (const std::size_t frames : {std::size_t{1}, std::size_t{24}, scenario_.frames()}) {
        voxloc_resetTracker(tracker_.get());  // in noise, in the middle of speech, at the end
        EXPECT_TRUE(sameBits(run(tracker_.get(), scenario_, 0, frames),
                             {fresh.begin(), fresh.begin() + static_cast<std::ptrdiff_t>(frames)}))
            << frames;
    }
}

TEST_P(ProductTracker, TellsItsArray) {
    EXPECT_EQ(std::memcmp(voxloc_getArray(tracker_.get()), &GetParam()->array, sizeof(VoxlocArray)),
              0);
}

TEST(CreateProductTracker, RefusesWhatIsNoProduct) {
    for (const std::int32_t type : {3, -1, 1000000, INT32_MIN}) {
        char reason[VOXLOC_REASON_SIZE] = "none";
        EXPECT_EQ(voxloc_createProductTracker(type, reason), nullptr);
        EXPECT_EQ(reason, "productType: " + std::to_string(type) + " is not one of the products");
        EXPECT_EQ(voxloc_createProductTracker(type, nullptr), nullptr);
    }
    char reason[VOXLOC_REASON_SIZE] = "none";
    const OwnTracker tracker(voxloc_createProductTracker(PRODUCT_GANNET, reason));
    EXPECT_NE(tracker, nullptr);
    EXPECT_STREQ(reason, "");
}

TEST(DestroyTracker, DoesNothingForNull) {
    voxloc_destroyTracker(nullptr);
}

TEST(Track, RefusesBadArgumentsAndStaysAsItWas) {
    const Scenario scenario = steadyScenario(fiveMicrophones(), Talker, 12);
    const OwnTracker disturbed = trackerOf(fiveMicrophones());
    const OwnTracker other = trackerOf(fiveMicrophones());
    Results results;
    for (std::size_t i = 0; i < scenario.frames(); ++i) {
        const float* frame = scenario.frame(i);
        TrackerResult result{1.0f, 2.0f, 3.0f, 4.0f, 5U};
        EXPECT_STREQ(voxloc_track(nullptr, frame, 24, 0, &result), "tracker: none given");
        EXPECT_STREQ(voxloc_track(disturbed.get(), nullptr, 24, 0, &result), "frame: none given");
        for (const std::uint32_t bits : {0U, 33U, UINT32_MAX}) {
            EXPECT_STREQ(voxloc_track(disturbed.get(), frame, bits, 0, &result),
                         "bits: not 1 to 32");
        }
        EXPECT_STREQ(voxloc_track(disturbed.get(), frame, 24, 0, nullptr), "result: none given");
        EXPECT_TRUE(sameBits({result}, {{1.0f, 2.0f, 3.0f, 4.0f, 5U}}));
        EXPECT_EQ(voxloc_track(disturbed.get(), frame, 24, 0, &result), nullptr);
        results.push_back(result);
    }
    EXPECT_TRUE(sameBits(results, run(other.get(), scenario)));
}

TEST(Track, TakesBitsFrom1To32) {
    const std::vector<float> half(5 * 2048, 0.5f);
    for (const std::uint32_t bits : {1U, 32U}) {
        const OwnTracker own = trackerOf(fiveMicrophones());
        TrackerResult result{};
        EXPECT_EQ(voxloc_track(own.get(), half.data(), bits, 0, &result), nullptr);
        EXPECT_EQ(own->tracker.PreviousRawAudioInput[0], std::ldexp(1.0f, -static_cast<int>(bits)));
    }
}

// Each frame of one between two of the other.
TEST(OwnTrackers, DoNotTouchEachOther) {
    const OwnTracker five = trackerOf(fiveMicrophones());
    const OwnTracker bramble = trackerOf(PRODUCT_BRAMBLE);
    const Scenario talk = steadyScenario(fiveMicrophones(), Talker, 24);
    const Scenario mixed = mixedScenarioOf(PRODUCT_BRAMBLE, 24);
    const InitializedModule module(PRODUCT_CINDER);  // nor does the module's
    const std::vector<float> noise(6 * 2048, 1e6f);
    Results fives, brambles;
    for (std::size_t i = 0; i < 24; ++i) {
        TrackerResult ignored{};
        voxloc_calculate(noise.data(), 24, 0, &ignored);
        for (const TrackerResult& r : run(five.get(), talk, i, i + 1)) fives.push_back(r);
        for (const TrackerResult& r : run(bramble.get(), mixed, i, i + 1)) brambles.push_back(r);
    }
    EXPECT_TRUE(sameBits(fives, run(trackerOf(fiveMicrophones()).get(), talk)));
    EXPECT_TRUE(sameBits(brambles, run(trackerOf(PRODUCT_BRAMBLE).get(), mixed)));
}

// Silence, a talker, silence until everything has timed out, a talker again and a reset.
TEST(HasEstimate, TellsWhetherAnythingHasBeenHeard) {
    const OwnTracker own = trackerOf(fiveMicrophones());
    const Scenario talk = steadyScenario(fiveMicrophones(), Talker);
    const Scenario silence{5 * 2048, std::vector<float>(5 * 2048 * 80), std::vector<unsigned>(80)};
    EXPECT_EQ(voxloc_hasEstimate(own.get()), 0);
    const TrackerResult corner = run(own.get(), silence, 0, 4).back();
    EXPECT_EQ(voxloc_hasEstimate(own.get()), 0);
    EXPECT_EQ(voxloc_getFlag(VOXLOC_FLAG_POSITION_VALID, corner.flags), 1);
    EXPECT_GT(run(own.get(), talk).back().quality, 0.3f);
    EXPECT_EQ(voxloc_hasEstimate(own.get()), 1);
    const TrackerResult later = run(own.get(), silence).back();
    EXPECT_EQ(voxloc_hasEstimate(own.get()), 0);
    EXPECT_EQ(later.azimuth, corner.azimuth);
    EXPECT_EQ(later.range, corner.range);
    EXPECT_EQ(later.quality, 0.0f);
    run(own.get(), talk);
    EXPECT_EQ(voxloc_hasEstimate(own.get()), 1);
    voxloc_resetTracker(own.get());
    EXPECT_EQ(voxloc_hasEstimate(own.get()), 0);
}

// --- The log ------------------------------------------------------------------------------------

// A beacon of 20.9 kHz, half of full scale, for as long as an evaluation takes and one more.
std::vector<float> beaconFrame(int channels, long first) {
    std::vector<float> frame;
    for (int c = 0; c < channels; ++c) {
        for (long i = 0; i < 2048; ++i) {
            const double turns = 20900.0 / 48000.0 * static_cast<double>(first + i);
            frame.push_back(static_cast<float>(4194304.0 * std::sin(6.283185307179586 * turns)));
        }
    }
    return frame;
}

void playBeacon(VoxlocTracker* tracker, int frames) {
    const int channels = voxloc_getArray(tracker)->channels;
    for (int i = 0; i < frames; ++i) {
        TrackerResult result{};
        voxloc_track(tracker, beaconFrame(channels, 2048L * i).data(), 24, 0, &result);
    }
}

void playOddPanel(VoxlocTracker* tracker) {
    tracker->tracker.BlockedCounter = 97;  // the third blocked frame is a hundredth one
    OddPanel panel(0.0);
    for (int i = 0; i < 14; ++i) {
        TrackerResult result{};
        voxloc_track(tracker, panel.next().data(), 24, 0, &result);
    }
}

void remember(void* context, const char* text) {
    static_cast<std::vector<std::string>*>(context)->push_back(text);
}

constexpr char TooHigh[] = "Warning: Ultrasound level is too high, channel: 0 ultrasound level: ";
constexpr char UpsideDown[] = "Warning: The front panel is most likely mounted upside down\n";

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

TEST(Log, GoesToTheFunctionThatIsSet) {
    std::vector<std::string> texts;
    const OwnTracker loud = trackerOf(fiveMicrophones());
    const OwnTracker odd = trackerOf(PRODUCT_ASTER);
    voxloc_setLog(loud.get(), remember, &texts);
    voxloc_setLog(odd.get(), remember, &texts);
    ::testing::internal::CaptureStderr();
    playBeacon(loud.get(), 21);
    playOddPanel(odd.get());
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_TRUE(startsWith(texts[0], TooHigh)) << texts[0];
    EXPECT_EQ(texts[0].back(), '\n');
    EXPECT_EQ(texts[1], UpsideDown);
    voxloc_resetTracker(loud.get());  // the log stays, and the condition begins anew
    playBeacon(loud.get(), 21);
    EXPECT_EQ(texts.size(), 3U);
}

TEST(Log, GoesToStandardErrorWithoutAFunction) {
    std::vector<std::string> texts;
    const OwnTracker loud = trackerOf(fiveMicrophones());
    const OwnTracker odd = trackerOf(PRODUCT_ASTER);
    voxloc_setLog(loud.get(), remember, &texts);
    voxloc_setLog(loud.get(), nullptr, nullptr);
    ::testing::internal::CaptureStderr();
    playBeacon(loud.get(), 21);
    const std::string first = ::testing::internal::GetCapturedStderr();
    EXPECT_TRUE(startsWith(first, TooHigh)) << first;
    ::testing::internal::CaptureStderr();
    playOddPanel(odd.get());
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), UpsideDown);
    EXPECT_TRUE(texts.empty());
}

TEST(TrackerUltraSoundLevel, IsOfTheTrackerItself) {
    const OwnTracker loud = trackerOf(fiveMicrophones());
    const OwnTracker other = trackerOf(fiveMicrophones());
    voxloc_setLog(
        loud.get(), [](void*, const char*) {}, nullptr);
    EXPECT_EQ(voxloc_getTrackerUltraSoundLevel(loud.get()), -100.0f);
    playBeacon(loud.get(), 20);
    EXPECT_GT(voxloc_getTrackerUltraSoundLevel(loud.get()), -15.0f);
    EXPECT_EQ(voxloc_getTrackerUltraSoundLevel(other.get()), -100.0f);
    voxloc_resetTracker(loud.get());
    EXPECT_EQ(voxloc_getTrackerUltraSoundLevel(loud.get()), -100.0f);
}

// --- Recording ----------------------------------------------------------------------------------

TEST(OwnRecording, HoldsTheHeaderAndTheFramesThatWereTaken) {
    const TemporaryFile file;
    const OwnTracker own = trackerOf(fiveMicrophones());
    const std::vector<float> frame(5 * 2048, 3.0f);
    TrackerResult result{};
    EXPECT_EQ(voxloc_isRecording(own.get()), 0);
    EXPECT_EQ(voxloc_startRecording(own.get(), file.path()), 1);
    EXPECT_EQ(voxloc_isRecording(own.get()), 1);
    EXPECT_EQ(voxloc_record_isOpen(), 0);                   // the module's is another one
    voxloc_track(own.get(), frame.data(), 33, 0, &result);  // refused: not recorded
    voxloc_track(own.get(), frame.data(), 20, 3, &result);
    voxloc_resetTracker(own.get());  // the recording goes on
    EXPECT_EQ(voxloc_isRecording(own.get()), 1);
    voxloc_track(own.get(), frame.data(), 24, 0, &result);
    voxloc_stopRecording(own.get());
    EXPECT_EQ(voxloc_isRecording(own.get()), 0);
    EXPECT_TRUE(file.content() ==
                "\xAC\x01\xFF\x05" + recordOf(20, 3, frame) + recordOf(24, 0, frame));
    voxloc_stopRecording(own.get());  // does nothing
}

TEST(OwnRecording, OfAProductHasItsType) {
    const TemporaryFile file;
    {
        const OwnTracker own = trackerOf(PRODUCT_GANNET);
        EXPECT_EQ(voxloc_startRecording(own.get(), file.path()), 1);
    }  // the end of the tracker ends the recording
    EXPECT_EQ(file.content(), "\xAC\x01\x07\x08");
}

TEST(OwnRecording, ThatCannotBeOpenedIsRefused) {
    const OwnTracker own = trackerOf(fiveMicrophones());
    EXPECT_EQ(voxloc_startRecording(own.get(), nullptr), 0);
    const std::string path = ::testing::TempDir() + "no/such/folder/recording";
    EXPECT_EQ(voxloc_startRecording(own.get(), path.c_str()), 0);
    EXPECT_EQ(voxloc_isRecording(own.get()), 0);
}

}  // namespace
