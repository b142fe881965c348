// The transforms on values of any bits: nothing outside the buffers is touched, the ends are those
// of the whole inverse transform, and where nothing can overflow results agree with a transform in
// double precision.

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "fuzz.h"
#include "models/doubleFft.h"
#include "voxloc/voxlocParts.h"

namespace {

using Floats = std::vector<float>;

constexpr int LargestLogarithm = 13;
constexpr std::size_t DrawnFloats = 256;

/** Whether all sums and products of the transform lie well within what floats hold. */
bool areOrdinary(const Floats& values) {
    return std::all_of(values.begin(), values.end(), [](float value) {
        const float magnitude = std::abs(value);
        return value == 0.0f || (magnitude > 1e-15f && magnitude < 1e15f);
    });
}

reference::Spectrum inDouble(const Floats& values) {
    reference::Spectrum complex;
    for (std::size_t i = 0; i + 1 < values.size(); i += 2) {
        complex.emplace_back(static_cast<double>(values[i]), static_cast<double>(values[i + 1]));
    }
    return complex;
}

/**
 * Each level turns by a rounded twiddle and adds: 2.2 units of 2^-23 of the terms at most. The
 * bound is one of norms.
 */
void demandNear(const Floats& found, const reference::Spectrum& expected, int levels,
                const char* what) {
    double error = 0.0, power = 0.0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        error += std::norm(inDouble({found[2 * k], found[2 * k + 1]})[0] - expected[k]);
        power += std::norm(expected[k]);
    }
    demand(std::sqrt(error) <= 2.2 * levels * 0x1p-23 * std::sqrt(power), what);
}

void transform(InputReader& input) {
    const int logarithm = input.below(LargestLogarithm + 1), size = 1 << logarithm;
    const bool isInverse = input.below(2) == 1;
    const auto floats = static_cast<std::size_t>(2 * size);
    const Floats x = input.floats(floats, DrawnFloats);
    Floats y(floats);
    (isInverse ? cifft_pow2_conjpair_splitrad_c89 : cfft_pow2_conjpair_splitrad_c89)(
        size, logarithm, x.data(), y.data());
    if (!areOrdinary(x)) return;
    reference::Spectrum expected = reference::fastDft(inDouble(x), isInverse ? 1 : -1);
    if (isInverse) {
        for (auto& value : expected) value /= size;
    }
    demandNear(y, expected, logarithm + 1, "a transform");
}

void transformEnds(InputReader& input) {
    const int wanted = input.below(SP_IFFT_ENDS_MOST_WANTED) + 1;
    Floats x = input.floats(2 * FFT_MAX, DrawnFloats), y(x.size()), whole(x.size());
    std::fill(x.begin() + 2 * SP_IFFT_ENDS_USED, x.end() - 2 * SP_IFFT_ENDS_USED, 0.0f);
    sp_ifft_ends(x.data(), y.data(), wanted);
    cifft_pow2_conjpair_splitrad_c89(FFT_MAX, LargestLogarithm, x.data(), whole.data());
    const auto ends = static_cast<std::size_t>(2 * wanted);
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (i == ends) i = x.size() - ends;
        demand(y[i] == whole[i] || std::isnan(y[i]) || std::isnan(whole[i]),
               "the ends are those of the whole transform");
        demand(std::isnan(y[i]) == std::isnan(whole[i]) || !areOrdinary(x), "and are numbers");
    }
}

void transformReal(InputReader& input) {
    const int half = 1 << input.below(LargestLogarithm + 1), size = 2 * half;
    const auto floats = static_cast<std::size_t>(size);
    Floats a(floats), b(floats), work(floats + 2), bins(floats + 2), scratch(floats);
    voxloc_generateAbTables(a.data(), b.data(), half);
    Floats x = input.floats(floats, DrawnFloats);
    voxloc_realFft(size, x.data(), nullptr, bins.data(), 2, a.data(), b.data(), work.data());
    const bool isOrdinary = areOrdinary(x);
    const Floats spectrum = bins;
    voxloc_realIfft(size, bins.data(), nullptr, scratch.data(), 2, a.data(), b.data());
    if (!isOrdinary) return;
    const int levels = static_cast<int>(std::log2(size)) + 1;
    demandNear(spectrum, reference::realSpectrum({x.begin(), x.end()}), 2 * levels,
               "a real transform");
    demandNear(bins, inDouble(x), 4 * levels, "a real transform there and back");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const int what = input.below(4);
    if (what < 2) transform(input);
    if (what == 2) transformEnds(input);
    if (what == 3) transformReal(input);
    return 0;
}
