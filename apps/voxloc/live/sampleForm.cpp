#include "live/sampleForm.h"

#include <array>
#include <cmath>
#include <cstring>

namespace {

struct Form {
    SampleForm form;
    const char* name;
    std::size_t bytes;
    std::uint32_t bits;
};
constexpr std::array<Form, 5> Forms{{{SampleForm::S16, "S16", 2, 16},
                                     {SampleForm::S24, "S24", 4, 24},
                                     {SampleForm::S24_3, "S24_3", 3, 24},
                                     {SampleForm::S32, "S32", 4, 32},
                                     {SampleForm::F32, "F32", 4, 24}}};

const Form& find(SampleForm form) {
    for (const Form& candidate : Forms) {
        if (candidate.form == form) return candidate;
    }
    return Forms[0];
}

/** The lowest `count` bytes at the top of a word, so that the sign is where it belongs. */
std::int32_t atTheTop(const unsigned char* bytes, int count) {
    std::uint32_t word = 0;
    for (int i = 0; i < count; ++i) {
        word |= static_cast<std::uint32_t>(bytes[i]) << (8 * (4 - count + i));
    }
    std::int32_t value;
    std::memcpy(&value, &word, sizeof value);
    return value;
}

float fromFloat(const unsigned char* bytes) {
    const std::int32_t word = atTheTop(bytes, 4);
    float value;
    std::memcpy(&value, &word, sizeof value);
    constexpr float FullScale = 8388608.0f; // 24 bits
    const float scaled = std::nearbyint(value * FullScale);
    return std::isfinite(scaled) ? scaled : 0.0f;
}

}  // namespace

std::optional<SampleForm> sampleFormFrom(std::string_view name) {
    for (const Form& candidate : Forms) {
        if (name == candidate.name) return candidate.form;
    }
    return {};
}

const char* nameOf(SampleForm form) {
    return find(form).name;
}

std::size_t bytesOf(SampleForm form) {
    return find(form).bytes;
}

std::uint32_t bitsOf(SampleForm form) {
    return find(form).bits;
}

void toFloats(SampleForm form, const unsigned char* bytes, std::size_t count, float* samples) {
    const std::size_t step = bytesOf(form);
    for (std::size_t i = 0; i < count; ++i, bytes += step) {
        switch (form) {
            case SampleForm::S16:
                samples[i] = static_cast<float>(atTheTop(bytes, 2) / 65536);
                break;
            case SampleForm::S24:
            case SampleForm::S24_3:
                samples[i] = static_cast<float>(atTheTop(bytes, 3) / 256);
                break;
            case SampleForm::S32:
                samples[i] = static_cast<float>(atTheTop(bytes, 4));
                break;
            case SampleForm::F32:
                samples[i] = fromFloat(bytes);
                break;
        }
    }
}
