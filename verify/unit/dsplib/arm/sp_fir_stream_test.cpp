#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "dsplib/sp_fir_neon.h"
#include "sp_fir_test_support.h"

namespace {

using reference::noise;

constexpr unsigned Seed = 20250;

/** A stream filter with guards around all that it owns. */
class Stream {
  public:
    explicit Stream(std::vector<float> coefficients)
        : nh(static_cast<int>(coefficients.size())),
          h(coefficients, 3),
          line(std::vector<float>(coefficients.size(), 0.0f), 2) {}

    void filter(const float* samples, int n, std::vector<float>& outputs) {
        const Guarded x(samples, n, n % 4);
        Guarded y = Guarded::outputs(n, (n + 1) % 4);
        pos = sp_fir_filter(x.data(), h.data(), line.data(), pos, y.data(), nh, n);
        intact = intact && y.guardsStand() && line.guardsStand();
        const std::vector<float> values = y.values();
        outputs.insert(outputs.end(), values.begin(), values.end());
    }

    /** Whether the line, read from the position, ends with the samples up to `end`. */
    bool holds(const std::vector<float>& padded, std::size_t end) const {
        for (int k = 0; k < nh; ++k) {
            const float expected = padded[end - sizeOf(nh) + sizeOf(k)];
            if (!(line[(pos - 1 + k + nh) % nh] == expected)) return false;
        }
        return pos >= 0 && pos < nh;
    }

    int nh;
    bool intact = true;

