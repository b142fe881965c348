#include "readers/recordingReader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "appFiles.h"
#include "common/failure.h"

namespace {

constexpr std::size_t RecordBytes = 8 + 2 * FRAME_SAMPLES * sizeof(float);

template <class Value>
void append(std::string& bytes, Value value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/** A recording of two channels with three frames. */
std::string recording(unsigned char product, unsigned char channels = 2) {
    std::string bytes = "\xac\x01";
    bytes += static_cast<char>(product);
    bytes += static_cast<char>(channels);
    for (std::uint32_t f = 0; f < 3; ++f) {
        append(bytes, 16U + f);
        append(bytes, 0xabcd0000U + f);
        for (std::size_t c = 0; c < 2; ++c) {
            for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) {
                append(bytes, static_cast<float>(codeOf(c, n)) + static_cast<float>(f) / 4.0f);
            }
        }
    }
    return bytes;
}

TEST(RecordingReader, GivesBitsFlagsAndSamplesAsTheyWere) {
    const TemporaryFolder folder;
    const auto reader = openReader(folder.write("a.rec", recording(PRODUCT_FOXGLOVE)), {});
    EXPECT_TRUE(reader->format().isRecording);
    EXPECT_EQ(reader->format().product, PRODUCT_FOXGLOVE);
    EXPECT_EQ(reader->format().channels, 2);
    EXPECT_EQ(reader->format().frames, 3U);
    const std::vector<InputFrame> frames = allFrames(*reader);
    ASSERT_EQ(frames.size(), 3U);
    for (std::uint32_t f = 0; f < 3; ++f) {
        EXPECT_EQ(frames[f].bits, 16U + f);
        EXPECT_EQ(frames[f].flags, 0xabcd0000U + f);
        EXPECT_EQ(frames[f].sample, 2048U * f);
        EXPECT_EQ(frames[f].samples[2048 + 77],
                  static_cast<float>(codeOf(1, 77)) + static_cast<float>(f) / 4.0f);
    }
}

TEST(RecordingReader, KnowsNoProductOfAnArrayOfOnesOwn) {
    const TemporaryFolder folder;
    EXPECT_FALSE(
        openReader(folder.write("a.rec", recording(255)), {})->format().product.has_value());
}

TEST(RecordingReader, NamesTheByteWhereTheFileEndsEarly) {
    const TemporaryFolder folder;
    for (const std::size_t size :
         {4 + RecordBytes + 1, 4 + RecordBytes + 8, 4 + 2 * RecordBytes - 1}) {
        const std::string path = folder.write("a.rec", recording(0).substr(0, size));
        const auto reader = openReader(path, {});
        std::string damage;
        EXPECT_EQ(allFrames(*reader, &damage).size(), 1U);
        EXPECT_EQ(damage, path + ": damaged at byte " + std::to_string(size) +
                              ": the file ends inside frame 1");
    }
}

TEST(RecordingReader, TakesOneToThirtyTwoBitsAlone) {
    const TemporaryFolder folder;
    for (const std::uint32_t bits : {0U, 33U, 0xffffffffU}) {
        std::string bytes = recording(0);
        std::memcpy(bytes.data() + 4 + RecordBytes, &bits, sizeof bits);
        const std::string path = folder.write("a.rec", bytes);
        const auto reader = openReader(path, {});
        std::string damage;
        EXPECT_EQ(allFrames(*reader, &damage).size(), 1U);
        EXPECT_EQ(damage, path + ": damaged at byte " + std::to_string(4 + RecordBytes) +
                              ": frame 1 has " + std::to_string(bits) +
                              " significant bits, 1 to 32 are possible");
    }
    std::string bytes = recording(0);
    const std::uint32_t most = 32;
    std::memcpy(bytes.data() + 4, &most, sizeof most);
    EXPECT_EQ(allFrames(*openReader(folder.write("a.rec", bytes), {})).size(), 3U);
}

TEST(RecordingReader, RefusesAHeaderThatCannotBe) {
    const TemporaryFolder folder;
    const auto refusal = [&folder](const std::string& bytes) {
        return refusalOf<BadData>([&] { openReader(folder.write("a.rec", bytes), {}); });
    };
    const std::string path = folder.path("a.rec");
    EXPECT_EQ(refusal("\xac\x01\x05"), path + ": ends at byte 3, inside the header of a recording");
    EXPECT_EQ(refusal(recording(0, 0)), path + ": byte 3: a recording has 1 to 8 channels, not 0");
    EXPECT_EQ(refusal(recording(0, 9)), path + ": byte 3: a recording has 1 to 8 channels, not 9");
}

TEST(RecordingReader, GivesNoFrameOfAHeaderAlone) {
    const TemporaryFolder folder;
    const auto reader = openReader(folder.write("a.rec", recording(0).substr(0, 4)), {});
    EXPECT_TRUE(allFrames(*reader).empty());
}

}  // namespace
