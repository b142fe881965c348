/** Discrete Fourier transforms in double precision to judge the library's by. */
#ifndef VERIFY_REFERENCE_REFERENCE_DFT_H
#define VERIFY_REFERENCE_REFERENCE_DFT_H

#include <cmath>
#include <complex>
#include <cstddef>
#include <utility>
#include <vector>

namespace reference {

using Spectrum = std::vector<std::complex<double>>;

/** e^(sign·2πi·k/n), k < n; the angle is exact and the functions long double, then one rounding. */
inline Spectrum rootsOfUnity(std::size_t n, int sign) {
    constexpr long double TwoPi = 6.283185307179586476925286766559005768L;
    Spectrum roots(n);
    for (std::size_t k = 0; k < n; ++k) {
        const long double angle = TwoPi * static_cast<long double>(k) / static_cast<long double>(n);
        roots[k] = {static_cast<double>(std::cos(angle)),
                    static_cast<double>(sign * std::sin(angle))};
    }
    return roots;
}

/** One output of the unscaled transform by the defining sum; sign -1 is forward. */
inline std::complex<double> directBin(const Spectrum& x, const Spectrum& roots, std::size_t k) {
    std::complex<double> sum = 0.0;
    std::size_t phase = 0;
    for (std::size_t n = 0; n < x.size(); ++n) {
        sum += x[n] * roots[phase];
        phase = (phase + k) % x.size();
    }
    return sum;
}

/** The unscaled transform by the defining sum. */
inline Spectrum directDft(const Spectrum& x, int sign) {
    const Spectrum roots = rootsOfUnity(x.size(), sign);
    Spectrum y(x.size());
    for (std::size_t k = 0; k < x.size(); ++k) y[k] = directBin(x, roots, k);
    return y;
}

/** The unscaled transform of a power-of-two size: plain radix-2 decimation in time. */
inline Spectrum fastDft(const Spectrum& x, int sign) {
    const std::size_t n = x.size();
    Spectrum y(n);
    for (std::size_t i = 0, reversed = 0; i < n; ++i) {
        y[reversed] = x[i];
        std::size_t bit = n / 2;
        for (; bit > 0 && (reversed & bit) != 0; bit /= 2) reversed ^= bit;
        reversed |= bit;
    }
    const Spectrum roots = rootsOfUnity(n, sign);
    for (std::size_t half = 1; half < n; half *= 2) {
        for (std::size_t start = 0; start < n; start += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                const std::complex<double> a = y[start + k];
                const std::complex<double> b = y[start + k + half] * roots[k * (n / (2 * half))];
                y[start + k] = a + b;
                y[start + k + half] = a - b;
            }
        }
    }
    return y;
}

/** Root of the summed squared differences over that of the summed squares of `expected`. */
inline double relativeRmsError(const Spectrum& actual, const Spectrum& expected) {
    double error = 0.0, power = 0.0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        error += std::norm(actual[k] - expected[k]);
        power += std::norm(expected[k]);
    }
    return std::sqrt(error / power);
}

}  // namespace reference

#endif
