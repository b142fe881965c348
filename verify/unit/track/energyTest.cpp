#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <random>
#include <vector>

#include "kit/lastWords.h"
#include "voxloc/voxloc.h"

namespace {

constexpr double Unit = 0x1p-24;
constexpr float FullScale = 8388608.0f;  // 2^23

// Eight energies between guards; they start as NaN so that an entry left alone shows.
struct Energies {
    std::array<float, 10> all;
    Energies() { all.fill(NAN); }
    float* first() { return &all[1]; }
    float operator[](std::size_t channel) const { return all[channel + 1]; }
    bool guardsSurvive() const { return std::isnan(all.front()) && std::isnan(all.back()); }
};

TEST(CalculateSignalEnergy, OfAFullScaleConstantIsTheNumberOfSamples) {
    const std::vector<float> frame(8 * 2048, FullScale);
    Energies energies;
    voxloc_calculateSignalEnergy(frame.data(), 24, 8, energies.first());
    for (std::size_t c = 0; c < 8; ++c) EXPECT_EQ(energies[c], 2048.0f) << c;
    EXPECT_TRUE(energies.guardsSurvive());
}

TEST(CalculateSignalEnergy, ClearsTheChannelsThatAreNotThere) {
    for (int channels = 1; channels <= 8; ++channels) {
        const std::vector<float> frame(static_cast<std::size_t>(channels) * 2048, FullScale);
        Energies energies;
        voxloc_calculateSignalEnergy(frame.data(), 24, channels, energies.first());
        for (int c = 0; c < 8; ++c) {
            EXPECT_EQ(energies[static_cast<std::size_t>(c)], c < channels ? 2048.0f : 0.0f)
                << c << " of " << channels;
        }
        EXPECT_TRUE(energies.guardsSurvive());
    }
}

TEST(CalculateSignalEnergy, ScalesByTheSignificantBits) {
    const std::vector<float> frame(2048, 3.0f);
    for (const std::uint32_t bits : {1U, 2U, 16U, 24U, 32U}) {
        Energies energies;
        voxloc_calculateSignalEnergy(frame.data(), bits, 1, energies.first());
        EXPECT_EQ(energies[0], std::ldexp(9.0f * 2048.0f, 2 - 2 * static_cast<int>(bits))) << bits;
    }
}

TEST(CalculateSignalEnergy, KeepsTheChannelsApart) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> sample(-FullScale, FullScale);
    std::vector<float> frame(6 * 2048);
    for (float& value : frame) value = sample(random);
    Energies energies;
    voxloc_calculateSignalEnergy(frame.data(), 24, 6, energies.first());
    for (std::size_t c = 0; c < 6; ++c) {
        double expected = 0.0;
        for (std::size_t i = 0; i < 2048; ++i) {
            const double value = static_cast<double>(frame[c * 2048 + i]) / 8388608.0;
            expected += value * value;
        }
        // 512 additions a partial sum, all of positive terms
        EXPECT_LE(std::abs(static_cast<double>(energies[c]) - expected), 520.0 * Unit * expected)
            << c;
    }
}

// A large first sample swallows whatever is added to its partial sum afterwards. How much of the
// rest survives tells how many partial sums there are, and that it is the samples four apart that
// share one.
TEST(CalculateSignalEnergy, AddsUpFourInterleavedPartialSums) {
    std::vector<float> frame(2048, 1.0f);
    for (std::size_t lane = 0; lane < 4; ++lane) {
        std::vector<float> one(frame);
        one[lane] = 8192.0f;  // 2^26 swallows 1
        Energies energies;
        voxloc_calculateSignalEnergy(one.data(), 1, 1, energies.first());
        EXPECT_EQ(energies[0], 67108864.0f + 1536.0f) << lane;
    }
    std::vector<float> two(frame);
    two[0] = 8192.0f;
    two[4] = 8192.0f;  // the same partial sum
    Energies energies;
    voxloc_calculateSignalEnergy(two.data(), 1, 1, energies.first());
    EXPECT_EQ(energies[0], 2.0f * 67108864.0f + 1536.0f);
    two[4] = 1.0f;
    two[1] = 8192.0f;  // another one
    voxloc_calculateSignalEnergy(two.data(), 1, 1, energies.first());
    EXPECT_EQ(energies[0], 2.0f * 67108864.0f + 1024.0f);
}

TEST(CalculateSignalEnergy, OfBadSamplesStaysInTheirChannel) {
    std::vector<float> frame(3 * 2048, FullScale);
    frame[100] = NAN;
    frame[2 * 2048] = INFINITY;
    Energies energies;
    voxloc_calculateSignalEnergy(frame.data(), 24, 3, energies.first());
    EXPECT_TRUE(std::isnan(energies[0]));
    EXPECT_EQ(energies[1], 2048.0f);
    EXPECT_TRUE(std::isinf(energies[2]));
}

std::string energyReport(const char* expression) {
    return assertionReport("functional/audio/voxloc/cmod/track/voxloc",
                           "voxloc_calculateSignalEnergy", expression);
}

TEST(CalculateSignalEnergyDeathTest, RejectsMoreThanEightChannels) {
    const std::vector<float> frame(9 * 2048);
    Energies energies;
    EXPECT_EXIT(voxloc_calculateSignalEnergy(frame.data(), 24, 9, energies.first()),
                ::testing::KilledBySignal(SIGABRT),
                energyReport("nchannels <= VOXLOC_MAX_CHANNELS"));
}

TEST(CalculateSignalEnergyDeathTest, RejectsLessThanOneChannel) {
    const std::vector<float> frame(2048);
    Energies energies;
    for (const int channels : {0, -1}) {
        EXPECT_EXIT(voxloc_calculateSignalEnergy(frame.data(), 24, channels, energies.first()),
                    ::testing::KilledBySignal(SIGABRT), energyReport("nchannels > 0"));
    }
}

TEST(GenerateInput, FillsTheBufferWithTheSameNoiseAtEachCall) {
    const float* noise = generateInput();
    std::vector<float> first(noise, noise + 16384);
    std::srand(7);
    EXPECT_EQ(generateInput(), noise);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), noise));
    const auto [lowest, highest] = std::minmax_element(first.begin(), first.end());
    EXPECT_TRUE(*lowest >= -0.5f && *lowest < -0.499f) << *lowest;
    EXPECT_TRUE(*highest > 0.499f && *highest <= 0.50001f) << *highest;
}

TEST(GenerateInput, TakesTheStandardGeneratorsValuesInOrder) {
    const float* noise = generateInput();
    std::srand(1);
    for (int i = 0; i < 16384; ++i) {
        const float expected = -0.5f + static_cast<float>(std::rand()) * 4.656613e-10f;
        ASSERT_EQ(noise[i], expected) << i;
    }
}

}  // namespace
