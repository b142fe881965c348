#include "live/arrayCheck.h"

#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "../doctor/talk.h"

namespace {

constexpr int TenSeconds = 235;  // frames

/** The talk over and over. */
void feed(ArrayCheck& check, const Channels& channels, int frames, bool isVoice) {
    InputFrame frame;
    frame.samples.resize(channels.size() * FRAME_SAMPLES);
    for (int f = 0; f < frames; ++f) {
        const int from = f % TalkFrames * FRAME_SAMPLES;
        for (std::size_t c = 0; c < channels.size(); ++c) {
            std::copy_n(channels[c].begin() + from, FRAME_SAMPLES,
                        frame.samples.begin() + static_cast<std::ptrdiff_t>(c * FRAME_SAMPLES));
        }
        check.add(frame, isVoice);
    }
}

nlohmann::json finished(const ArrayCheck& check) {
    for (int i = 0; i < 6000; ++i) {
        auto json = nlohmann::json::parse(check.json());
        if (json["state"] == "done") return json;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return {};
}

class ArrayChecks : public ::testing::Test {
  protected:
    NamedArray array_ = namedArray("foxglove");
    Channels channels_ = talk(array_);
    ArrayCheck check_{array_};
};

TEST_F(ArrayChecks, GathersNothingUnasked) {
    feed(check_, channels_, TenSeconds, true);
    EXPECT_EQ(nlohmann::json::parse(check_.json())["state"], "idle");
}

TEST_F(ArrayChecks, JudgesTenSecondsOfVoice) {
    std::swap(channels_[0], channels_[1]);
    ASSERT_TRUE(check_.start());
    feed(check_, channels_, TenSeconds, true);
    const auto json = finished(check_);
    EXPECT_EQ(json["diagnosis"]["verdict"], "faults");
    EXPECT_EQ(json["diagnosis"]["findings"][0]["fault"], "swapped");
}

TEST_F(ArrayChecks, WaitsForVoice) {
    ASSERT_TRUE(check_.start());
    feed(check_, channels_, TenSeconds, false);
    EXPECT_EQ(nlohmann::json::parse(check_.json())["state"], "gathering");
    EXPECT_FALSE(check_.start());
}

TEST_F(ArrayChecks, BeginsAnewWhenAskedAgain) {
    ASSERT_TRUE(check_.start());
    feed(check_, channels_, TenSeconds, true);
    ASSERT_EQ(finished(check_)["diagnosis"]["verdict"], "sound");
    ASSERT_TRUE(check_.start());
    const auto json = nlohmann::json::parse(check_.json());
    EXPECT_EQ(json["state"], "gathering");
    EXPECT_TRUE(json["diagnosis"].is_null());
}

}  // namespace
