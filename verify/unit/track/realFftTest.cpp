// The real transforms, their split passes as far as they belong to them, and their tables.

#include "track/realFft.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

#include "dsplib/sp_fir_neon.h"
#include "models/doubleFft.h"
#include "trackSupport.h"
#include "voxloc/voxloc.h"

namespace {

using namespace trackSupport;
using Complex = std::complex<double>;

struct SplitTables {
    explicit SplitTables(int n)
        : a(2 * static_cast<std::size_t>(n)), b(2 * static_cast<std::size_t>(n)) {
        voxloc_generateAbTables(a.data(), b.data(), n);
    }
    GuardedFloats a, b;
};

TEST(SplitFft, LastBinIsTheDifferenceOfTheFirstPointsParts) {
    const SplitTables tables(3);
    GuardedFloats input(std::vector<float>{5.0f, 7.5f, 1, 2, 3, 4, 0, 0}), output(8);
    voxloc::splitFft(3, input.data(), tables.a.data(), tables.b.data(), output.data());
    EXPECT_EQ(output[6], -2.5f);
    EXPECT_EQ(output[7], 0.0f);
}

TEST(SplitIfft, ReadsTheLastBinForTheFirstPoint) {
    const SplitTables tables(4);
    GuardedFloats input(std::vector<float>(10)), output(8);
    input[8] = 2.0f;  // bin 4
    voxloc::splitIfft(4, input.data(), tables.a.data(), tables.b.data(), output.data());
    EXPECT_EQ(output[0], 1.0f);
    EXPECT_EQ(output[1], -1.0f);
}

TEST(SplitIfft, UndoesTheForwardSplit) {
    for (const int n : {1, 2, 3, 31, 2048, 8192}) {
        SCOPED_TRACE(n);
        const auto size = static_cast<std::size_t>(n);
        const SplitTables tables(n);
        const std::vector<float> x = randomFloats(2 * size, 400u + static_cast<unsigned>(n));
        GuardedFloats input(2 * size + 2), spectrum(2 * size + 2), output(2 * size);
        std::copy(x.begin(), x.end(), input.begin());

        voxloc::splitFft(n, input.data(), tables.a.data(), tables.b.data(), spectrum.data());
        voxloc::splitIfft(n, spectrum.data(), tables.a.data(), tables.b.data(), output.data());

        // Each pass is four products of factors up to 1 with values up to 1 (first pass) or 4
        // (second pass): 3.5 epsilon of each term and one more for the tables' own rounding.
        const double limit = 4.5 * Epsilon * (4 + 4 * 4);
        for (std::size_t i = 0; i < x.size(); i++) {
            EXPECT_TRUE(std::fabs(wide(output[i]) - wide(x[i])) <= limit) << "float " << i;
        }
    }
}

TEST(AbTables, FollowTheirRuleBitForBit) {
    for (const int n : {1, 2, 3, 5, 8, 100, 2048, 8192}) {
        SCOPED_TRACE(n);
        const SplitTables tables(n);
        const double step = 6.283185307179586 / (2.0 * n);
        for (int k = 0; k < n; k++) {
            const double sine = std::sin(k * step), cosine = std::cos(k * step);
            const auto at = 2 * static_cast<std::size_t>(k);
            EXPECT_EQ(bitsOf(tables.a[at]), bitsOf(static_cast<float>((1.0 - sine) * 0.5)));
            EXPECT_EQ(bitsOf(tables.a[at + 1]), bitsOf(static_cast<float>(cosine * -0.5)));
            EXPECT_EQ(bitsOf(tables.b[at]), bitsOf(static_cast<float>(sine * 0.5 + 0.5)));
            EXPECT_EQ(bitsOf(tables.b[at + 1]), bitsOf(static_cast<float>(cosine * 0.5)));
        }
        EXPECT_TRUE(tables.a.intact());
        EXPECT_TRUE(tables.b.intact());
    }
}

TEST(AbTables, AreWithinOneRoundingOfTheExactValues) {
    for (const int n : {2048, 8192}) {
        SCOPED_TRACE(n);
        const SplitTables tables(n);
        const long double pi = 3.14159265358979323846264338327950288L;
        for (int k = 0; k < n; k++) {
            const long double angle = pi * k / n;
            const long double exact[4] = {(1 - std::sin(angle)) / 2, -std::cos(angle) / 2,
                                          (1 + std::sin(angle)) / 2, std::cos(angle) / 2};
            const auto at = 2 * static_cast<std::size_t>(k);
            const float actual[4] = {tables.a[at], tables.a[at + 1], tables.b[at],
                                     tables.b[at + 1]};
            for (int part = 0; part < 4; part++) {
                const long double error =
                    std::fabs(static_cast<long double>(actual[part]) - exact[part]);
                // Half an epsilon of the value, and a few roundings of the angle in double.
                EXPECT_TRUE(error <=
                            static_cast<long double>(Epsilon) / 2 * std::fabs(exact[part]) + 4e-16L)
                    << "entry " << k << " part " << part;
            }
        }
    }
}

TEST(AbTables, SizeOneWritesOnlyEntryZero) {
    GuardedFloats a(4), b(4);
    voxloc_generateAbTables(a.data(), b.data(), 1);
    EXPECT_EQ(a[0], 0.5f);
    EXPECT_EQ(a[1], -0.5f);
    EXPECT_EQ(b[0], 0.5f);
    EXPECT_EQ(b[1], 0.5f);
    for (std::size_t i = 2; i < 4; i++) EXPECT_TRUE(a.isUntouched(i) && b.isUntouched(i));
}

TEST(AbTables, NoSizeWritesNothing) {
    for (const int n : {0, -1, -2048}) {
        GuardedFloats a(2), b(2);
        voxloc_generateAbTables(a.data(), b.data(), n);
        EXPECT_TRUE(a.isUntouched(0) && a.isUntouched(1) && b.isUntouched(0) && b.isUntouched(1));
    }
}

// The groups in the order in which they are laid out.
std::vector<float> plainTwiddles(int n) {
    std::vector<float> table;
    const double scale = 1.0 / n;
    for (int stride = 1; stride <= n / 4; stride *= 4) {
        for (int i = 0; i < n / 4; i += stride) {
            for (const double turn : {6.283185307179586, 12.566370614359172, 18.84955592153876}) {
                const double angle = scale * turn * i;
                table.push_back(static_cast<float>(std::cos(angle)));
                table.push_back(static_cast<float>(std::sin(angle)));
            }
        }
    }
    return table;
}

TEST(TwiddleTable, FollowsItsRuleBitForBit) {
    for (int n = 4; n <= 8192; n *= 2) {
        SCOPED_TRACE(n);
        GuardedFloats table(2 * static_cast<std::size_t>(n));
        voxloc_generateTwiddleFactors(table.data(), n);
        const std::vector<float> expected = plainTwiddles(n);
        ASSERT_LE(expected.size(), table.size());
        EXPECT_EQ(firstDifference(table.data(), expected.data(), expected.size()), expected.size());
        for (std::size_t i = expected.size(); i < table.size(); i++) {
            EXPECT_TRUE(table.isUntouched(i)) << i;
        }
        EXPECT_TRUE(table.intact());
    }
}

TEST(TwiddleTable, LeavesTheLastFourFloatsOfTheModulesSizesUntouched) {
    for (const std::size_t n : {2048u, 8192u}) {
        GuardedFloats table(std::vector<float>(2 * n));
        voxloc_generateTwiddleFactors(table.data(), static_cast<int>(n));
        EXPECT_NE(table[2 * n - 6], 0.0f);
        for (std::size_t i = 2 * n - 4; i < 2 * n; i++) EXPECT_EQ(bitsOf(table[i]), 0u);
    }
}

TEST(TwiddleTable, StagesFollowOneAnotherAtStridesOfFour) {
    GuardedFloats table(64);
    voxloc_generateTwiddleFactors(table.data(), 16);  // 4 groups of stride 1, one of stride 4
    const float one[6] = {1, 0, 1, 0, 1, 0};
    EXPECT_EQ(firstDifference(table.data(), one, 6), 6u);
    EXPECT_FLOAT_EQ(table[6], 0.92387953f);   // cos(2π/16)
    EXPECT_FLOAT_EQ(table[11], 0.92387953f);  // sin(6π/16)
    EXPECT_EQ(firstDifference(table.data() + 24, one, 6), 6u);
    EXPECT_TRUE(table.isUntouched(30));
}

TEST(TwiddleTable, SizesBelowFourWriteNothing) {
    for (const int n : {3, 2, 1, 0, -4}) {
        GuardedFloats table(8);
        voxloc_generateTwiddleFactors(table.data(), n);
        for (std::size_t i = 0; i < 8; i++) EXPECT_TRUE(table.isUntouched(i)) << n;
    }
}

TEST(BitReverseTable, ReversesSixBits) {
    for (unsigned i = 0; i < 64; i++) {
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < 6; bit++) reversed |= (i >> bit & 1) << (5 - bit);
        EXPECT_EQ(voxloc::BitReverseTable[i], reversed);
    }
}

