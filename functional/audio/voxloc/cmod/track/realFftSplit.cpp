#include "realFftSplit.h"

#include "dsplib/simd/simdLanes.h"

namespace voxloc {

namespace {

enum class Direction { Forward, Inverse };

/** Real and imaginary parts of L points. */
template <int L>
struct Points {
    simd::F32<L> re, im;
};

template <int L>
Points<L> loadPoints(const float* from) {
    const auto points = simd::Lanes<L>::loadPairs(from);
    return {points.first, points.second};
}

/** The L points that end with the one at `last`, last first. */
template <int L>
Points<L> loadPointsBackwards(const float* last) {
    const Points<L> forwards = loadPoints<L>(last - 2 * (L - 1));
    return {simd::reversed(forwards.re), simd::reversed(forwards.im)};
}

/** Z·A + conj(Y)·B forward, Z·conj(A) + conj(Y)·conj(B) inverse; summed from left to right. */
template <Direction D, int L>
Points<L> splitPoints(Points<L> z, Points<L> y, Points<L> a, Points<L> b) {
    const simd::F32<L> re = simd::mul(z.re, a.re), im = simd::mul(z.im, a.re);
    if constexpr (D == Direction::Forward) {
        return {simd::mulAdd(simd::mulAdd(simd::mulSub(re, z.im, a.im), y.re, b.re), y.im, b.im),
                simd::mulSub(simd::mulAdd(simd::mulAdd(im, z.re, a.im), y.re, b.im), y.im, b.re)};
    } else {
        return {simd::mulSub(simd::mulAdd(simd::mulAdd(re, z.im, a.im), y.re, b.re), y.im, b.im),
                simd::mulSub(simd::mulSub(simd::mulSub(im, z.re, a.im), y.re, b.im), y.im, b.re)};
    }
}

/**
 * Points 0 to n-1. A step of L from k on reads the points k to k+L-1 of x and of both tables and,
 * backwards, the points n-k to n-k-L+1 of x: never past the n+1 points that x has.
 */
template <Direction D>
void split(int n, const float* x, const float* aTable, const float* bTable, float* out) {
    simd::forLanes(0, n, [=](int k, auto width) {
        constexpr int L = decltype(width)::value;
        const Points<L> g =
            splitPoints<D, L>(loadPoints<L>(x + 2 * k), loadPointsBackwards<L>(x + 2 * (n - k)),
                              loadPoints<L>(aTable + 2 * k), loadPoints<L>(bTable + 2 * k));
        simd::storePairs(out + 2 * k, g.re, g.im);
    });
}

}  // namespace

// A split is a pass over memory of its own. Points k and n-k, which it needs together, leave the
// forward transform's last pass at different times; and the inverse transform writes over the very
// spectrum that the split reads, so that the split has to be through before.

void SP_SIMD_HERE::splitFft(int n, float* x, const float* aTable, const float* bTable, float* out) {
    x[2 * n] = x[0];
    x[2 * n + 1] = x[1];
    split<Direction::Forward>(n, x, aTable, bTable, out);
    out[2 * n] = x[0] - x[1];
    out[2 * n + 1] = 0.0f;
}

void SP_SIMD_HERE::splitIfft(int n, const float* x, const float* aTable, const float* bTable,
                             float* out) {
    split<Direction::Inverse>(n, x, aTable, bTable, out);
}

}  // namespace voxloc
