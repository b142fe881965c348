/** Buffers with guards and comparisons for the suites of the FIR engine. */
#ifndef VERIFY_SP_FIR_TEST_SUPPORT_H
#define VERIFY_SP_FIR_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "models/firReference.h"

#if defined(__SANITIZE_ADDRESS__)
#define UNDER_ADDRESS_SANITISER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define UNDER_ADDRESS_SANITISER 1
#endif
#endif
#ifndef UNDER_ADDRESS_SANITISER
#define UNDER_ADDRESS_SANITISER 0
#endif

/** The suites count down where instructions cost ten times as much; the kinds of case stay. */
#if UNDER_ADDRESS_SANITISER || defined(__arm__) || defined(__aarch64__)
constexpr bool SlowMachine = true;
#else
constexpr bool SlowMachine = false;
#endif

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t GuardLength = 40;  // more than any kernel takes at a time
constexpr float Untouched = -12345.5f;

inline std::size_t sizeOf(int count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

/**
 * Samples `offset` floats past a 16-byte boundary between guards of NaN: what is read outside makes
 * an output NaN, and what is written outside shows in guardsStand().
 */
class Guarded {
  public:
    Guarded(const float* values, int count, int offset)
        : storage(sizeOf(count) + 2 * GuardLength + 8, NaN), length(sizeOf(count)) {
        const auto address = reinterpret_cast<std::uintptr_t>(storage.data());
        const std::size_t toBoundary = (16 - address % 16) % 16 / sizeof(float);
        start = toBoundary + GuardLength + static_cast<std::size_t>(offset);
        if (values != nullptr) std::copy_n(values, length, data());
    }
    Guarded(const std::vector<float>& values, int offset)
        : Guarded(values.data(), static_cast<int>(values.size()), offset) {}

    /** `count` outputs that are still to be written. */
    static Guarded outputs(int count, int offset) {
        Guarded buffer(nullptr, count, offset);
        std::fill_n(buffer.data(), buffer.length, Untouched);
        return buffer;
    }

    Guarded(Guarded&&) = default;
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    float* data() { return storage.data() + start; }
    const float* data() const { return storage.data() + start; }
    float operator[](int i) const { return data()[i]; }
    std::vector<float> values() const { return {data(), data() + length}; }

    bool guardsStand() const {
        const auto isGuard = [](float sample) { return std::isnan(sample); };
        const float* begin = storage.data();
        return std::all_of(begin, data(), isGuard) &&
               std::all_of(data() + length, begin + storage.size(), isGuard);
    }

  private:
    std::vector<float> storage;
    std::size_t start;
    std::size_t length;
};

/** The first of `count` outputs, windows `step` apart, that is not the direct sum; or -1. */
inline int firstNotDirectSum(const float* y, const float* x, const float* h, int nh, int count,
                             int step = 1) {
    for (int m = 0; m < count; ++m) {
        const reference::FirOutput expected =
            reference::firOutput(x + std::ptrdiff_t{m} * step, h, nh);
        if (!(std::abs(static_cast<double>(y[m]) - expected.value) <= expected.limit)) return m;
    }
    return -1;
}

/** The first of `count` samples whose values differ in any bit; or -1. */
inline int firstDifference(const float* a, const float* b, int count) {
    for (int i = 0; i < count; ++i) {
        if (!reference::sameValue(a[i], b[i])) return i;
    }
    return -1;
}

/** A copy in a heap block of exactly its size, so that a sanitiser sees the first byte outside. */
class ExactBlock {
  public:
    explicit ExactBlock(int count) : storage(new float[sizeOf(count)]) {}
    explicit ExactBlock(const std::vector<float>& values) : storage(new float[values.size()]) {
        std::copy(values.begin(), values.end(), storage);
    }
    ~ExactBlock() { delete[] storage; }
    ExactBlock(const ExactBlock&) = delete;
    ExactBlock& operator=(const ExactBlock&) = delete;
    float* data() { return storage; }

  private:
    float* storage;
};

#endif
