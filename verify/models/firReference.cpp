#include "firReference.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

namespace reference {
namespace {

/** Fused where the engine was told that it may. */
float multiplyAdd(float sum, float a, float b) {
#if defined(__FMA__) && !defined(SP_SIMD_SCALAR)
    return std::fma(a, b, sum);
#else
    return sum + a * b;
#endif
}

}  // namespace

FirOutput firOutput(const float* x, const float* h, int nh) {
    double sum = 0.0;
    double absolute = 0.0;
    for (int j = 0; j < nh; ++j) {
        const double term = static_cast<double>(h[j]) * static_cast<double>(x[j]);
        sum += term;
        absolute += std::abs(term);
    }
    const int roundings = (nh + 3) / 4 + 4;
    return {sum, roundings * 0x1p-24 * absolute};
}

float firOutputInOrder(const float* x, const float* h, int nh) {
    std::array<float, 4> sum = {-0.0f, -0.0f, -0.0f, -0.0f};
    for (int j = 0; j < nh; ++j) {
        float& part = sum[static_cast<std::size_t>(j % 4)];
        part = j < 4 ? h[j] * x[j] : multiplyAdd(part, h[j], x[j]);
    }
    return (sum[0] + sum[1]) + (sum[2] + sum[3]);
}

std::vector<float> noise(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1.0f, 1.0f);
    std::vector<float> samples(count);
    for (float& sample : samples) sample = level(random);
    return samples;
}

bool sameValue(float a, float b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    std::uint32_t aBits;
    std::uint32_t bBits;
    std::memcpy(&aBits, &a, sizeof a);
    std::memcpy(&bBits, &b, sizeof b);
    return aBits == bBits;
}

}  // namespace reference
