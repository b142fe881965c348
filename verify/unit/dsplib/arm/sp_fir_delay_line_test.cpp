#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "dsplib/arm/sp_fir_neon_internal.h"
#include "sp_fir_test_support.h"

namespace {

using sp_fir::init_overlap;
using sp_fir::update_delay_line;

/** Samples that tell where in the stream they came from. */
std::vector<float> counting(int first, int count) {
    std::vector<float> samples(sizeOf(count));
    for (int i = 0; i < count; ++i) samples[sizeOf(i)] = static_cast<float>(first + i);
    return samples;
}

/** A delay line behind a stream 1, 2, 3, ...: what it holds must be the last nh numbers. */
class Line {
  public:
    Line(int taps, int startPosition)
        : nh(taps), pos(startPosition), storage(std::vector<float>(sizeOf(taps), 0.0f), 1) {
        // The last nh samples before the stream: oldest in the slot before the position.
        for (int k = 0; k < nh; ++k) slot(pos - 1 + k) = static_cast<float>(k - nh + 1);
    }

    int advance(int n) {
        const Guarded x(counting(newest + 1, n), 0);
        pos = update_delay_line(x.data(), storage.data(), pos, nh, n);
        newest += n;
        return pos;
    }

    /** The nh-1 newest from pos on, oldest first, and the one before them in the slot before. */
    bool holdsTheLast() {
        if (pos < 0 || pos >= nh || !storage.guardsStand()) return false;
        for (int k = 0; k < nh; ++k) {
            if (!(slot(pos - 1 + k) == static_cast<float>(newest - nh + 1 + k))) return false;
        }
        return true;
    }

  private:
    float& slot(int at) { return storage.data()[(at % nh + nh) % nh]; }