// Runs the forward transform between guards, with the ignored arguments as given.
std::vector<float> realFft(const std::vector<float>& signal, const float* twiddles = nullptr,
                           int radix = 2) {
    const SplitTables tables(static_cast<int>(signal.size() / 2));
    GuardedFloats input(signal), work(signal.size() + 2), result(signal.size() + 2);
    voxloc_realFft(static_cast<int>(signal.size()), input.data(), twiddles, result.data(), radix,
                   tables.a.data(), tables.b.data(), work.data());
    EXPECT_TRUE(input.intact());
    EXPECT_TRUE(work.intact());
    EXPECT_TRUE(result.intact());
    EXPECT_TRUE(tables.a.intact());
    EXPECT_TRUE(tables.b.intact());
    return result.content();
}

// Runs the inverse transform between guards; returns the samples and the two floats behind them.
std::vector<float> realIfft(const std::vector<float>& spectrum, const float* twiddles = nullptr,
                            int radix = 2) {
    const std::size_t size = spectrum.size() - 2;
    const SplitTables tables(static_cast<int>(size / 2));
    GuardedFloats buffer(spectrum), scratch(size);
    voxloc_realIfft(static_cast<int>(size), buffer.data(), twiddles, scratch.data(), radix,
                    tables.a.data(), tables.b.data());
    EXPECT_TRUE(buffer.intact());
    EXPECT_TRUE(scratch.intact());
    return buffer.content();
}

