// The same window gives the same bits: wherever it lies in a block, in every kernel, however a
// stream is cut, decimated or not.

#include <algorithm>
#include <array>
#include <random>

#include "dsplib/arm/sp_fir_neon_internal.h"
#include "dsplib/simd/simd.h"
#include "spFirTesting.h"

namespace {

using namespace firtest;

std::vector<float> blockFiltered(const std::vector<float>& x, const std::vector<float>& h) {
    std::vector<float> y(x.size() - h.size() + 1);
    sp_fir_gen(x.data(), h.data(), y.data(), static_cast<int>(h.size()),
               static_cast<int>(y.size()));
    return y;
}

TEST(SameBits, WhereverAWindowLiesInABlock) {
    // Both zeros, exact cancellation and magnitudes far apart show a different order or a stray 0.
    std::vector<float> x = noise(1300, 7u);
    for (std::size_t i = 0; i < x.size(); i += 3) x[i] *= 0x1p20f;
    for (std::size_t i = 1; i < x.size(); i += 5) x[i] = i % 2 == 0 ? 0.0f : -0.0f;
    std::fill(x.begin() + 100, x.begin() + 140, -0.0f);
    for (const int nh : {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,  16,  17,
                         18, 19, 20, 21, 22, 23, 24, 31, 32, 33, 34, 35, 36, 64, 129, 1001}) {
        const std::vector<float> h = noise(sizeOf(nh), 8u);
        const std::vector<float> y = blockFiltered(x, h);
        for (int i = 0; i < static_cast<int>(y.size()); i += SlowMachine ? 7 : 1) {
            float alone = 0.0f;
            sp_fir_gen(x.data() + i, h.data(), &alone, nh, 1);
            ASSERT_TRUE(sameValue(y[sizeOf(i)], alone)) << "taps " << nh << ", output " << i;
        }
    }
}

/** The order of additions that the engine promises, one float at a time. */
float plainOutput(const float* x, const std::vector<float>& h) {
    std::array<float, 4> sum = {-0.0f, -0.0f, -0.0f, -0.0f};
    for (std::size_t j = 0; j < h.size(); ++j) sum[j % 4] += h[j] * x[j];
    return (sum[0] + sum[1]) + (sum[2] + sum[3]);
}

std::vector<float> plainOutputs(const std::vector<float>& x, const std::vector<float>& h, int step,
                                std::size_t count) {
    std::vector<float> y;
    for (std::size_t m = 0; m < count; ++m) {
        y.push_back(plainOutput(x.data() + m * sizeOf(step), h));
    }
    return y;
}

// Outputs enough for blocks of every kernel, with some left over; NaN and infinity here and there;
// inputs of exactly their size; into an array of its own, in place, and to before the input.
TEST(SameBits, AsAPlainLoopInTheStatedOrder) {
#ifdef SP_SIMD_FUSED
    GTEST_SKIP() << "this build fuses products and sums";
#endif
    std::mt19937 random(31415);
    for (int step = 1; step <= 5; ++step) {
        for (const int nh : {1,  2,  3,  4,  7,  8,  11, 12, 13, 14, 15, 16, 17,  19, 23,
                             28, 31, 32, 33, 34, 35, 36, 47, 61, 64, 66, 99, 128, 255}) {
            const int count = 64 + static_cast<int>(random() % 500), n = (count - 1) * step + 1;
            const std::size_t before = random() % 6;
            const std::vector<float> h = noise(sizeOf(nh), static_cast<unsigned>(nh));
            std::vector<float> x = noise(sizeOf(n + nh - 1), static_cast<unsigned>(n));
            for (int i = 0; i < 4; ++i) x[random() % x.size()] = i < 2 ? NaN : -0.0f;
            const std::vector<float> expected = plainOutputs(x, h, step, sizeOf(count));

            GuardedFloats y(sizeOf(count), random() % 4, NaN);
            sp_fir_gen_downsample(x.data(), h.data(), y.data(), nh, n, step);
            const std::vector<float> found(y.data(), y.data() + count);
            ASSERT_EQ(firstDifference(found, expected), -1) << nh << " taps, step " << step;
            ASSERT_TRUE(y.intact()) << nh << " taps, step " << step;

            std::vector<float> shared(before, 0.0f);
            shared.insert(shared.end(), x.begin(), x.end());
            sp_fir_gen_downsample(shared.data() + before, h.data(), shared.data(), nh, n, step);
            shared.resize(sizeOf(count));
            ASSERT_EQ(firstDifference(shared, expected), -1)
                << nh << " taps, step " << step << ", " << before << " before x";
        }
    }
}

TEST(SameBits, WhenTapsAreAddedPieceByPiece) {
#ifdef SP_SIMD_FUSED
    GTEST_SKIP() << "this build fuses products and sums";
#endif
    constexpr int Outputs = sp_fir::SummedOutputs;
    for (const int taps : {4, 8, 12, 36, 100}) {
        for (const int more : {0, 1, 2, 3, 4, 5, 7, 30, 33}) {
            const std::vector<float> x = noise(sizeOf(taps + more + Outputs - 1), 33u);
            const std::vector<float> h = noise(sizeOf(taps + more), 34u);
            GuardedFloats sums(4 * sizeOf(Outputs), 1, -0.0f);
            sp_fir::sp_fir_add_taps(x.data(), h.data(), sums.data(), taps);
            sp_fir::sp_fir_add_taps(x.data() + taps, h.data() + taps, sums.data(), more);
            ASSERT_TRUE(sums.intact());
            for (std::size_t i = 0; i < sizeOf(Outputs); ++i) {
                const auto s = [&](std::size_t r) { return sums[r * sizeOf(Outputs) + i]; };
                ASSERT_TRUE(sameValue((s(0) + s(1)) + (s(2) + s(3)), plainOutput(&x[i], h)))
                    << taps << " and " << more << " taps, output " << i;
            }
        }
    }
}

TEST(SameBits, InEveryKernel) {
    const std::vector<float> x = noise(400, 9u);
    for (int nh = 1; nh <= 70; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), 10u);
        const std::vector<float> widest = blockFiltered(x, h);
        std::vector<float> twelves(widest.size());
        sp_fir::pipelined_unroll12x(x.data(), h.data(), twelves.data(), nh,
                                    static_cast<int>(twelves.size()));
        ASSERT_EQ(firstDifference(widest, twelves), -1) << "taps " << nh;
    }
}

