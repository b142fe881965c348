#include "track/crossSpectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <vector>

namespace {

constexpr double Unit = 0x1p-24;
constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr std::size_t Bins = 2049;

// --- Noise power and weight of one bin ----------------------------------------------------------

struct Bin {
    float re, im;
    float noise;
    float weight = NAN;
};

Bin update(float re, float im, float noise) {
    const float spectrum[2] = {re, im};
    Bin bin{re, im, noise};
    voxloc::updateFrequencyWeights(spectrum, 1, &bin.noise, &bin.weight);
    return bin;
}

TEST(UpdateFrequencyWeights, RaisesTheNoisePowerSlowly) {
    EXPECT_EQ(update(1.0f, 0.0f, 0.0f).noise, 0.014121801f);
    EXPECT_EQ(update(3.0f, 4.0f, 0.0f).noise, 25.0f * 0.014121801f);
    EXPECT_EQ(update(0.0f, 2.0f, 3.0f).noise, 3.0f + 0.014121801f);
}

TEST(UpdateFrequencyWeights, LowersTheNoisePowerFast) {
    EXPECT_EQ(update(0.0f, 0.0f, 1.0f).noise, 1.0f - 0.5981308f);
    EXPECT_EQ(update(1.0f, 0.0f, 5.0f).noise, 5.0f - 4.0f * 0.5981308f);
}

TEST(UpdateFrequencyWeights, LeavesAnEstimateThatIsRight) {
    EXPECT_EQ(update(2.0f, 0.0f, 4.0f).noise, 4.0f);
}

TEST(UpdateFrequencyWeights, GivesHalfAtMost) {
    EXPECT_EQ(update(1.0f, 0.0f, 0.0f).weight, 0.5f);
    EXPECT_EQ(update(1e15f, 0.0f, 0.0f).weight, 0.5f);
}

TEST(UpdateFrequencyWeights, GivesZeroForABinThatDoesNotStandOut) {
    EXPECT_EQ(update(1.0f, 0.0f, 1.0f).weight, 0.0f);
    EXPECT_EQ(update(1.0f, 0.0f, 0.2f).weight, 0.0f);
    EXPECT_EQ(update(1.0f, 0.0f, 5.0f).weight, 0.0f);
}

// w = 1.25·(1 - 9·noise/P) with the noise power after its update.
TEST(UpdateFrequencyWeights, RisesAsTheBinStandsOut) {
    std::mt19937 random(21);
    std::uniform_real_distribution<float> share(0.05f, 0.12f);
    int between = 0;
    for (int trial = 0; trial < 2000; ++trial) {
        const float power = 4.0f;
        const float before = power * share(random);
        const Bin bin = update(2.0f, 0.0f, before);
        const double noise =
            static_cast<double>(before) + (4.0 - static_cast<double>(before)) * 0.014121801;
        const double expected = std::clamp((4.0 - 9.0 * noise) * 1.25 / 4.0, 0.0, 0.5);
        // three roundings on the way to the noise power, three after it, of terms of at most P
        EXPECT_LE(std::abs(static_cast<double>(bin.weight) - expected), 8.0 * Unit * 1.25)
            << before;
        if (bin.weight > 0.0f && bin.weight < 0.5f) ++between;
    }
    EXPECT_GT(between, 500);
}

TEST(UpdateFrequencyWeights, UsesTheUpdatedNoisePower) {
    // The old estimate would give (1 - 0.9)·1.25 = 0.125, the updated one is above P/9.
    EXPECT_EQ(update(1.0f, 0.0f, 0.1f).weight, 0.0f);
}

TEST(UpdateFrequencyWeights, GivesZeroForASilentBin) {
    EXPECT_EQ(update(0.0f, 0.0f, 0.0f).weight, 0.0f);
    const float atLimit = std::sqrt(1e-7f);
    const float below = atLimit * 0.9999f;
    const float above = atLimit * 1.0001f;
    ASSERT_TRUE(below * below <= 1e-7f && above * above > 1e-7f);
    EXPECT_EQ(update(below, 0.0f, 0.0f).weight, 0.0f);
    EXPECT_EQ(update(above, 0.0f, 0.0f).weight, 0.5f);
}

TEST(UpdateFrequencyWeights, StillFollowsTheNoiseInASilentBin) {
    EXPECT_EQ(update(1e-4f, 0.0f, 0.0f).noise, 1e-4f * 1e-4f * 0.014121801f);
}

TEST(UpdateFrequencyWeights, GiveZeroForWhatIsNoNumber) {
    EXPECT_EQ(update(NAN, 0.0f, 0.0f).weight, 0.0f);
    EXPECT_EQ(update(Infinity, 0.0f, 0.0f).weight, 0.0f);
    EXPECT_EQ(update(1e30f, 0.0f, 0.0f).weight, 0.0f);  // its power is infinite
    EXPECT_EQ(update(1.0f, 0.0f, NAN).weight, 0.0f);
    EXPECT_TRUE(std::isnan(update(1.0f, 0.0f, NAN).noise));
    EXPECT_TRUE(std::isnan(update(1.0f, 0.0f, Infinity).noise));
}

TEST(UpdateFrequencyWeights, TakesEveryBinByItself) {
    std::mt19937 random(22);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    std::vector<float> spectrum(2 * Bins);
    std::vector<float> noise(Bins + 8, -777.0f);
    std::vector<float> weight(Bins + 8, -777.0f);
    for (float& v : spectrum) v = value(random);
    for (std::size_t k = 0; k < Bins; ++k) noise[k] = std::abs(value(random)) * 0.1f;
    const std::vector<float> before(noise);
    voxloc::updateFrequencyWeights(spectrum.data(), static_cast<int>(Bins), noise.data(),
                                   weight.data());
    for (std::size_t k = 0; k < Bins; ++k) {
        const Bin bin = update(spectrum[2 * k], spectrum[2 * k + 1], before[k]);
        ASSERT_EQ(noise[k], bin.noise) << k;
        ASSERT_EQ(weight[k], bin.weight) << k;
    }
    for (std::size_t k = Bins; k < Bins + 8; ++k) {
        EXPECT_EQ(noise[k], -777.0f);
        EXPECT_EQ(weight[k], -777.0f);
    }
}

// --- Smoothing ----------------------------------------------------------------------------------

// The second spectrum is 1 in every bin, so that the product is the first one as it stands.
class SmoothCrossSpectrum : public ::testing::Test {
  protected:
    static constexpr std::uint16_t Lower = 40;
    static constexpr std::uint16_t Upper = 1451;