// Every level of the transform turns by a rounded twiddle and adds, and so does the split: 2.2
// epsilon of the terms at most each. (A complex product is off by at most sqrt(5)/2 epsilon, its
// factor by half of one, the sum by half of one.)
double levels(std::size_t size) {
    return 2.2 * (std::log2(static_cast<double>(size)) + 1) * Epsilon;
}

TEST(RealFft, AgreesWithTheDirectTransform) {
    for (std::size_t size = 2; size <= 4096; size *= 2) {
        SCOPED_TRACE(size);
        const std::vector<float> signal = randomFloats(size, 500u + static_cast<unsigned>(size));
        reference::Spectrum expected = reference::directDft({signal.begin(), signal.end()}, -1);
        expected.resize(size / 2 + 1);
        const std::vector<float> actual = realFft(signal);
        ASSERT_EQ(actual.size(), 2 * expected.size());

        double terms = 0, squaredError = 0, squared = 0;
        for (const float sample : signal) terms += std::fabs(wide(sample));
        for (std::size_t k = 0; k < expected.size(); k++) {
            const Complex bin(wide(actual[2 * k]), wide(actual[2 * k + 1]));
            const double error = std::abs(bin - expected[k]);
            EXPECT_TRUE(error <= levels(size) * terms) << "bin " << k;
            squaredError += error * error;
            squared += std::norm(expected[k]);
        }
        // The same bound holds for the norm, where it is much sharper.
        EXPECT_TRUE(std::sqrt(squaredError / squared) <= levels(size))
            << std::sqrt(squaredError / squared);
    }
}

TEST(RealFft, ZerosGiveZeroBins) {
    for (const float value : realFft(std::vector<float>(4096))) EXPECT_EQ(value, 0.0f);
}