TEST(SameBits, SumsOfNegativeZerosAreNegativeZeros) {
    // Any +0 that a kernel adds beside the products, for a missing tap say, turns the sign.
    const std::vector<float> x(200, -0.0f);
    for (int nh = 1; nh <= 70; ++nh) {
        const std::vector<float> h(sizeOf(nh), 1.0f);
        for (const int n : {1, 2, 3, 4, 7, 15, 32, 67, 130}) {
            for (const int step : {1, 2}) {
                std::vector<float> y(sizeOf(dueOutputs(n, 0, step)));
                sp_fir_gen_downsample(x.data(), h.data(), y.data(), nh, n, step);
                ASSERT_EQ(firstDifference(y, std::vector<float>(y.size(), -0.0f)), -1)
                    << "taps " << nh << ", n " << n << ", step " << step;
            }
        }
    }
}

TEST(SameBits, WhenTheOutputReplacesTheInputOrBeginsBeforeIt) {
    for (int nh = 1; nh <= 40; ++nh) {
        const std::vector<float> h = noise(sizeOf(nh), 16u);
        for (int n = 1; n <= 150; n += 1 + n / 20) {
            for (const int before : {0, 1, 3, 4, 5}) {
                for (const int step : {1, 2, 5}) {
                    std::vector<float> shared = noise(sizeOf(before + n + nh - 1), 17u);
                    std::vector<float> expected(sizeOf(dueOutputs(n, 0, step)));
                    const float* const x = shared.data() + before;
                    sp_fir_gen_downsample(x, h.data(), expected.data(), nh, n, step);
                    sp_fir_gen_downsample(x, h.data(), shared.data(), nh, n, step);
                    shared.resize(expected.size());
                    ASSERT_EQ(firstDifference(shared, expected), -1)
                        << "taps " << nh << ", n " << n << ", " << before << " before x, step "
                        << step;
                }
            }
        }
    }
}

TEST(SameBits, WhenTheCoefficientsArePartOfTheInput) {
    const std::vector<float> x = noise(89, 18u);
    EXPECT_EQ(firstDifference(blockFiltered(x, {x.begin() + 10, x.begin() + 40}),
                              [&x] {
                                  std::vector<float> y(60);
                                  sp_fir_gen(x.data(), x.data() + 10, y.data(), 30, 60);
                                  return y;
                              }()),
              -1);
}

