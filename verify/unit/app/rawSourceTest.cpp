#include "readers/rawSource.h"

#include <gtest/gtest.h>

#include <cstring>

#include "appFiles.h"
#include "common/failure.h"

namespace {

std::vector<float> unpacked(const char* form, std::vector<unsigned char> bytes) {
    const RawForm& found = *findRawForm(form);
    std::vector<float> samples(bytes.size() / found.bytes);
    unpack(found, bytes.data(), samples.size(), samples.data());
    return samples;
}

TEST(RawSamples, AreLittleEndianWholeNumbers) {
    using Floats = std::vector<float>;
    EXPECT_EQ(unpacked("S16", {1, 0, 0xff, 0xff, 0, 0x80, 0xff, 0x7f}),
              (Floats{1, -1, -32768, 32767}));
    EXPECT_EQ(unpacked("S24_3", {1, 2, 3, 0xff, 0xff, 0xff, 0, 0, 0x80}),
              (Floats{0x030201, -1, -8388608}));
    EXPECT_EQ(unpacked("S32", {1, 0, 0, 0, 0, 0, 0, 0x80}), (Floats{1, -2147483648.0f}));
}

TEST(RawSamples, OfTwentyFourBitsInFourBytesIgnoreTheHighOne) {
    EXPECT_EQ(unpacked("S24", {1, 0, 0, 0x55, 0xff, 0xff, 0xff, 0, 0, 0, 0x80, 0xff}),
              (std::vector<float>{1, -1, -8388608}));
}

TEST(RawSamples, OfFloatsAreScaledToTwentyFourBits) {
    std::vector<unsigned char> bytes(8);
    const float values[] = {0.5f, -1.0f};
    std::memcpy(bytes.data(), values, sizeof values);
    EXPECT_EQ(unpacked("F32", bytes), (std::vector<float>{4194304, -8388608}));
}

TEST(RawSamples, HaveNoOtherForm) {
    EXPECT_EQ(findRawForm("S8"), nullptr);
    EXPECT_EQ(findRawForm("S32")->bits, 32U);
    EXPECT_EQ(findRawForm("S24")->bits, 24U);
    EXPECT_EQ(findRawForm("S16")->bits, 16U);
}

ReadOptions rawOptions(int channels) {
    ReadOptions options;
    options.rawFormat = "S16";
    options.rawChannels = channels;
    return options;
}

TEST(RawInput, BecomesFramesChannelByChannel) {
    const TemporaryFolder folder;
    std::string bytes;
    for (std::size_t n = 0; n < 2 * FRAME_SAMPLES + 5; ++n) {
        for (std::size_t c = 0; c < 3; ++c) {
            const int code = codeOf(c, n);
            bytes += static_cast<char>(code & 0xff);
            bytes += static_cast<char>(code >> 8 & 0xff);
        }
    }
    const auto reader = openReader(folder.write("raw", bytes), rawOptions(3));
    EXPECT_EQ(reader->format().frames, 2U);
    const std::vector<InputFrame> frames = allFrames(*reader);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(reader->leftOver(), 5U);
    for (std::size_t f = 0; f < 2; ++f) {
        EXPECT_EQ(frames[f].bits, 16U);
        EXPECT_EQ(frames[f].sample, f * FRAME_SAMPLES);
        for (std::size_t c = 0; c < 3; ++c) {
            for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) {
                ASSERT_EQ(frames[f].samples[c * FRAME_SAMPLES + n],
                          static_cast<float>(codeOf(c, f * FRAME_SAMPLES + n)));
            }
        }
    }
}

TEST(RawInput, ThatEndsInsideASampleIsDamaged) {
    const TemporaryFolder folder;
    const std::string path = folder.write("raw", std::string(2048 * 4 + 3, 'x'));
    const auto reader = openReader(path, rawOptions(2));
    std::string damage;
    EXPECT_EQ(allFrames(*reader, &damage).size(), 1U);
    EXPECT_EQ(damage, path +
                          ": damaged at byte 8195: the samples end before all 2 channels have "
                          "theirs");
}

TEST(RawInput, NeedsItsChannels) {
    const TemporaryFolder folder;
    const std::string path = folder.write("raw", "1234");
    EXPECT_NE(refusalOf<WrongUsage>([&] { openReader(path, rawOptions(0)); }), "");
}

}  // namespace
