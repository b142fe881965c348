/**
 * The complex FFT of 1 to 16 elements: written out, no tables. For the public interface alone: a
 * frame of the tracker transforms 2048 and 8192.
 */
#ifndef DSPLIB_CFFT_SMALL_H
#define DSPLIB_CFFT_SMALL_H

#include "cfft_leaves.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

/** cos π/8 and sin π/8 rounded to single precision: 0x3f6c835e, 0x3ec3ef15 */
constexpr float CosPi8 = 0.92387953f;
constexpr float SinPi8 = 0.38268343f;

using Element = Split<1>;

inline Element load(const float* x, int n) {
    return {x[2 * n], x[2 * n + 1]};
}

inline void store(float* y, int k, Element z) {
    y[2 * k] = z.re;
    y[2 * k + 1] = z.im;
}

template <Direction D>
inline void transform2(const float* x, float* y) {
    constexpr float Scale = scaleOf<D>(2);
    const Element x0 = load(x, 0), x1 = load(x, 1);
    store(y, 0, scaledSum<D>(x0 + x1, Scale));
    store(y, 1, scaledSum<D>(x0 - x1, Scale));
}

// From here on two elements share a vector of four lanes, on every machine.

using Pair = Interleaved<4>;

inline Pair loadPair(const float* x, int n) {
    return {simd::load4(x + 2 * n)};
}

inline void storePair(float* y, int k, Pair z) {
    simd::store4(y + 2 * k, z.lanes);
}

inline Pair lowHalves(Pair a, Pair b) {
    return {simd::lowHalves(a.lanes, b.lanes)};
}

inline Pair highHalves(Pair a, Pair b) {
    return {simd::highHalves(a.lanes, b.lanes)};
}

inline Pair negateSecond(Pair z) {
    return {simd::negateHighHalf(z.lanes)};
}

/** (a, a, b, b) */
inline simd::F32x4 eachTwice(float a, float b) {
    const float lanes[4] = {a, a, b, b};
    return simd::load4(lanes);
}

/** Each element by a real factor of its own. */
inline Pair timesReal(Pair z, float first, float second) {
    return {simd::mul(z.lanes, eachTwice(first, second))};
}

/** cos and sin of both elements' twiddles, each twice. */
template <>
struct Twiddle<Pair> {
    simd::F32x4 cosine, sine;
};

inline Twiddle<Pair> twiddles(float cosine0, float sine0, float cosine1, float sine1) {
    return {eachTwice(cosine0, cosine1), eachTwice(sine0, sine1)};
}

/** z·w, or z·conj(w) where Sign is -1 */
template <int Sign>
inline Pair timesTwiddle(Pair z, Twiddle<Pair> w) {
    return {addProduct<-Sign, 4>(simd::mul(z.lanes, w.cosine), timesMinusI(z).lanes, w.sine)};
}

template <Direction D>
inline void transform4(const float* x, float* y) {
    constexpr float Scale = scaleOf<D>(4);
    const Pair x01 = loadPair(x, 0), x23 = loadPair(x, 2);
    const Pair sum = x01 + x23, difference = x01 - x23;
    const Pair turns = highHalves(sum, timesMinusI(difference));
    const Pair odd = D == Direction::Forward ? turns : negateSecond(turns);
    const Pair even = lowHalves(sum, difference);
    storePair(y, 0, scaledSum<D>(even + odd, Scale));
    storePair(y, 2, scaledSum<D>(even - odd, Scale));
}