    SmoothCrossSpectrum() {
        pair_.lowerBin = Lower;
        pair_.upperBin = Upper;
        for (std::size_t i = 0; i < 2 * Bins; ++i) {
            fresh_[i] = 1.0f + static_cast<float>(i % 7);
            second_[i] = i % 2 == 0 ? 1.0f : 0.0f;
            previous_[i] = -2.0f - static_cast<float>(i % 5);
        }
    }

    void smooth(float open, std::uint8_t limit) {
        voxloc::smoothCrossSpectrum(pair_, {open, limit}, {fresh_.data(), weight1_.data()},
                                    {second_.data(), weight2_.data()}, previous_.data(),
                                    current_.data(), counter_.data());
        for (std::size_t i = 2 * Bins; i < current_.size(); ++i) {
            ASSERT_EQ(current_[i], -777.0f);
        }
        for (std::size_t i = Bins; i < counter_.size(); ++i) ASSERT_EQ(counter_[i], 99);
    }
    // The next frame: what was smoothed becomes the past.
    void advance(float open, std::uint8_t limit) {
        previous_ = current_;
        smooth(open, limit);
    }

    voxloc::MicrophonePair pair_{};
    std::vector<float> weight1_ = std::vector<float>(Bins, 0.25f);
    std::vector<float> weight2_ = std::vector<float>(Bins, 0.5f);
    std::vector<float> fresh_ = std::vector<float>(2 * Bins);
    std::vector<float> second_ = std::vector<float>(2 * Bins);
    std::vector<float> previous_ = std::vector<float>(2 * Bins);
    std::vector<float> current_ = std::vector<float>(2 * Bins + 8, -777.0f);
    std::vector<std::uint8_t> counter_ = withGuard();

