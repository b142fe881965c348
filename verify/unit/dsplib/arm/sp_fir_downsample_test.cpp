#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <vector>

#include "dsplib/sp_fir_neon.h"
#include "sp_fir_test_support.h"

namespace {

using reference::noise;

constexpr unsigned Seed = 31415;
constexpr int LongestStep = 17;
constexpr int Huge = std::numeric_limits<int>::max();

TEST(DecimatingBlock, EqualsTheDirectSumForEveryStep) {
    for (int step = 1; step <= LongestStep; ++step) {
        for (int nh = 0; nh <= 40; ++nh) {
            for (const int n : {1, 2, 3, 4, 5, 9, 10, 16, 17, 18, 33, 65, 130, 300}) {
                const int offset = (nh + n + step) % 4;
                const Guarded x(noise(sizeOf(n + std::max(nh, 1) - 1), Seed), offset);
                const Guarded h(noise(sizeOf(nh), Seed + 1), (offset + 1) % 4);
                const int outputs = (n - 1) / step + 1;
                Guarded y = Guarded::outputs(outputs, (offset + 2) % 4);
                sp_fir_gen_downsample(x.data(), h.data(), y.data(), nh, n, step);
                ASSERT_EQ(firstNotDirectSum(y.data(), x.data(), h.data(), nh, outputs, step), -1)
                    << "step " << step << ", taps " << nh << ", n " << n;
                ASSERT_TRUE(y.guardsStand()) << "step " << step << ", taps " << nh << ", n " << n;
            }
        }
    }
}

TEST(DecimatingBlock, EqualsTheDirectSumForLongFilters) {
    for (const int nh : {64, 127, 257, 2048, 3000}) {
        for (const int step : {2, 3, 7, 100}) {
            const int n = 12 * step + 2;
            const std::vector<float> x = noise(sizeOf(n + nh - 1), Seed + 2);
            const std::vector<float> h = noise(sizeOf(nh), Seed + 3);
            std::array<float, 13> y = {};
            sp_fir_gen_downsample(x.data(), h.data(), y.data(), nh, n, step);
            EXPECT_EQ(firstNotDirectSum(y.data(), x.data(), h.data(), nh, 13, step), -1)
                << "step " << step << ", taps " << nh;
        }
    }
}

TEST(DecimatingBlock, KeepsEveryStepthOutputToTheBit) {
    for (int step = 1; step <= LongestStep; ++step) {
        for (const int nh : {1, 2, 3, 4, 6, 11, 16, 17, 23, 40, 100}) {
            const std::vector<float> x = noise(sizeOf(200 + nh - 1), Seed + 4);
            const std::vector<float> h = noise(sizeOf(nh), Seed + 5);
            std::vector<float> all(200);
            std::vector<float> kept(200);
            sp_fir_gen(x.data(), h.data(), all.data(), nh, 200);
            sp_fir_gen_downsample(x.data(), h.data(), kept.data(), nh, 200, step);
            for (int m = 0; m * step < 200; ++m) {
                ASSERT_TRUE(reference::sameValue(kept[sizeOf(m)], all[sizeOf(m * step)]))
                    << "step " << step << ", taps " << nh << ", output " << m;
            }
        }
    }
}

TEST(DecimatingBlock, TenSamplesByThreeAreFourOutputs) {
    const std::array<float, 10> x = {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 9.0f};
    const float h = 1.0f;
    std::array<float, 5> y = {Untouched, Untouched, Untouched, Untouched, Untouched};
    sp_fir_gen_downsample(x.data(), &h, y.data(), 1, 10, 3);
    EXPECT_EQ(y, (std::array<float, 5>{0.0f, 3.0f, 6.0f, 9.0f, Untouched}));
}

TEST(DecimatingBlock, AStepBeyondTheBlockGivesOneOutput) {
    const std::vector<float> x = noise(12, Seed + 6);
    const std::vector<float> h = noise(3, Seed + 7);
    std::array<float, 2> y = {Untouched, Untouched};
    sp_fir_gen_downsample(x.data(), h.data(), y.data(), 3, 10, Huge);
    EXPECT_EQ(firstNotDirectSum(y.data(), x.data(), h.data(), 3, 1), -1);
    EXPECT_EQ(y[1], Untouched);
}

TEST(DecimatingBlock, WithoutSamplesNothingHappensWhateverTheStep) {
    float y = Untouched;
    for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
        for (const int step : {-1, 0, 1, 2}) {
            for (const int nh : {-1, 0, 1}) {
                sp_fir_gen_downsample(nullptr, nullptr, &y, nh, n, step);
                EXPECT_EQ(y, Untouched) << "n " << n << ", step " << step << ", nh " << nh;
            }
        }
    }
}

