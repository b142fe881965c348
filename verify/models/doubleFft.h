/** Discrete Fourier transforms in double precision: what the library and the tracker are held to.
 */
#ifndef VERIFY_MODELS_DOUBLE_FFT_H
#define VERIFY_MODELS_DOUBLE_FFT_H

#include <cmath>
#include <complex>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace reference {

using Spectrum = std::vector<std::complex<double>>;

/**
 * e^(sign·2πi·k/n), k < n; the angle is exact and the functions long double, then one rounding.
 * Kept from call to call: a run of the tracker's model transforms thousands of times.
 */
inline const Spectrum& rootsOfUnity(std::size_t n, int sign) {
    constexpr long double TwoPi = 6.283185307179586476925286766559005768L;
    static std::map<std::pair<std::size_t, int>, Spectrum> known;
    Spectrum& roots = known[{n, sign}];
    for (std::size_t k = roots.size(); k < n; ++k) {
        const long double angle = TwoPi * static_cast<long double>(k) / static_cast<long double>(n);
        roots.emplace_back(static_cast<double>(std::cos(angle)),
                           static_cast<double>(sign * std::sin(angle)));
    }
    return roots;
}

/** Bin k of the unscaled transform by the defining sum; sign -1 is forward. */
inline std::complex<double> directBin(const Spectrum& x, int sign, std::size_t k) {
    const Spectrum& roots = rootsOfUnity(x.size(), sign);
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < x.size(); ++n) sum += x[n] * roots[n * k % x.size()];
    return sum;
}

/** The unscaled transform by the defining sum. */
inline Spectrum directDft(const Spectrum& x, int sign) {
    Spectrum y(x.size());
    for (std::size_t k = 0; k < x.size(); ++k) y[k] = directBin(x, sign, k);
    return y;
}

/** The unscaled transform of a power-of-two size: plain radix-2 decimation in time. */
inline Spectrum fastDft(Spectrum x, int sign) {
    const std::size_t size = x.size();
    for (std::size_t i = 1, j = 0; i < size; ++i) {
        std::size_t bit = size / 2;
        for (; (j & bit) != 0; bit /= 2) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(x[i], x[j]);
    }
    const Spectrum& roots = rootsOfUnity(size, sign);
    for (std::size_t half = 1; half < size; half *= 2) {
        const std::size_t step = size / (2 * half);
        for (std::size_t start = 0; start < size; start += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                const std::complex<double> a = x[start + k], c = x[start + k + half];
                const std::complex<double> r = roots[k * step];
                const std::complex<double> b(c.real() * r.real() - c.imag() * r.imag(),
                                             c.real() * r.imag() + c.imag() * r.real());
                x[start + k] = a + b;
                x[start + k + half] = a - b;
            }
        }
    }
    return x;
}

/** Bins 0 to size/2 of a real signal. */
inline Spectrum realSpectrum(const std::vector<double>& signal) {
    Spectrum bins = fastDft({signal.begin(), signal.end()}, -1);
    bins.resize(signal.size() / 2 + 1);
    return bins;
}

/** The real signal of `size` samples whose bins from 0 on are given; the others are 0. */
inline std::vector<double> realSignal(const Spectrum& bins, std::size_t size) {
    Spectrum x(size);
    for (std::size_t k = 0; k < bins.size() && k <= size / 2; ++k) {
        x[k] = bins[k];
        if (k > 0 && k < size / 2) x[size - k] = std::conj(bins[k]);
    }
    x = fastDft(std::move(x), +1);
    std::vector<double> signal(size);
    for (std::size_t i = 0; i < size; ++i) signal[i] = x[i].real() / static_cast<double>(size);
    return signal;
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
