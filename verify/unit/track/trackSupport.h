/** What the checks of the detectors, the real transform and the generator share. */
#ifndef VERIFY_TRACK_SUPPORT_H
#define VERIFY_TRACK_SUPPORT_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kit/guardedFloats.h"
#include "track/grids.h"

namespace trackSupport {

constexpr double wide(float value) {
    return static_cast<double>(value);
}

constexpr double Epsilon = wide(std::numeric_limits<float>::epsilon());

inline std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline float floatFromBits(std::uint32_t bits) {
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

inline float next(float value) {
    return std::nextafter(value, std::numeric_limits<float>::infinity());
}

inline float previous(float value) {
    return std::nextafter(value, -std::numeric_limits<float>::infinity());
}

/** Index of the first float whose bits differ; count when there is none. */
inline std::size_t firstDifference(const float* a, const float* b, std::size_t count) {
    std::size_t i = 0;
    while (i < count && bitsOf(a[i]) == bitsOf(b[i])) i++;
    return i;
}

/** A guarded buffer from a vector, or of NaNs of a pattern by which a float never written shows. */
class GuardedFloats : public reference::GuardedFloats {
  public:
    explicit GuardedFloats(std::size_t count)
        : reference::GuardedFloats(count, 0, floatFromBits(Unwritten)) {}
    explicit GuardedFloats(const std::vector<float>& content) : GuardedFloats(content.size()) {
        std::copy(content.begin(), content.end(), begin());
    }

    float* begin() { return data(); }
    float* end() { return data() + size(); }
    std::vector<float> content() const { return {data(), data() + size()}; }
    bool isUntouched(std::size_t i) const { return bitsOf(data()[i]) == Unwritten; }

  private:
    static constexpr std::uint32_t Unwritten = 0x7fc5a5a5;
};

inline std::vector<float> randomFloats(std::size_t count, unsigned seed, float scale = 1.0f) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-scale, scale);
    std::vector<float> result(count);
    for (float& value : result) value = uniform(random);
    return result;
}

/** Spectra of some channels as the detectors are handed them, all bins 0, guarded. */
class Spectra {
  public:
    explicit Spectra(std::size_t channels)
        : floats_(std::vector<float>(channels * voxloc::SpectrumFloats)) {}

    void set(unsigned channel, int bin, float real, float imaginary = 0) {
        const std::size_t at = static_cast<std::size_t>(channel) * voxloc::SpectrumFloats +
                               2 * static_cast<std::size_t>(bin);
        floats_[at] = real;
        floats_[at + 1] = imaginary;
    }
    void fill(float value) { std::fill(floats_.begin(), floats_.end(), value); }
    void clear() { fill(0); }
    float* channel(unsigned index) {
        return floats_.data() + static_cast<std::size_t>(index) * voxloc::SpectrumFloats;
    }
    const float* data() const { return floats_.data(); }
    GuardedFloats& floats() { return floats_; }

    /** |X|² of a bin in double. */
    double power(unsigned channel, int bin) const {
        const float* x = floats_.data() +
                         static_cast<std::size_t>(channel) * voxloc::SpectrumFloats +
                         2 * static_cast<std::size_t>(bin);
        return wide(x[0]) * wide(x[0]) + wide(x[1]) * wide(x[1]);
    }

  private:
    GuardedFloats floats_;
};

/** What a call writes to standard error. */
template <class Call>
std::string logOf(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

/** text with every number that has a decimal point replaced by N. */
inline std::string withoutDecimals(const std::string& text) {
    const std::string digits = "0123456789";
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t sign = text[at] == '-' ? 1 : 0;
        const std::size_t point = text.find_first_not_of(digits, at + sign);
        if (point == std::string::npos || point == at + sign || text[point] != '.') {
            // Not the beginning of such a number; nor are the digits that follow.
            const std::size_t end =
                std::max(point == std::string::npos ? text.size() : point, at + 1);
            result += text.substr(at, end - at);
            at = end;
            continue;
        }
        result += 'N';
        at = std::min(text.find_first_not_of(digits, point + 1), text.size());
    }
    return result;
}

}  // namespace trackSupport

#endif
