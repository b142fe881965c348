#include "phaseTransform.h"

#include "clearBins.h"
#include "dsplib/simd/simdLanes.h"
#include "voxlocParts.h"

namespace voxloc {

namespace {

constexpr float SmallestMagnitude2 = 1e-14f;  // squared; below it a bin has no phase
constexpr int Points = CorrelationLags / 2;   // of the complex spectrum

static_assert(Points == FFT_MAX, "the library's transform of the ends has one size");

/** The whitened values of as many bins as Lanes has lanes. */
template <class Lanes>
inline typename Lanes::Pairs phaseAt(const float* bins) {
    const auto value = Lanes::loadPairs(bins);
    const auto power =
        simd::add(simd::mul(value.first, value.first), simd::mul(value.second, value.second));
    const auto magnitude = simd::squareRoot(power);
    const auto smallest = Lanes::splat(SmallestMagnitude2), zero = Lanes::splat(0.0f);
    return {simd::selectLess(smallest, power, simd::div(value.first, magnitude), zero),
            simd::selectLess(smallest, power, simd::div(value.second, magnitude), zero)};
}

}  // namespace

void SP_SIMD_HERE::whitenAndSplit(const float* crossSpectrum, int begin, int end,
                                  const float* aTable, const float* bTable, float* out) {
    clearBins(out, 0, begin);
    clearBins(out, end, MaxBinsInUse);
    clearBins(out, Points - MaxBinsInUse, Points - end + 1);
    clearBins(out, Points - begin + 1, Points);
    // G(k) = X(k)·conj(A(k)) + conj(X(n-k))·conj(B(k)): of the two products one is always zero.
    simd::forLanes(begin, end, [=](int k, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto zero = Lanes::splat(0.0f);
        const auto x = phaseAt<Lanes>(crossSpectrum + 2 * k);

        const auto a = Lanes::loadPairs(aTable + 2 * k);
        simd::storePairs(out + 2 * k,
                         simd::add(simd::mul(x.first, a.first), simd::mul(x.second, a.second)),
                         simd::sub(simd::mul(x.second, a.first), simd::mul(x.first, a.second)));

        const int mirrored = 2 * (Points - k - width + 1);  // these lanes' values, last one first
        const auto b = Lanes::loadPairs(bTable + mirrored);
        const auto br = simd::reversed(b.first), bi = simd::reversed(b.second);
        const auto re = simd::sub(simd::mul(x.first, br), simd::mul(x.second, bi));
        const auto im = simd::sub(simd::sub(zero, simd::mul(x.first, bi)), simd::mul(x.second, br));
        simd::storePairs(out + mirrored, simd::reversed(re), simd::reversed(im));
    });
}

void SP_SIMD_HERE::correlate(const float* crossSpectrum, int begin, int end, int lags,
                             const float* aTable, const float* bTable, float* scratch,
                             float* correlation) {
    whitenAndSplit(crossSpectrum, begin, end, aTable, bTable, scratch);
    if (lags <= NearLags) {
        sp_ifft_ends(scratch, correlation, lags / 2);  // two lags an element
    } else {
        clearBins(scratch, MaxBinsInUse, Points - MaxBinsInUse);
        voxloc_ifft(Points, scratch, nullptr, correlation, 0);
    }
}

}  // namespace voxloc
