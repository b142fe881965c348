#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "kit/guardedFloats.h"
#include "voxloc/voxloc.h"

namespace {

using reference::GuardedFloats;

constexpr double Unit = 0x1p-24;
constexpr int GuardFloats = 16;

std::vector<float> noise(std::size_t size, unsigned int seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(-2.0f, 2.0f);
    std::vector<float> values(size);
    for (float& v : values) v = value(random);
    return values;
}

// An input with NaN behind its end: what is read there would show in the output.
std::vector<float> guardedInput(std::size_t size, unsigned int seed) {
    std::vector<float> input = noise(size, seed);
    input.resize(size + GuardFloats, NAN);
    return input;
}

const int Counts[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 32, 33, 127, 1031, 4096};

TEST(NormalizeInput, DividesByTwoToTheBitsMinusOne) {
    for (const std::uint32_t bits : {1U, 2U, 16U, 24U, 32U}) {
        const std::vector<float> frame = guardedInput(2048, bits);
        GuardedFloats out(2048);
        voxloc_normalizeInput(frame.data(), out.data(), bits, 1);
        for (std::size_t i = 0; i < 2048; ++i) {
            ASSERT_EQ(out[i], std::ldexp(frame[i], 1 - static_cast<int>(bits))) << bits << " " << i;
        }
        EXPECT_TRUE(out.intact());
    }
}

TEST(NormalizeInput, CoversEveryChannelAndNoMore) {
    for (int channels = 1; channels <= 8; ++channels) {
        const std::size_t size = static_cast<std::size_t>(channels) * 2048;
        const std::vector<float> frame = guardedInput(size, 3);
        GuardedFloats out(size);
        voxloc_normalizeInput(frame.data(), out.data(), 24, channels);
        for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(out[i], frame[i] / 8388608.0f) << i;
        EXPECT_TRUE(out.intact()) << channels;
    }
}

TEST(NormalizeInput, WorksInPlace) {
    const std::vector<float> frame = noise(2 * 2048, 4);
    std::vector<float> inPlace(frame);
    voxloc_normalizeInput(inPlace.data(), inPlace.data(), 16, 2);
    for (std::size_t i = 0; i < frame.size(); ++i) ASSERT_EQ(inPlace[i], frame[i] / 32768.0f);
}

TEST(VectorMultiply, MultipliesElementByElement) {
    for (const int count : Counts) {
        const std::size_t size = static_cast<std::size_t>(count);
        const std::vector<float> a = guardedInput(size, 5);
        const std::vector<float> b = guardedInput(size, 6);
        GuardedFloats out(size);
        voxloc_vectorMultiply(a.data(), b.data(), out.data(), count);
        for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(out[i], a[i] * b[i]) << count << " " << i;
        EXPECT_TRUE(out.intact()) << count;
    }
}

TEST(VectorMultiply, WorksInPlace) {
    const std::vector<float> a = noise(1031, 7);
    const std::vector<float> b = noise(1031, 8);
    std::vector<float> overA(a);
    std::vector<float> overB(b);
    voxloc_vectorMultiply(overA.data(), b.data(), overA.data(), 1031);
    voxloc_vectorMultiply(a.data(), overB.data(), overB.data(), 1031);
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_EQ(overA[i], a[i] * b[i]);
        ASSERT_EQ(overB[i], a[i] * b[i]);
    }
}

// Two products and a sum of them: two roundings, relative to the sum of the magnitudes.
void expectConjugateProduct(const float* a, const float* b, float re, float im) {
    const double ar = static_cast<double>(a[0]);
    const double ai = static_cast<double>(a[1]);
    const double br = static_cast<double>(b[0]);
    const double bi = static_cast<double>(b[1]);
    EXPECT_LE(std::abs(static_cast<double>(re) - (ar * br + ai * bi)),
              2.0 * Unit * (std::abs(ar * br) + std::abs(ai * bi)));
    EXPECT_LE(std::abs(static_cast<double>(im) - (ai * br - ar * bi)),
              2.0 * Unit * (std::abs(ai * br) + std::abs(ar * bi)));
}

TEST(MultiplyWithComplexConjugate, ConjugatesTheSecondFactor) {
    const float a[2] = {2.0f, 3.0f};
    const float b[2] = {5.0f, 7.0f};
    float out[2] = {NAN, NAN};
    voxloc_multiplyWithComplexConjugate(a, b, out, 2);
    EXPECT_EQ(out[0], 31.0f);
    EXPECT_EQ(out[1], 1.0f);  // -1 the other way round
}

TEST(MultiplyWithComplexConjugate, CountsFloats) {
    for (const int count : {0, 2, 4, 6, 8, 10, 14, 16, 18, 30, 32, 34, 126, 1030, 4098}) {
        const std::size_t size = static_cast<std::size_t>(count);
        const std::vector<float> a = guardedInput(size, 9);
        const std::vector<float> b = guardedInput(size, 10);
        GuardedFloats out(size);
        voxloc_multiplyWithComplexConjugate(a.data(), b.data(), out.data(), count);
        for (std::size_t i = 0; i < size; i += 2) {
            expectConjugateProduct(&a[i], &b[i], out[i], out[i + 1]);
        }
        EXPECT_TRUE(out.intact()) << count;
    }
}

TEST(MultiplyWithComplexConjugate, WorksInPlace) {
    const std::vector<float> a = noise(4098, 11);
    const std::vector<float> b = noise(4098, 12);
    std::vector<float> apart(4098);
    std::vector<float> overA(a);
    std::vector<float> overB(b);
    voxloc_multiplyWithComplexConjugate(a.data(), b.data(), apart.data(), 4098);
    voxloc_multiplyWithComplexConjugate(overA.data(), b.data(), overA.data(), 4098);
    voxloc_multiplyWithComplexConjugate(a.data(), overB.data(), overB.data(), 4098);
    EXPECT_EQ(overA, apart);
    EXPECT_EQ(overB, apart);
}

TEST(OverlapInputChannels, JoinsThePreviousAndTheCurrentFrame) {
    for (int channels = 1; channels <= 8; ++channels) {
        const std::size_t n = static_cast<std::size_t>(channels);
        const std::vector<float> previous = guardedInput(n * 2048, 13);
        const std::vector<float> current = guardedInput(n * 2048, 14);
        GuardedFloats block(n * 4096);
        voxloc_overlapInputChannels(block.data(), previous.data(), current.data(), channels);
        for (std::size_t c = 0; c < n; ++c) {
            for (std::size_t i = 0; i < 2048; ++i) {
                ASSERT_EQ(block[c * 4096 + i], previous[c * 2048 + i]) << c << " " << i;
                ASSERT_EQ(block[c * 4096 + 2048 + i], current[c * 2048 + i]) << c << " " << i;
            }
        }
        EXPECT_TRUE(block.intact()) << channels;
    }
}

TEST(GenerateHammingWindow, IsSymmetricOver4096Points) {
    GuardedFloats window(4096);
    voxloc_generateHammingWindow(window.data());
    EXPECT_EQ(window[0], 0.08f);
    for (std::size_t k = 1; k < 4096; ++k) {
        const double exact =
            0.54 - 0.46 * std::cos(static_cast<double>(k) * 6.283185307179586 / 4095.0);
        // rounded once, from a value that is off by a few units of double precision
        EXPECT_LE(std::abs(static_cast<double>(window[k]) - exact), Unit * exact + 1e-15) << k;
    }
    EXPECT_TRUE(window.intact());
}

}  // namespace
