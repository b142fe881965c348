// The split passes of the real transforms against what they say in complex numbers, and the tables.

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "gtest/gtest.h"
#include "kit/floatBits.h"
#include "kit/guardedFloats.h"
#include "kit/noise.h"
#include "models/doubleFft.h"
#include "track/realFft.h"
#include "track/realFftSplit.h"
#include "voxloc/voxloc.h"
#include "voxloc/voxlocParts.h"

namespace {

using namespace kit;
using reference::GuardedFloats;
using reference::noise;
using Complex = std::complex<double>;

// Around every vector width, an odd prime, and the sizes that the module uses.
constexpr int Sizes[] = {1,  2,  3,  4,  5,  6,  7,  8,   9,    15,   16,
                         17, 31, 32, 33, 63, 64, 65, 127, 1031, 2048, 8192};

Complex point(const GuardedFloats& x, int k) {
    const std::size_t at = 2 * static_cast<std::size_t>(k);
    return {wide(x[at]), wide(x[at + 1])};
}

// Four products a part of values up to 1: half an epsilon of each, and of each of four sums.
constexpr double SplitLimit = (4 * 0.5 + 4 * 4 * 0.5) * Epsilon;

void expectPoint(const GuardedFloats& out, int k, Complex expected) {
    ASSERT_TRUE(std::fabs(point(out, k).real() - expected.real()) <= SplitLimit &&
                std::fabs(point(out, k).imag() - expected.imag()) <= SplitLimit)
        << "point " << k << ": " << point(out, k) << ", expected " << expected;
}

/** Calls `test` with random points and tables, at every size and at several alignments. */
template <class Test>
void atEverySizeAndAlignment(Test test) {
    for (const int n : Sizes) {
        const auto floats = 2 * static_cast<std::size_t>(n);
        const GuardedFloats a(noise(floats, 2), 2), b(noise(floats, 3), 0);
        for (std::size_t offset = 0; offset < 8; offset += 2) {
            SCOPED_TRACE(testing::Message() << "size " << n << ", offset " << offset);
            GuardedFloats x(noise(floats + 2, 1), offset);
            test(n, x, a, b, offset + 2);
            EXPECT_TRUE(x.intact());
        }
    }
}

TEST(SplitFft, JoinsEachPointWithItsMirrorImageAtEverySizeAndAlignment) {
    atEverySizeAndAlignment([](int n, GuardedFloats& x, const GuardedFloats& a,
                               const GuardedFloats& b, std::size_t offset) {
        const GuardedFloats before = x;
        GuardedFloats out(x.size(), offset, NotANumber);
        voxloc::splitFft(n, x.data(), a.data(), b.data(), out.data());
        for (int k = 0; k < n; k++) {
            const Complex mirror = point(before, k == 0 ? 0 : n - k);
            expectPoint(out, k, point(before, k) * point(a, k) + std::conj(mirror) * point(b, k));
        }
        const std::size_t last = x.size() - 2;
        EXPECT_EQ(out[last], before[0] - before[1]);
        EXPECT_EQ(bitsOf(out[last + 1]), 0u);
        EXPECT_EQ(firstDifference(x.data(), before.data(), last), last);
        EXPECT_EQ(firstDifference(x.data() + last, before.data(), 2), 2u);
        EXPECT_TRUE(out.intact());
    });
}

TEST(SplitIfft, JoinsEachBinWithItsMirrorImageAtEverySizeAndAlignment) {
    atEverySizeAndAlignment([](int n, GuardedFloats& x, const GuardedFloats& a,
                               const GuardedFloats& b, std::size_t offset) {
        const GuardedFloats before = x;
        GuardedFloats out(x.size() - 2, offset, NotANumber);
        voxloc::splitIfft(n, x.data(), a.data(), b.data(), out.data());
        for (int k = 0; k < n; k++) {
            expectPoint(
                out, k,
                point(x, k) * std::conj(point(a, k)) + std::conj(point(x, n - k) * point(b, k)));
        }
        EXPECT_TRUE(x.sameBitsAs(before));
        EXPECT_TRUE(out.intact());
    });
}

// --- Tables. A float that was not to be written still is 123.

constexpr float Unwritten = 123.0f;

// Half an epsilon of the value, and some roundings of an angle of up to 14 in double.
void expectRounded(float actual, double exact) {
    EXPECT_TRUE(std::fabs(wide(actual) - exact) <= Epsilon / 2 * std::fabs(exact) + 1e-14)
        << actual << ", expected " << exact;
}

TEST(AbTables, HoldHalvesOfOneMinusAndPlusARootOfUnityTimesI) {
    for (const int n : {-2048, 0, 1, 2, 3, 100, 2048, 8192}) {
        SCOPED_TRACE(n);
        GuardedFloats a(16386, 0, Unwritten), b(16386, 0, Unwritten);
        voxloc_generateAbTables(a.data(), b.data(), n);
        for (int k = 0; k < n; k++) {
            const std::size_t at = 2 * static_cast<std::size_t>(k);
            const Complex root = std::polar(1.0, -M_PI * k / n), i(0, 1);
            expectRounded(a[at], (0.5 * (1.0 - i * root)).real());
            expectRounded(a[at + 1], (0.5 * (1.0 - i * root)).imag());
            expectRounded(b[at], (0.5 * (1.0 + i * root)).real());
            expectRounded(b[at + 1], (0.5 * (1.0 + i * root)).imag());
        }
        const auto isUnwritten = [](float value) { return value == Unwritten; };
        const std::size_t end = 2 * static_cast<std::size_t>(std::max(n, 0));
        EXPECT_TRUE(std::all_of(a.data() + end, a.data() + a.size(), isUnwritten));
        EXPECT_TRUE(std::all_of(b.data() + end, b.data() + b.size(), isUnwritten));
        EXPECT_TRUE(a.intact() && b.intact());
    }
}

TEST(TwiddleTable, HoldsThreePowersOfARootOfUnityForEachGroupStageAfterStage) {
    // 2048 and 8192 leave four floats of their tables: 682 and 2730 groups of six.
    const struct {
        int n;
        std::size_t floats;
    } rows[] = {{-4, 0},  {0, 0},    {3, 0},       {4, 6},       {8, 12},
                {16, 30}, {64, 126}, {2048, 4092}, {8192, 16380}};
    for (const auto& [n, floats] : rows) {
        SCOPED_TRACE(n);
        GuardedFloats table(16384, 0, Unwritten);
        voxloc_generateTwiddleFactors(table.data(), n);
        std::size_t at = 0;
        for (int stride = 1; at < floats; stride *= 4) {
            for (int k = 0; k < n / 4; k += stride) {
                for (const int power : {1, 2, 3}) {
                    const Complex root = std::polar(1.0, 2 * M_PI * power * k / n);
                    expectRounded(table[at++], root.real());
                    expectRounded(table[at++], root.imag());
                }
            }
        }
        EXPECT_EQ(at, floats);
        for (; at < table.size(); at++) ASSERT_EQ(table[at], Unwritten) << at;
        EXPECT_TRUE(table.intact());
    }
}

TEST(BitReverseTable, ReversesSixBits) {
    for (unsigned i = 0; i < 64; i++) {
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < 6; bit++) reversed |= (i >> bit & 1) << (5 - bit);
        EXPECT_EQ(voxloc::BitReverseTable[i], reversed);
    }
}

}  // namespace
