#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "common/failure.h"
#include "common/signals.h"
#include "live/capture.h"
#include "live/wavHeader.h"

namespace {

class PipeCapture : public Capture {
  public:
    PipeCapture(int descriptor, const CaptureOptions& options)
        : format_{"standard input", "", options.channels, options.rate, options.form},
          descriptor_(descriptor) {
        if (options.form == nullptr) takeHeader();
        if (format_.channels < 1) {
            throw WrongUsage("raw samples need their number of channels (--raw-channels)");
        }
        format_.kind =
            (options.form == nullptr ? "WAV " : "raw ") + std::string(format_.form->name);
        step_ = format_.form->bytes * static_cast<std::size_t>(format_.channels);
    }

    const CaptureFormat& format() const override { return format_; }

    CaptureRead read(float* samples, std::size_t count) override {
        bytes_.resize(count * step_);
        std::size_t wanted = bytes_.size() - held_;
        if (left_) wanted = static_cast<std::size_t>(std::min<std::uint64_t>(wanted, *left_));
        const std::optional<std::size_t> got = some(bytes_.data() + held_, wanted);
        if (!got) return {};
        if (*got == 0) return end();
        if (left_) *left_ -= *got;
        return convert(samples, held_ + *got);
    }

  private:
    void takeHeader() {
        const WavHeader header = readWavHeader(
            [this](unsigned char* bytes, std::size_t count) { exactly(bytes, count); });
        format_.channels = header.channels;
        format_.rate = header.rate;
        format_.form = header.form;
        left_ = header.bytes;
    }

    /** What is there, 0 at the end, or nothing within the time to wait. */
    std::optional<std::size_t> some(unsigned char* bytes, std::size_t count) {
        pollfd waited = {descriptor_, POLLIN, 0};
        if (poll(&waited, 1, CaptureWait) <= 0) return {};
        const ssize_t got = ::read(descriptor_, bytes, count);
        if (got < 0 && errno != EINTR && errno != EAGAIN) throw cannot("read", "standard input");
        if (got < 0) return {};
        total_ += static_cast<std::uint64_t>(got);
        return static_cast<std::size_t>(got);
    }

    void exactly(unsigned char* bytes, std::size_t count) {
        while (count > 0) {
            const std::optional<std::size_t> got = some(bytes, count);
            if (stopRequested()) throw BadData("interrupted before the sound began");
            if (got && *got == 0) throw BadData(ending("within the WAV header"));
            bytes += got.value_or(0);
            count -= got.value_or(0);
        }
    }

    std::string ending(const std::string& where) const {
        return "standard input ends at byte " + std::to_string(total_) + ", " + where;
    }

    CaptureRead end() const {
        if (total_ == 0) throw BadData("standard input is empty");
        if (held_ > 0) throw BadData(ending("in the middle of a sample"));
        return {CaptureEvent::Ended, 0};
    }

    CaptureRead convert(float* samples, std::size_t bytes) {
        const std::size_t whole = bytes / step_;
        unpack(*format_.form, bytes_.data(), whole * static_cast<std::size_t>(format_.channels),
               samples);
        held_ = bytes - whole * step_;
        std::copy_n(bytes_.data() + whole * step_, held_, bytes_.data());
        if (whole == 0) return {};
        return {CaptureEvent::Samples, whole};
    }

    CaptureFormat format_;
    int descriptor_;
    std::size_t step_ = 0;               // bytes of one sample of every channel
    std::size_t held_ = 0;               // bytes of a sample whose rest has not come yet
    std::uint64_t total_ = 0;            // bytes that have come
    std::optional<std::uint64_t> left_;  // bytes of samples that are to come, where it is known
    std::vector<unsigned char> bytes_;
};

}  // namespace

std::unique_ptr<Capture> openPipe(int descriptor, const CaptureOptions& options) {
    return std::make_unique<PipeCapture>(descriptor, options);
}
