// The real transforms, and the complex ones and the filter as the module hands them on.

#include <algorithm>
#include <climits>
#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

#include "gtest/gtest.h"
#include "kit/floatBits.h"
#include "kit/guardedFloats.h"
#include "kit/noise.h"
#include "models/detectorModels.h"
#include "models/doubleFft.h"
#include "voxloc/voxloc.h"
#include "voxloc/voxlocParts.h"

namespace {

using namespace kit;
using reference::GuardedFloats;
using reference::noise;

struct SplitTables {
    explicit SplitTables(std::size_t points) : a(2 * points), b(2 * points) {
        voxloc_generateAbTables(a.data(), b.data(), static_cast<int>(points));
    }
    GuardedFloats a, b;
};

std::vector<float> contentOf(const GuardedFloats& floats) {
    EXPECT_TRUE(floats.intact());
    return {floats.data(), floats.data() + floats.size()};
}

// Runs the forward transform between guards, with the ignored arguments as given.
std::vector<float> realFft(const std::vector<float>& signal, const float* twiddles = nullptr,
                           int radix = 2) {
    const SplitTables tables(signal.size() / 2);
    GuardedFloats input(signal), work(signal.size() + 2), result(signal.size() + 2, 0, NotANumber);
    voxloc_realFft(static_cast<int>(signal.size()), input.data(), twiddles, result.data(), radix,
                   tables.a.data(), tables.b.data(), work.data());
    EXPECT_EQ(contentOf(input), signal);
    EXPECT_TRUE(work.intact() && tables.a.intact() && tables.b.intact());
    return contentOf(result);
}

// Runs the inverse transform between guards; returns the samples and the two floats behind them.
std::vector<float> realIfft(const std::vector<float>& spectrum, const float* twiddles = nullptr,
                            int radix = 2) {
    const std::size_t size = spectrum.size() - 2;
    const SplitTables tables(size / 2);
    GuardedFloats buffer(spectrum), scratch(size);
    voxloc_realIfft(static_cast<int>(size), buffer.data(), twiddles, scratch.data(), radix,
                    tables.a.data(), tables.b.data());
    EXPECT_TRUE(scratch.intact());
    return contentOf(buffer);
}

// Every level of the transform turns by a rounded twiddle and adds, and so does the split: 2.2
// epsilon of the terms at most each. (A complex product is off by at most sqrt(5)/2 epsilon, its
// factor by half of one, the sum by half of one.)
double levels(std::size_t size) {
    return 2.2 * (std::log2(static_cast<double>(size)) + 1) * Epsilon;
}

std::vector<double> inDouble(const std::vector<float>& values) {
    return {values.begin(), values.end()};
}

// The bound of the levels holds for the norm, where it is much sharper than for each value.
void expectNear(const std::vector<float>& actual, const std::vector<double>& expected,
                double limit) {
    double error = 0, power = 0;
    for (std::size_t i = 0; i < expected.size(); i++) {
        error += std::pow(wide(actual[i]) - expected[i], 2);
        power += std::pow(expected[i], 2);
    }
    EXPECT_TRUE(std::sqrt(error / power) <= limit) << std::sqrt(error / power);
}

std::vector<double> partsOf(const reference::Spectrum& bins) {
    std::vector<double> parts;
    for (const auto& bin : bins) {
        parts.push_back(bin.real());
        parts.push_back(bin.imag());
    }
    return parts;
}

TEST(RealFft, AgreesWithTheTransformInDouble) {
    for (std::size_t size = 2; size <= 16384; size *= 2) {
        SCOPED_TRACE(size);
        const std::vector<float> signal = noise(size, 500u + static_cast<unsigned>(size));
        const std::vector<float> bins = realFft(signal);
        expectNear(bins, partsOf(reference::realSpectrum(inDouble(signal))), levels(size));
        EXPECT_EQ(bitsOf(bins[size + 1]), 0u);  // the last bin is real
        // The first bin's imaginary part is four terms of halves of z0's parts that cancel.
        EXPECT_TRUE(std::fabs(wide(bins[1])) <=
                    2 * Epsilon * (std::fabs(wide(bins[0])) + std::fabs(wide(bins[size]))));
    }
}

TEST(RealFft, ConstantGivesOnlyTheFirstBinAndAlternatingSignsOnlyTheLast) {
    for (const float constant : {0.0f, 1.0f, -3.0f}) {
        for (const float sign : {1.0f, -1.0f}) {
            std::vector<float> signal(4096, constant), expected(4098);
            for (std::size_t i = 1; i < signal.size(); i += 2) signal[i] *= sign;
            expected[sign == 1 ? 0 : 4096] = 4096 * constant;
            EXPECT_EQ(realFft(signal), expected);
        }
    }
}

TEST(RealIfft, AgreesWithTheTransformInDouble) {
    for (std::size_t size = 2; size <= 16384; size *= 2) {
        SCOPED_TRACE(size);
        std::vector<float> spectrum = noise(size + 2, 600u + static_cast<unsigned>(size));
        spectrum[1] = spectrum[size + 1] = 0;
        reference::Spectrum bins;
        for (std::size_t i = 0; i < spectrum.size(); i += 2) {
            bins.emplace_back(wide(spectrum[i]), wide(spectrum[i + 1]));
        }
        const std::vector<float> signal = realIfft(spectrum);
        expectNear(signal, reference::realSignal(bins, size), levels(size));
        EXPECT_EQ(firstDifference(&signal[size], &spectrum[size], 2), 2u);  // left as they were
    }
}

TEST(RealIfft, ReturnsTheInputOfTheForwardTransform) {
    for (std::size_t size = 2; size <= 16384; size *= 2) {
        SCOPED_TRACE(size);
        const std::vector<float> signal = noise(size, 700u + static_cast<unsigned>(size));
        expectNear(realIfft(realFft(signal)), inDouble(signal), 2 * levels(size));
    }
}

TEST(RealTransforms, IgnoreTwiddlesAndRadix) {
    const std::vector<float> signal = noise(512, 10), spectrum = noise(514, 11);
    const GuardedFloats poison(512, 0, NotANumber);
    for (const int radix : {2, 4, 0, -1}) {
        EXPECT_EQ(realFft(signal, poison.data(), radix), realFft(signal));
        EXPECT_EQ(realIfft(spectrum, poison.data(), radix), realIfft(spectrum));
    }
}

TEST(ComplexTransform, ForwardIsUnscaledAndTheInverseUndoesIt) {
    GuardedFloats input(std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8}), spectrum(8), back(8);
    voxloc_fft(4, input.data(), nullptr, spectrum.data(), 2);
    // Of 1+2i, 3+4i, 5+6i, 7+8i.
    EXPECT_EQ(contentOf(spectrum), (std::vector<float>{16, 20, -8, 0, -4, -4, 0, -8}));
    voxloc_ifft(4, spectrum.data(), nullptr, back.data(), 2);
    EXPECT_EQ(contentOf(back), contentOf(input));
}

