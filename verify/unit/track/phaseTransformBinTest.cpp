// One bin at a time: what the phase transform and the correlation make of its magnitude and phase.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "track/phaseTransform.h"
#include "voxloc/voxloc.h"

namespace {

constexpr double Unit = 0x1p-24;
constexpr double BinShare = 2.0 / 16384.0;  // of a bin of magnitude 1 in the correlation
constexpr double TwoPi = 6.283185307179586;

class PhaseTransformBin : public ::testing::Test {
  protected:
    PhaseTransformBin() { voxloc_generateAbTables(a_.data(), b_.data(), 8192); }

    void correlate() {
        voxloc::correlate(bins_.data(), 22, 1453, voxloc::NearLags, a_.data(), b_.data(),
                          scratch_.data(), correlation_.data());
    }
    void setBin(std::size_t k, float re, float im) {
        std::fill(bins_.begin(), bins_.end(), 0.0f);
        bins_[2 * k] = re;
        bins_[2 * k + 1] = im;
    }
    float lagZeroOf(float re, float im) {
        setBin(300, re, im);
        correlate();
        return correlation_[0];
    }

    std::vector<float> a_ = std::vector<float>(16384);
    std::vector<float> b_ = std::vector<float>(16384);
    std::vector<float> bins_ = std::vector<float>(4098);
    std::vector<float> scratch_ = std::vector<float>(16384);
    std::vector<float> correlation_ = std::vector<float>(16384);
};

// The whitening, the split and 13 stages of the transform round one term of magnitude 1: 24 units
// with room for the twiddles' own rounding.
TEST_F(PhaseTransformBin, GivesACosineOfItsOwnPhaseWhateverItsMagnitude) {
    for (const std::size_t k : {22U, 23U, 99U, 500U, 1000U, 1451U, 1452U}) {
        for (const float magnitude : {2e-7f, 1e-3f, 1.0f, 1e6f, 1e15f}) {
            const double phase = 0.1 + static_cast<double>(k);
            setBin(k, magnitude * static_cast<float>(std::cos(phase)),
                   magnitude * static_cast<float>(std::sin(phase)));
            correlate();
            for (int lag = -512; lag < 512; ++lag) {
                const auto index = static_cast<std::size_t>(lag < 0 ? lag + 16384 : lag);
                const double angle = phase + TwoPi * static_cast<double>(k) * lag / 16384.0;
                EXPECT_LE(
                    std::abs(static_cast<double>(correlation_[index]) - BinShare * std::cos(angle)),
                    24.0 * Unit * BinShare)
                    << k << " at " << lag;
            }
        }
    }
}

TEST_F(PhaseTransformBin, IsLeftOutWithoutAPhase) {
    const float one = static_cast<float>(BinShare);
    EXPECT_EQ(lagZeroOf(0.0f, 0.0f), 0.0f);
    EXPECT_EQ(lagZeroOf(0.999e-7f, 0.0f), 0.0f);
    EXPECT_LE(std::abs(lagZeroOf(1.001e-7f, 0.0f) - one), one * 1e-5f);
    EXPECT_EQ(lagZeroOf(-0.7e-7f, 0.7e-7f), 0.0f);  // magnitude 0.99e-7
    EXPECT_LE(std::abs(lagZeroOf(-0.72e-7f, 0.72e-7f) + one * std::sqrt(0.5f)), one * 1e-5f);
}

TEST_F(PhaseTransformBin, IsLeftOutWhenItIsNoNumberOrItsSquareOverflows) {
    EXPECT_EQ(lagZeroOf(NAN, 1.0f), 0.0f);
    EXPECT_EQ(lagZeroOf(1.0f, NAN), 0.0f);
    EXPECT_EQ(lagZeroOf(1e30f, 0.0f), 0.0f);
}

}  // namespace