TEST(DecimatingBlock, WithoutTapsItsOutputsAreZeros) {
    for (int step = 1; step <= LongestStep; ++step) {
        for (const int nh : {0, -5}) {
            const int outputs = 99 / step + 1;
            Guarded y = Guarded::outputs(outputs, 0);
            sp_fir_gen_downsample(nullptr, nullptr, y.data(), nh, 100, step);
            EXPECT_EQ(y.values(), std::vector<float>(sizeOf(outputs), 0.0f));
            EXPECT_TRUE(y.guardsStand());
        }
    }
}

TEST(DecimatingBlock, ANaNReachesTheOutputsWhoseWindowsHoldItAndNoOther) {
    for (const int step : {2, 3, 5}) {
        for (int nh = 1; nh <= 21; ++nh) {
            const std::vector<float> h = noise(sizeOf(nh), Seed + 8);
            for (int at = 0; at < 60 + nh - 1; ++at) {
                std::vector<float> x = noise(sizeOf(60 + nh - 1), Seed + 9);
                x[sizeOf(at)] = NaN;
                std::vector<float> y(60);
                sp_fir_gen_downsample(x.data(), h.data(), y.data(), nh, 60, step);
                for (int m = 0; m * step < 60; ++m) {
                    const bool inWindow = m * step <= at && at < m * step + nh;
                    ASSERT_EQ(std::isnan(y[sizeOf(m)]), inWindow)
                        << "step " << step << ", taps " << nh << ", NaN at " << at << ", " << m;
                }
            }
        }
    }
}

TEST(DecimatingBlock, TheOutputMayReplaceTheInput) {
    for (int step = 1; step <= 5; ++step) {
        for (int nh = 1; nh <= 24; ++nh) {
            for (int n = 1; n <= 120; n += 7) {
                std::vector<float> x = noise(sizeOf(n + nh - 1), Seed + 10);
                const std::vector<float> h = noise(sizeOf(nh), Seed + 11);
                const int outputs = (n - 1) / step + 1;
                std::vector<float> expected(sizeOf(outputs));
                sp_fir_gen_downsample(x.data(), h.data(), expected.data(), nh, n, step);
                sp_fir_gen_downsample(x.data(), h.data(), x.data(), nh, n, step);
                ASSERT_EQ(firstDifference(x.data(), expected.data(), outputs), -1)
                    << "step " << step << ", taps " << nh << ", n " << n;
            }
        }
    }
}

TEST(DecimatingBlock, StaysInsideBlocksOfExactSize) {
    for (int step = 1; step <= 6; ++step) {
        for (int nh = 1; nh <= 20; ++nh) {
            for (int n = 1; n <= 60; ++n) {
                // The last window ends before n+nh-1 unless the step divides n-1.
                const int outputs = (n - 1) / step + 1;
                ExactBlock x(noise(sizeOf((outputs - 1) * step + nh), Seed));
                ExactBlock h(noise(sizeOf(nh), Seed));
                ExactBlock y(outputs);
                sp_fir_gen_downsample(x.data(), h.data(), y.data(), nh, n, step);
                ASSERT_EQ(firstNotDirectSum(y.data(), x.data(), h.data(), nh, outputs, step), -1)
                    << "step " << step << ", taps " << nh << ", n " << n;
            }
        }
    }
}

// --- Streams ------------------------------------------------------------------------------------

/** Where a decimating stream stands between two blocks. */
struct Stream {
    std::vector<float> line;
    int pos = 0;
    int begin = 0;
};

