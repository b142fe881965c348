#include "readers/frames.h"

namespace {

class FramesOfSamples : public FrameReader {
  public:
    FramesOfSamples(std::unique_ptr<SampleSource> source, const std::string& name, int rate)
        : source_(std::move(source)) {
        const SampleFormat& samples = source_->format();
        format_.name = name;
        format_.kind = samples.kind;
        format_.channels = samples.channels;
        format_.rate = rate;
        if (samples.length) format_.frames = *samples.length / FRAME_SAMPLES;
        interleaved_.resize(FRAME_SAMPLES * static_cast<std::size_t>(format_.channels));
    }

    const InputFormat& format() const override { return format_; }
    std::uint64_t leftOver() const override { return filled_; }

    bool read(InputFrame& frame) override {
        const auto channels = static_cast<std::size_t>(format_.channels);
        while (filled_ < FRAME_SAMPLES) {
            const std::size_t more =
                source_->read(interleaved_.data() + filled_ * channels, FRAME_SAMPLES - filled_);
            if (more == 0) return false;
            filled_ += more;
        }
        frame.samples.resize(FRAME_SAMPLES * channels);
        for (std::size_t c = 0; c < channels; ++c) {
            float* const to = frame.samples.data() + c * FRAME_SAMPLES;
            for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) to[n] = interleaved_[n * channels + c];
        }
        frame.bits = source_->format().bits;
        frame.flags = 0;
        frame.sample = sample_;
        sample_ += FRAME_SAMPLES;
        filled_ = 0;
        return true;
    }

  private:
    std::unique_ptr<SampleSource> source_;
    InputFormat format_;
    std::vector<float> interleaved_;
    std::size_t filled_ = 0;
    std::uint64_t sample_ = 0;
};

}  // namespace

std::unique_ptr<FrameReader> framesOf(std::unique_ptr<SampleSource> source, const std::string& name,
                                      int rate) {
    return std::make_unique<FramesOfSamples>(std::move(source), name, rate);
}
