#include "readers/channelMap.h"

#include <gtest/gtest.h>

#include "appFiles.h"
#include "common/failure.h"

namespace {

/** Frames whose samples tell frame, channel and place apart. */
class Numbered : public FrameReader {
  public:
    explicit Numbered(int channels) {
        format_.name = "numbered";
        format_.channels = channels;
    }
    const InputFormat& format() const override { return format_; }
    std::uint64_t leftOver() const override { return 0; }
    bool read(InputFrame& frame) override {
        if (count_ == 100) return false;
        frame.sample = count_ * FRAME_SAMPLES;
        frame.flags = static_cast<std::uint32_t>(count_);
        frame.samples.assign(static_cast<std::size_t>(format_.channels) * FRAME_SAMPLES, 0.0f);
        for (std::size_t i = 0; i < frame.samples.size(); ++i) {
            frame.samples[i] = static_cast<float>(i / FRAME_SAMPLES * 10000 + i % FRAME_SAMPLES);
        }
        ++count_;
        return true;
    }

  private:
    InputFormat format_;
    std::uint64_t count_ = 0;
};

std::unique_ptr<FrameReader> numbered(const ReadOptions& options) {
    return mapped(std::make_unique<Numbered>(4), options);
}

TEST(ChannelMap, PutsChannelsInTheOrderThatIsGiven) {
    ReadOptions options;
    options.channels = {3, 0, 3};
    const auto reader = numbered(options);
    EXPECT_EQ(mappedChannels(reader->format(), options), 3);
    InputFrame frame;
    ASSERT_TRUE(reader->read(frame));
    ASSERT_EQ(frame.samples.size(), 3U * FRAME_SAMPLES);
    EXPECT_EQ(frame.samples[5], 30005.0f);
    EXPECT_EQ(frame.samples[FRAME_SAMPLES + 5], 5.0f);
    EXPECT_EQ(frame.samples[2 * FRAME_SAMPLES + 2047], 32047.0f);
}

TEST(ChannelMap, RefusesChannelsThatTheInputLacks) {
    ReadOptions options;
    options.channels = {0, 4};
    EXPECT_EQ(refusalOf<BadData>([&] { numbered(options); }),
              "numbered: --channels names channel 4, the input has 0 to 3");
}

TEST(Gain, IsInDecibels) {
    ReadOptions options;
    options.gain = -20.0;
    InputFrame frame;
    ASSERT_TRUE(numbered(options)->read(frame));
    EXPECT_FLOAT_EQ(frame.samples[1000], 100.0f);
}

TEST(StartAndEnd, KeepTheFramesThatBeginBetweenThem) {
    ReadOptions options;
    options.start = 1.0;  // inside frame 23, which begins at 0.981 s
    options.end = 2.0;    // inside frame 46
    const std::vector<InputFrame> frames = allFrames(*numbered(options));
    ASSERT_EQ(frames.size(), 24U);
    EXPECT_EQ(frames.front().sample, 23U * FRAME_SAMPLES);
    EXPECT_EQ(frames.front().flags, 23U);
    EXPECT_EQ(frames.back().sample, 46U * FRAME_SAMPLES);
}

TEST(StartAndEnd, BeyondTheInputGiveNothing) {
    ReadOptions options;
    options.start = 1e6;
    EXPECT_TRUE(allFrames(*numbered(options)).empty());
    options.start = 0.0;
    options.end = 0.0;
    EXPECT_TRUE(allFrames(*numbered(options)).empty());
}

}  // namespace
