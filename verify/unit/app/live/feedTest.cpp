#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "live/feed.h"
#include "live/pageJson.h"

namespace {

using std::chrono::milliseconds;

Record numbered(std::uint64_t frame) {
    Record record;
    record.frame = frame;
    record.sample = frame * FRAME_SAMPLES;
    return record;
}

TEST(Feed, GivesEachOnlookerEverythingOnce) {
    Feed feed(10);
    Feed::Place one, other;
    feed.add(numbered(0));
    feed.add(numbered(1));
    EXPECT_EQ(feed.wait(one, milliseconds(0)).records.size(), 2u);
    EXPECT_EQ(feed.wait(one, milliseconds(0)).records.size(), 0u);
    feed.add(numbered(2));
    EXPECT_EQ(feed.wait(one, milliseconds(0)).records.front().frame, 2u);
    EXPECT_EQ(feed.wait(other, milliseconds(0)).records.size(), 3u);
}

TEST(Feed, LosesTheOldestForWhoIsSlow) {
    Feed feed(10);
    Feed::Place place;
    for (std::uint64_t n = 0; n < 25; ++n) feed.add(numbered(n));
    const Feed::News news = feed.wait(place, milliseconds(0));
    ASSERT_EQ(news.records.size(), 10u);
    EXPECT_EQ(news.records.front().frame, 15u);
    EXPECT_EQ(news.records.back().frame, 24u);
    EXPECT_EQ(feed.lastFrame(), 24u);
}

TEST(Feed, WakesWhoWaits) {
    Feed feed(10);
    Feed::Place place;
    feed.wait(place, milliseconds(0));
    std::thread adder([&] {
        std::this_thread::sleep_for(milliseconds(50));
        feed.add(numbered(7));
    });
    const auto began = std::chrono::steady_clock::now();
    const Feed::News news = feed.wait(place, milliseconds(10000));
    adder.join();
    ASSERT_EQ(news.records.size(), 1u);
    EXPECT_LT(std::chrono::steady_clock::now() - began, milliseconds(5000));
}

TEST(Feed, TellsAStatusOnceAndOnlyWhenItChanges) {
    Feed feed(10);
    Feed::Place place;
    EXPECT_TRUE(feed.wait(place, milliseconds(0)).hasStatus);
    feed.set({});
    EXPECT_FALSE(feed.wait(place, milliseconds(0)).hasStatus);
    LiveStatus status;
    status.overruns = 1;
    feed.set(status);
    const Feed::News news = feed.wait(place, milliseconds(0));
    EXPECT_TRUE(news.hasStatus);
    EXPECT_EQ(news.status.overruns, 1u);
}

TEST(Feed, KeepsTheLastMarks) {
    Feed feed(10);
    Feed::Place place;
    for (int n = 0; n < 300; ++n) feed.mark(std::to_string(n), 5);
    const Feed::News news = feed.wait(place, milliseconds(0));
    ASSERT_EQ(news.marks.size(), 200u);
    EXPECT_EQ(news.marks.back().label, "299");
    EXPECT_EQ(news.marks.back().frame, 5u);
}

TEST(Feed, SaysThatItIsClosed) {
    Feed feed(10);
    Feed::Place place;
    EXPECT_FALSE(feed.wait(place, milliseconds(0)).isClosed);
    feed.close();
    EXPECT_TRUE(feed.wait(place, milliseconds(10000)).isClosed);
}

TEST(PageJson, WritesNullForWhatIsNoNumber) {
    Record record = numbered(2);
    record.channels = 2;
    record.result = {std::nanf(""), -1.25f, 2.0f, 0.5f, 129};
    record.ultrasoundLevel = -INFINITY;
    record.level = {-20.04f, -INFINITY};
    std::string text;
    appendRecordJson(text, record);
    EXPECT_EQ(text, "[2,0.085,null,-1.2,2.0,0.500,129,0,null,-20.0,null]");
}

Record withLevels(float first, float second, float third) {
    Record record;
    record.channels = 3;
    record.level = {first, second, third};
    return record;
}

MicrophoneWatch::States after(const Record& record, int frames) {
    MicrophoneWatch watch;
    for (int n = 0; n < frames; ++n) watch.add(record);
    return watch.states();
}

TEST(MicrophoneWatch, FindsDigitalSilenceAfterTwoSeconds) {
    const Record record = withLevels(-30.0f, -INFINITY, -30.0f);
    EXPECT_EQ(after(record, 46)[1], MicrophoneState::Alive);
    EXPECT_EQ(after(record, 47)[1], MicrophoneState::Silent);
    EXPECT_EQ(after(record, 47)[0], MicrophoneState::Alive);
}

TEST(MicrophoneWatch, FindsAMicrophoneFarBelowTheOthersAfterFiveSeconds) {
    const Record record = withLevels(-30.0f, -30.0f, -52.0f);
    EXPECT_EQ(after(record, 116)[2], MicrophoneState::Alive);
    EXPECT_EQ(after(record, 130)[2], MicrophoneState::Weak);
    EXPECT_EQ(after(withLevels(-30.0f, -30.0f, -48.0f), 500)[2], MicrophoneState::Alive);
}

TEST(MicrophoneWatch, LetsAQuietRoomBe) {
    const MicrophoneWatch::States states = after(withLevels(-95.0f, -96.0f, -97.0f), 500);
    EXPECT_EQ(states, MicrophoneWatch::States{});
}

TEST(MicrophoneWatch, TakesBackWhatIsHeardAgain) {
    MicrophoneWatch watch;
    for (int n = 0; n < 100; ++n) watch.add(withLevels(-30.0f, -INFINITY, -30.0f));
    for (int n = 0; n < 100; ++n) watch.add(withLevels(-30.0f, -30.0f, -30.0f));
    EXPECT_EQ(watch.states()[1], MicrophoneState::Alive);
}

}  // namespace
