// What the FFT reads and writes, and which of its arguments count.

#include <gtest/gtest.h>

#include <climits>

#include "cfft_testing.h"

namespace {

using namespace cffttest;

TEST(Size1, CopiesTheElementInBothDirections) {
    for (const Transform* transform : Both) {
        GuardedFloats x(2);
        x[0] = 1.25f;
        x[1] = -3e-30f;
        EXPECT_TRUE(transformed(*transform, 1, x).sameBitsAs(x)) << transform->name;
    }
}

TEST(Size2, IsSumAndDifferenceHalvedInTheInverse) {
    GuardedFloats x(4);
    x[0] = 3.0f, x[1] = 5.0f, x[2] = 11.0f, x[3] = -7.0f;
    const float sums[] = {14.0f, -2.0f, -8.0f, 12.0f};
    const GuardedFloats forward = transformed(Forward, 2, x), inverse = transformed(Inverse, 2, x);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(forward[i], sums[i]);
        EXPECT_EQ(inverse[i], 0.5f * sums[i]);
    }
}

TEST(Size4, IsExactOnSmallIntegers) {
    GuardedFloats x(8);
    for (std::size_t i = 0; i < 8; ++i) x[i] = static_cast<float>(i * i);
    // x = 0+1i, 4+9i, 16+25i, 36+49i
    const float forward[] = {56.0f, 84.0f, -56.0f, 8.0f, -24.0f, -32.0f, 24.0f, -56.0f};
    const float inverse[] = {56.0f, 84.0f, 24.0f, -56.0f, -24.0f, -32.0f, -56.0f, 8.0f};
    const GuardedFloats y = transformed(Forward, 4, x), z = transformed(Inverse, 4, x);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(y[i], forward[i]) << i;
        EXPECT_EQ(z[i], 0.25f * inverse[i]) << i;
    }
}

// Multiples of 8 bytes from a cache line on: no wider alignment may be taken for granted.
TEST(Buffers, AreReadAndWrittenInsideOnlyAtEvery8ByteAlignment) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        for (const Transform* transform : Both) {
            const GuardedFloats x = noise(n, 51);
            const GuardedFloats kept = noise(n, 51);
            const GuardedFloats y = transformed(*transform, n, x);
            EXPECT_TRUE(x.sameBitsAs(kept)) << transform->name << " changed its input, size " << n;
            EXPECT_TRUE(x.intact() && y.intact()) << transform->name << " " << n;
            for (std::size_t offset = 2; offset <= 14; offset += 4) {
                const GuardedFloats shiftedX = noise(n, 51, offset);
                GuardedFloats shiftedY(floatsOf(n), 16 - offset, 1e30f);
                transform->run(n, log2Of(n), shiftedX.data(), shiftedY.data());
                EXPECT_TRUE(shiftedY.sameBitsAs(y)) << transform->name << " " << n << " " << offset;
                EXPECT_TRUE(shiftedX.intact() && shiftedY.intact()) << n << " " << offset;
            }
        }
    }
}

TEST(Buffers, WhatTheOutputHeldBeforeDoesNotCount) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        for (const Transform* transform : Both) {
            const GuardedFloats x = noise(n, 52);
            GuardedFloats y(floatsOf(n), 0, std::numeric_limits<float>::quiet_NaN());
            transform->run(n, log2Of(n), x.data(), y.data());
            EXPECT_TRUE(y.sameBitsAs(transformed(*transform, n, x))) << transform->name << " " << n;
        }
    }
}

TEST(EmptySizes, LeaveTheOutputUntouched) {
    for (const Transform* transform : Both) {
        for (const int n : {0, -1, -2, -8192, INT_MIN}) {
            const GuardedFloats kept = noise(8, 53);
            GuardedFloats x = noise(8, 54), y = noise(8, 53);
            transform->run(n, 3, x.data(), y.data());
            transform->entry(n, x.data(), nullptr, y.data(), nullptr, 2, 0, n);
            EXPECT_TRUE(y.sameBitsAs(kept)) << transform->name << " " << n;
            EXPECT_TRUE(y.intact()) << transform->name << " " << n;
        }
    }
}

TEST(EntryPoints, AreTheTransformsOfEverySize) {
    for (int n = 1; n <= FFT_MAX; n *= 2) {
        for (const Transform* transform : Both) {
            GuardedFloats x = noise(n, 55), y(floatsOf(n));
            transform->entry(n, x.data(), nullptr, y.data(), nullptr, 0, 0, 0);
            EXPECT_TRUE(y.sameBitsAs(transformed(*transform, n, x))) << transform->name << " " << n;
        }
    }
}

TEST(EntryPoints, IgnoreTheFiveOtherArguments) {
    const int n = 64;
    const float rubbish[] = {std::numeric_limits<float>::quiet_NaN(), 1e38f};
    const unsigned char bytes[] = {255, 1, 254};
    // pointers that nothing may be read from, one of them misaligned
    const auto* nowhere = reinterpret_cast<const float*>(std::uintptr_t{1});
    const auto* nothing = reinterpret_cast<const unsigned char*>(std::uintptr_t{3});
    for (const Transform* transform : Both) {
        GuardedFloats x = noise(n, 56), y(floatsOf(n));
        const GuardedFloats plain = transformed(*transform, n, x);
        transform->entry(n, x.data(), rubbish, y.data(), bytes, -5, INT_MAX, 3);
        EXPECT_TRUE(y.sameBitsAs(plain)) << transform->name;
        transform->entry(n, x.data(), nowhere, y.data(), nothing, INT_MIN, -1, 2 * n);
        EXPECT_TRUE(y.sameBitsAs(plain)) << transform->name;
        EXPECT_TRUE(y.intact()) << transform->name;
    }
}

}  // namespace
