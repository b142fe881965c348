#include "live/reopening.h"

#include <algorithm>
#include <utility>

#include "common/failure.h"

namespace {

constexpr std::chrono::milliseconds FirstPause(200), LongestPause(3200), Slice(CaptureWait);

}  // namespace

ReopeningCapture::ReopeningCapture(OpenCapture open, Sleep sleep)
    : open_(std::move(open)), sleep_(std::move(sleep)), device_(open_()) {
    format_ = device_->format();
}

CaptureRead ReopeningCapture::read(float* samples, std::size_t count) {
    if (device_ == nullptr) return tryAgain();
    const CaptureRead got = device_->read(samples, count);
    if (got.event == CaptureEvent::Lost) {
        reason_ = device_->reason();
        device_.reset();
        pause_ = left_ = FirstPause;
    }
    return got;
}

CaptureRead ReopeningCapture::tryAgain() {
    const auto slice = std::min(left_, Slice);
    sleep_(slice);
    left_ -= slice;
    if (left_.count() > 0) return {};
    try {
        std::unique_ptr<Capture> device = open_();
        if (isSame(device->format())) {
            device_ = std::move(device);
            return {CaptureEvent::Back, 0};
        }
        reason_ = "another device has come instead";
    } catch (const BadData& failure) {
        reason_ = failure.what();
    }
    pause_ = left_ = std::min(pause_ * 2, LongestPause);
    return {};
}

bool ReopeningCapture::isSame(const CaptureFormat& other) const {
    return other.channels == format_.channels && other.rate == format_.rate &&
           other.form == format_.form;
}
