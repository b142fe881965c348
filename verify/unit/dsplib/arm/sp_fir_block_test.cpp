#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "dsplib/arm/sp_fir_neon_internal.h"
#include "dsplib/sp_fir_neon.h"
#include "sp_fir_test_support.h"

namespace {

using reference::noise;

/** One call between guards: the direct sum, and nothing written but the outputs. */
void expectDirectSum(int nh, int ny, int xOffset, int hOffset, int yOffset) {
    const Guarded x(noise(sizeOf(ny + std::max(nh, 1) - 1), 11u), xOffset);
    const Guarded h(noise(sizeOf(nh), 22u), hOffset);
    Guarded y = Guarded::outputs(ny, yOffset);
    sp_fir_gen(x.data(), h.data(), y.data(), nh, ny);
    ASSERT_EQ(firstNotDirectSum(y.data(), x.data(), h.data(), nh, ny), -1)
        << "taps " << nh << ", outputs " << ny << ", offsets of x " << xOffset << ", h " << hOffset
        << ", y " << yOffset;
    ASSERT_TRUE(y.guardsStand()) << "taps " << nh << ", outputs " << ny;
}

TEST(BlockFilter, EqualsTheDirectSumForSmallCountsAtEveryAlignment) {
    // All 64 combinations; on slow machines the four where all differ and the one where none does.
    for (int offsets = 0; offsets < 64; offsets += SlowMachine ? 27 : 1) {
        for (int nh = 0; nh <= 40; ++nh) {
            for (int ny = 0; ny <= 65; ++ny) {
                expectDirectSum(nh, ny, offsets % 4, offsets / 4 % 4, offsets / 16);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(BlockFilter, EqualsTheDirectSumForLongFilters) {
    for (const int nh : {41,  47,  48,  63,  64,   65,   100,  127,  128,  129,
                         255, 256, 257, 511, 1023, 1024, 2047, 2048, 2049, 3000}) {
        for (const int ny : {1, 2, 3, 4, 5, 11, 12, 13, 16, 31, 32, 33, 47, 63, 64, 65, 107, 192}) {
            expectDirectSum(nh, ny, ny % 4, nh % 4, (nh + ny) % 4);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(BlockFilter, EqualsTheDirectSumForLongBlocks) {
    for (int nh = 1; nh <= 40; ++nh) {
        for (const int ny : {127, 128, 129, 144, 160, 2048, 2104}) {
            expectDirectSum(nh, ny, 0, 0, 0);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(BlockFilter, OneTapScales) {
    const std::array<float, 3> x = {1.0f, -2.0f, 3.0f};
    const float h = 0.5f;
    std::array<float, 3> y = {};
    sp_fir_gen(x.data(), &h, y.data(), 1, 3);
    EXPECT_EQ(y, (std::array<float, 3>{0.5f, -1.0f, 1.5f}));
}

TEST(BlockFilter, TheFirstCoefficientMeetsTheOldestSample) {
    const std::array<float, 3> x = {1.0f, 10.0f, 100.0f};
    const std::array<float, 2> h = {2.0f, 3.0f};
    std::array<float, 2> y = {};
    sp_fir_gen(x.data(), h.data(), y.data(), 2, 2);
    EXPECT_EQ(y, (std::array<float, 2>{32.0f, 320.0f}));
}

TEST(BlockFilter, WithoutOutputsNothingIsWritten) {
    const std::array<float, 8> x = {};
    const float h = 1.0f;
    for (const int ny : {0, -1, std::numeric_limits<int>::min()}) {
        for (const int nh : {-1, 0, 1}) {
            Guarded y = Guarded::outputs(4, 0);
            sp_fir_gen(x.data(), &h, y.data(), nh, ny);
            EXPECT_EQ(y.values(), std::vector<float>(4, Untouched)) << "ny " << ny << " nh " << nh;
        }
    }
}

TEST(BlockFilter, WithoutTapsZerosAreWrittenAndNothingIsRead) {
    for (const int nh : {0, -1, std::numeric_limits<int>::min()}) {
        Guarded y = Guarded::outputs(37, 1);
        sp_fir_gen(nullptr, nullptr, y.data(), nh, 37);
        EXPECT_EQ(y.values(), std::vector<float>(37, 0.0f)) << "nh " << nh;
        EXPECT_TRUE(y.guardsStand());
    }
}

TEST(BlockFilter, StaysInsideBlocksOfExactSize) {
    for (int nh = 1; nh <= 70; ++nh) {
        for (int ny = 1; ny <= 70; ++ny) {
            ExactBlock x(noise(sizeOf(ny + nh - 1), 5u));
            ExactBlock h(noise(sizeOf(nh), 6u));
            ExactBlock y(ny);
            sp_fir_gen(x.data(), h.data(), y.data(), nh, ny);
            ASSERT_EQ(firstNotDirectSum(y.data(), x.data(), h.data(), nh, ny), -1)
                << "taps " << nh << ", outputs " << ny;
        }
    }
}

TEST(BlockFilter, AddsInAnOrderThatDependsOnTheTapsAlone) {
    // Both zeros, exact cancellation and magnitudes far apart show a different order or a stray 0.
    std::vector<float> x = noise(3200, 7u);
    for (std::size_t i = 0; i < x.size(); i += 3) x[i] *= 0x1p20f;
    for (std::size_t i = 1; i < x.size(); i += 5) x[i] = i % 2 == 0 ? 0.0f : -0.0f;
    std::fill(x.begin() + 100, x.begin() + 140, -0.0f);
    for (const int nh : {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,  16,  17,
                         18, 19, 20, 21, 22, 23, 24, 31, 32, 33, 34, 35, 36, 64, 129, 1001}) {
        const std::vector<float> h = noise(sizeOf(nh), 8u);
        const int ny = 251;
        std::vector<float> y(251);
        sp_fir_gen(x.data(), h.data(), y.data(), nh, ny);
        for (int i = 0; i < ny; ++i) {
            const float expected = reference::firOutputInOrder(x.data() + i, h.data(), nh);
            ASSERT_TRUE(reference::sameValue(y[sizeOf(i)], expected))
                << "taps " << nh << ", output " << i << ": " << y[sizeOf(i)] << " for " << expected;
        }
    }
}

TEST(BlockFilter, SumsOfNegativeZerosAreNegativeZeros) {
    // Any +0 that a kernel adds beside the products, for a missing tap say, turns the sign.
    const std::vector<float> x(200, -0.0f);
    for (int nh = 1; nh <= 70; ++nh) {
        const std::vector<float> h(sizeOf(nh), 1.0f);
        for (const int ny : {1, 2, 3, 4, 7, 15, 32, 67, 130}) {
            std::vector<float> y(sizeOf(ny));
            sp_fir_gen(x.data(), h.data(), y.data(), nh, ny);
            ASSERT_TRUE(std::all_of(y.begin(), y.end(),
                                    [](float v) { return reference::sameValue(v, -0.0f); }))
                << "taps " << nh << ", outputs " << ny;
        }
    }
}

TEST(BlockFilter, EveryKernelGivesTheSameBits) {
    const std::vector<float> x = noise(400, 9u);
    for (int nh = 1; nh <= 70; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), 10u);
        std::vector<float> widest(200);
        std::vector<float> twelves(200);
        sp_fir::sp_fir_gen_(x.data(), h.data(), widest.data(), nh, 200);
        sp_fir::pipelined_unroll12x(x.data(), h.data(), twelves.data(), nh, 200);
        ASSERT_EQ(firstDifference(widest.data(), twelves.data(), 200), -1) << "taps " << nh;
    }
}

TEST(BlockFilter, ANaNReachesTheOutputsWhoseWindowsHoldItAndNoOther) {
    for (int nh = 1; nh <= 37; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), 12u);
        for (const int ny : {1, 3, 7, 15, 31, 33, 75, 131}) {
            for (int at = 0; at < ny + nh - 1; at += 1 + ny / 8) {
                std::vector<float> x = noise(sizeOf(ny + nh - 1), 13u);
                x[sizeOf(at)] = NaN;
                std::vector<float> y(sizeOf(ny));
                sp_fir_gen(x.data(), h.data(), y.data(), nh, ny);
                for (int i = 0; i < ny; ++i) {
                    const bool inWindow = i <= at && at < i + nh;
                    ASSERT_EQ(std::isnan(y[sizeOf(i)]), inWindow)
                        << "taps " << nh << ", outputs " << ny << ", NaN at " << at << ", output "
                        << i;
                }
            }
        }
    }
}

TEST(BlockFilter, AnInfiniteSampleBesideTheWindowDoesNotMatter) {
    for (int nh = 1; nh <= 37; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), 14u);
        std::vector<float> x = noise(sizeOf(nh + 8), 15u);
        x[sizeOf(nh) + 1] = std::numeric_limits<float>::infinity();
        std::array<float, 3> y = {};
        sp_fir_gen(x.data(), h.data(), y.data(), nh, 3);
        EXPECT_TRUE(std::isfinite(y[0])) << "taps " << nh;
        EXPECT_TRUE(std::isfinite(y[1])) << "taps " << nh;
        EXPECT_TRUE(std::isinf(y[2])) << "taps " << nh;
    }
}

TEST(BlockFilter, TheOutputMayReplaceTheInputOrBeginBeforeIt) {
    for (int nh = 1; nh <= 40; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), 16u);
        for (int ny = 1; ny <= 150; ny += 1 + ny / 20) {
            for (const int before : {0, 1, 3, 4, 5}) {
                const std::vector<float> x = noise(sizeOf(ny + nh - 1), 17u);
                std::vector<float> expected(sizeOf(ny));
                sp_fir_gen(x.data(), h.data(), expected.data(), nh, ny);
                std::vector<float> shared(sizeOf(before), 0.0f);
                shared.insert(shared.end(), x.begin(), x.end());
                sp_fir_gen(shared.data() + before, h.data(), shared.data(), nh, ny);
                ASSERT_EQ(firstDifference(shared.data(), expected.data(), ny), -1)
                    << "taps " << nh << ", outputs " << ny << ", " << before << " before x";
            }
        }
    }
}

TEST(BlockFilter, TheCoefficientsMayBePartOfTheInput) {
    const std::vector<float> x = noise(100, 18u);
    std::array<float, 60> y = {};
    sp_fir_gen(x.data(), x.data() + 10, y.data(), 30, 60);
    EXPECT_EQ(firstNotDirectSum(y.data(), x.data(), x.data() + 10, 30, 60), -1);
}

}  // namespace
