// What the FFT reads and writes, which of its arguments count, and broken preconditions.

#include <climits>
#include <string>

#include "cfftTesting.h"
#include "kit/lastWords.h"

namespace {

using namespace cffttest;

GuardedFloats floats(const std::vector<float>& values) {
    return GuardedFloats(values);
}

TEST(Size1, CopiesTheElementInBothDirections) {
    const GuardedFloats x = floats({1.25f, -3e-30f});
    for (const Transform* transform : Both)
        EXPECT_TRUE(transformed(*transform, 1, x).sameBitsAs(x));
}

TEST(Size2, IsSumAndDifferenceHalvedInTheInverse) {
    const GuardedFloats x = floats({3.0f, 5.0f, 11.0f, -7.0f});
    EXPECT_TRUE(transformed(Forward, 2, x).sameBitsAs(floats({14.0f, -2.0f, -8.0f, 12.0f})));
    EXPECT_TRUE(transformed(Inverse, 2, x).sameBitsAs(floats({7.0f, -1.0f, -4.0f, 6.0f})));
}

TEST(Size4, IsExactOnSmallIntegers) {
    const GuardedFloats x = floats({0.0f, 1.0f, 4.0f, 9.0f, 16.0f, 25.0f, 36.0f, 49.0f});
    EXPECT_TRUE(
        transformed(Forward, 4, x)
            .sameBitsAs(floats({56.0f, 84.0f, -56.0f, 8.0f, -24.0f, -32.0f, 24.0f, -56.0f})));
    EXPECT_TRUE(transformed(Inverse, 4, x)
                    .sameBitsAs(floats({14.0f, 21.0f, 6.0f, -14.0f, -6.0f, -8.0f, -14.0f, 2.0f})));
}

class Cfft : public testing::TestWithParam<const Transform*> {
  protected:
    const Transform& transform = *GetParam();

    void run(int n, const GuardedFloats& x, GuardedFloats& y) const {
        transform.run(n, log2Of(n), x.data(), y.data());
    }
};

INSTANTIATE_TEST_SUITE_P(, Cfft, testing::ValuesIn(Both), directionOf);

// Multiples of 8 bytes from a cache line on: no wider alignment may be taken for granted. What the
// output held before, NaN here, does not count.
TEST_P(Cfft, ReadsAndWritesInsideItsBuffersOnlyAtEvery8ByteAlignment) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        const GuardedFloats x = noise(n, 51), kept = noise(n, 51);
        const GuardedFloats y = transformed(transform, n, x);
        EXPECT_TRUE(x.sameBitsAs(kept)) << "changed its input, size " << n;
        EXPECT_TRUE(x.intact() && y.intact()) << n;
        for (std::size_t offset = 2; offset <= 14; offset += 4) {
            const GuardedFloats shiftedX = noise(n, 51, offset);
            GuardedFloats shiftedY(floatsOf(n), 16 - offset, NaN);
            run(n, shiftedX, shiftedY);
            EXPECT_TRUE(shiftedY.sameBitsAs(y)) << n << " " << offset;
            EXPECT_TRUE(shiftedX.intact() && shiftedY.intact()) << n << " " << offset;
        }
    }
}

TEST_P(Cfft, OfAnEmptySizeLeavesTheOutputUntouched) {
    for (const int n : {0, -1, -2, -8192, INT_MIN}) {
        const GuardedFloats kept = noise(8, 53);
        GuardedFloats x = noise(8, 54), y = noise(8, 53);
        transform.run(n, 3, x.data(), y.data());
        transform.entry(n, x.data(), nullptr, y.data(), nullptr, 2, 0, n);
        EXPECT_TRUE(y.sameBitsAs(kept) && y.intact()) << n;
    }
}

TEST_P(Cfft, BehindItsEntryPointIgnoresTheFiveOtherArguments) {
    // Pointers that nothing may be read from, one of them misaligned.
    const auto* nowhere = reinterpret_cast<const float*>(std::uintptr_t{1});
    const auto* nothing = reinterpret_cast<const unsigned char*>(std::uintptr_t{3});
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        GuardedFloats x = noise(n, 56), y(floatsOf(n)), z(floatsOf(n));
        transform.entry(n, x.data(), nullptr, y.data(), nullptr, 0, 0, 0);
        transform.entry(n, x.data(), nowhere, z.data(), nothing, INT_MIN, INT_MAX, 2 * n);
        EXPECT_TRUE(y.sameBitsAs(transformed(transform, n, x))) << n;
        EXPECT_TRUE(z.sameBitsAs(y) && z.intact()) << n;
    }
}

// --- Broken preconditions: the first one broken is reported, by both ways in --------------------

const std::string TooLarge = "N <= FFT_MAX";
const std::string NotPowerOfTwo = "N <= 0 \\|\\| N == 1 << log2_N";
const std::string InputMisaligned = "\\(uintptr_t\\)x % 8 == 0";
const std::string OutputMisaligned = "\\(uintptr_t\\)y % 8 == 0";

class CfftDeathTest : public Cfft {
  protected:
    GuardedFloats x{64}, y{64};

    std::string report(const std::string& expression) const {
        return assertionReport(
            "functional/audio/libraries/dsplib/arm/cfft_pow2_conjpair_splitrad_c89_neon",
            transform.name, expression);
    }

    void run(int n, int log2n, int xOffset = 0, int yOffset = 0) {
        transform.run(n, log2n, x.data() + xOffset, y.data() + yOffset);
    }
    void enter(int n, int xOffset = 0, int yOffset = 0) {
        transform.entry(n, x.data() + xOffset, nullptr, y.data() + yOffset, nullptr, 2, 0, n);
    }
};

INSTANTIATE_TEST_SUITE_P(, CfftDeathTest, testing::ValuesIn(Both), directionOf);

TEST_P(CfftDeathTest, SizesAboveTheLargest) {
    EXPECT_DEATH(run(16384, 14), report(TooLarge));
    EXPECT_DEATH(enter(8193), report(TooLarge));
    EXPECT_DEATH(run(16384, 3, 1, 1), report(TooLarge));
}

TEST_P(CfftDeathTest, SizesThatAreNotTwoToTheLogarithm) {
    EXPECT_DEATH(enter(12), report(NotPowerOfTwo));
    EXPECT_DEATH(enter(8191), report(NotPowerOfTwo));
    EXPECT_DEATH(run(16, 3), report(NotPowerOfTwo));
    EXPECT_DEATH(run(16, 5), report(NotPowerOfTwo));
    EXPECT_DEATH(run(12, 3, 1, 1), report(NotPowerOfTwo));
}

// A shift by so much would be what the machine makes of it; some would take 35 for 3.
TEST_P(CfftDeathTest, LogarithmsThatNoSizeHas) {
    for (const int log2n : {-1, 31, 32, 35, 64 + 3, INT_MIN, INT_MAX}) {
        EXPECT_DEATH(run(8, log2n), report(NotPowerOfTwo)) << log2n;
        run(0, log2n);  // not looked at
    }
}

TEST_P(CfftDeathTest, MisalignedBuffersOfAnEmptyTransformToo) {
    EXPECT_DEATH(run(8, 3, 1, 1), report(InputMisaligned));
    EXPECT_DEATH(enter(8, 1), report(InputMisaligned));
    EXPECT_DEATH(enter(0, 1), report(InputMisaligned));
    EXPECT_DEATH(run(8, 3, 0, 1), report(OutputMisaligned));
    EXPECT_DEATH(enter(-4, 0, 1), report(OutputMisaligned));
}

}  // namespace
