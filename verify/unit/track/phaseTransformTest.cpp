// The correlation of a pair: against the whole chain of whitening and real inverse transform, and
// bin by bin against the cosines that it consists of.

#include "track/phaseTransform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "kit/guardedFloats.h"
#include "wholeCorrelation.h"

namespace {

using namespace voxloc;
using reference::GuardedFloats;

constexpr float Nan = std::numeric_limits<float>::quiet_NaN();

std::vector<float> randomCrossSpectrum(unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0.0f, 1e-3f);
    std::vector<float> bins(SpectrumFloats);
    for (float& value : bins) value = normal(random);
    return bins;
}

std::vector<float> correlation(const std::vector<float>& bins, int begin, int end, int lags) {
    GuardedFloats scratch(CorrelationLags, 0, Nan), result(CorrelationLags, 0, Nan);
    correlate(bins.data(), begin, end, lags, upsampledTables().a.data(), upsampledTables().b.data(),
              scratch.data(), result.data());
    EXPECT_TRUE(scratch.intact() && result.intact());
    return {result.data(), result.data() + CorrelationLags};
}

// Cheap up to 512 lags, whole beyond.
TEST(Correlate, EqualsTheWholeInverseTransformAtTheLagsAskedFor) {
    struct {
        int begin, end, lags;
    } const cases[] = {
        {1, 1453, 512},    {22, 1453, 512},         {371, 1453, 512}, {1436, 1453, 512},
        {1452, 1453, 512}, {99, 100, 512},          {99, 101, 512},   {99, 1000, 512},
        {99, 1452, 512},   {99, 1536, 512},         {99, 1453, 2},    {99, 1453, 24},
        {99, 1453, 110},   {99, 1453, 364},         {99, 1453, 514},  {14, 1453, 1660},
        {1, 1453, 8190},   {1, 1536, LargestReach},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.begin << " to " << c.end << ", " << c.lags);
        std::vector<float> bins = randomCrossSpectrum(static_cast<unsigned>(c.begin + c.end));
        std::fill_n(bins.begin(), 2 * c.begin, Nan);  // bins outside are not read
        std::fill(bins.begin() + 2 * c.end, bins.end(), Nan);
        const std::vector<float> whole = wholeCorrelation(bins.data(), c.begin, c.end);
        const std::vector<float> actual = correlation(bins, c.begin, c.end, c.lags);
        for (int lag = 0; lag < CorrelationLags; ++lag) {
            if (lag == c.lags) lag = CorrelationLags - c.lags;
            const auto i = static_cast<std::size_t>(lag);
            ASSERT_LE(std::fabs(whole[i] - actual[i]), WholeTolerance) << "lag " << lag;
        }
    }
}

// --- One bin ------------------------------------------------------------------------------------

constexpr double BinShare = 2.0 / 16384.0;  // of a bin of magnitude 1 in the correlation
constexpr double TwoPi = 6.283185307179586;

std::vector<float> ofOneBin(std::size_t k, float re, float im) {
    std::vector<float> bins(SpectrumFloats);
    bins[2 * k] = re;
    bins[2 * k + 1] = im;
    return correlation(bins, 22, 1453, NearLags);
}

// The whitening, the split and 13 stages of the transform round one term of magnitude 1: 24 units
// with room for the twiddles' own rounding.
TEST(CorrelationOfABin, IsACosineOfItsOwnPhaseWhateverItsMagnitude) {
    for (const std::size_t k : {22U, 23U, 99U, 500U, 1000U, 1451U, 1452U}) {
        for (const float magnitude : {2e-7f, 1e-3f, 1.0f, 1e6f, 1e15f}) {
            const double phase = 0.1 + static_cast<double>(k);
            const auto actual = ofOneBin(k, magnitude * static_cast<float>(std::cos(phase)),
                                         magnitude * static_cast<float>(std::sin(phase)));
            for (int lag = -512; lag < 512; ++lag) {
                const auto index = static_cast<std::size_t>(lag < 0 ? lag + 16384 : lag);
                const double angle = phase + TwoPi * static_cast<double>(k) * lag / 16384.0;
                EXPECT_LE(std::abs(static_cast<double>(actual[index]) - BinShare * std::cos(angle)),
                          24.0 * 0x1p-24 * BinShare)
                    << k << " at " << lag;
            }
        }
    }
}

// A bin has a phase from a magnitude of 1e-7 on, when it and its square are numbers.
TEST(CorrelationOfABin, IsZeroWithoutAPhase) {
    const float one = static_cast<float>(BinShare);
    struct {
        float re, im, lagZero;
    } const cases[] = {
        {0.0f, 0.0f, 0.0f},
        {0.99999e-7f, 0.0f, 0.0f},
        {1.00001e-7f, 0.0f, one},
        {-0.7e-7f, 0.7e-7f, 0.0f},  // magnitude 0.99e-7
        {-0.72e-7f, 0.72e-7f, -one * std::sqrt(0.5f)},
        {Nan, 1.0f, 0.0f},
        {1.0f, Nan, 0.0f},
        {1e30f, 0.0f, 0.0f},
        {1e25f, 1e25f, 0.0f},
    };
    for (const auto& c : cases) {
        EXPECT_LE(std::abs(ofOneBin(300, c.re, c.im)[0] - c.lagZero), std::abs(c.lagZero) * 1e-5f)
            << c.re << " " << c.im;
    }
}

}  // namespace
