// Calls of all four filters against direct sums in double: tables of counts, and random ones.

#include <algorithm>
#include <random>

#include "spFirTesting.h"

namespace {

using namespace firtest;

TEST(Calls, OfSmallCountsAreCorrectAtEveryAlignment) {
    for (int offset = 0; offset < 4; ++offset) {
        for (int nh = 1; nh <= 40; ++nh) {
            for (int n = 1; n <= 65; ++n) {
                ASSERT_TRUE(isCorrect({Filter::Block, nh, n, 1, 0, 0, offset}));
                ASSERT_TRUE(isCorrect({Filter::Stream, nh, n, 1, 0, 0, offset}));
            }
        }
    }
}

TEST(Calls, OfLongBlocksAreCorrect) {
    for (int nh = 1; nh <= 40; ++nh) {
        for (const int n : {127, 128, 129, 144, 160, 2048, 2104}) {
            ASSERT_TRUE(isCorrect({Filter::Block, nh, n}));
        }
    }
}

TEST(Calls, OfLongFiltersAreCorrect) {
    for (const int nh : {41,  47,  48,  63,   64,   65,   100,  127,  128,  129,  255,
                         256, 257, 511, 1023, 1024, 1985, 2041, 2047, 2048, 2049, 3000}) {
        for (const int n : {1, 2, 3, 4, 5, 11, 12, 13, 16, 31, 32, 33, 47, 63, 64, 65, 107, 192}) {
            ASSERT_TRUE(isCorrect({Filter::Block, nh, n, 1, 0, 0, n % 4}));
            ASSERT_TRUE(isCorrect({Filter::Stream, nh, n, 1, 0, nh / 3, n % 4}));
        }
        for (const int step : {2, 3, 7, 100, 2500}) {
            const int n = 12 * step + 2;
            ASSERT_TRUE(isCorrect({Filter::DecimatingBlock, nh, n, step}));
            if (SlowMachine && n > 1000) continue;
            ASSERT_TRUE(isCorrect({Filter::DecimatingStream, nh, n, step, step - 1, nh - 1}));
        }
    }
}

// Wide kernels lay a block's input out anew, as far as it fits into 4096 floats.
TEST(Calls, OfFiltersAboutAsLongAsALaidOutInputAreCorrect) {
    for (const int nh : {3600, 3800, 3820, 3830, 3850, 4000, 4095, 4096, 4097, 5000}) {
        ASSERT_TRUE(isCorrect({Filter::DecimatingBlock, nh, 3 * 130, 3}));
    }
}

TEST(Calls, OfEveryStepAndPhaseAreCorrect) {
    for (int step = 1; step <= 17; ++step) {
        for (int nh = 0; nh <= 40; ++nh) {
            for (const int n : {1, 2, 3, 4, 5, 9, 10, 16, 17, 18, 33, 65, 130, 300}) {
                ASSERT_TRUE(isCorrect({Filter::DecimatingBlock, nh, n, step, 0, 0, n % 4}));
                const int phase = (nh + n) % step;
                ASSERT_TRUE(isCorrect({Filter::DecimatingStream, nh, n, step, phase, nh / 2}));
            }
        }
        for (int phase = 0; phase < step; ++phase) {
            for (int n = 1; n <= 40; ++n) {
                ASSERT_TRUE(isCorrect({Filter::DecimatingStream, 0, n, step, phase, -9}));
                ASSERT_TRUE(isCorrect({Filter::DecimatingStream, 5, n, step, phase, 2}));
            }
        }
    }
}

TEST(Calls, OfAStepBeyondTheBlockGiveOneOutput) {
    ASSERT_TRUE(isCorrect({Filter::DecimatingBlock, 3, 10, Huge}));
    ASSERT_TRUE(isCorrect({Filter::DecimatingStream, 3, 10, Huge, 4}));
    ASSERT_TRUE(isCorrect({Filter::DecimatingStream, 3, 10, Huge, 10}));
}

TEST(Calls, FromEveryPositionInsideTheLineAndOutsideAreCorrect) {
    for (int nh = 1; nh <= 36; ++nh) {
        for (int pos = -2 * nh - 1; pos <= 2 * nh + 1; ++pos) {
            for (const int n : {1, 2, 3, 4, 7, 8, 12, 19, nh - 1, nh, nh + 1}) {
                ASSERT_TRUE(isCorrect({Filter::Stream, nh, std::max(n, 1), 1, 0, pos}));
            }
            ASSERT_TRUE(isCorrect({Filter::DecimatingStream, nh, 9, 2, 1, pos}));
        }
    }
}

TEST(Calls, LetANaNReachTheOutputsWhoseWindowsHoldItAndNoOther) {
    for (int nh = 1; nh <= 37; ++nh) {
        for (const int n : {1, 3, 7, 15, 31, 33, 75, 131}) {
            for (int at = 0; at < n; at += 1 + n / 8) {
                for (const int x : {at, at + nh - 1}) {
                    ASSERT_TRUE(isCorrect({Filter::Block, nh, n, 1, 0, 0, 0, x}));
                    ASSERT_TRUE(isCorrect({Filter::DecimatingBlock, nh, n, 3, 0, 0, 0, x}));
                }
                ASSERT_TRUE(isCorrect({Filter::Stream, nh, n, 1, 0, nh / 2, 0, at}));
                ASSERT_TRUE(isCorrect({Filter::DecimatingStream, nh, n, 2, 1, 0, 0, at}));
            }
        }
    }
}

TEST(Calls, WithoutSamplesDoNothingWhateverTheRest) {
    for (const int n : {0, -1, Least}) {
        for (const int nh : {-1, 0, 5}) {
            for (const int pos : {-1, 0, 5, 900}) {
                for (const int step : {-1, 0, 1, 4}) {
                    for (const Filter filter : EveryFilter) {
                        ASSERT_TRUE(isCorrect({filter, nh, n, step, 77, pos}));
                    }
                }
            }
        }
    }
}

TEST(Calls, WithoutTapsWriteZerosAndReadNothing) {
    for (const int nh : {0, -1, Least}) {
        for (const Filter filter : EveryFilter) {
            ASSERT_TRUE(isCorrect({filter, nh, 37, 1, 0, -1, 1}));
        }
        ASSERT_TRUE(isCorrect({Filter::DecimatingBlock, nh, 100, 7}));
        ASSERT_TRUE(isCorrect({Filter::DecimatingStream, nh, 100, 7, 3, 12}));
    }
}

// Arrays of exactly their size on the heap: a sanitiser sees the first byte that is read outside.
TEST(Calls, StayInsideArraysOfExactSize) {
    for (int nh = 1; nh <= 70; ++nh) {
        for (int n = 1; n <= 70; ++n) {
            for (const Filter filter : EveryFilter) {
                const bool stream = isStream(filter);
                const int step = filter == Filter::DecimatingBlock ? 1 + n % 6 : 1;
                const int due = dueOutputs(n, 0, step);
                const std::vector<float> h = noise(sizeOf(nh), 6u);
                const std::vector<float> x = noise(sizeOf(stream ? n : (due - 1) * step + nh), 5u);
                std::vector<float> y(sizeOf(due), NaN), line(sizeOf(nh), 0.0f);
                int begin = 0;
                run({filter, nh, n, step, 0, nh / 3}, x.data(), h.data(), line.data(), y.data(),
                    &begin);
                ASSERT_FALSE(std::any_of(y.begin(), y.end(), [](float v) { return v != v; }));
            }
        }
    }
}

TEST(Calls, DrawnAtRandomAreCorrect) {
    std::mt19937 random(271828);
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    for (unsigned i = 0; i < (SlowMachine ? 40'000u : 400'000u); ++i) {
        Call c = {EveryFilter[below(4)], 1 + below(36), 1 + below(70)};
        if (below(8) == 0) c.nh = below(3) - 1;
        if (below(16) == 0) c.n = below(3) - 1;
        if (c.filter == Filter::DecimatingBlock || c.filter == Filter::DecimatingStream) {
            c.step = 1 + below(6);
        }
        if (c.filter == Filter::DecimatingStream) c.begin = below(c.step);
        c.pos = c.nh > 0 ? below(3 * c.nh) - c.nh : below(5);
        c.offset = below(4);
        c.seed = i;
        ASSERT_TRUE(isCorrect(c));
    }
}

}  // namespace
