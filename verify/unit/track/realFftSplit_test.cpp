// The split passes of the real transforms against their plain loops.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "kit/guardedFloats.h"
#include "track/realFft.h"

namespace {

using reference::GuardedFloats;

// Around every vector width, an odd prime, and the sizes that the module uses.
constexpr int Sizes[] = {1,  2,  3,  4,  5,  6,  7,  8,   9,    15,   16,
                         17, 31, 32, 33, 63, 64, 65, 127, 1031, 2048, 8192};

void plainSplitFft(int n, float* x, const float* a, const float* b, float* out) {
    x[2 * n] = x[0];
    x[2 * n + 1] = x[1];
    for (int k = 0; k < n; ++k) {
        const float zr = x[2 * k], zi = x[2 * k + 1];
        const float yr = x[2 * (n - k)], yi = x[2 * (n - k) + 1];
        out[2 * k] = zr * a[2 * k] - zi * a[2 * k + 1] + yr * b[2 * k] + yi * b[2 * k + 1];
        out[2 * k + 1] = zi * a[2 * k] + zr * a[2 * k + 1] + yr * b[2 * k + 1] - yi * b[2 * k];
    }
    out[2 * n] = x[0] - x[1];
    out[2 * n + 1] = 0.0f;
}

void plainSplitIfft(int n, const float* x, const float* a, const float* b, float* out) {
    for (int k = 0; k < n; ++k) {
        const float zr = x[2 * k], zi = x[2 * k + 1];
        const float yr = x[2 * (n - k)], yi = x[2 * (n - k) + 1];
        out[2 * k] = zr * a[2 * k] + zi * a[2 * k + 1] + yr * b[2 * k] - yi * b[2 * k + 1];
        out[2 * k + 1] = zi * a[2 * k] - zr * a[2 * k + 1] - yr * b[2 * k + 1] - yi * b[2 * k];
    }
}

GuardedFloats noise(int floats, unsigned seed, std::size_t offset) {
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);
    GuardedFloats values(static_cast<std::size_t>(floats), offset);
    std::generate_n(values.data(), values.size(), [&] { return uniform(generator); });
    return values;
}

/** Equal bits where every product rounds by itself; where they fuse, four roundings of size 1. */
void expectEqual(const GuardedFloats& actual, const GuardedFloats& plain, int n) {
#if defined(__FMA__) && !defined(SP_SIMD_SCALAR)
    constexpr double FourRoundings = 4.0 * 4.0 / (1 << 24);  // of sums up to 4
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const double difference = static_cast<double>(actual[i]) - static_cast<double>(plain[i]);
        EXPECT_LE(std::abs(difference), FourRoundings) << "size " << n << ", float " << i;
    }
#else
    EXPECT_TRUE(actual.sameBitsAs(plain)) << "size " << n;
#endif
    EXPECT_TRUE(actual.intact()) << "size " << n;
}

TEST(SplitFft, IsThePlainLoopAtEverySizeAndAlignment) {
    for (const int n : Sizes) {
        for (std::size_t offset = 0; offset < 8; offset += 2) {
            GuardedFloats x = noise(2 * n + 2, 1, offset), plainX = noise(2 * n + 2, 1, offset);
            const GuardedFloats a = noise(2 * n, 2, 2), b = noise(2 * n, 3, 0);
            GuardedFloats out(x.size(), offset + 2), plain(x.size());
            voxloc::splitFft(n, x.data(), a.data(), b.data(), out.data());
            plainSplitFft(n, plainX.data(), a.data(), b.data(), plain.data());
            expectEqual(out, plain, n);
            EXPECT_TRUE(x.sameBitsAs(plainX) && x.intact()) << "size " << n;
        }
    }
}

TEST(SplitIfft, IsThePlainLoopAtEverySizeAndAlignment) {
    for (const int n : Sizes) {
        for (std::size_t offset = 0; offset < 8; offset += 2) {
            const GuardedFloats x = noise(2 * n + 2, 4, offset), kept = noise(2 * n + 2, 4, 0);
            const GuardedFloats a = noise(2 * n, 5, 2), b = noise(2 * n, 6, 0);
            GuardedFloats out(static_cast<std::size_t>(2 * n), offset + 2), plain(out.size());
            voxloc::splitIfft(n, x.data(), a.data(), b.data(), out.data());
            plainSplitIfft(n, x.data(), a.data(), b.data(), plain.data());
            expectEqual(out, plain, n);
            EXPECT_TRUE(x.sameBitsAs(kept) && x.intact()) << "size " << n;
        }
    }
}

}  // namespace
