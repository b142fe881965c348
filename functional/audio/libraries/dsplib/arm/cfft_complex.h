/**
 * Vectors of complex numbers for the FFT, in the three arrangements that its passes use.
 *
 * A caller's buffers are interleaved: re, im, re, im, … While a transform runs, the output buffer
 * holds blocks, two elements in four floats: (re k, re k+1, im k, im k+1).
 *
 *   Split<L>        L elements, real and imaginary parts in vectors of their own: no lane ever
 *                   moves, but twice the registers. Two lanes for 32-bit ARM, one for small sizes.
 *   Block<L>        L/2 elements as the blocks in memory have them
 *   Interleaved<L>  L/2 elements as the caller's buffers have them
 *
 * The passes are written once for all of them. Each operation does the same roundings in the same
 * order in every arrangement: a + (-b) and a - b are the same number.
 */
#ifndef DSPLIB_CFFT_COMPLEX_H
#define DSPLIB_CFFT_COMPLEX_H

#include "dsplib/simd/simdLanes.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

enum class Direction { Forward, Inverse };

/** The sign of i in the transform's kernel e^(±2πi·nk/N), and so of all that turns with it. */
template <Direction D>
constexpr int KernelSign = D == Direction::Forward ? -1 : 1;

/** sum + Sign·a·b; Sign is 1 or -1, here and below */
template <int Sign, int L>
inline simd::F32<L> addProduct(simd::F32<L> sum, simd::F32<L> a, simd::F32<L> b) {
    static_assert(Sign == 1 || Sign == -1);
    return Sign > 0 ? simd::mulAdd(sum, a, b) : simd::mulSub(sum, a, b);
}

template <int L>
struct Split {
    static constexpr int Elements = L;
    simd::F32<L> re, im;
};

template <int L>
struct Block {
    static constexpr int Elements = L / 2;
    simd::F32<L> lanes;
};

template <int L>
struct Interleaved {
    static constexpr int Elements = L / 2;
    simd::F32<L> lanes;
};

// Sums and differences

template <int L>
inline Split<L> operator+(Split<L> a, Split<L> b) {
    return {simd::add(a.re, b.re), simd::add(a.im, b.im)};
}

template <int L>
inline Split<L> operator-(Split<L> a, Split<L> b) {
    return {simd::sub(a.re, b.re), simd::sub(a.im, b.im)};
}

template <template <int> class Arranged, int L>
inline Arranged<L> operator+(Arranged<L> a, Arranged<L> b) {
    return {simd::add(a.lanes, b.lanes)};
}

template <template <int> class Arranged, int L>
inline Arranged<L> operator-(Arranged<L> a, Arranged<L> b) {
    return {simd::sub(a.lanes, b.lanes)};
}

// Real factors

template <int L>
inline Split<L> scaled(Split<L> a, float factor) {
    const simd::F32<L> f = simd::Lanes<L>::splat(factor);
    return {simd::mul(a.re, f), simd::mul(a.im, f)};
}

template <int L>
inline Interleaved<L> scaled(Interleaved<L> a, float factor) {
    return {simd::mul(a.lanes, simd::Lanes<L>::splat(factor))};
}

/** a + Sign·factor·b */
template <int Sign, int L>
inline Split<L> addScaled(Split<L> a, Split<L> b, float factor) {
    const simd::F32<L> f = simd::Lanes<L>::splat(factor);
    return {addProduct<Sign, L>(a.re, b.re, f), addProduct<Sign, L>(a.im, b.im, f)};
}

template <int Sign, int L>
inline Interleaved<L> addScaled(Interleaved<L> a, Interleaved<L> b, float factor) {
    return {addProduct<Sign, L>(a.lanes, b.lanes, simd::Lanes<L>::splat(factor))};
}

// Quarter turns. An arrangement that keeps both parts in one vector turns by -i and then adds or
// subtracts.

template <int L>
inline Block<L> timesMinusI(Block<L> b) {
    return {simd::negateHighHalf(simd::swapHalves(b.lanes))};
}

template <int L>
inline Interleaved<L> timesMinusI(Interleaved<L> b) {
    return {simd::negateOddLanes(simd::swapPairs(b.lanes))};
}

/** a + Sign·i·b */
template <int Sign, class Z>
inline Z addTimesI(Z a, Z b) {
    return Sign < 0 ? a + timesMinusI(b) : a - timesMinusI(b);
}

template <int Sign, int L>
inline Split<L> addTimesI(Split<L> a, Split<L> b) {
    if constexpr (Sign < 0) {
        return {simd::add(a.re, b.im), simd::sub(a.im, b.re)};
    } else {
        return {simd::sub(a.re, b.im), simd::add(a.im, b.re)};
    }
}

// Twiddles w = cos + i·sin and products with them

template <class Z>
struct Twiddle;

template <int L>
struct Twiddle<Split<L>> {
    simd::F32<L> cosine, sine;
};

/** Both halves of each group of four lanes hold the same. */
template <int L>
struct Twiddle<Block<L>> {
    simd::F32<L> cosine, sine;
};

/** a·cos + Sign·i·b·sin: for a = b, their product with w or, where Sign is -1, with conj(w) */
template <int Sign, int L>
inline Split<L> timesTwiddle(Split<L> a, Split<L> b, Twiddle<Split<L>> w) {
    return {addProduct<-Sign, L>(simd::mul(a.re, w.cosine), b.im, w.sine),
            addProduct<Sign, L>(simd::mul(a.im, w.cosine), b.re, w.sine)};
}

template <int Sign, int L>
inline Block<L> timesTwiddle(Block<L> a, Block<L> b, Twiddle<Block<L>> w) {
    return {addProduct<-Sign, L>(simd::mul(a.lanes, w.cosine), timesMinusI(b).lanes, w.sine)};
}

// Memory. Z::Elements elements are 2·Z::Elements floats.

template <class Z>
struct Memory;

template <>
struct Memory<Split<1>> {
    static Split<1> load(const float* from) { return {from[0], from[1]}; }
};

template <>
struct Memory<Split<2>> {
    static Split<2> load(const float* from) { return {simd::load2(from), simd::load2(from + 2)}; }
    static Twiddle<Split<2>> loadTwiddle(const float* from) {
        return {simd::load2(from), simd::load2(from + 2)};
    }
};

template <int L>
struct Memory<Block<L>> {
    static Block<L> load(const float* from) { return {simd::Lanes<L>::load(from)}; }
    static Twiddle<Block<L>> loadTwiddle(const float* from) {
        const simd::F32<L> w = simd::Lanes<L>::load(from);
        return {simd::lowHalves(w, w), simd::highHalves(w, w)};
    }
};

enum class Layout { Blocks, Interleaved };

template <Layout Out>
inline void store(float* to, Split<2> z) {
    if constexpr (Out == Layout::Blocks) {
        simd::store2(to, z.re);
        simd::store2(to + 2, z.im);
    } else {
        simd::storeZipped(to, z.re, z.im);
    }
}

template <Layout Out, int L>
inline void store(float* to, Block<L> z) {
    simd::Lanes<L>::store(to, Out == Layout::Blocks ? z.lanes : simd::zipHalves(z.lanes));
}

/** The arrangement in which a machine whose best vectors have L lanes combines. */
template <int L>
struct CombineArrangement {
    using Type = Block<L>;
};

template <>
struct CombineArrangement<2> {
    using Type = Split<2>;
};

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