TEST(FirFilter, AppliesItsCoefficientsInCorrelationOrder) {
    const std::vector<float> samples = noise(7 + 5 - 1, 14), taps = noise(5, 15);
    GuardedFloats input(samples), coefficients(taps), output(7, 0, NotANumber);
    voxloc_firFilter(input.data(), coefficients.data(), output.data(), 5, 7);
    const std::vector<double> expected = reference::correlate(inDouble(samples), inDouble(taps));
    ASSERT_EQ(expected.size(), 7u);
    for (std::size_t i = 0; i < 7; i++) {
        // Five products of factors up to 1, and four sums.
        EXPECT_TRUE(std::fabs(wide(output[i]) - expected[i]) <= 5 * (0.5 + 2) * Epsilon) << i;
    }
    EXPECT_TRUE(output.intact());
}

// In front of the buffers stand guards.
TEST(RealTransforms, OfNegativeSizesDoNothing) {
    for (const int size : {-1, -2, -3, -16, -4096, INT_MIN}) {
        GuardedFloats input(64, 0, 1.0f), result(64, 0, 2.0f), work(64, 0, 3.0f);
        const SplitTables tables(32);
        voxloc_realFft(size, input.data(), nullptr, result.data(), 2, tables.a.data(),
                       tables.b.data(), work.data());
        voxloc_realIfft(size, result.data(), nullptr, work.data(), 2, tables.a.data(),
                        tables.b.data());
        EXPECT_EQ(contentOf(input), std::vector<float>(64, 1.0f)) << size;
        EXPECT_EQ(contentOf(result), std::vector<float>(64, 2.0f)) << size;
        EXPECT_EQ(contentOf(work), std::vector<float>(64, 3.0f)) << size;
    }
}

}  // namespace
