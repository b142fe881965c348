// The fast double-precision reference against the defining sum.

#include <gtest/gtest.h>

#include "cfft_testing.h"

namespace {

using namespace cffttest;

constexpr double DoubleLimit = 1e-14;

TEST(Reference, FastTransformIsTheDirectOneUpTo2048) {
    for (int n = 1; n <= 2048; n *= 2) {
        const Spectrum x = widened(noise(n, 7u + static_cast<unsigned>(n)));
        for (const int sign : {-1, 1}) {
            const double error = reference::relativeRmsError(reference::fastDft(x, sign),
                                                             reference::directDft(x, sign));
            EXPECT_LE(error, DoubleLimit) << n << " " << sign;
        }
    }
}

TEST(Reference, FastTransformIsTheDirectOneAtChosenBinsAbove) {
    for (const int n : {4096, 8192}) {
        const Spectrum x = widened(noise(n, 11u));
        double norm = 0.0;
        for (const auto& sample : x) norm += std::norm(sample);
        for (const int sign : {-1, 1}) {
            const Spectrum roots = reference::rootsOfUnity(x.size(), sign);
            const Spectrum fast = reference::fastDft(x, sign);
            for (std::size_t k = 0; k < x.size(); k += 61) {
                const double error = std::abs(fast[k] - reference::directBin(x, roots, k));
                EXPECT_LE(error, DoubleLimit * std::sqrt(norm)) << n << " " << sign << " " << k;
            }
        }
    }
}

}  // namespace