template <Direction D>
inline void transform8(const float* x, float* y) {
    constexpr int Sign = KernelSign<D>;
    constexpr float Scale = scaleOf<D>(8), Factor = Scale * SqrtHalf;
    const Pair x01 = loadPair(x, 0), x23 = loadPair(x, 2), x45 = loadPair(x, 4);
    const Pair x67 = loadPair(x, 6);

    // The operations of transformLeaf(): the halves of a pair are its a and its b.
    const Pair ab0 = x01 + x45, ab1 = x01 - x45, ab2 = x23 + x67, ab3 = x23 - x67;
    const Pair sum = scaledSum<D>(ab0 + ab2, Scale);         // even0, odd0
    const Pair difference = scaledSum<D>(ab0 - ab2, Scale);  // even2, odd2
    const Pair even1 = scaledSum<D>(addTimesI<Sign>(ab1, ab3), Scale);
    const Pair even3 = scaledSum<D>(addTimesI<-Sign>(ab1, ab3), Scale);
    const Pair u = ab1 - ab3, v = ab1 + ab3;
    const Pair turned1 = addTimesI<Sign>(u, v), turned3 = addTimesI<-Sign>(u, v);

    const Pair evens01 = lowHalves(sum, even1), evens23 = lowHalves(difference, even3);
    const Pair odds01 = timesReal(highHalves(sum, turned1), 1.0f, Factor);
    const Pair odds23 =
        timesReal(highHalves(timesMinusI(difference), turned3), float{-Sign}, -Factor);
    storePair(y, 0, evens01 + odds01);
    storePair(y, 2, evens23 + odds23);
    storePair(y, 4, evens01 - odds01);
    storePair(y, 6, evens23 - odds23);
}

/** Outputs k and k+8 of 16 points for both halves of a pair. */
struct Halves16 {
    Pair first, second;
};

/** From z0 and z1, each an even and an odd output of 8 points; the odd ones turn by w. */
template <Direction D>
inline Halves16 joinTurned(Pair z0, Pair z1, Twiddle<Pair> w) {
    const Pair even = lowHalves(z0, z1);
    const Pair odd = timesTwiddle<KernelSign<D>>(highHalves(z0, z1), w);
    return {even + odd, even - odd};
}

/** The same for outputs 0 and 4: by nothing, and by a quarter. */
template <Direction D>
inline Halves16 joinQuarter(Pair z0, Pair z4) {
    // Nothing but the turned one gets a zero added, and that turns its -0 to +0 as a product would.
    const Pair zero = {simd::negateHighHalf(simd::splat4(-0.0f))};
    const Pair turns = {highHalves(z0, timesMinusI(z4)).lanes};
    const Pair odd = zero + (D == Direction::Forward ? turns : negateSecond(turns));
    const Pair even = lowHalves(z0, z4);
    return {even + odd, even - odd};
}

/** Stores k, k+1, k+4 and k+5, of which joins give k and k+4, k+1 and k+5. */
inline void storeFour(float* y, int k, Pair z0, Pair z1) {
    storePair(y, k, lowHalves(z0, z1));
    storePair(y, k + 4, highHalves(z0, z1));
}

template <Direction D>
inline void transform16(const float* x, float* y) {
    // Both 8-point transforms side by side: every pair is an even and an odd element.
    const Leaf<Pair> z =
        transformLeaf<D, Pair>({loadPair(x, 0), loadPair(x, 2), loadPair(x, 4), loadPair(x, 6),
                                loadPair(x, 8), loadPair(x, 10), loadPair(x, 12), loadPair(x, 14)},
                               scaleOf<D>(16));
    const Halves16 at04 = joinQuarter<D>(z.x0, z.x4);
    const Halves16 at15 = joinTurned<D>(z.x1, z.x5, twiddles(CosPi8, SinPi8, -SinPi8, CosPi8));
    const Halves16 at26 =
        joinTurned<D>(z.x2, z.x6, twiddles(SqrtHalf, SqrtHalf, -SqrtHalf, SqrtHalf));
    const Halves16 at37 = joinTurned<D>(z.x3, z.x7, twiddles(SinPi8, CosPi8, -CosPi8, SinPi8));
    storeFour(y, 0, at04.first, at15.first);
    storeFour(y, 2, at26.first, at37.first);
    storeFour(y, 8, at04.second, at15.second);
    storeFour(y, 10, at26.second, at37.second);
}

/** N = 1, 2, 4, 8 or 16. */
template <Direction D>
inline void transformSmall(int N, const float* x, float* y) {
    switch (N) {
        case 1:
            return store(y, 0, load(x, 0));
        case 2:
            return transform2<D>(x, y);
        case 4:
            return transform4<D>(x, y);
        case 8:
            return transform8<D>(x, y);
        default:
            return transform16<D>(x, y);
    }
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