TEST(RealFft, ConstantGivesOnlyTheFirstBin) {
    for (const float c : {1.0f, -3.0f}) {
        const std::vector<float> bins = realFft(std::vector<float>(4096, c));
        EXPECT_EQ(bins[0], 4096 * c);
        for (std::size_t i = 1; i < bins.size(); i++) EXPECT_EQ(bins[i], 0.0f) << "float " << i;
    }
}

TEST(RealFft, AlternatingSignsGiveOnlyTheLastBin) {
    std::vector<float> signal(4096, 1.0f);
    for (std::size_t i = 1; i < signal.size(); i += 2) signal[i] = -1.0f;
    const std::vector<float> bins = realFft(signal);
    for (std::size_t i = 0; i < bins.size(); i++) {
        EXPECT_EQ(bins[i], i == 4096 ? 4096.0f : 0.0f) << "float " << i;
    }
}

TEST(RealFft, FirstAndLastBinAreReal) {
    for (unsigned seed = 1; seed <= 20; seed++) {
        const std::vector<float> bins = realFft(randomFloats(4096, seed));
        EXPECT_EQ(bitsOf(bins[4097]), 0u) << "seed " << seed;
        // The first bin's imaginary part is four terms of halves of z0's parts that cancel.
        EXPECT_TRUE(std::fabs(wide(bins[1])) <=
                    2 * Epsilon * (std::fabs(wide(bins[0])) + std::fabs(wide(bins[4096]))))
            << "seed " << seed;
    }
}

TEST(RealFft, CosineAndSineOfOneBinHaveTheForwardSign) {
    std::vector<float> signal(64);
    for (std::size_t n = 0; n < 64; n++) {
        const double angle = 2 * M_PI * 5 * static_cast<double>(n) / 64;
        signal[n] = static_cast<float>(std::cos(angle) + 2 * std::sin(angle));
    }
    const std::vector<float> bins = realFft(signal);
    // e^(-i...): a cosine of amplitude 1 gives size/2, a sine of amplitude 2 gives -i·size.
    const double limit = levels(64) * 64 * 3;
    EXPECT_TRUE(std::fabs(wide(bins[10]) - 32) <= limit);
    EXPECT_TRUE(std::fabs(wide(bins[11]) + 64) <= limit);
}

TEST(RealFft, LeavesItsInputAsItWas) {
    const SplitTables tables(128);
    const std::vector<float> signal = randomFloats(256, 9);
    GuardedFloats input(signal), work(258), result(258);
    voxloc_realFft(256, input.data(), nullptr, result.data(), 2, tables.a.data(), tables.b.data(),
                   work.data());
    EXPECT_EQ(firstDifference(input.data(), signal.data(), 256), 256u);
}

TEST(RealFft, IgnoresTwiddlesAndRadix) {
    const std::vector<float> signal = randomFloats(512, 10);
    const std::vector<float> expected = realFft(signal);
    GuardedFloats poison(512);
    std::vector<float> table(512);
    voxloc_generateTwiddleFactors(table.data(), 256);
    for (const float* twiddles : {poison.data(), table.data()}) {
        for (const int radix : {2, 4, 0, -1}) {
            const std::vector<float> actual = realFft(signal, twiddles, radix);
            EXPECT_EQ(firstDifference(actual.data(), expected.data(), expected.size()),
                      expected.size());
        }
    }
}

TEST(RealIfft, AgreesWithTheDoubleReference) {
    for (std::size_t size = 2; size <= 16384; size *= 2) {
        SCOPED_TRACE(size);
        std::vector<float> spectrum = randomFloats(size + 2, 600u + static_cast<unsigned>(size));
        spectrum[1] = 0;
        spectrum[size + 1] = 0;
        reference::Spectrum bins(size);
        for (std::size_t k = 0; k <= size / 2; k++) {
            bins[k] = {wide(spectrum[2 * k]), wide(spectrum[2 * k + 1])};
            if (k > 0 && k < size / 2) bins[size - k] = std::conj(bins[k]);
        }
        const reference::Spectrum expected = reference::fastDft(bins, 1);  // unscaled
        const std::vector<float> actual = realIfft(spectrum);

        double squaredError = 0, squared = 0;
        for (std::size_t n = 0; n < size; n++) {
            const double sample = expected[n].real() / static_cast<double>(size);
            const double error = wide(actual[n]) - sample;
            squaredError += error * error;
            squared += sample * sample;
        }
        EXPECT_TRUE(std::sqrt(squaredError / squared) <= levels(size))
            << std::sqrt(squaredError / squared);
    }
}

