#include "readers/resampler.h"

#include <soxr.h>

#include <cmath>
#include <vector>

#include "common/failure.h"
#include "common/record.h"

namespace {

constexpr int LowestRate = 8000, HighestRate = 768000;  // Hz

struct DeleteResampler {
    void operator()(soxr_t resampler) const { soxr_delete(resampler); }
};

class Resampler : public SampleSource {
  public:
    explicit Resampler(std::unique_ptr<SampleSource> source)
        : source_(std::move(source)), format_(source_->format()) {
        const soxr_io_spec_t floats = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        soxr_error_t error = nullptr;
        resampler_.reset(soxr_create(format_.rate, SampleRate,
                                     static_cast<unsigned>(format_.channels), &error, &floats,
                                     &quality, nullptr));
        if (error != nullptr) throw BadData(std::string("cannot resample: ") + error);
        if (format_.length) {
            format_.length = static_cast<std::uint64_t>(
                std::llround(static_cast<double>(*format_.length) * SampleRate / format_.rate));
        }
        format_.rate = SampleRate;
        input_.resize(BlockSamples * static_cast<std::size_t>(format_.channels));
    }

    const SampleFormat& format() const override { return format_; }

    std::size_t read(float* samples, std::size_t count) override {
        const auto channels = static_cast<std::size_t>(format_.channels);
        std::size_t done = 0;
        while (done < count && !isDrained_) {
            if (begin_ == end_ && !isAtEnd_) refill();
            std::size_t used = 0, made = 0;
            const float* input =
                isAtEnd_ && begin_ == end_ ? nullptr : input_.data() + begin_ * channels;
            soxr_process(resampler_.get(), input, end_ - begin_, &used, samples + done * channels,
                         count - done, &made);
            begin_ += used;
            done += made;
            isDrained_ = input == nullptr && made == 0;
        }
        // Damage waits until what came before it is through the filter.
        if (done == 0 && damage_ != nullptr) std::rethrow_exception(damage_);
        return done;
    }

  private:
    static constexpr std::size_t BlockSamples = 4096;

    void refill() {
        begin_ = 0;
        try {
            end_ = source_->read(input_.data(), BlockSamples);
        } catch (const BadData&) {
            damage_ = std::current_exception();
            end_ = 0;
        }
        isAtEnd_ = end_ == 0;
    }

    std::unique_ptr<SampleSource> source_;
    SampleFormat format_;
    std::unique_ptr<soxr, DeleteResampler> resampler_;
    std::vector<float> input_;
    std::size_t begin_ = 0, end_ = 0;
    bool isAtEnd_ = false, isDrained_ = false;
    std::exception_ptr damage_;
};

}  // namespace

std::unique_ptr<SampleSource> resampled(std::unique_ptr<SampleSource> source) {
    const int rate = source->format().rate;
    if (rate == SampleRate) return source;
    if (rate < LowestRate || rate > HighestRate) {
        throw BadData("a rate of " + std::to_string(rate) + " Hz cannot be used: 8 to 768 kHz can");
    }
    return std::make_unique<Resampler>(std::move(source));
}
