#include "readers/channelMap.h"

#include <algorithm>
#include <cmath>

#include "common/failure.h"
#include "common/record.h"

namespace {

class MappedReader : public FrameReader {
  public:
    MappedReader(std::unique_ptr<FrameReader> reader, const ReadOptions& options)
        : reader_(std::move(reader)), options_(options) {
        factor_ = static_cast<float>(std::pow(10.0, options.gain / 20.0));
        firstSample_ =
            static_cast<std::uint64_t>(options.start * SampleRate) / FRAME_SAMPLES * FRAME_SAMPLES;
    }

    const InputFormat& format() const override { return reader_->format(); }
    std::uint64_t leftOver() const override { return reader_->leftOver(); }

    bool read(InputFrame& frame) override {
        do {
            if (!reader_->read(input_)) return false;
        } while (input_.sample < firstSample_);
        if (options_.end && static_cast<double>(input_.sample) >= *options_.end * SampleRate) {
            return false;
        }
        frame.bits = input_.bits;
        frame.flags = input_.flags;
        frame.sample = input_.sample;
        if (options_.channels.empty()) {
            frame.samples.swap(input_.samples);
        } else {
            pick(frame);
        }
        if (options_.gain != 0.0) {
            for (float& sample : frame.samples) sample *= factor_;
        }
        return true;
    }

  private:
    void pick(InputFrame& frame) {
        frame.samples.resize(options_.channels.size() * FRAME_SAMPLES);
        for (std::size_t c = 0; c < options_.channels.size(); ++c) {
            std::copy_n(input_.samples.begin() + options_.channels[c] * FRAME_SAMPLES,
                        FRAME_SAMPLES,
                        frame.samples.begin() + static_cast<std::ptrdiff_t>(c * FRAME_SAMPLES));
        }
    }

    std::unique_ptr<FrameReader> reader_;
    ReadOptions options_;
    InputFrame input_;
    float factor_ = 1.0f;
    std::uint64_t firstSample_ = 0;
};

}  // namespace

int mappedChannels(const InputFormat& format, const ReadOptions& options) {
    return options.channels.empty() ? format.channels : static_cast<int>(options.channels.size());
}

std::unique_ptr<FrameReader> mapped(std::unique_ptr<FrameReader> reader,
                                    const ReadOptions& options) {
    const InputFormat& format = reader->format();
    for (const int channel : options.channels) {
        if (channel < 0 || channel >= format.channels) {
            throw BadData(format.name + ": --channels names channel " + std::to_string(channel) +
                          ", the input has 0 to " + std::to_string(format.channels - 1));
        }
    }
    if (options.channels.empty() && options.gain == 0.0 && options.start <= 0.0 && !options.end) {
        return reader;
    }
    return std::make_unique<MappedReader>(std::move(reader), options);
}
