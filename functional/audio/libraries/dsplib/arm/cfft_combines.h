/**
 * The combine passes of the complex FFT: a node of the conjugate-pair tree from its children.
 *
 * A node of size M stands in M consecutive elements: child U of size M/2 in front, Z in the third
 * quarter, Z' in the last. All passes work in place on blocks; the last pass of a transform alone
 * stores the interleaved layout.
 */
#ifndef DSPLIB_CFFT_COMBINES_H
#define DSPLIB_CFFT_COMBINES_H

#include "cfft_complex.h"
#include "cfft_tables.h"

namespace cfft {

/** Whether the offset of a 16-point unit is that of its first leaf (>= 0) or of its second. */
enum class Orientation { Positive, Negative };

/** X[k] and X[k+8] of a 16-point unit from leaves A (first) and B, in place; t = w_nl[k]. */
template <Direction D, Orientation O, int L>
inline void joinLeaves(Complex<L>& a, Complex<L>& b, Complex<L> t) {
    if constexpr (O == Orientation::Positive) {
        const Complex<L> turned = turnedAgainst<D>(b, t);
        b = a - turned;
        a = a + turned;
    } else {
        const Complex<L> turned = turnedWith<D>(a, t);
        a = b + turned;
        b = b - turned;
    }
}

/** Four values of a node a quarter apart, in place: U[k], U[k+M/4], Z[k], Z'[k] to X; w = w_M(k). */
template <Direction D, int L>
inline void butterfly4(Complex<L>& x0, Complex<L>& x1, Complex<L>& x2, Complex<L>& x3,
                       Complex<L> w) {
    const Complex<L> z = turnedWith<D>(x2, w);
    const Complex<L> zc = turnedAgainst<D>(x3, w);
    const Complex<L> sum = z + zc, difference = z - zc;
    x2 = x0 - sum;
    x0 = x0 + sum;
    x3 = subQuarterTurn<D>(x1, difference);
    x1 = addQuarterTurn<D>(x1, difference);
}

/** Eight vectors an eighth of a node apart. */
template <int L>
struct Eighths {
    Complex<L> x0, x1, x2, x3, x4, x5, x6, x7;
};

/**
 * Two levels: the 4-way combine of the front half, then that of the whole. `half` is w_(M/2)(k);
 * `whole` and `wholeLater` are w_M at k and k + M/8.
 */
template <Direction D, int L>
inline void butterfly8(Eighths<L>& x, Complex<L> half, Complex<L> whole, Complex<L> wholeLater) {
    butterfly4<D>(x.x0, x.x1, x.x2, x.x3, half);
    butterfly4<D>(x.x0, x.x2, x.x4, x.x6, whole);
    butterfly4<D>(x.x1, x.x3, x.x5, x.x7, wholeLater);
}

/** Loads eight vectors, `stride` floats apart. */
template <int L>
inline Eighths<L> loadEighths(const float* from, std::ptrdiff_t stride) {
    return {loadBlocks<L>(from),
            loadBlocks<L>(from + stride),
            loadBlocks<L>(from + 2 * stride),
            loadBlocks<L>(from + 3 * stride),
            loadBlocks<L>(from + 4 * stride),
            loadBlocks<L>(from + 5 * stride),
            loadBlocks<L>(from + 6 * stride),
            loadBlocks<L>(from + 7 * stride)};
}

template <Layout Out, int L>
inline void storeEighths(float* to, std::ptrdiff_t stride, const Eighths<L>& x) {
    storeAs<Out>(to, x.x0);
    storeAs<Out>(to + stride, x.x1);
    storeAs<Out>(to + 2 * stride, x.x2);
    storeAs<Out>(to + 3 * stride, x.x3);
    storeAs<Out>(to + 4 * stride, x.x4);
    storeAs<Out>(to + 5 * stride, x.x5);
    storeAs<Out>(to + 6 * stride, x.x6);
    storeAs<Out>(to + 7 * stride, x.x7);
}

/** Passes over one element in eight of 64 or one in four of 32 have eight values of k at most. */
template <int L>
constexpr int UpToEight = L < 8 ? L : 8;

/** Two values of k at L = 2 and so on: 4-way combine of size M >= 4L. */
template <Direction D, Layout Out, int L>
inline void combine4(int M, float* data) {
    const std::ptrdiff_t quarter = M / 2;  // in floats
    const float* const w = twiddlesOf(M);
    for (std::ptrdiff_t at = 0; at < quarter; at += 2 * L) {
        float* const p = data + at;
        Complex<L> x0 = loadBlocks<L>(p), x1 = loadBlocks<L>(p + quarter);
        Complex<L> x2 = loadBlocks<L>(p + 2 * quarter), x3 = loadBlocks<L>(p + 3 * quarter);
        butterfly4<D>(x0, x1, x2, x3, loadBlocks<L>(w + at));
        storeAs<Out>(p, x0);
        storeAs<Out>(p + quarter, x1);
        storeAs<Out>(p + 2 * quarter, x2);
        storeAs<Out>(p + 3 * quarter, x3);
    }
}

/** 8-way combine of size M >= 8L. */
template <Direction D, Layout Out, int L>
inline void combine8(int M, float* data) {
    const std::ptrdiff_t eighth = M / 4;  // in floats
    const float* const half = twiddlesOf(M / 2);
    const float* const whole = twiddlesOf(M);
    for (std::ptrdiff_t at = 0; at < eighth; at += 2 * L) {
        Eighths<L> x = loadEighths<L>(data + at, eighth);
        butterfly8<D>(x, loadBlocks<L>(half + at), loadBlocks<L>(whole + at),
                      loadBlocks<L>(whole + eighth + at));
        storeEighths<Out>(data + at, eighth, x);
    }
}

/** A node of size 32 from its leaves: the 16-point unit in front, two bare leaves behind. */
template <Direction D, Orientation O, Layout Out, int L>
inline void combineLeaves32(float* data) {
    constexpr int K = UpToEight<L>;
    for (int at = 0; at < 16; at += 2 * K) {
        float* const p = data + at;
        Complex<K> x0 = loadBlocks<K>(p), x1 = loadBlocks<K>(p + 16);
        Complex<K> x2 = loadBlocks<K>(p + 32), x3 = loadBlocks<K>(p + 48);
        joinLeaves<D, O>(x0, x1, loadBlocks<K>(w_nl.data() + at));
        butterfly4<D>(x0, x1, x2, x3, loadBlocks<K>(twiddlesOf(32) + at));
        storeAs<Out>(p, x0);
        storeAs<Out>(p + 16, x1);
        storeAs<Out>(p + 32, x2);
        storeAs<Out>(p + 48, x3);
    }
}

/** A node of size 64 from its leaves: three 16-point units and two bare leaves, then 8-way. */
template <Direction D, Orientation O, Layout Out, int L>
inline void combineLeaves64(float* data) {
    constexpr int K = UpToEight<L>;
    for (int at = 0; at < 16; at += 2 * K) {
        Eighths<K> x = loadEighths<K>(data + at, 16);
        const Complex<K> t = loadBlocks<K>(w_nl.data() + at);
        joinLeaves<D, O>(x.x0, x.x1, t);
        joinLeaves<D, Orientation::Positive>(x.x4, x.x5, t);
        joinLeaves<D, Orientation::Negative>(x.x6, x.x7, t);
        butterfly8<D>(x, loadBlocks<K>(twiddlesOf(32) + at), loadBlocks<K>(twiddlesOf(64) + at),
                      loadBlocks<K>(twiddlesOf(64) + 16 + at));
        storeEighths<Out>(data + at, 16, x);
    }
}

}  // namespace cfft

#endif
