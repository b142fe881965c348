/** Real transforms in double precision, to judge the single-precision ones by. */
#ifndef VERIFY_TRACK_TRANSFORM_REFERENCE_H
#define VERIFY_TRACK_TRANSFORM_REFERENCE_H

#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

namespace transformReference {

using Complex = std::complex<double>;

/** e^(sign·2πi·k/size) for k = 0 to size-1. */
inline std::vector<Complex> unitRoots(std::size_t size, int sign) {
    std::vector<Complex> roots(size);
    for (std::size_t k = 0; k < size; k++) {
        const double angle = 2 * M_PI * static_cast<double>(k) / static_cast<double>(size);
        roots[k] = {std::cos(angle), sign * std::sin(angle)};
    }
    return roots;
}

/** Bins 0 to size/2 of a real signal's spectrum, unscaled, as the sum that defines them. */
inline std::vector<Complex> directForward(const std::vector<float>& signal) {
    const std::size_t size = signal.size();
    const std::vector<Complex> roots = unitRoots(size, -1);
    std::vector<Complex> bins(size / 2 + 1);
    for (std::size_t k = 0; k < bins.size(); k++) {
        for (std::size_t n = 0; n < size; n++) {
            bins[k] += static_cast<double>(signal[n]) * roots[k * n % size];
        }
    }
    return bins;
}

/** The real signal of `size` samples whose bins 0 to size/2 are given, scaled by 1/size. */
inline std::vector<double> directInverse(const std::vector<Complex>& bins, std::size_t size) {
    const std::vector<Complex> roots = unitRoots(size, 1);
    std::vector<double> signal(size);
    for (std::size_t n = 0; n < size; n++) {
        double sum = bins[0].real() + bins[size / 2].real() * (n % 2 == 0 ? 1 : -1);
        for (std::size_t k = 1; k < size / 2; k++)
            sum += 2 * (bins[k] * roots[k * n % size]).real();
        signal[n] = sum / static_cast<double>(size);
    }
    return signal;
}

/** Radix-2 transform of count values `stride` apart; roots are those of the whole transform. */
inline void radix2(const Complex* in, Complex* out, std::size_t count, std::size_t stride,
                   const std::vector<Complex>& roots) {
    if (count == 1) {
        out[0] = in[0];
        return;
    }
    const std::size_t half = count / 2;
    radix2(in, out, half, 2 * stride, roots);
    radix2(in + stride, out + half, half, 2 * stride, roots);
    for (std::size_t k = 0; k < half; k++) {
        const Complex turned = roots[k * stride] * out[half + k];
        out[half + k] = out[k] - turned;
        out[k] += turned;
    }
}

/** What directInverse returns, in n·log n operations; size is a power of two. */
inline std::vector<double> fastInverse(const std::vector<Complex>& bins, std::size_t size) {
    std::vector<Complex> spectrum(size), result(size);
    for (std::size_t k = 0; k <= size / 2; k++) {
        spectrum[k] = bins[k];
        if (k > 0 && k < size / 2) spectrum[size - k] = std::conj(bins[k]);
    }
    radix2(spectrum.data(), result.data(), size, 1, unitRoots(size, 1));
    std::vector<double> signal(size);
    for (std::size_t n = 0; n < size; n++) signal[n] = result[n].real() / static_cast<double>(size);
    return signal;
}

}  // namespace transformReference

#endif
