/** sp_ifft_ends against the whole inverse transform: the values that are wanted, bit for bit. */
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"

namespace {

constexpr int Points = FFT_MAX;
constexpr int FirstZero = 1536, LastZero = 6655;  // elements of the input
constexpr int Wanted = 256;                       // elements at either end of the output

struct Spectrum {
    std::vector<float> values = std::vector<float>(2 * Points);

    explicit Spectrum(unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);
        for (float& value : values) value = uniform(random);
        setMiddle(0.0f);
    }

    void setMiddle(float value) {
        std::fill(values.begin() + 2 * FirstZero, values.begin() + 2 * (LastZero + 1), value);
    }

    void keepOnly(int element) {
        const float re = values[static_cast<std::size_t>(2 * element)];
        values.assign(values.size(), 0.0f);
        values[static_cast<std::size_t>(2 * element)] = re;
    }
};

std::vector<float> whole(const Spectrum& spectrum) {
    std::vector<float> y(2 * Points);
    cifft_pow2_conjpair_splitrad_c89(Points, 13, spectrum.values.data(), y.data());
    return y;
}

std::vector<float> ends(const Spectrum& spectrum, int wanted = Wanted) {
    std::vector<float> y(2 * Points, std::numeric_limits<float>::quiet_NaN());
    sp_ifft_ends(spectrum.values.data(), y.data(), wanted);
    return y;
}

void expectSameEnds(const std::vector<float>& expected, const std::vector<float>& found,
                    int wanted = Wanted) {
    for (int i = 0; i < 2 * Points; ++i) {
        if (i == 2 * wanted) i = 2 * (Points - wanted);
        const auto at = static_cast<std::size_t>(i);
        ASSERT_EQ(expected[at], found[at]) << "float " << i;
    }
}

TEST(FftEnds, EqualTheWholeTransformOnRandomData) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        const Spectrum spectrum(seed);
        expectSameEnds(whole(spectrum), ends(spectrum));
    }
}

TEST(FftEnds, OfAnyLengthEqualTheWholeTransform) {
    const Spectrum spectrum(5);
    const std::vector<float> expected = whole(spectrum);
    for (int wanted = 1; wanted <= Wanted; ++wanted) {
        SCOPED_TRACE(wanted);
        expectSameEnds(expected, ends(spectrum, wanted), wanted);
    }
}

TEST(FftEndsDeathTest, OfMoreElementsThanItServesDie) {
    const Spectrum spectrum(5);
    EXPECT_DEATH(ends(spectrum, Wanted + 1), "sp_ifft_ends: Assertion");
    EXPECT_DEATH(ends(spectrum, 0), "sp_ifft_ends: Assertion");
}

TEST(FftEnds, TakeInEveryElementOutsideTheMiddle) {
    for (const int element : {0, 1, 511, 512, 1023, 1024, FirstZero - 1, LastZero + 1, 7167, 7168,
                              7679, 7680, Points - 1}) {
        SCOPED_TRACE(element);
        Spectrum spectrum(99);
        spectrum.keepOnly(element);
        const std::vector<float> expected = whole(spectrum);
        EXPECT_NE(expected[0], 0.0f);
        expectSameEnds(expected, ends(spectrum));
    }
}

TEST(FftEnds, DoNotReadTheMiddle) {
    Spectrum spectrum(7);
    const std::vector<float> expected = whole(spectrum);
    spectrum.setMiddle(std::numeric_limits<float>::quiet_NaN());
    expectSameEnds(expected, ends(spectrum));
}

}  // namespace
