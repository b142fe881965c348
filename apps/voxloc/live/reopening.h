/** A capture device that may be pulled out and put in again. */
#ifndef VOXLOC_APP_LIVE_REOPENING_H
#define VOXLOC_APP_LIVE_REOPENING_H

#include <chrono>

#include "live/capture.h"

/** Sleeps for that long; the suites count instead. */
using Sleep = std::function<void(std::chrono::milliseconds)>;

class ReopeningCapture : public Capture {
  public:
    /** Opens the device for the first time and throws what that throws. */
    ReopeningCapture(OpenCapture open, Sleep sleep);

    const CaptureFormat& format() const override { return format_; }
    std::string reason() const override { return reason_; }

    /** Lost once, then Nothing until the device is Back. */
    CaptureRead read(float* samples, std::size_t count) override;

  private:
    CaptureRead tryAgain();
    bool isSame(const CaptureFormat& other) const;

    OpenCapture open_;
    Sleep sleep_;
    std::unique_ptr<Capture> device_;  // null while it is gone
    CaptureFormat format_;
    std::string reason_;
    std::chrono::milliseconds pause_{0};  // between this attempt and the next one
    std::chrono::milliseconds left_{0};   // of the pause
};

#endif