/** A stream of `length` samples in blocks of the sizes that nextSize() gives; step 1: all outputs.
 */
struct Stream {
    int nh, length;
    int step = 1, begin = 0;

    /** Against one block filter of the whole signal behind nh zeros, of which the first is spare.
     */
    template <class NextSize>
    void expectSameBits(NextSize nextSize) const {
        const std::vector<float> h = noise(sizeOf(nh), 21u), signal = noise(sizeOf(length), 20u);
        std::vector<float> padded(sizeOf(nh), 0.0f);
        padded.insert(padded.end(), signal.begin(), signal.end());
        const std::vector<float> all = blockFiltered({padded.begin() + 1, padded.end()}, h);
        std::vector<float> line(sizeOf(nh), 0.0f), due, outputs;
        for (int i = begin; i < length; i += step) due.push_back(all[sizeOf(i)]);
        int pos = 0, phase = begin;
        for (int done = 0; done < length;) {
            const int n = std::min(nextSize(), length - done);
            std::vector<float> y(sizeOf(dueOutputs(n, phase, step)));
            const Call block = {
                step == 1 ? Filter::Stream : Filter::DecimatingStream, nh, n, step, phase, pos};
            pos = run(block, signal.data() + done, h.data(), line.data(), y.data(), &phase);
            done += n;
            outputs.insert(outputs.end(), y.begin(), y.end());
            for (int k = 0; k < nh; ++k) {
                ASSERT_EQ(line[sizeOf(wrapped(pos - 1 + k, nh))], padded[sizeOf(done + k)])
                    << nh << " taps, step " << step << ", " << done << " done, last block " << n;
            }
            ASSERT_EQ(phase, step == 1 ? begin : wrapped(begin - done, step));
        }
        ASSERT_EQ(firstDifference(outputs, due), -1) << nh << " taps, step " << step;
    }

    /** In thousands of blocks of mixed sizes. */
    void expectSameBitsInMixedBlocks() const {
        std::mt19937 random(20250);
        expectSameBits([&random, taps = nh] {
            const std::array<int, 6> sizes = {1,
                                              std::max(taps - 1, 1),
                                              taps,
                                              3 * taps,
                                              1 + static_cast<int>(random() % 16),
                                              1 + static_cast<int>(random() % 100)};
            return sizes[random() % sizes.size()];
        });
    }
};

TEST(SameBits, InStreamsOfBlocksOfOneSize) {
    for (const int nh : {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 24, 31, 32, 33, 64, 100}) {
        for (const int size : {1, 2, 3, 4, 5, 7, 8, 9, 11, 12, std::max(nh - 1, 1), nh, nh + 1,
                               3 * nh, 63, 64, 65, 1000}) {
            Stream{nh, 1000}.expectSameBits([=] { return size; });
            if (HasFatalFailure()) return;
        }
    }
}

TEST(SameBits, InStreamsOfMixedBlocks) {
    for (const int nh : {1, 2, 3, 5, 8, 13, 16, 17, 29, 40, 64, 129}) {
        const int meanSize = (5 * nh + 58) / 6;
        Stream{nh, meanSize * (SlowMachine ? 100 : 2000)}.expectSameBitsInMixedBlocks();
        if (HasFatalFailure()) return;
    }
}

TEST(SameBits, InDecimatedStreamsOfMixedBlocks) {
    for (int step = 2; step <= 17; ++step) {
        for (const int nh : {1, 2, 5, 16, 17, 33, 129}) {
            Stream{nh, SlowMachine ? 1000 : 6000, step, step / 2}.expectSameBitsInMixedBlocks();
            if (HasFatalFailure()) return;
        }
    }
}

TEST(SameBits, InStreamsThroughLongFilters) {
    for (const int nh : {255, 1024, 1990, 2040, 2048, 2049, 3000}) {
        for (const int step : {1, 3, 300, 2500}) {
            std::mt19937 random(20250);
            Stream{nh, (SlowMachine ? 3 : 6) * nh, step, step - 1}.expectSameBits([&random, nh] {
                const std::array<int, 6> sizes = {1, nh - 1, nh,
                                                  5, 1024,   1 + static_cast<int>(random() % 600)};
                return sizes[random() % sizes.size()];
            });
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
