// How close the FFT comes to a double-precision transform, for every size and both directions.

#include <gtest/gtest.h>

#include <cstdio>
#include <tuple>
#include <vector>

#include "cfft_testing.h"

namespace {

using namespace cffttest;

class Accuracy : public testing::TestWithParam<std::tuple<int, const Transform*>> {
  protected:
    const int n = 1 << std::get<0>(GetParam());
    const Transform& transform = *std::get<1>(GetParam());
};

INSTANTIATE_TEST_SUITE_P(EverySize, Accuracy,
                         testing::Combine(testing::Range(0, 14), testing::ValuesIn(Both)),
                         [](const auto& its) {
                             return std::to_string(1 << std::get<0>(its.param)) +
                                    (std::get<1>(its.param)->sign < 0 ? "Forward" : "Inverse");
                         });

TEST_P(Accuracy, NoiseStaysWithinTheRmsLimit) {
    double worst = 0.0;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        const GuardedFloats x = noise(n, seed);
        const double error = reference::relativeRmsError(widened(transformed(transform, n, x)),
                                                         expected(transform, x, n <= 2048));
        EXPECT_LE(error, RmsLimit) << "seed " << seed;
        worst = std::max(worst, error);
    }
    std::printf("relative RMS error %d %s: %.3g\n", n, transform.sign < 0 ? "forward" : "inverse",
                worst);
}

/** Every position up to 256, above that the ends, the middle and a spread between. */
std::vector<int> impulsePositions(int n) {
    std::vector<int> positions;
    if (n <= 256) {
        for (int at = 0; at < n; ++at) positions.push_back(at);
        return positions;
    }
    positions = {0, 1, n / 16 - 1, n / 16, n / 8, n / 2 - 1, n / 2, n / 2 + 1, n - 2, n - 1};
    for (int at = 3; at < n; at += n / 13) positions.push_back(at);
    return positions;
}

// An impulse meets one product with a twiddle (four roundings of its size: the twiddle's own, two
// products, their sum) at each of at most log2 n levels, and one in the leaf.
TEST_P(Accuracy, AnImpulseBecomesItsComplexTone) {
    const double limit = 4.0 * (log2Of(n) + 1) * Rounding * transform.scale(n);
    const Spectrum roots = reference::rootsOfUnity(static_cast<std::size_t>(n), transform.sign);
    for (const int at : impulsePositions(n)) {
        GuardedFloats x(floatsOf(n));
        x[2 * static_cast<std::size_t>(at)] = 1.0f;
        const Spectrum y = widened(transformed(transform, n, x));
        for (int k = 0; k < n; ++k) {
            const auto phase = static_cast<std::size_t>(static_cast<long>(k) * at % n);
            const double error =
                std::abs(y[static_cast<std::size_t>(k)] - roots[phase] * transform.scale(n));
            ASSERT_LE(error, limit) << "impulse at " << at << ", bin " << k;
        }
    }
}

// Each bin is a sum of n terms of size 1 along log2 n levels of additions and products.
TEST_P(Accuracy, AToneBecomesItsImpulse) {
    const double limit = 2.0 * (log2Of(n) + 1) * Rounding * n * transform.scale(n);
    const Spectrum roots = reference::rootsOfUnity(static_cast<std::size_t>(n), -transform.sign);
    for (const int tone : {0, 1, n / 3, n / 2, n - 1}) {
        if (tone >= n) continue;
        GuardedFloats x(floatsOf(n));
        for (int i = 0; i < n; ++i) {
            const auto& sample = roots[static_cast<std::size_t>(static_cast<long>(i) * tone % n)];
            x[2 * static_cast<std::size_t>(i)] = static_cast<float>(sample.real());
            x[2 * static_cast<std::size_t>(i) + 1] = static_cast<float>(sample.imag());
        }
        const Spectrum y = widened(transformed(transform, n, x));
        for (int k = 0; k < n; ++k) {
            const double peak = k == tone ? n * transform.scale(n) : 0.0;
            ASSERT_LE(std::abs(y[static_cast<std::size_t>(k)] - peak), limit)
                << "tone " << tone << ", bin " << k;
        }
    }
}

TEST_P(Accuracy, IsLinear) {
    const GuardedFloats a = noise(n, 21), b = noise(n, 22);
    GuardedFloats mixed(floatsOf(n));
    for (std::size_t i = 0; i < mixed.size(); ++i) mixed[i] = 0.5f * a[i] - 2.0f * b[i];
    const Spectrum fromA = widened(transformed(transform, n, a));
    const Spectrum fromB = widened(transformed(transform, n, b));
    Spectrum mixedAfter(fromA.size());
    for (std::size_t k = 0; k < fromA.size(); ++k) mixedAfter[k] = 0.5 * fromA[k] - 2.0 * fromB[k];
    const double error =
        reference::relativeRmsError(widened(transformed(transform, n, mixed)), mixedAfter);
    EXPECT_LE(error, 3.0 * RmsLimit);  // two transforms and the rounding of the mix
}

TEST_P(Accuracy, KeepsThePower) {
    const GuardedFloats x = noise(n, 31);
    double powerIn = 0.0, powerOut = 0.0;
    for (const auto& sample : widened(x)) powerIn += std::norm(sample);
    for (const auto& bin : widened(transformed(transform, n, x))) powerOut += std::norm(bin);
    const double gain = n * transform.scale(n) * transform.scale(n);
    EXPECT_LE(std::abs(powerOut / (gain * powerIn) - 1.0), 2.0 * RmsLimit);
}

TEST_P(Accuracy, TheOtherDirectionUndoesItUpToTheUnscaledPart) {
    const Transform& other = transform.sign < 0 ? Inverse : Forward;
    const GuardedFloats x = noise(n, 41);
    const GuardedFloats back = transformed(other, n, transformed(transform, n, x));
    EXPECT_LE(reference::relativeRmsError(widened(back), widened(x)), 2.0 * RmsLimit);
}

TEST(UnitImpulse, AtZeroIsAllOnesAndBackExactly) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        GuardedFloats impulse(floatsOf(n));
        impulse[0] = 1.0f;
        const GuardedFloats ones = transformed(Forward, n, impulse);
        for (std::size_t i = 0; i < ones.size(); ++i) {
            ASSERT_EQ(ones[i], i % 2 == 0 ? 1.0f : 0.0f) << n << " float " << i;
        }
        const GuardedFloats back = transformed(Inverse, n, ones);
        for (std::size_t i = 0; i < back.size(); ++i) {
            ASSERT_EQ(back[i], i == 0 ? 1.0f : 0.0f) << n << " float " << i;
        }
    }
}

}  // namespace
