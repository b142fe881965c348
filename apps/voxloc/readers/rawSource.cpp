#include "readers/rawSource.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "common/failure.h"

namespace {

constexpr RawForm Forms[] = {
    {"S16", 2, 16}, {"S24", 4, 24}, {"S24_3", 3, 24}, {"S32", 4, 32}, {"F32", 4, 24},
};
constexpr float FullScale24 = 8388608.0f;  // 2^23

std::uint32_t word(const unsigned char* bytes, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;) value = value << 8 | bytes[i];
    return value;
}

/** Two's complement of the low `bits` bits. */
float signedValue(std::uint32_t value, std::uint32_t bits) {
    const std::uint32_t shift = 32 - bits;
    const std::int64_t whole = static_cast<std::int32_t>(value << shift) / (1LL << shift);
    return static_cast<float>(whole);
}

class RawSource : public SampleSource {
  public:
    RawSource(File file, const RawForm& form, int channels, int rate)
        : file_(std::move(file)), form_(form) {
        format_.kind = std::string("raw ") + form.name;
        format_.channels = channels;
        format_.rate = rate;
        format_.bits = form.bits;
        if (const auto size = file_.size()) format_.length = *size / frameBytes();
    }

    const SampleFormat& format() const override { return format_; }

    std::size_t read(float* samples, std::size_t count) override {
        bytes_.resize(count * frameBytes());
        const std::size_t taken = file_.read(bytes_.data(), bytes_.size());
        const std::size_t whole = taken / frameBytes();
        isTorn_ = isTorn_ || taken % frameBytes() != 0;
        if (whole == 0 && isTorn_) {
            throw BadData(file_.name() + ": damaged at byte " + std::to_string(file_.position()) +
                          ": the samples end before all " + std::to_string(format_.channels) +
                          " channels have theirs");
        }
        unpack(form_, bytes_.data(), whole * static_cast<std::size_t>(format_.channels), samples);
        return whole;
    }

  private:
    std::size_t frameBytes() const {
        return form_.bytes * static_cast<std::size_t>(format_.channels);
    }

    File file_;
    const RawForm& form_;
    SampleFormat format_;
    std::vector<unsigned char> bytes_;
    bool isTorn_ = false;
};

}  // namespace

const RawForm* findRawForm(const std::string& name) {
    const auto* found = std::find_if(std::begin(Forms), std::end(Forms),
                                     [&name](const RawForm& form) { return name == form.name; });
    return found == std::end(Forms) ? nullptr : found;
}

void unpack(const RawForm& form, const unsigned char* bytes, std::size_t count, float* samples) {
    const bool isFloat = form.name[0] == 'F';
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t value = word(bytes + i * form.bytes, form.bytes);
        if (isFloat) {
            float sample;
            std::memcpy(&sample, &value, sizeof sample);
            samples[i] = sample * FullScale24;
        } else {
            samples[i] = signedValue(value, form.bits);
        }
    }
}

std::unique_ptr<SampleSource> openRaw(File file, const std::string& form, int channels, int rate) {
    const RawForm* found = findRawForm(form);
    if (found == nullptr) throw WrongUsage("raw samples are S16, S24, S24_3, S32 or F32");
    if (channels < 1)
        throw WrongUsage("raw samples need their number of channels (--raw-channels)");
    return std::make_unique<RawSource>(std::move(file), *found, channels, rate);
}
