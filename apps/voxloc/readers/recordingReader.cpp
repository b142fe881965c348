#include "readers/recordingReader.h"

#include <cstring>

#include "common/failure.h"

namespace {

constexpr std::size_t HeaderBytes = 4;      // 172, 1, product, channels
constexpr std::size_t RecordHeadBytes = 8;  // bits, flags
constexpr std::int32_t OwnArray = 255;      // in place of a product

class RecordingReader : public FrameReader {
  public:
    explicit RecordingReader(File file) : file_(std::move(file)) {
        unsigned char head[HeaderBytes];
        if (file_.read(head, sizeof head) < sizeof head) {
            throw BadData(file_.name() + ": ends at byte " + std::to_string(file_.position()) +
                          ", inside the header of a recording");
        }
        if (std::memcmp(head, RecordingMagic, sizeof RecordingMagic) != 0) {
            throw BadData(file_.name() + ": byte 0: this is not a recording");
        }
        format_.name = file_.name();
        format_.kind = "recording";
        format_.isRecording = true;
        format_.channels = head[3];
        if (head[2] != OwnArray) format_.product = head[2];
        if (format_.channels < 1 || format_.channels > VOXLOC_MAX_CHANNELS) {
            throw BadData(file_.name() + ": byte 3: a recording has 1 to 8 channels, not " +
                          std::to_string(format_.channels));
        }
        samples_ = static_cast<std::size_t>(format_.channels) * FRAME_SAMPLES;
        if (const auto size = file_.size()) {
            format_.frames = (*size - HeaderBytes) / (RecordHeadBytes + samples_ * sizeof(float));
        }
    }

    const InputFormat& format() const override { return format_; }
    std::uint64_t leftOver() const override { return 0; }

    bool read(InputFrame& frame) override {
        const std::uint64_t begin = file_.position();
        std::uint32_t head[2];
        const std::size_t headBytes = file_.read(head, sizeof head);
        if (headBytes == 0) return false;
        frame.samples.resize(samples_);
        const std::size_t wanted = samples_ * sizeof(float);
        if (headBytes < sizeof head || file_.read(frame.samples.data(), wanted) < wanted) {
            fail(file_.position(), "the file ends inside frame " + std::to_string(count_));
        }
        if (head[0] < 1 || head[0] > 32) {
            fail(begin, "frame " + std::to_string(count_) + " has " + std::to_string(head[0]) +
                            " significant bits, 1 to 32 are possible");
        }
        frame.bits = head[0];
        frame.flags = head[1];
        frame.sample = count_ * FRAME_SAMPLES;
        ++count_;
        return true;
    }

  private:
    [[noreturn]] void fail(std::uint64_t byte, const std::string& what) const {
        throw BadData(file_.name() + ": damaged at byte " + std::to_string(byte) + ": " + what);
    }

    File file_;
    InputFormat format_;
    std::size_t samples_ = 0;  // of a frame, all channels
    std::uint64_t count_ = 0;
};

}  // namespace

std::unique_ptr<FrameReader> openRecording(File file) {
    return std::make_unique<RecordingReader>(std::move(file));
}
