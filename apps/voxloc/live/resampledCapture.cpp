#include "live/resampledCapture.h"

#include <soxr.h>
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "common/failure.h"
#include "common/record.h"

namespace {

struct DeleteResampler {
    void operator()(soxr_t resampler) const { soxr_delete(resampler); }
};

class ResampledCapture : public Capture {
  public:
    explicit ResampledCapture(std::unique_ptr<Capture> source)
        : source_(std::move(source)), format_(source_->format()) {
        ratio_ = double(format_.rate) / SampleRate;
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        soxr_error_t error = nullptr;
        resampler_.reset(soxr_create(format_.rate, SampleRate, unsigned(format_.channels), &error,
                                     nullptr, &quality, nullptr));
        if (error != nullptr) throw BadData(std::string("cannot resample: ") + error);
        format_.rate = SampleRate;
    }

    const CaptureFormat& format() const override { return format_; }
    std::string reason() const override { return source_->reason(); }

    CaptureRead read(float* samples, std::size_t count) override {
        const auto wanted = static_cast<std::size_t>(std::ceil(double(count) * ratio_));
        if (available_ == 0) {
            in_.resize(wanted * unsigned(format_.channels));
            const CaptureRead got = source_->read(in_.data(), wanted);
            if (got.event == CaptureEvent::Gap || got.event == CaptureEvent::Back) forget();
            if (got.event == CaptureEvent::Ended) return drain(samples, count);
            if (got.event != CaptureEvent::Samples) return got;
            used_ = 0;
            available_ = got.count;
        }
        return process(samples, count);
    }

  private:
    void forget() { soxr_clear(resampler_.get()); }

    CaptureRead process(float* samples, std::size_t count) {
        std::size_t taken = 0, made = 0;
        soxr_process(resampler_.get(), in_.data() + used_ * unsigned(format_.channels), available_,
                     &taken, samples, count, &made);
        used_ += taken;
        available_ -= taken;
        if (made == 0) return {};
        return {CaptureEvent::Samples, made};
    }

    /** What the filter still holds. */
    CaptureRead drain(float* samples, std::size_t count) {
        std::size_t made = 0;
        soxr_process(resampler_.get(), nullptr, 0, nullptr, samples, count, &made);
        if (made == 0) return {CaptureEvent::Ended, 0};
        return {CaptureEvent::Samples, made};
    }

    std::unique_ptr<Capture> source_;
    CaptureFormat format_;
    double ratio_ = 1.0;
    std::unique_ptr<soxr, DeleteResampler> resampler_;
    std::vector<float> in_;
    std::size_t used_ = 0, available_ = 0;  // of in_, samples a channel
};

}  // namespace

std::unique_ptr<Capture> resampled(std::unique_ptr<Capture> source) {
    return std::make_unique<ResampledCapture>(std::move(source));
}