/** Filters a block between guards and appends its outputs. */
void filterBlock(Stream& stream, const std::vector<float>& h, const float* samples, int n, int step,
                 std::vector<float>& outputs) {
    const int nh = static_cast<int>(h.size());
    const int due = stream.begin < n ? (n - 1 - stream.begin) / step + 1 : 0;
    const Guarded x(samples, n, n % 4);
    const Guarded coefficients(h, 1);
    Guarded line(stream.line, 3);
    Guarded y = Guarded::outputs(due, (n + 2) % 4);
    stream.pos = sp_fir_filter_downsample(x.data(), coefficients.data(), line.data(), stream.pos,
                                          y.data(), nh, n, &stream.begin, step);
    ASSERT_TRUE(y.guardsStand() && line.guardsStand()) << "step " << step << ", n " << n;
    stream.line = line.values();
    const std::vector<float> values = y.values();
    outputs.insert(outputs.end(), values.begin(), values.end());
}

/** A whole stream cut into blocks by nextSize() against every step-th output of one call. */
template <class NextSize>
void expectSameInBlocks(int nh, int step, int begin, int length, NextSize nextSize) {
    const std::vector<float> signal = noise(sizeOf(length), Seed + 12);
    const std::vector<float> h = noise(sizeOf(nh), Seed + 13);
    std::vector<float> plainLine(sizeOf(nh), 0.0f);
    std::vector<float> all(signal.size());
    int plainPos = 0;

    Stream stream = {std::vector<float>(sizeOf(nh), 0.0f), 0, begin};
    std::vector<float> outputs;
    for (int done = 0; done < length;) {
        const int n = std::min(nextSize(), length - done);
        filterBlock(stream, h, signal.data() + done, n, step, outputs);
        plainPos = sp_fir_filter(signal.data() + done, h.data(), plainLine.data(), plainPos,
                                 all.data() + done, nh, n);
        done += n;
        // The grid begin, begin+step, ... seen from the end of the block.
        const int phase = step == 1 ? begin : ((begin - done) % step + step) % step;
        ASSERT_EQ(stream.begin, phase) << "step " << step << ", taps " << nh << ", done " << done;
        ASSERT_EQ(stream.pos, plainPos) << "step " << step << ", taps " << nh << ", done " << done;
        ASSERT_EQ(stream.line, plainLine) << "step " << step << ", taps " << nh;
    }
    std::vector<float> due;
    for (int i = begin; i < length; i += step) due.push_back(all[sizeOf(i)]);
    ASSERT_EQ(outputs.size(), due.size()) << "step " << step << ", taps " << nh;
    ASSERT_EQ(firstDifference(outputs.data(), due.data(), static_cast<int>(due.size())), -1)
        << "step " << step << ", begin " << begin << ", taps " << nh;
}

