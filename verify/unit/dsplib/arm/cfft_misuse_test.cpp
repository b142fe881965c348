// Broken preconditions end the process with the exact assertion, the first one broken.

#include <gtest/gtest.h>

#include <string>

#include "cfft_testing.h"

namespace {

using namespace cffttest;

/** Matches `text` itself in a POSIX extended regular expression. */
std::string literally(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string report(const Transform& transform, const std::string& expression) {
    return literally(
               "functional/audio/libraries/dsplib/arm/cfft_pow2_conjpair_splitrad_c89_neon:") +
           "[0-9]+: " +
           literally(std::string(transform.name) + ": Assertion `" + expression + "' failed.");
}

const std::string TooLarge = "N <= FFT_MAX";
const std::string NotPowerOfTwo = "N <= 0 || N == 1 << log2_N";
const std::string InputMisaligned = "(uintptr_t)x % 8 == 0";
const std::string OutputMisaligned = "(uintptr_t)y % 8 == 0";

class CfftDeathTest : public testing::TestWithParam<const Transform*> {
  protected:
    const Transform& transform = *GetParam();
    GuardedFloats x{64}, y{64};

    void run(int n, int log2n, std::size_t xOffset = 0, std::size_t yOffset = 0) {
        transform.run(n, log2n, x.data() + xOffset, y.data() + yOffset);
    }
    void enter(int n, std::size_t xOffset = 0, std::size_t yOffset = 0) {
        transform.entry(n, x.data() + xOffset, nullptr, y.data() + yOffset, nullptr, 2, 0, n);
    }
};

INSTANTIATE_TEST_SUITE_P(, CfftDeathTest, testing::ValuesIn(Both), [](const auto& its) {
    return std::string(its.param->sign < 0 ? "Forward" : "Inverse");
});

TEST_P(CfftDeathTest, SizesAboveTheLargest) {
    EXPECT_DEATH(run(16384, 14), report(transform, TooLarge));
    EXPECT_DEATH(enter(16384), report(transform, TooLarge));
    EXPECT_DEATH(enter(8193), report(transform, TooLarge));
}

TEST_P(CfftDeathTest, SizesThatAreNoPowerOfTwo) {
    EXPECT_DEATH(enter(12), report(transform, NotPowerOfTwo));
    EXPECT_DEATH(enter(8191), report(transform, NotPowerOfTwo));
    EXPECT_DEATH(run(12, 3), report(transform, NotPowerOfTwo));
}

TEST_P(CfftDeathTest, LogarithmsOfAnotherSize) {
    EXPECT_DEATH(run(16, 3), report(transform, NotPowerOfTwo));
    EXPECT_DEATH(run(16, 5), report(transform, NotPowerOfTwo));
}

TEST_P(CfftDeathTest, MisalignedInput) {
    EXPECT_DEATH(run(8, 3, 1), report(transform, InputMisaligned));
    EXPECT_DEATH(enter(8, 1), report(transform, InputMisaligned));
}

TEST_P(CfftDeathTest, MisalignedOutput) {
    EXPECT_DEATH(run(8, 3, 0, 1), report(transform, OutputMisaligned));
    EXPECT_DEATH(enter(8, 0, 1), report(transform, OutputMisaligned));
}

TEST_P(CfftDeathTest, MisalignedBuffersOfAnEmptyTransform) {
    EXPECT_DEATH(enter(0, 1), report(transform, InputMisaligned));
    EXPECT_DEATH(enter(-4, 0, 1), report(transform, OutputMisaligned));
}

TEST_P(CfftDeathTest, ReportsTheFirstOfSeveral) {
    EXPECT_DEATH(run(16384, 3, 1, 1), report(transform, TooLarge));
    EXPECT_DEATH(run(12, 3, 1, 1), report(transform, NotPowerOfTwo));
    EXPECT_DEATH(run(8, 3, 1, 1), report(transform, InputMisaligned));
}

}  // namespace
