#include "writers/summary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

/** Feeds a run frame by frame. */
class Story {
  public:
    Story& talks(int frames, float azimuth, float range = 2.0f) {
        for (int i = 0; i < frames; ++i) add(1U << VOXLOC_FLAG_VOICE, azimuth, range);
        return *this;
    }
    Story& silence(int frames) {
        for (int i = 0; i < frames; ++i) add(0, 0.0f, 9.9f);
        return *this;
    }
    Story& withoutElevation() {
        hasElevation_ = false;
        return *this;
    }
    Summary summary() const { return summarizer_.summary(); }

  private:
    void add(std::uint32_t flags, float azimuth, float range) {
        Record record;
        record.frame = frame_++;
        record.sample = record.frame * FRAME_SAMPLES;
        record.result = {azimuth, 1.0f, range, 0.5f, flags};
        record.hasEstimate = true;
        record.hasElevation = hasElevation_;
        summarizer_.add(record);
    }
    Summarizer summarizer_;
    std::uint64_t frame_ = 0;
    bool hasElevation_ = true;
};

TEST(Summary, CountsFramesAndVoice) {
    const Summary summary = Story().silence(10).talks(30, 5.0f).silence(20).summary();
    EXPECT_EQ(summary.frames, 60U);
    EXPECT_EQ(summary.voiceFrames, 30U);
}

TEST(Summary, EndsATurnAtItsLastVoice) {
    const Summary summary = Story().silence(10).talks(30, 5.0f).silence(20).summary();
    ASSERT_EQ(summary.turns.size(), 1U);
    EXPECT_EQ(summary.turns[0].firstFrame, 10U);
    EXPECT_EQ(summary.turns[0].lastFrame, 39U);
    EXPECT_EQ(summary.turns[0].azimuth, 5.0f);
}

TEST(Summary, BridgesAPauseOfHalfASecondAndNoLongerOne) {
    EXPECT_EQ(Story().talks(20, 5.0f).silence(12).talks(20, 5.0f).summary().turns.size(), 1U);
    EXPECT_EQ(Story().talks(20, 5.0f).silence(13).talks(20, 5.0f).summary().turns.size(), 2U);
}

TEST(Summary, GivesASecondTalkerATurnFromHisFirstFrameOn) {
    const Summary summary = Story().talks(40, 20.0f).talks(40, -30.0f, 3.0f).summary();
    ASSERT_EQ(summary.turns.size(), 2U);
    EXPECT_EQ(summary.turns[0].lastFrame, 39U);
    EXPECT_EQ(summary.turns[1].firstFrame, 40U);
    EXPECT_EQ(summary.turns[1].azimuth, -30.0f);
    EXPECT_EQ(summary.turns[1].range, 3.0f);
    EXPECT_EQ(Story().talks(40, 20.0f).talks(40, 5.0f).summary().turns.size(), 1U);
    EXPECT_EQ(Story().talks(40, 20.0f).talks(40, 4.9f).summary().turns.size(), 2U);
}

TEST(Summary, OverlooksStrayFrames) {
    const Summary summary = Story().talks(40, 20.0f).talks(11, -30.0f).talks(40, 21.0f).summary();
    ASSERT_EQ(summary.turns.size(), 1U);
    EXPECT_EQ(summary.turns[0].lastFrame, 90U);
    EXPECT_EQ(Story().talks(40, 20.0f).talks(12, -30.0f).talks(40, 21.0f).summary().turns.size(),
              3U);
}

TEST(Summary, FollowsATalkerWhoWalks) {
    Story story;
    for (int step = 0; step <= 60; ++step) story.talks(5, static_cast<float>(step) - 30.0f);
    const Summary summary = story.summary();
    ASSERT_EQ(summary.turns.size(), 1U);
    EXPECT_NEAR(summary.turns[0].azimuth, 0.0f, 1.0f);
}

TEST(Summary, LeavesOutWhatIsShorterThanAQuarterOfASecond) {
    EXPECT_EQ(Story().talks(5, 5.0f).silence(30).summary().turns.size(), 0U);
    EXPECT_EQ(Story().talks(6, 5.0f).silence(30).summary().turns.size(), 1U);
}

TEST(Summary, KeepsAnElevationThatIsUnknownToItself) {
    const Summary summary = Story().withoutElevation().talks(20, 5.0f).summary();
    EXPECT_TRUE(std::isnan(summary.turns[0].elevation));
    EXPECT_EQ(summaryToText(summary).find("elevation"), std::string::npos);
    EXPECT_TRUE(summaryToJson(summary)["turns"][0]["elevation"].is_null());
    EXPECT_EQ(Story().talks(20, 5.0f).summary().turns[0].elevation, 1.0f);
}

TEST(Summary, TakesNoPlaceThatIsNone) {
    Summarizer summarizer;
    for (std::uint64_t frame = 0; frame < 40; ++frame) {
        Record record;
        record.frame = frame;
        record.result.flags = 1U << VOXLOC_FLAG_VOICE;
        record.result.azimuth = std::numeric_limits<float>::quiet_NaN();
        record.hasEstimate = frame % 2 == 0;
        summarizer.add(record);
    }
    EXPECT_EQ(summarizer.summary().turns.size(), 0U);
    EXPECT_EQ(summarizer.summary().voiceFrames, 40U);
}

// An hour of one talker: what is kept is thinned out, what is said stays the same.
TEST(Summary, OfAnHourIsRight) {
    Story story;
    for (int i = 0; i < 84375; ++i) story.talks(1, static_cast<float>(i % 9) - 4.0f);
    const Summary summary = story.summary();
    ASSERT_EQ(summary.turns.size(), 1U);
    EXPECT_EQ(summary.turns[0].lastFrame, 84374U);
    EXPECT_EQ(summary.turns[0].azimuth, 0.0f);
}

}  // namespace