    int nh;
    int pos;
    int newest = 0;
    Guarded storage;
};

/** One update of a line that stands at pos; the position it moves to, -1 if its contents broke. */
int positionAfter(int nh, int pos, int n) {
    Line line(nh, pos);
    const int after = line.advance(n);
    return line.holdsTheLast() ? after : -1;
}

TEST(DelayLine, ABlockOfAllTapsOrMoreStartsTheLineAfresh) {
    for (const int nh : {1, 2, 3, 8, 17, 2048, 2049, 3000}) {
        for (const int pos : {0, nh / 2, nh - 1}) {
            for (const int n : {nh, nh + 1, 3 * nh}) {
                EXPECT_EQ(positionAfter(nh, pos, n), 0) << nh << " taps at " << pos << ", n " << n;
            }
        }
    }
}

TEST(DelayLine, AnOrderedLineShiftsForABlockOfHalfTheTapsRoundedDownToEights) {
    EXPECT_EQ(positionAfter(16, 0, 8), 0);
    EXPECT_EQ(positionAfter(16, 0, 7), 7);
    EXPECT_EQ(positionAfter(23, 0, 8), 0);  // half of 16, not of 23
    EXPECT_EQ(positionAfter(23, 0, 7), 7);
    EXPECT_EQ(positionAfter(24, 0, 12), 0);
    EXPECT_EQ(positionAfter(24, 0, 11), 11);
    EXPECT_EQ(positionAfter(15, 0, 4), 0);
    EXPECT_EQ(positionAfter(15, 0, 3), 3);
    EXPECT_EQ(positionAfter(8, 0, 4), 0);
    EXPECT_EQ(positionAfter(8, 0, 3), 3);
    for (int n = 1; n < 7; ++n) EXPECT_EQ(positionAfter(7, 0, n), 0) << n;  // half of nothing
}

TEST(DelayLine, NoLineAbove2048TapsShifts) {
    EXPECT_EQ(positionAfter(2048, 0, 1024), 0);
    EXPECT_EQ(positionAfter(2048, 0, 1023), 1023);
    EXPECT_EQ(positionAfter(2048, 0, 2047), 0);
    EXPECT_EQ(positionAfter(2049, 0, 1024), 1024);
    EXPECT_EQ(positionAfter(2049, 0, 2048), 2048);
    EXPECT_EQ(positionAfter(2047, 0, 1020), 0);
    EXPECT_EQ(positionAfter(2047, 0, 1019), 1019);
}

TEST(DelayLine, ALineOutOfOrderIsWrittenInCircles) {
    EXPECT_EQ(positionAfter(16, 1, 15), 0);
    EXPECT_EQ(positionAfter(16, 1, 14), 15);
    EXPECT_EQ(positionAfter(16, 9, 8), 1);
    EXPECT_EQ(positionAfter(16, 15, 1), 0);
    EXPECT_EQ(positionAfter(7, 3, 6), 2);
    EXPECT_EQ(positionAfter(2, 1, 1), 0);
}

TEST(DelayLine, EveryPositionAndBlockKeepsTheLastSamples) {
    for (int nh = 1; nh <= 40; ++nh) {
        for (int pos = 0; pos < nh; ++pos) {
            for (int n = 1; n <= nh + 2; ++n) {
                const bool restarts = n >= nh || (pos == 0 && 4 * (nh / 8) <= n);
                ASSERT_EQ(positionAfter(nh, pos, n), restarts ? 0 : (pos + n) % nh)
                    << nh << " taps at " << pos << ", n " << n;
            }
        }
    }
}

TEST(DelayLine, ALongStreamOfAnyBlocksKeepsTheLastSamples) {
    std::mt19937 random(4711);
    for (const int nh : {1, 2, 3, 5, 8, 16, 31, 64, 100, 257, 2047, 2048, 2049, 3000}) {
        Line line(nh, 0);
        for (int block = 0; block < 300; ++block) {
            const std::array<int, 5> sizes = {1, std::max(nh - 1, 1), nh, 3 * nh,
                                              1 + static_cast<int>(random() % 64)};
            const int n = sizes[random() % sizes.size()];
            line.advance(n);
            ASSERT_TRUE(line.holdsTheLast())
                << "seed 4711, " << nh << " taps, block " << block << " of " << n;
        }
    }
}

TEST(Overlap, StagesSamplesAcrossTheRunsOfTheWindow) {
    // 7 taps at position 4: history dl[4..6], dl[0..2], then three new samples.
    const std::array<float, 7> dl = {4.0f, 5.0f, 6.0f, -1.0f, 1.0f, 2.0f, 3.0f};
    const std::array<float, 3> x = {7.0f, 8.0f, 9.0f};
    const sp_fir::Window window = sp_fir::windowOf(x.data(), dl.data(), 4, 7, 3);
    for (const int len : {8, 12}) {
        for (int first = 0; first < 9; ++first) {
            Guarded overlap = Guarded::outputs(len, 0);
            init_overlap(overlap.data(), len, window, first);
            for (int i = 0; i < len; ++i) {
                const float expected = first + i < 9 ? static_cast<float>(first + i + 1) : 0.0f;
                EXPECT_EQ(overlap[i], expected)
                    << "len " << len << ", first " << first << ", " << i;
            }
            EXPECT_TRUE(overlap.guardsStand());
        }
    }
}

using OverlapDeathTest = ::testing::TestWithParam<int>;

TEST_P(OverlapDeathTest, AcceptsNoLengthButEightAndTwelve) {
    const std::array<float, 64> samples = {};
    std::array<float, 64> overlap = {};
    const sp_fir::Window window = sp_fir::windowOf(samples.data(), samples.data(), 0, 32, 32);
    EXPECT_DEATH(init_overlap(overlap.data(), GetParam(), window, 0),
                 "functional/audio/libraries/dsplib/arm/sp_fir_neon:[0-9]+: init_overlap: "
                 "Assertion `len == 8 \\|\\| len == 12' failed");
}

INSTANTIATE_TEST_SUITE_P(Lengths, OverlapDeathTest, ::testing::Values(-8, 0, 4, 7, 9, 11, 13, 16));

}  // namespace
