/** The correlation at the near lags against the whole chain: whitening, real inverse transform. */
#include "track/phaseTransform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "voxloc/voxloc.h"

namespace {

using namespace voxloc;

constexpr int Points = CorrelationLags / 2;

struct Tables {
    std::vector<float> a = std::vector<float>(CorrelationLags);
    std::vector<float> b = std::vector<float>(CorrelationLags);
    Tables() { voxloc_generateAbTables(a.data(), b.data(), Points); }
};

const Tables& tables() {
    static const Tables instance;
    return instance;
}

std::vector<float> randomCrossSpectrum(unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0.0f, 1e-3f);
    std::vector<float> bins(SpectrumFloats);
    for (float& value : bins) value = normal(random);
    return bins;
}

/** Each bin of [begin, end) divided by its magnitude, bin by bin; zero up to the last bin. */
std::vector<float> whitened(const std::vector<float>& bins, int begin, int end) {
    std::vector<float> spectrum(CorrelationBufferFloats);
    for (int k = begin; k < end; ++k) {
        const auto i = static_cast<std::size_t>(2 * k);
        const float power = bins[i] * bins[i] + bins[i + 1] * bins[i + 1];
        if (!(power > 1e-14f)) continue;
        spectrum[i] = bins[i] / std::sqrt(power);
        spectrum[i + 1] = bins[i + 1] / std::sqrt(power);
    }
    return spectrum;
}

std::vector<float> wholeCorrelation(const std::vector<float>& bins, int begin, int end) {
    std::vector<float> spectrum = whitened(bins, begin, end);
    std::vector<float> scratch(CorrelationBufferFloats);
    voxloc_realIfft(CorrelationLags, spectrum.data(), nullptr, scratch.data(), 2, tables().a.data(),
                    tables().b.data());
    return spectrum;
}

std::vector<float> nearCorrelation(const std::vector<float>& bins, int begin, int end,
                                   int lags = NearLags) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> scratch(CorrelationLags, nan), correlation(CorrelationLags, nan);
    correlate(bins.data(), begin, end, lags, tables().a.data(), tables().b.data(), scratch.data(),
              correlation.data());
    return correlation;
}

/** Room for the last bit where a split pass may use fused multiply-add and the other one does not.
 */
#ifdef __FMA__
constexpr float Tolerance = 1e-6f;  // of correlations up to 0.36: 3000 whitened values summed
#else
constexpr float Tolerance = 0.0f;
#endif

void expectSameNearLags(const std::vector<float>& whole, const std::vector<float>& near,
                        int lags = NearLags) {
    for (int lag = 0; lag < CorrelationLags; ++lag) {
        if (lag == lags) lag = CorrelationLags - lags;
        const auto i = static_cast<std::size_t>(lag);
        ASSERT_LE(std::fabs(whole[i] - near[i]), Tolerance) << "lag " << lag;
    }
}

TEST(PhaseTransform, NearLagsEqualTheWholeInverseTransform) {
    for (const int begin : {1, 22, 99, 371, 1436, 1452}) {
        SCOPED_TRACE(begin);
        const std::vector<float> bins = randomCrossSpectrum(static_cast<unsigned>(begin));
        expectSameNearLags(wholeCorrelation(bins, begin, 1453), nearCorrelation(bins, begin, 1453));
    }
}

TEST(PhaseTransform, EveryUpperEndUpToTheLimitIsServed) {
    for (const int end : {100, 101, 1000, 1452, 1453, MaxBinsInUse}) {
        SCOPED_TRACE(end);
        const std::vector<float> bins = randomCrossSpectrum(static_cast<unsigned>(end));
        expectSameNearLags(wholeCorrelation(bins, 99, end), nearCorrelation(bins, 99, end));
    }
}

TEST(PhaseTransform, FewerLagsAreTheSameOnes) {
    const std::vector<float> bins = randomCrossSpectrum(17);
    const std::vector<float> whole = wholeCorrelation(bins, 99, 1453);
    for (const int lags : {2, 24, 64, 84, 110, 250, 364, 512}) {
        SCOPED_TRACE(lags);
        expectSameNearLags(whole, nearCorrelation(bins, 99, 1453, lags), lags);
    }
}

TEST(PhaseTransform, BinsOutsideTheRangeAreNotRead) {
    std::vector<float> bins = randomCrossSpectrum(3);
    const std::vector<float> expected = nearCorrelation(bins, 99, 1453);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::fill(bins.begin(), bins.begin() + 2 * 99, nan);
    std::fill(bins.begin() + 2 * 1453, bins.end(), nan);
    expectSameNearLags(expected, nearCorrelation(bins, 99, 1453));
}

/** A single bin: the correlation's lag 0 is 2/CorrelationLags·(number of bins with a phase). */
float lagZeroOfSingleBin(float re, float im) {
    std::vector<float> bins(SpectrumFloats);
    bins[2 * 500] = re;
    bins[2 * 500 + 1] = im;
    return nearCorrelation(bins, 99, 1453)[0];
}

TEST(PhaseTransform, ABinHasAPhaseFromJustAboveTheMagnitudeFloor) {
    constexpr float floor2 = 1e-14f;
    const float justAbove = std::sqrt(std::nextafter(floor2, 1.0f)) * (1.0f + 2e-7f);
    EXPECT_GT(lagZeroOfSingleBin(justAbove, 0.0f), 1.0f / Points * 0.9f);
    EXPECT_EQ(lagZeroOfSingleBin(std::sqrt(floor2) * (1.0f - 2e-7f), 0.0f), 0.0f);
}

TEST(PhaseTransform, NanAndInfinityHaveNoPhase) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(lagZeroOfSingleBin(nan, 1.0f), 0.0f);
    EXPECT_EQ(lagZeroOfSingleBin(1.0f, nan), 0.0f);
    EXPECT_EQ(lagZeroOfSingleBin(1e25f, 1e25f), 0.0f);
}

}  // namespace