  private:
    Guarded h;
    Guarded line;
    int pos = 0;
};

/** The stream behind nh zeros: what the line holds at the start, then the signal. */
std::vector<float> behindZeros(const std::vector<float>& signal, int nh) {
    std::vector<float> padded(sizeOf(nh), 0.0f);
    padded.insert(padded.end(), signal.begin(), signal.end());
    return padded;
}

/** Filters in blocks of the sizes that nextSize() gives, looking at the line after each. */
template <class NextSize>
void expectSameInBlocks(int nh, int length, const std::string& blocks, NextSize nextSize) {
    const std::vector<float> signal = noise(sizeOf(length), Seed);
    const std::vector<float> h = noise(sizeOf(nh), Seed + 1);
    const std::vector<float> padded = behindZeros(signal, nh);
    std::vector<float> expected(signal.size());
    sp_fir_gen(padded.data() + 1, h.data(), expected.data(), nh, length);

    Stream stream(h);
    std::vector<float> outputs;
    for (int done = 0; done < length;) {
        const int n = std::min(nextSize(), length - done);
        stream.filter(signal.data() + done, n, outputs);
        done += n;
        ASSERT_TRUE(stream.intact) << nh << " taps, " << blocks << ", " << done << " done";
        ASSERT_TRUE(stream.holds(padded, sizeOf(nh + done)))
            << nh << " taps, " << blocks << ", " << done << " done, last block " << n;
    }
    ASSERT_EQ(firstDifference(outputs.data(), expected.data(), length), -1)
        << nh << " taps, " << blocks;
}

TEST(StreamFilter, OneCallEqualsTheDirectSumBehindZeros) {
    for (int nh = 1; nh <= 40; ++nh) {
        for (int n = 1; n <= 65; ++n) {
            const std::vector<float> signal = noise(sizeOf(n), Seed + 2);
            const std::vector<float> h = noise(sizeOf(nh), Seed + 3);
            Stream stream(h);
            std::vector<float> y;
            stream.filter(signal.data(), n, y);
            const std::vector<float> padded = behindZeros(signal, nh);
            ASSERT_EQ(firstNotDirectSum(y.data(), padded.data() + 1, h.data(), nh, n), -1)
                << nh << " taps, " << n << " samples";
            ASSERT_TRUE(stream.intact) << nh << " taps, " << n << " samples";
        }
    }
}

TEST(StreamFilter, OneCallWithALongFilterEqualsTheDirectSumBehindZeros) {
    for (const int nh : {64, 127, 256, 1000, 1985, 2041, 2047, 2048, 2049, 3000}) {
        for (const int n : {1, 7, 8, 9, 12, 63, 64, 65, 200, 2048}) {
            if (SlowMachine && n > 200) continue;
            const std::vector<float> signal = noise(sizeOf(n), Seed + 4);
            const std::vector<float> h = noise(sizeOf(nh), Seed + 5);
            Stream stream(h);
            std::vector<float> y;
            stream.filter(signal.data(), n, y);
            const std::vector<float> padded = behindZeros(signal, nh);
            ASSERT_EQ(firstNotDirectSum(y.data(), padded.data() + 1, h.data(), nh, n), -1)
                << nh << " taps, " << n << " samples";
        }
    }
}

TEST(StreamFilter, BlocksOfOneSizeChangeNoBit) {
    for (const int nh : {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 24, 31, 32, 33, 64, 100}) {
        for (const int size : {1, 2, 3, 4, 5, 7, 8, 9, 11, 12, std::max(nh - 1, 1), nh, nh + 1,
                               3 * nh, 63, 64, 65, 1000}) {
            expectSameInBlocks(nh, 1000, "blocks of " + std::to_string(size), [=] { return size; });
            if (HasFatalFailure()) return;
        }
    }
}

TEST(StreamFilter, ThousandsOfMixedBlocksChangeNoBit) {
    for (const int nh : {1, 2, 3, 5, 8, 13, 16, 17, 29, 40, 64, 129}) {
        for (const unsigned seed : {1u, 2u, 3u}) {
            std::mt19937 random(seed);
            const auto nextSize = [&random, nh] {
                const std::array<int, 6> sizes = {1,
                                                  std::max(nh - 1, 1),
                                                  nh,
                                                  3 * nh,
                                                  1 + static_cast<int>(random() % 16),
                                                  1 + static_cast<int>(random() % 100)};
                return sizes[random() % sizes.size()];
            };
            const int meanSize = (5 * nh + 58) / 6;
            expectSameInBlocks(nh, meanSize * (SlowMachine ? 100 : 2000),
                               "mixed blocks, seed " + std::to_string(seed), nextSize);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(StreamFilter, MixedBlocksOfLongFiltersChangeNoBit) {
    for (const int nh : {255, 1024, 1990, 2040, 2048, 2049, 3000}) {
        std::mt19937 random(Seed);
        const auto nextSize = [&random, nh] {
            const std::array<int, 6> sizes = {1, nh - 1, nh,
                                              5, 1024,   1 + static_cast<int>(random() % 600)};
            return sizes[random() % sizes.size()];
        };
        expectSameInBlocks(nh, SlowMachine ? 4 * nh : 8 * nh,
                           "mixed blocks, seed " + std::to_string(Seed), nextSize);
        if (HasFatalFailure()) return;
    }
}

TEST(StreamFilter, AnyPositionOfTheLineGivesTheSameOutputs) {
    for (int nh = 1; nh <= 36; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), Seed + 6);
        const std::vector<float> window = noise(sizeOf(nh + 20), Seed + 7);
        for (int n = 1; n <= 20; ++n) {
            std::vector<float> expected(sizeOf(n));
            sp_fir_gen(window.data() + 1, h.data(), expected.data(), nh, n);
            for (int pos = 0; pos < nh; ++pos) {
                Guarded line(std::vector<float>(sizeOf(nh), 0.0f), 0);
                for (int k = 0; k < nh; ++k) {
                    line.data()[(pos - 1 + k + nh) % nh] = window[sizeOf(k)];
                }
                Guarded y = Guarded::outputs(n, 0);
                sp_fir_filter(window.data() + nh, h.data(), line.data(), pos, y.data(), nh, n);
                ASSERT_EQ(firstDifference(y.data(), expected.data(), n), -1)
                    << nh << " taps, position " << pos << ", n " << n;
            }
        }
    }
}

TEST(StreamFilter, APositionOutsideTheLineIsReducedModuloTheTaps) {
    const int nh = 7;
    const std::vector<float> h = noise(7, Seed + 8);
    const std::vector<float> start = noise(7, Seed + 9);
    const std::vector<float> x = noise(3, Seed + 10);
    const auto run = [&](int pos) {
        std::vector<float> result = start;
        std::vector<float> y(3);
        const int after = sp_fir_filter(x.data(), h.data(), result.data(), pos, y.data(), nh, 3);
        result.insert(result.end(), y.begin(), y.end());
        result.push_back(static_cast<float>(after));
        return result;
    };
    EXPECT_EQ(run(-1), run(6));
    EXPECT_EQ(run(7), run(0));
    EXPECT_EQ(run(8), run(1));
    EXPECT_EQ(run(-7), run(0));
    EXPECT_EQ(run(-9), run(5));
    EXPECT_EQ(run(7003), run(3));
    EXPECT_NE(run(-1), run(0));
    EXPECT_NE(run(7), run(6));
}

TEST(StreamFilter, TheSlotBeforeThePositionIsNoHistory) {
    for (int nh = 1; nh <= 40; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), Seed + 11);
        for (const int n : {1, 4, 7, 8, 40, 100}) {
            std::vector<float> line(sizeOf(nh), 0.0f);
            line[sizeOf(nh - 1)] = NaN;  // position 0
            const std::vector<float> x = noise(sizeOf(n), Seed + 12);
            std::vector<float> y(sizeOf(n));
            sp_fir_filter(x.data(), h.data(), line.data(), 0, y.data(), nh, n);
            ASSERT_TRUE(std::none_of(y.begin(), y.end(), [](float v) { return std::isnan(v); }))
                << nh << " taps, n " << n;
        }
    }
}