TEST(RealIfft, FlatSpectrumGivesOneImpulse) {
    std::vector<float> spectrum(16386);
    for (std::size_t k = 0; k <= 16384; k += 2) spectrum[k] = 1;
    const std::vector<float> signal = realIfft(spectrum);
    const double limit = levels(16384);
    EXPECT_TRUE(std::fabs(wide(signal[0]) - 1) <= limit);
    for (std::size_t n = 1; n < 16384; n++) EXPECT_TRUE(std::fabs(wide(signal[n])) <= limit) << n;
}

TEST(RealIfft, ReturnsTheInputOfTheForwardTransform) {
    for (std::size_t size = 2; size <= 16384; size *= 2) {
        SCOPED_TRACE(size);
        const std::vector<float> signal = randomFloats(size, 700u + static_cast<unsigned>(size));
        const std::vector<float> back = realIfft(realFft(signal));
        double squaredError = 0, squared = 0;
        for (std::size_t n = 0; n < size; n++) {
            const double error = wide(back[n]) - wide(signal[n]);
            squaredError += error * error;
            squared += wide(signal[n]) * wide(signal[n]);
        }
        EXPECT_TRUE(std::sqrt(squaredError / squared) <= 2 * levels(size));
    }
}

TEST(RealIfft, LeavesTheTwoFloatsBehindTheSamples) {
    std::vector<float> spectrum = randomFloats(66, 12);
    const std::vector<float> result = realIfft(spectrum);
    EXPECT_EQ(firstDifference(result.data() + 64, spectrum.data() + 64, 2), 2u);
}

TEST(RealIfft, IgnoresTwiddlesAndRadix) {
    const std::vector<float> spectrum = randomFloats(514, 13);
    const std::vector<float> expected = realIfft(spectrum);
    GuardedFloats poison(512);
    for (const int radix : {2, 4, 0, -1}) {
        const std::vector<float> actual = realIfft(spectrum, poison.data(), radix);
        EXPECT_EQ(firstDifference(actual.data(), expected.data(), expected.size()),
                  expected.size());
    }
}

TEST(ComplexTransform, ForwardIsUnscaledAndTheInverseUndoesIt) {
    GuardedFloats input(std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8}), spectrum(8), back(8);
    voxloc_fft(4, input.data(), nullptr, spectrum.data(), 2);
    const float expected[8] = {16, 20, -8, 0, -4, -4, 0, -8};  // of 1+2i, 3+4i, 5+6i, 7+8i
    for (std::size_t i = 0; i < 8; i++) EXPECT_EQ(spectrum[i], expected[i]) << i;

    voxloc_ifft(4, spectrum.data(), nullptr, back.data(), 2);
    for (std::size_t i = 0; i < 8; i++) EXPECT_EQ(back[i], input[i]) << i;
    EXPECT_TRUE(spectrum.intact());
    EXPECT_TRUE(back.intact());
}

TEST(FirFilter, IsTheLibrarysBlockFilter) {
    const std::vector<float> samples = randomFloats(7 + 5 - 1, 14), taps = randomFloats(5, 15);
    GuardedFloats input(samples), coefficients(taps), output(7), expected(7);
    voxloc_firFilter(input.data(), coefficients.data(), output.data(), 5, 7);
    sp_fir_gen(samples.data(), taps.data(), expected.data(), 5, 7);
    EXPECT_EQ(firstDifference(output.data(), expected.data(), 7), 7u);
    EXPECT_TRUE(output.intact());
}

TEST(FirFilter, AppliesItsCoefficientsInCorrelationOrder) {
    GuardedFloats input(std::vector<float>{1, 10, 100, 1000}), output(3);
    const float taps[2] = {2, 3};
    voxloc_firFilter(input.data(), taps, output.data(), 2, 3);
    EXPECT_EQ(output.content(), (std::vector<float>{32, 320, 3200}));
}

}  // namespace
