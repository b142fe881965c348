#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include <vector>

#include "common/failure.h"
#include "live/capture.h"

namespace {

class PipeCapture : public Capture {
  public:
    PipeCapture(int descriptor, const CaptureOptions& options)
        : descriptor_(descriptor), step_(bytesOf(*options.form) * unsigned(options.channels)) {
        format_ = {options.device, std::string("raw ") + nameOf(*options.form), options.channels,
                   options.rate, *options.form};
    }

    const CaptureFormat& format() const override { return format_; }

    CaptureRead read(float* samples, std::size_t count) override {
        pollfd waited = {descriptor_, POLLIN, 0};
        if (poll(&waited, 1, CaptureWait) <= 0) return {};
        bytes_.resize(count * step_);
        const ssize_t got = ::read(descriptor_, bytes_.data() + held_, bytes_.size() - held_);
        if (got < 0) {
            if (errno == EINTR || errno == EAGAIN) return {};
            throw cannot("read", "standard input");
        }
        if (got == 0) return end();
        total_ += static_cast<std::size_t>(got);
        return convert(samples, held_ + static_cast<std::size_t>(got));
    }

  private:
    CaptureRead end() const {
        if (held_ == 0) return {CaptureEvent::Ended, 0};
        throw BadData("the input ends at byte " + std::to_string(total_) +
                      ", in the middle of a sample");
    }

    CaptureRead convert(float* samples, std::size_t bytes) {
        const std::size_t whole = bytes / step_;
        toFloats(format_.form, bytes_.data(), whole * unsigned(format_.channels), samples);
        const auto rest = bytes_.begin() + static_cast<std::ptrdiff_t>(whole * step_);
        held_ = bytes - whole * step_;
        std::copy(rest, rest + static_cast<std::ptrdiff_t>(held_), bytes_.begin());
        if (whole == 0) return {};
        return {CaptureEvent::Samples, whole};
    }

    CaptureFormat format_;
    int descriptor_;
    std::size_t step_;      // bytes of one sample of every channel
    std::size_t held_ = 0;  // bytes of a sample whose rest has not come yet
    std::size_t total_ = 0;
    std::vector<unsigned char> bytes_;
};

}  // namespace

std::unique_ptr<Capture> openPipe(int descriptor, const CaptureOptions& options) {
    return std::make_unique<PipeCapture>(descriptor, options);
}