  private:
    static std::vector<std::uint8_t> withGuard() {
        std::vector<std::uint8_t> counter(Bins + 8, 99);
        std::fill_n(counter.begin(), Bins, std::uint8_t{0});
        return counter;
    }
};

TEST_F(SmoothCrossSpectrum, MixesTheFreshAndThePreviousByTheWeight) {
    smooth(1.0f, 2);
    for (std::size_t i = 2 * Lower; i < 2 * (Upper + 1); ++i) {
        ASSERT_EQ(current_[i], 0.25f * fresh_[i] + 0.75f * previous_[i]) << i;
    }
}

// Two products, two sums and a mixture of them: five roundings of the terms' magnitudes.
TEST_F(SmoothCrossSpectrum, MultipliesTheFirstSpectrumWithTheConjugateOfTheSecond) {
    std::mt19937 random(24);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    for (float& v : fresh_) v = value(random);
    for (float& v : second_) v = value(random);
    smooth(1.0f, 2);
    for (std::size_t i = 2 * Lower; i < 2 * (Upper + 1); i += 2) {
        const std::complex<double> a(static_cast<double>(fresh_[i]),
                                     static_cast<double>(fresh_[i + 1]));
        const std::complex<double> b(static_cast<double>(second_[i]),
                                     static_cast<double>(second_[i + 1]));
        const std::complex<double> before(static_cast<double>(previous_[i]),
                                          static_cast<double>(previous_[i + 1]));
        const std::complex<double> expected = 0.25 * a * std::conj(b) + 0.75 * before;
        const double limit = 5.0 * Unit * (0.25 * 2.0 + 0.75 * std::abs(before));
        EXPECT_LE(std::abs(static_cast<double>(current_[i]) - expected.real()), limit) << i;
        EXPECT_LE(std::abs(static_cast<double>(current_[i + 1]) - expected.imag()), limit) << i;
    }
}

TEST_F(SmoothCrossSpectrum, TakesTheSmallerWeightOfTheTwoMicrophones) {
    weight1_[100] = 0.5f;
    weight2_[100] = 0.125f;
    smooth(1.0f, 2);
    EXPECT_EQ(current_[200], 0.125f * fresh_[200] + 0.875f * previous_[200]);
    EXPECT_EQ(current_[202], 0.25f * fresh_[202] + 0.75f * previous_[202]);
}

TEST_F(SmoothCrossSpectrum, ClearsTheBinsBelowTheLowest) {
    smooth(1.0f, 2);
    for (std::size_t i = 0; i < 2 * Lower; ++i) ASSERT_EQ(current_[i], 0.0f) << i;
    EXPECT_NE(current_[2 * Lower], 0.0f);
}

TEST_F(SmoothCrossSpectrum, ClearsTheBinsFromTwoAboveTheHighestOn) {
    smooth(1.0f, 2);
    for (std::size_t i = 2 * (Upper + 2); i < 2 * Bins; ++i) ASSERT_EQ(current_[i], 0.0f) << i;
}

// The bin above the highest takes in nothing but keeps a share of what it held.
TEST_F(SmoothCrossSpectrum, SmoothsTheBinAboveTheHighestAfterClearingIt) {
    smooth(1.0f, 2);
    for (std::size_t i = 2 * (Upper + 1); i < 2 * (Upper + 2); ++i) {
        EXPECT_EQ(current_[i], 0.75f * previous_[i]) << i;
    }
}

TEST_F(SmoothCrossSpectrum, HoldsAllBinsWithTheGateShut) {
    smooth(0.0f, 35);
    for (std::size_t i = 2 * Lower; i < 2 * (Upper + 2); ++i) {
        ASSERT_EQ(current_[i], previous_[i]) << i;
    }
}

TEST_F(SmoothCrossSpectrum, CountsFramesWithoutUpdateInTheUsedBinsOnly) {
    weight1_[500] = 0.0f;
    counter_[0] = counter_[Lower - 1] = counter_[Upper + 2] = counter_[Bins - 1] = 99;
    counter_[300] = 7;  // gets an update
    smooth(1.0f, 35);
    EXPECT_EQ(counter_[500], 1);
    EXPECT_EQ(counter_[300], 0);
    EXPECT_EQ(counter_[499], 0);
    EXPECT_EQ(counter_[0], 99);
    EXPECT_EQ(counter_[Lower - 1], 99);
    EXPECT_EQ(counter_[Upper + 2], 99);
    EXPECT_EQ(counter_[Bins - 1], 99);
    smooth(0.0f, 35);
    EXPECT_EQ(counter_[500], 2);
    EXPECT_EQ(counter_[Lower], 1);
    EXPECT_EQ(counter_[Upper + 1], 1);
}

// With limit 2: held in the first frame without update, zeroed in the second, and so on.
// With limit 35: held in 34, zeroed in the 35th.
TEST_F(SmoothCrossSpectrum, ZeroesABinForOneFrameAtTheTimeoutAndStartsAgain) {
    for (const std::uint8_t limit : {std::uint8_t{2}, std::uint8_t{35}}) {
        SCOPED_TRACE(static_cast<int>(limit));
        std::fill_n(counter_.begin(), Bins, std::uint8_t{0});
        std::copy(fresh_.begin(), fresh_.end(), current_.begin());
        const float held = current_[400];
        for (int frame = 1; frame < limit; ++frame) {
            advance(0.0f, limit);
            ASSERT_EQ(current_[400], held) << frame;
            ASSERT_EQ(counter_[200], frame);
        }
        advance(0.0f, limit);
        EXPECT_EQ(current_[400], 0.0f);
        EXPECT_EQ(counter_[200], 0);
        advance(0.0f, limit);  // counts from the start: what is held now is zero
        EXPECT_EQ(counter_[200], 1);
        EXPECT_EQ(current_[400], 0.0f);
        advance(1.0f, limit);
        EXPECT_EQ(current_[400], 0.25f * fresh_[400]);
        EXPECT_EQ(counter_[200], 0);
    }
}

TEST_F(SmoothCrossSpectrum, ZeroesAtOnceWhenTheLimitFallsBelowTheCount) {
    for (const std::uint8_t count : {std::uint8_t{20}, std::uint8_t{254}, std::uint8_t{255}}) {
        counter_[200] = count;  // the last ones come from no frame; they do not turn
        counter_[201] = 0;
        smooth(0.0f, 2);
        EXPECT_EQ(current_[400], 0.0f);
        EXPECT_EQ(counter_[200], 0);
        EXPECT_EQ(current_[402], previous_[402]);
    }
}

TEST_F(SmoothCrossSpectrum, TakesTheSmallestWeightForAnUpdate) {
    weight1_[200] = 1e-7f;
    weight1_[201] = std::nextafter(1e-7f, 0.0f);
    counter_[200] = counter_[201] = 5;
    smooth(1.0f, 35);
    EXPECT_EQ(counter_[200], 0);
    EXPECT_EQ(counter_[201], 6);
}

}  // namespace
