#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <string>
#include <vector>

#include "initializedModule.h"
#include "kit/temporaryFile.h"

namespace {

TEST(Recording, HoldsTheHeaderAndEveryFrameByteForByte) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_DOVETAIL);
    std::string expected = "\xAC\x01\x05\x06";
    TrackerResult result{};
    EXPECT_EQ(voxloc_record_isOpen(), 0);
    EXPECT_EQ(voxloc_record_start(file.path()), 6);
    EXPECT_EQ(voxloc_record_isOpen(), 1);
    for (std::uint32_t i = 0; i < 5; ++i) {
        std::vector<float> frame = noiseFrame(6, i);
        if (i == 3) frame[77] = NAN;
        const std::uint32_t flags = 0xabcd0000U + i;  // bits that mean nothing are recorded, too
        voxloc_calculate(frame.data(), 24 - i, flags, &result);
        expected += recordOf(24 - i, flags, frame);
    }
    voxloc_record_stop();
    EXPECT_TRUE(file.content() == expected);
    EXPECT_EQ(expected.size(), 4U + 5U * (8U + 6U * 2048U * 4U));
}

TEST(Recording, TakesTheChannelsOfTheProduct) {
    const TemporaryFile file;
    {
        const InitializedModule module(PRODUCT_GANNET);
        const std::vector<float> frame = noiseFrame(8, 1);
        TrackerResult result{};
        EXPECT_EQ(voxloc_record_start(file.path()), 8);
        voxloc_calculate(frame.data(), 24, 0, &result);
        voxloc_calculate(frame.data(), 24, 3, &result);
    }  // the end of the module ends the recording
    EXPECT_EQ(voxloc_record_isOpen(), 0);
    const std::string content = file.content();
    EXPECT_EQ(content.size(), 4U + 2U * (8U + 8U * 2048U * 4U));
    EXPECT_EQ(content.substr(0, 4), "\xAC\x01\x07\x08");
}

TEST(Recording, TakesNothingBeforeItsStartAndAfterItsStop) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    TrackerResult result{};
    voxloc_calculate(noiseFrame(4, 1).data(), 24, 0, &result);
    voxloc_record_start(file.path());
    const std::vector<float> frame = noiseFrame(4, 2);
    voxloc_calculate(frame.data(), 24, 0, &result);
    voxloc_record_stop();
    EXPECT_EQ(voxloc_record_isOpen(), 0);
    voxloc_calculate(noiseFrame(4, 3).data(), 24, 0, &result);
    EXPECT_TRUE(file.content() == "\xAC\x01\x06\x04" + recordOf(24, 0, frame));
    voxloc_record_stop();  // does nothing
    EXPECT_EQ(voxloc_record_isOpen(), 0);
}

TEST(Recording, EndsWhenAnotherOneIsStarted) {
    const TemporaryFile first;
    const TemporaryFile second;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    const std::vector<float> frame = noiseFrame(4, 2);
    TrackerResult result{};
    voxloc_record_start(first.path());
    voxloc_calculate(frame.data(), 24, 0, &result);
    voxloc_record_start(second.path());
    const std::string expected = "\xAC\x01\x06\x04" + recordOf(24, 0, frame);
    EXPECT_TRUE(first.content() == expected);  // closed, so all of it is there
    voxloc_calculate(frame.data(), 24, 0, &result);
    voxloc_record_stop();
    EXPECT_TRUE(first.content() == expected);
    EXPECT_TRUE(second.content() == expected);
}

TEST(Recording, StartedAgainOnItsOwnFileBeginsAnew) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    const std::vector<float> frame = noiseFrame(4, 2);
    TrackerResult result{};
    voxloc_record_start(file.path());
    voxloc_calculate(frame.data(), 24, 0, &result);
    voxloc_record_start(file.path());
    voxloc_record_stop();
    EXPECT_EQ(file.content(), "\xAC\x01\x06\x04");
}

// The header tells what the module is at that moment; the frames follow once there are any.
TEST(Recording, MayBeStartedBeforeInitialize) {
    const TemporaryFile file;
    { const InitializedModule earlier(PRODUCT_CINDER); }
    EXPECT_EQ(voxloc_record_start(file.path()), 6);
    const std::vector<float> frame = noiseFrame(4, 2);
    {
        const InitializedModule module(PRODUCT_FOXGLOVE);
        TrackerResult result{};
        voxloc_calculate(frame.data(), 24, 1, &result);
    }
    EXPECT_TRUE(file.content() == "\xAC\x01\x02\x06" + recordOf(24, 1, frame));
}

// Destroy has nothing to do then, and does not end a recording either.
TEST(Recording, SurvivesADestroyOfAnUninitializedModule) {
    const TemporaryFile file;
    { const InitializedModule earlier(PRODUCT_CINDER); }
    voxloc_record_start(file.path());
    voxloc_destroy();
    EXPECT_NE(voxloc_record_isOpen(), 0);
    voxloc_record_stop();
    EXPECT_EQ(file.content(), "\xAC\x01\x02\x06");
}

// The results of some frames of speech, as bytes, while recording to a path or not at all.
std::string resultsWhileRecordingTo(const char* path, int* started) {
    const InitializedModule module(PRODUCT_ASTER);
    Clips clips;
    if (path != nullptr) *started = voxloc_record_start(path);
    std::string results;
    for (int i = 0; i < 15; ++i) {
        TrackerResult result{};
        voxloc_calculate(clips.talker(), 24, 0, &result);
        results += bytesOf(&result, sizeof result);
    }
    voxloc_record_stop();
    return results;
}

TEST(Recording, LeavesTheResultsAlone) {
    const TemporaryFile file;
    int started = -1;
    const std::string without = resultsWhileRecordingTo(nullptr, nullptr);
    EXPECT_TRUE(resultsWhileRecordingTo(file.path(), &started) == without);
    EXPECT_EQ(started, 6);
}

TEST(Recording, ToAPathThatCannotBeOpenedIsRefusedAndProcessingGoesOn) {
    int started = -1;
    const std::string without = resultsWhileRecordingTo(nullptr, nullptr);
    const std::string path = ::testing::TempDir() + "no/such/folder/recording";
    EXPECT_TRUE(resultsWhileRecordingTo(path.c_str(), &started) == without);
    EXPECT_EQ(started, 0);
}

TEST(Recording, ThatIsRefusedEndsTheOneThatIsOpen) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_ASTER);
    voxloc_record_start(file.path());
    const std::string path = ::testing::TempDir() + "no/such/folder/recording";
    EXPECT_EQ(voxloc_record_start(path.c_str()), 0);
    EXPECT_EQ(voxloc_record_isOpen(), 0);
    EXPECT_EQ(file.content(), std::string("\xAC\x01\x00\x06", 4));
}

TEST(Recording, ToAFullDiskDoesNoHarm) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "there is no /dev/full here";
    int started = -1;
    const std::string without = resultsWhileRecordingTo(nullptr, nullptr);
    EXPECT_TRUE(resultsWhileRecordingTo("/dev/full", &started) == without);
    EXPECT_LT(started, 0);  // the header cannot be written
    EXPECT_EQ(voxloc_record_getLostFrames(), 15U);
}

}  // namespace