TEST(DecimatingStream, EveryStepAndPhaseOfOneBlockGivesTheDueOutputs) {
    for (int step = 1; step <= LongestStep; ++step) {
        for (int begin = 0; begin < step; ++begin) {
            for (const int nh : {1, 2, 3, 4, 5, 8, 13, 16, 17, 20, 33, 70}) {
                for (const int n : {1, 2, 3, 7, 16, 17, 18, 40, 150}) {
                    expectSameInBlocks(nh, step, begin, n, [n] { return n; });
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(DecimatingStream, BlocksOfAnySizesGiveTheSameGrid) {
    for (int step = 1; step <= LongestStep; ++step) {
        for (const int nh : {1, 2, 5, 16, 17, 33, 129}) {
            std::mt19937 random(Seed);
            const auto nextSize = [&random, nh] {
                const std::array<int, 6> sizes = {1,
                                                  std::max(nh - 1, 1),
                                                  nh,
                                                  3 * nh,
                                                  1 + static_cast<int>(random() % 8),
                                                  1 + static_cast<int>(random() % 90)};
                return sizes[random() % sizes.size()];
            };
            expectSameInBlocks(nh, step, step / 2, SlowMachine ? 1000 : 6000, nextSize);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(DecimatingStream, LongFiltersKeepTheGrid) {
    for (const int nh : {1024, 2000, 2048, 2049, 3000}) {
        for (const int step : {2, 3, 17, 300, 2500}) {
            std::mt19937 random(Seed + 1);
            const auto nextSize = [&random, nh] {
                return random() % 2 == 0 ? nh : 1 + static_cast<int>(random() % 900);
            };
            expectSameInBlocks(nh, step, step - 1, 3 * nh, nextSize);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(DecimatingStream, OutputsAreTheDirectSumAtTheDueSamples) {
    const int nh = 19;
    const std::vector<float> h = noise(19, Seed + 14);
    const std::vector<float> signal = noise(100, Seed + 15);
    std::vector<float> padded(18, 0.0f);
    padded.insert(padded.end(), signal.begin(), signal.end());
    Stream stream = {std::vector<float>(19, 0.0f), 0, 2};
    std::vector<float> y;
    filterBlock(stream, h, signal.data(), 100, 5, y);
    ASSERT_EQ(y.size(), 20u);
    EXPECT_EQ(firstNotDirectSum(y.data(), padded.data() + 2, h.data(), nh, 20, 5), -1);
}

TEST(DecimatingStream, TheNextPhaseContinuesTheGrid) {
    const std::array<float, 10> x = {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 9.0f};
    const float h = 1.0f;
    float line = 0.0f;
    int begin = 0;
    std::array<float, 5> y = {Untouched, Untouched, Untouched, Untouched, Untouched};
    sp_fir_filter_downsample(x.data(), &h, &line, 0, y.data(), 1, 10, &begin, 3);
    EXPECT_EQ(y, (std::array<float, 5>{0.0f, 3.0f, 6.0f, 9.0f, Untouched}));
    EXPECT_EQ(begin, 2);
}

TEST(DecimatingStream, ABlockWithoutDueOutputsStillAdvancesTheLine) {
    const std::array<float, 2> x = {7.0f, 8.0f};
    const std::array<float, 4> h = {1.0f, 1.0f, 1.0f, 1.0f};
    std::array<float, 4> line = {1.0f, 2.0f, 3.0f, 0.0f};
    int begin = 2;
    float y = Untouched;
    const int pos =
        sp_fir_filter_downsample(x.data(), h.data(), line.data(), 0, &y, 4, 2, &begin, 3);
    EXPECT_EQ(y, Untouched);
    EXPECT_EQ(begin, 0);
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(line, (std::array<float, 4>{3.0f, 7.0f, 8.0f, 2.0f}));
}

TEST(DecimatingStream, WithoutAPhaseItStartsAtTheFirstSample) {
    const std::vector<float> x = noise(20, Seed + 16);
    const std::vector<float> h = noise(5, Seed + 17);
    std::array<float, 5> lineA = {};
    std::array<float, 5> lineB = {};
    std::array<float, 7> a = {};
    std::array<float, 7> b = {};
    int begin = 0;
    sp_fir_filter_downsample(x.data(), h.data(), lineA.data(), 0, a.data(), 5, 20, &begin, 3);
    sp_fir_filter_downsample(x.data(), h.data(), lineB.data(), 0, b.data(), 5, 20, nullptr, 3);
    EXPECT_EQ(a, b);
    EXPECT_EQ(lineA, lineB);
}

TEST(DecimatingStream, AStepOfOneLeavesThePhaseAlone) {
    const std::vector<float> x = noise(9, Seed + 18);
    const std::vector<float> h = noise(4, Seed + 19);
    std::array<float, 4> line = {};
    std::array<float, 9> y = {};
    int begin = 0;
    sp_fir_filter_downsample(x.data(), h.data(), line.data(), 0, y.data(), 4, 9, &begin, 1);
    EXPECT_EQ(begin, 0);
}

TEST(DecimatingStream, WithoutSamplesNothingIsLookedAt) {
    for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
        for (const int step : {-1, 0, 1, 4}) {
            int begin = 77;
            EXPECT_EQ(sp_fir_filter_downsample(nullptr, nullptr, nullptr, -5, nullptr, 3, n, &begin,
                                               step),
                      -5);
            EXPECT_EQ(begin, 77);
        }
    }
}

TEST(DecimatingStream, WithoutTapsZerosAreWrittenAndOnlyThePhaseAdvances) {
    for (int step = 2; step <= LongestStep; ++step) {
        for (int phase = 0; phase < step; ++phase) {
            for (const int n : {1, 5, 20}) {
                const int due = phase < n ? (n - 1 - phase) / step + 1 : 0;
                Guarded y = Guarded::outputs(due, 0);
                int begin = phase;
                EXPECT_EQ(sp_fir_filter_downsample(nullptr, nullptr, nullptr, -9, y.data(), 0, n,
                                                   &begin, step),
                          -9);
                EXPECT_EQ(y.values(), std::vector<float>(sizeOf(due), 0.0f));
                EXPECT_TRUE(y.guardsStand());
                EXPECT_EQ(begin, ((phase - n) % step + step) % step);
            }
        }
    }
}

TEST(DecimatingStream, APositionOutsideTheLineIsReducedModuloTheTaps) {
    const std::vector<float> h = noise(6, Seed + 20);
    const std::vector<float> x = noise(4, Seed + 21);
    const auto run = [&](int pos) {
        std::vector<float> result = noise(6, Seed + 22);
        std::array<float, 2> y = {};
        result.push_back(static_cast<float>(sp_fir_filter_downsample(
            x.data(), h.data(), result.data(), pos, y.data(), 6, 4, nullptr, 2)));
        result.insert(result.end(), y.begin(), y.end());
        return result;
    };
    EXPECT_EQ(run(-1), run(5));
    EXPECT_EQ(run(6), run(0));
    EXPECT_NE(run(-1), run(0));
}

TEST(DecimatingStream, TheLargestStepDoesNotOverflow) {
    const std::vector<float> x = noise(10, Seed + 23);
    const std::vector<float> h = noise(3, Seed + 24);
    std::array<float, 3> line = {};
    std::array<float, 2> y = {Untouched, Untouched};
    int begin = 4;
    sp_fir_filter_downsample(x.data(), h.data(), line.data(), 0, y.data(), 3, 10, &begin, Huge);
    EXPECT_EQ(firstNotDirectSum(y.data(), x.data() + 2, h.data(), 3, 1), -1);
    EXPECT_EQ(y[1], Untouched);
    EXPECT_EQ(begin, Huge - 6);
}

// --- Broken preconditions -----------------------------------------------------------------------

#define SOURCE_PATH "functional/audio/libraries/dsplib/arm/sp_fir_neon:[0-9]+: "
#define STEP_MESSAGE "Assertion `step > 0' failed"
#define PHASE_MESSAGE "Assertion `begin >= 0 && begin < step' failed"

TEST(DecimatingBlockDeathTest, AStepBelowOneAborts) {
    const float x = 1.0f;
    float y = 0.0f;
    const char* const message = SOURCE_PATH "sp_fir_gen_downsample: " STEP_MESSAGE;
    EXPECT_DEATH(sp_fir_gen_downsample(&x, &x, &y, 1, 1, 0), message);
    EXPECT_DEATH(sp_fir_gen_downsample(&x, &x, &y, 1, 1, -1), message);
    EXPECT_DEATH(sp_fir_gen_downsample(&x, &x, &y, 0, 1, 0), message);  // before the taps
}

TEST(DecimatingStreamDeathTest, AStepBelowOneAbortsBeforeThePhaseIsJudged) {
    const float x = 1.0f;
    float y = 0.0f;
    float line = 0.0f;
    int begin = -1;
    const char* const message = SOURCE_PATH "sp_fir_filter_downsample: " STEP_MESSAGE;
    EXPECT_DEATH(sp_fir_filter_downsample(&x, &x, &line, 0, &y, 1, 1, &begin, 0), message);
    EXPECT_DEATH(sp_fir_filter_downsample(&x, &x, &line, 0, &y, 1, 1, &begin, -3), message);
    EXPECT_DEATH(sp_fir_filter_downsample(&x, &x, &line, 0, &y, 1, 1, nullptr, 0), message);
}

TEST(DecimatingStreamDeathTest, APhaseOutsideTheStepAborts) {
    const float x = 1.0f;
    float y = 0.0f;
    float line = 0.0f;
    const char* const message = SOURCE_PATH "sp_fir_filter_downsample: " PHASE_MESSAGE;
    for (int begin : {-1, 3, 4, Huge}) {
        EXPECT_DEATH(sp_fir_filter_downsample(&x, &x, &line, 0, &y, 1, 1, &begin, 3), message);
    }
    int begin = 1;  // a step of one is judged too, and so is a filter without taps
    EXPECT_DEATH(sp_fir_filter_downsample(&x, &x, &line, 0, &y, 1, 1, &begin, 1), message);
    begin = 2;
    EXPECT_DEATH(sp_fir_filter_downsample(&x, &x, &line, 0, &y, 0, 1, &begin, 2), message);
}

}  // namespace
