// sp_ifft_ends against the whole inverse transform: the values that are wanted, bit for bit.

#include <string>

#include "cfftTesting.h"

namespace {

using namespace cffttest;

constexpr int FirstZero = SP_IFFT_ENDS_USED, FirstBehind = FFT_MAX - SP_IFFT_ENDS_USED;
constexpr int MostWanted = SP_IFFT_ENDS_MOST_WANTED;
static_assert(FirstZero == 1536 && FirstBehind == 6656 && MostWanted == 256);

/** Noise whose middle elements hold `middle`. */
GuardedFloats bandLimited(unsigned seed, float middle = 0.0f) {
    GuardedFloats x = noise(FFT_MAX, seed);
    std::fill(x.data() + floatsOf(FirstZero), x.data() + floatsOf(FirstBehind), middle);
    return x;
}

GuardedFloats ends(const GuardedFloats& x, int wanted) {
    GuardedFloats y(floatsOf(FFT_MAX), 0, NaN);
    sp_ifft_ends(x.data(), y.data(), wanted);
    return y;
}

/** The values at the ends are equal; a zero may have the other sign. */
void expectSameEnds(const GuardedFloats& expected, const GuardedFloats& found, int wanted) {
    for (std::size_t i = 0; i < floatsOf(FFT_MAX); ++i) {
        if (i == floatsOf(wanted)) i = floatsOf(FFT_MAX - wanted);
        ASSERT_EQ(expected[i], found[i]) << "float " << i << ", " << wanted << " wanted";
    }
    EXPECT_TRUE(found.intact()) << wanted;
}

TEST(FftEnds, OfAnyLengthEqualTheWholeTransform) {
    for (int wanted = 1; wanted <= MostWanted; ++wanted) {
        const GuardedFloats x = bandLimited(static_cast<unsigned>(wanted) % 20);
        expectSameEnds(transformed(Inverse, FFT_MAX, x), ends(x, wanted), wanted);
        if (HasFatalFailure()) return;
    }
}

TEST(FftEnds, TakeInEveryElementOutsideTheMiddle) {
    for (const int element : {0, 1, 511, 512, 1023, 1024, FirstZero - 1, FirstBehind, 7167, 7168,
                              7679, 7680, FFT_MAX - 1}) {
        SCOPED_TRACE(element);
        GuardedFloats x(floatsOf(FFT_MAX));
        x[floatsOf(element)] = 0.7f;
        const GuardedFloats expected = transformed(Inverse, FFT_MAX, x);
        EXPECT_NE(expected[0], 0.0f);
        expectSameEnds(expected, ends(x, MostWanted), MostWanted);
    }
}

TEST(FftEnds, DoNotReadTheMiddle) {
    expectSameEnds(transformed(Inverse, FFT_MAX, bandLimited(7)), ends(bandLimited(7, NaN), 40),
                   40);
}

TEST(FftEndsDeathTest, OfMoreElementsThanItServesDie) {
    EXPECT_DEATH(ends(bandLimited(5), MostWanted + 1), "sp_ifft_ends: Assertion");
    EXPECT_DEATH(ends(bandLimited(5), 0), "sp_ifft_ends: Assertion");
}

TEST(FftEndsDeathTest, OfMisalignedBuffersDie) {
    GuardedFloats x(2 * FFT_MAX + 1), y(2 * FFT_MAX + 1);
    EXPECT_DEATH(sp_ifft_ends(x.data() + 1, y.data(), 1),
                 "sp_ifft_ends: Assertion `\\(uintptr_t\\)x % 8 == 0'");
    EXPECT_DEATH(sp_ifft_ends(x.data(), y.data() + 1, 1),
                 "sp_ifft_ends: Assertion `\\(uintptr_t\\)y % 8 == 0'");
}

TEST(FftEndsDeathTest, OfOverlappingBuffersDie) {
    GuardedFloats both(floatsOf(2 * FFT_MAX));
    float* const x = both.data();
    const std::string report = "sp_ifft_ends: Assertion `areApart\\(x, y, 2 \\* FFT_MAX\\)'";
    EXPECT_DEATH(sp_ifft_ends(x, x, 1), report);
    EXPECT_DEATH(sp_ifft_ends(x, x + floatsOf(FFT_MAX) - 2, 1), report);
    EXPECT_DEATH(sp_ifft_ends(x + floatsOf(FFT_MAX) - 2, x, 1), report);
    sp_ifft_ends(x, x + floatsOf(FFT_MAX), 1);
    sp_ifft_ends(x + floatsOf(FFT_MAX), x, 1);
}

}  // namespace
