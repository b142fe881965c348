// Transforms of 2 to 16 elements against the same networks written out on single floats: every bit,
// also where zeros have signs and elements are infinite. A build that fuses rounds less often.

#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "cfftTesting.h"
#include "dsplib/simd/simd.h"

namespace {

using namespace cffttest;

struct Element {
    float re, im;
};

Element operator+(Element a, Element b) {
    return {a.re + b.re, a.im + b.im};
}

Element operator-(Element a, Element b) {
    return {a.re - b.re, a.im - b.im};
}

Element operator*(Element a, float factor) {
    return {a.re * factor, a.im * factor};
}

/** a + sign·i·b */
Element addTimesI(int sign, Element a, Element b) {
    if (sign < 0) return {a.re + b.im, a.im - b.re};
    return {a.re - b.im, a.im + b.re};
}

/** z·(cosine + sign·i·sine) */
Element turned(int sign, Element z, float cosine, float sine) {
    const float re = z.im * sine, im = z.re * sine;
    if (sign < 0) return {z.re * cosine + re, z.im * cosine - im};
    return {z.re * cosine - re, z.im * cosine + im};
}

using Elements = std::array<Element, 16>;

constexpr float SqrtHalf = 0.70710677f, CosPi8 = 0.92387953f, SinPi8 = 0.38268343f;

Elements of4(int sign, const Elements& x, float scale) {
    const Element a0 = x[0] + x[2], a1 = x[0] - x[2], b0 = x[1] + x[3], b1 = x[1] - x[3];
    return {(a0 + b0) * scale, addTimesI(sign, a1, b1) * scale, (a0 - b0) * scale,
            addTimesI(-sign, a1, b1) * scale};
}

Elements of8(int sign, const Elements& x, float scale) {
    const Element a0 = x[0] + x[4], a1 = x[0] - x[4], a2 = x[2] + x[6], a3 = x[2] - x[6];
    const Element b0 = x[1] + x[5], b1 = x[1] - x[5], b2 = x[3] + x[7], b3 = x[3] - x[7];
    const Element even0 = (a0 + a2) * scale, even1 = addTimesI(sign, a1, a3) * scale;
    const Element even2 = (a0 - a2) * scale, even3 = addTimesI(-sign, a1, a3) * scale;
    const Element odd0 = (b0 + b2) * scale, odd2 = (b0 - b2) * scale;
    const Element u = b1 - b3, v = b1 + b3;
    const Element odd1 = addTimesI(sign, u, v) * (scale * SqrtHalf);
    const Element odd3 = addTimesI(-sign, u, v) * (scale * SqrtHalf);
    return {even0 + odd0, even1 + odd1, addTimesI(sign, even2, odd2),  even3 - odd3,
            even0 - odd0, even1 - odd1, addTimesI(-sign, even2, odd2), even3 + odd3};
}

Elements of16(int sign, const Elements& x, float scale) {
    Elements evens{}, odds{}, y{};
    for (std::size_t n = 0; n < 8; ++n) {
        evens[n] = x[2 * n];
        odds[n] = x[2 * n + 1];
    }
    evens = of8(sign, evens, scale);
    odds = of8(sign, odds, scale);
    constexpr std::array<Element, 8> Turns = {
        Element{1.0f, 0.0f}, {CosPi8, SinPi8},  {SqrtHalf, SqrtHalf},  {SinPi8, CosPi8},
        {0.0f, 1.0f},        {-SinPi8, CosPi8}, {-SqrtHalf, SqrtHalf}, {-CosPi8, SinPi8}};
    for (std::size_t k = 0; k < 8; ++k) {
        Element odd = turned(sign, odds[k], Turns[k].re, Turns[k].im);
        if (k == 0) odd = odds[0];
        if (k == 4) odd = addTimesI(sign, {0.0f, 0.0f}, odds[4]);
        y[k] = evens[k] + odd;
        y[k + 8] = evens[k] - odd;
    }
    return y;
}

Elements plainTransform(int sign, int n, const Elements& x) {
    const float scale = sign < 0 ? 1.0f : 1.0f / static_cast<float>(n);
    if (n == 2) return {(x[0] + x[1]) * scale, (x[0] - x[1]) * scale};
    return n == 4 ? of4(sign, x, scale) : n == 8 ? of8(sign, x, scale) : of16(sign, x, scale);
}

/** Below the normal format, but on the vector unit of 32-bit ARM, which takes that for zero. */
#if defined(__arm__) && !defined(SP_SIMD_SCALAR)
constexpr float Tiny = 1e-30f;
#else
constexpr float Tiny = 1e-40f;
#endif

/** What the floats of an input are drawn from: noise, with more and more of what is not. */
float drawn(std::mt19937& random, unsigned kind) {
    constexpr float Odd[] = {0.0f,  -0.0f, 1.0f,   -1.0f,    Tiny,
                             -Tiny, 3e38f, -3e38f, INFINITY, -INFINITY};
    const float uniform = std::uniform_real_distribution<float>(-1.0f, 1.0f)(random);
    if (kind == 0) return uniform;
    if (kind == 1) return Odd[random() % 2];
    return random() % 2 == 0 ? uniform : Odd[random() % (kind == 2 ? 2 : 10)];
}

bool sameValue(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

class Small : public testing::TestWithParam<const Transform*> {};

INSTANTIATE_TEST_SUITE_P(, Small, testing::ValuesIn(Both), directionOf);

TEST_P(Small, GiveTheBitsOfTheirNetworksOnSingleFloats) {
#ifdef SP_SIMD_FUSED
    GTEST_SKIP() << "this build fuses products and sums";
#endif
    const Transform& transform = *GetParam();
    std::mt19937 random(141421);
    for (unsigned trial = 0; trial < 8000; ++trial) {
        const int n = 2 << trial % 4;
        Elements x{};
        for (Element& z : x) z = {drawn(random, trial / 4 % 4), drawn(random, trial / 4 % 4)};
        GuardedFloats in(floatsOf(n)), out(floatsOf(n));
        std::memcpy(in.data(), x.data(), floatsOf(n) * sizeof(float));
        transform.run(n, log2Of(n), in.data(), out.data());
        const Elements expected = plainTransform(transform.sign, n, x);
        for (std::size_t k = 0; k < floatsOf(n) / 2; ++k) {
            ASSERT_TRUE(sameValue(out[2 * k], expected[k].re) &&
                        sameValue(out[2 * k + 1], expected[k].im))
                << "size " << n << ", element " << k << ", trial " << trial;
        }
    }
}

}  // namespace
