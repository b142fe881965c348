/** What the suites of the FFT share: both directions by name, data with fixed seeds. */
#ifndef VERIFY_UNIT_CFFT_TESTING_H
#define VERIFY_UNIT_CFFT_TESTING_H

#include <gtest/gtest.h>

#include <limits>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "kit/guardedFloats.h"
#include "kit/noise.h"
#include "models/doubleFft.h"

namespace cffttest {

using reference::GuardedFloats;
using reference::relativeRmsError;
using reference::Spectrum;

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

/** Half a unit in the last place of 1.0f */
constexpr double Rounding = 1.0 / (1 << 24);

/** The largest relative RMS error of any size, either direction */
constexpr double RmsLimit = 2.0e-7;

struct Transform {
    const char* name;
    int sign;  // of the exponent
    void (*run)(int, int, const float*, float*);
    void (*entry)(int, float*, const float*, float*, const unsigned char*, int, int, int);

    /** The exact scale of a transform of size n */
    double scale(int n) const { return sign < 0 ? 1.0 : 1.0 / n; }
};

constexpr Transform Forward = {"cfft_pow2_conjpair_splitrad_c89", -1,
                               cfft_pow2_conjpair_splitrad_c89, sp_fftSPxSP};
constexpr Transform Inverse = {"cifft_pow2_conjpair_splitrad_c89", +1,
                               cifft_pow2_conjpair_splitrad_c89, sp_ifftSPxSP};
constexpr const Transform* Both[] = {&Forward, &Inverse};

inline int log2Of(int n) {
    int bits = 0;
    while (1 << bits < n) ++bits;
    return bits;
}

inline std::size_t floatsOf(int n) {
    return 2 * static_cast<std::size_t>(n);
}

/** Complex noise, real and imaginary parts uniform in [-1, 1). */
inline GuardedFloats noise(int n, unsigned seed, std::size_t offset = 0) {
    return GuardedFloats(reference::noise(floatsOf(n), seed), offset);
}

inline Spectrum widened(const GuardedFloats& x) {
    Spectrum y(x.size() / 2);
    for (std::size_t k = 0; k < y.size(); ++k) {
        y[k] = {static_cast<double>(x[2 * k]), static_cast<double>(x[2 * k + 1])};
    }
    return y;
}

inline GuardedFloats transformed(const Transform& transform, int n, const GuardedFloats& x) {
    GuardedFloats y(floatsOf(n));
    transform.run(n, log2Of(n), x.data(), y.data());
    return y;
}

inline std::string directionOf(const testing::TestParamInfo<const Transform*>& its) {
    return its.param->sign < 0 ? "Forward" : "Inverse";
}

}  // namespace cffttest

#endif
