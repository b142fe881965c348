// How close the FFT comes to a double-precision transform, for every size and both directions.

#include "cfftTesting.h"

namespace {

using namespace cffttest;

// The roundings of n additions to a sum of the size of the data walk at random; four times that.
TEST(DoubleFft, IsTheDefiningSum) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        const Spectrum x = widened(noise(n, 7u));
        double power = 0.0;
        for (const auto& sample : x) power += std::norm(sample);
        const double limit = 4.0 * 0x1p-53 * std::sqrt(n * power);
        for (const int sign : {-1, 1}) {
            const Spectrum fast = reference::fastDft(x, sign);
            for (std::size_t k = 0; k < x.size(); k += 1 + x.size() / 128) {
                const double error = std::abs(fast[k] - reference::directBin(x, sign, k));
                EXPECT_LE(error, limit) << n << " " << sign << " " << k;
            }
        }
    }
}

class Accuracy : public testing::TestWithParam<const Transform*> {
  protected:
    const Transform& transform = *GetParam();

    Spectrum result(int n, const GuardedFloats& x) const {
        return widened(transformed(transform, n, x));
    }

    /** What noise, or a mix of it, becomes in double precision */
    Spectrum expected(int n, const GuardedFloats& x) const {
        Spectrum y = reference::fastDft(widened(x), transform.sign);
        for (auto& bin : y) bin *= transform.scale(n);
        return y;
    }
};

INSTANTIATE_TEST_SUITE_P(, Accuracy, testing::ValuesIn(Both), directionOf);

TEST_P(Accuracy, OfNoiseIsWithinTheRmsLimit) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        double worst = 0.0;
        for (unsigned seed = 1; seed <= 4; ++seed) {
            const GuardedFloats x = noise(n, seed);
            const double error = relativeRmsError(result(n, x), expected(n, x));
            EXPECT_LE(error, RmsLimit) << n << " seed " << seed;
            worst = std::max(worst, error);
        }
        RecordProperty(std::to_string(n), std::to_string(1e9 * worst) + "e-9");
    }
}

/** Every position up to 256, above that the ends, the middle and a spread between. */
std::vector<int> impulsePositions(int n) {
    std::vector<int> positions;
    for (int at = 0; at < n; at += n <= 256 ? 1 : n / 13) positions.push_back(at);
    for (const int at : {1, n / 16 - 1, n / 16, n / 8, n / 2 - 1, n / 2, n / 2 + 1, n - 2, n - 1}) {
        if (n > 256) positions.push_back(at);
    }
    return positions;
}

// An impulse meets one product with a twiddle (four roundings of its size: the twiddle's own, two
// products, their sum) at each of at most log2 n levels, and one in the leaf.
TEST_P(Accuracy, AnImpulseBecomesItsComplexTone) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        const double limit = 4.0 * (log2Of(n) + 1) * Rounding * transform.scale(n);
        const Spectrum& roots =
            reference::rootsOfUnity(static_cast<std::size_t>(n), transform.sign);
        for (const int at : impulsePositions(n)) {
            GuardedFloats x(floatsOf(n));
            x[2 * static_cast<std::size_t>(at)] = 1.0f;
            const Spectrum y = result(n, x);
            for (std::size_t k = 0; k < y.size(); ++k) {
                const auto& root = roots[k * static_cast<std::size_t>(at) % y.size()];
                ASSERT_LE(std::abs(y[k] - root * transform.scale(n)), limit)
                    << "size " << n << ", impulse at " << at << ", bin " << k;
            }
        }
    }
}

TEST_P(Accuracy, TheOtherDirectionUndoesIt) {
    const Transform& other = transform.sign < 0 ? Inverse : Forward;
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        const GuardedFloats x = noise(n, 41);
        const GuardedFloats back = transformed(other, n, transformed(transform, n, x));
        EXPECT_LE(relativeRmsError(widened(back), widened(x)), 2.0 * RmsLimit) << n;
    }
}

TEST(UnitImpulse, AtZeroIsAllOnesAndBackExactly) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        GuardedFloats impulse(floatsOf(n));
        impulse[0] = 1.0f;
        const GuardedFloats ones = transformed(Forward, n, impulse);
        const GuardedFloats back = transformed(Inverse, n, ones);
        for (std::size_t i = 0; i < ones.size(); ++i) {
            ASSERT_EQ(ones[i], i % 2 == 0 ? 1.0f : 0.0f) << n << " float " << i;
            ASSERT_EQ(back[i], i == 0 ? 1.0f : 0.0f) << n << " float " << i;
        }
    }
}

}  // namespace