TEST(StreamFilter, WithoutSamplesThePositionComesBackAsItIs) {
    for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
        for (const int pos : {-1, 0, 3, 5, 900}) {
            for (const int nh : {-1, 0, 5}) {
                std::array<float, 5> line = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f};
                const std::array<float, 5> before = line;
                std::array<float, 2> y = {Untouched, Untouched};
                EXPECT_EQ(sp_fir_filter(nullptr, nullptr, line.data(), pos, y.data(), nh, n), pos);
                EXPECT_EQ(line, before);
                EXPECT_EQ(y, (std::array<float, 2>{Untouched, Untouched}));
            }
        }
    }
}

TEST(StreamFilter, WithoutTapsZerosAreWrittenAndThePositionStays) {
    for (const int nh : {0, -3}) {
        for (const int pos : {-1, 0, 12}) {
            Guarded y = Guarded::outputs(21, 2);
            EXPECT_EQ(sp_fir_filter(nullptr, nullptr, nullptr, pos, y.data(), nh, 21), pos);
            EXPECT_EQ(y.values(), std::vector<float>(21, 0.0f));
            EXPECT_TRUE(y.guardsStand());
        }
    }
}

TEST(StreamFilter, StaysInsideBlocksOfExactSize) {
    for (const int nh : {1, 2, 3, 4, 5, 8, 11, 12, 13, 16, 17, 20, 33, 70, 2049}) {
        for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 31, 64, 100}) {
            ExactBlock h(noise(sizeOf(nh), 1u));
            ExactBlock line(std::vector<float>(sizeOf(nh), 0.0f));
            int pos = nh / 3;
            for (int block = 0; block < 3; ++block) {
                ExactBlock x(noise(sizeOf(n), 2u));
                ExactBlock y(n);
                pos = sp_fir_filter(x.data(), h.data(), line.data(), pos, y.data(), nh, n);
                ASSERT_TRUE(pos >= 0 && pos < nh);
                ASSERT_TRUE(
                    std::all_of(y.data(), y.data() + n, [](float v) { return std::isfinite(v); }));
            }
        }
    }
}

}  // namespace
