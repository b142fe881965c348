/** Transforms of real signals in double precision, fast enough to run a whole tracker on. */
#ifndef VERIFY_REFERENCE_DOUBLE_FFT_H
#define VERIFY_REFERENCE_DOUBLE_FFT_H

#include <complex>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "referenceDft.h"

namespace reference {

/** The roots of unity of a size, kept: a run of the tracker's model transforms thousands of times.
 */
inline const Spectrum& keptRoots(std::size_t size, int sign) {
    static std::map<std::pair<std::size_t, int>, Spectrum> known;
    Spectrum& roots = known[{size, sign}];
    if (roots.empty()) roots = rootsOfUnity(size, sign);
    return roots;
}

/** In place; the size is a power of two. sign -1: forward, +1: inverse. Not scaled. */
inline void transform(Spectrum& x, int sign) {
    const std::size_t size = x.size();
    for (std::size_t i = 1, j = 0; i < size; ++i) {
        std::size_t bit = size / 2;
        for (; (j & bit) != 0; bit /= 2) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(x[i], x[j]);
    }
    const Spectrum& roots = keptRoots(size, sign);
    for (std::size_t half = 1; half < size; half *= 2) {
        const std::size_t step = size / (2 * half);
        for (std::size_t start = 0; start < size; start += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                const std::complex<double> a = x[start + k];
                const std::complex<double> r = roots[k * step];
                const std::complex<double> c = x[start + k + half];
                const std::complex<double> b(c.real() * r.real() - c.imag() * r.imag(),
                                             c.real() * r.imag() + c.imag() * r.real());
                x[start + k] = a + b;
                x[start + k + half] = a - b;
            }
        }
    }
}

/** Bins 0 to size/2 of a real signal. */
inline Spectrum realSpectrum(const std::vector<double>& signal) {
    Spectrum x(signal.begin(), signal.end());
    transform(x, -1);
    x.resize(signal.size() / 2 + 1);
    return x;
}

/** The real signal of `size` samples whose bins from 0 on are given; the others are 0. */
inline std::vector<double> realSignal(const Spectrum& bins, std::size_t size) {
    Spectrum x(size);
    for (std::size_t k = 0; k < bins.size() && k <= size / 2; ++k) {
        x[k] = bins[k];
        if (k > 0 && k < size / 2) x[size - k] = std::conj(bins[k]);
    }
    transform(x, +1);
    std::vector<double> signal(size);
    for (std::size_t i = 0; i < size; ++i) signal[i] = x[i].real() / static_cast<double>(size);
    return signal;
}

}  // namespace reference

#endif
