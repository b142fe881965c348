/** One number for an array of floats: equal if and, for all practical purposes, only if all bits
 * are. */
#ifndef VERIFY_AGREEMENT_FINGERPRINT_H
#define VERIFY_AGREEMENT_FINGERPRINT_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

/** The value's bits; every NaN counts as the same one, since sign and payload mean nothing. */
inline std::uint32_t bitsOf(float value) {
    if (std::isnan(value)) return 0x7fc00000u;
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline float floatOf(std::uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/**
 * The bits with a number below 2^-100 taken for zero. A unit that flushes denormal operands and
 * results to zero makes errors of up to 2^-126, less than half the last place of any other number.
 */
inline std::uint32_t bitsWithoutTiny(float value) {
    return std::fabs(value) < 0x1p-100f ? 0 : bitsOf(value);
}

inline void mix(std::uint64_t& hash, std::uint32_t word) {
    hash = (hash ^ word) * 0x9e3779b97f4a7c15u;
    hash ^= hash >> 29u;
}

struct Fingerprint {
    std::uint64_t exact;        // of all bits
    std::uint64_t withoutTiny;  // of the bits with tiny numbers taken for zeros
};

inline Fingerprint fingerprint(const float* values, std::size_t count) {
    Fingerprint print = {1, 1};
    for (std::size_t i = 0; i < count; ++i) {
        mix(print.exact, bitsOf(values[i]));
        mix(print.withoutTiny, bitsWithoutTiny(values[i]));
    }
    return print;
}

#endif
