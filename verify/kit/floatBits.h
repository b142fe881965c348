/** Floats by their bits and by their neighbours, and the widening that warnings ask for. */
#ifndef VERIFY_KIT_FLOAT_BITS_H
#define VERIFY_KIT_FLOAT_BITS_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace kit {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

constexpr double wide(float value) {
    return static_cast<double>(value);
}

constexpr double Epsilon = wide(std::numeric_limits<float>::epsilon());

inline std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline float next(float value) {
    return std::nextafter(value, Infinity);
}

inline float previous(float value) {
    return std::nextafter(value, -Infinity);
}

/** Index of the first float whose bits differ; count when there is none. */
inline std::size_t firstDifference(const float* a, const float* b, std::size_t count) {
    std::size_t i = 0;
    while (i < count && bitsOf(a[i]) == bitsOf(b[i])) i++;
    return i;
}

}  // namespace kit

#endif
