/**
 * Vectors of complex numbers for the FFT: products, turns and the two memory layouts.
 *
 * Interleaved is what a caller sees: re, im, re, im, … Blocks are what the output buffer holds while
 * a transform runs: two elements in four floats, (re k, re k+1, im k, im k+1). A vector of four or
 * more lanes takes whole groups of four floats, so its lanes are in an order of their own (for eight
 * lanes 0 1 4 5 2 3 6 7); data and twiddles are read in that order alike, and each store undoes it.
 */
#ifndef DSPLIB_CFFT_COMPLEX_H
#define DSPLIB_CFFT_COMPLEX_H

#include "simdLanes.h"

namespace cfft {

enum class Direction { Forward, Inverse };

template <int L>
struct Complex {
    simd::F32<L> re, im;
};

template <int L>
inline Complex<L> operator+(Complex<L> a, Complex<L> b) {
    return {simd::add(a.re, b.re), simd::add(a.im, b.im)};
}

template <int L>
inline Complex<L> operator-(Complex<L> a, Complex<L> b) {
    return {simd::sub(a.re, b.re), simd::sub(a.im, b.im)};
}

/** factor·a */
template <int L>
inline Complex<L> scaled(Complex<L> a, simd::F32<L> factor) {
    return {simd::mul(a.re, factor), simd::mul(a.im, factor)};
}

/** z·w */
template <int L>
inline Complex<L> product(Complex<L> z, Complex<L> w) {
    return {simd::mulSub(simd::mul(z.re, w.re), z.im, w.im),
            simd::mulAdd(simd::mul(z.im, w.re), z.re, w.im)};
}

/** z·conj(w) */
template <int L>
inline Complex<L> conjugateProduct(Complex<L> z, Complex<L> w) {
    return {simd::mulAdd(simd::mul(z.re, w.re), z.im, w.im),
            simd::mulSub(simd::mul(z.im, w.re), z.re, w.im)};
}

/** z times the twiddle that turns with the kernel of the transform: conj(w) forward, w inverse. */
template <Direction D, int L>
inline Complex<L> turnedWith(Complex<L> z, Complex<L> w) {
    return D == Direction::Forward ? conjugateProduct(z, w) : product(z, w);
}

/** z times the twiddle that turns against the kernel: w forward, conj(w) inverse. */
template <Direction D, int L>
inline Complex<L> turnedAgainst(Complex<L> z, Complex<L> w) {
    return D == Direction::Forward ? product(z, w) : conjugateProduct(z, w);
}

/** a - i·b forward, a + i·b inverse: a quarter turn with the kernel */
template <Direction D, int L>
inline Complex<L> addQuarterTurn(Complex<L> a, Complex<L> b) {
    if constexpr (D == Direction::Forward) {
        return {simd::add(a.re, b.im), simd::sub(a.im, b.re)};
    } else {
        return {simd::sub(a.re, b.im), simd::add(a.im, b.re)};
    }
}

/** a + i·b forward, a - i·b inverse */
template <Direction D, int L>
inline Complex<L> subQuarterTurn(Complex<L> a, Complex<L> b) {
    if constexpr (D == Direction::Forward) {
        return {simd::sub(a.re, b.im), simd::add(a.im, b.re)};
    } else {
        return {simd::add(a.re, b.im), simd::sub(a.im, b.re)};
    }
}

/** L elements from blocks, 2L floats */
template <int L>
inline Complex<L> loadBlocks(const float* from) {
    const simd::F32<L> a = simd::Lanes<L>::load(from);
    const simd::F32<L> b = simd::Lanes<L>::load(from + L);
    if constexpr (L == 2) {
        return {a, b};
    } else {
        return {simd::lowHalves(a, b), simd::highHalves(a, b)};
    }
}

/** L elements to blocks, 2L floats */
template <int L>
inline void storeBlocks(float* to, Complex<L> z) {
    if constexpr (L == 2) {
        simd::store2(to, z.re);
        simd::store2(to + 2, z.im);
    } else {
        simd::Lanes<L>::store(to, simd::lowHalves(z.re, z.im));
        simd::Lanes<L>::store(to + L, simd::highHalves(z.re, z.im));
    }
}

/** L elements, in the lane order of loadBlocks, to the interleaved layout, 2L floats */
template <int L>
inline void storeInterleaved(float* to, Complex<L> z) {
    simd::storeZipped(to, z.re, z.im);
}

enum class Layout { Blocks, Interleaved };

template <Layout Out, int L>
inline void storeAs(float* to, Complex<L> z) {
    if constexpr (Out == Layout::Blocks) {
        storeBlocks(to, z);
    } else {
        storeInterleaved(to, z);
    }
}

}  // namespace cfft

#endif
