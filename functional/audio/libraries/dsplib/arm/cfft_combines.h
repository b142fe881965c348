/**
 * The combine passes of the complex FFT: a node of the conjugate-pair tree from its children.
 *
 * A node of size M stands in M consecutive elements: child U of size M/2 in front, Z in the third
 * quarter, Z' in the last. All passes work in place on blocks; the last pass of a transform alone
 * stores the interleaved layout. Z is the arrangement of complex.h that a pass computes in; its
 * number of elements divides every count here, so that no pass has a tail.
 */
#ifndef DSPLIB_CFFT_COMBINES_H
#define DSPLIB_CFFT_COMBINES_H

#include "cfft_complex.h"
#include "cfft_tables.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

/** Floats that a leaf of 8 points takes in the output buffer */
constexpr int LeafFloats = 16;

/** Whether the offset of a 16-point unit is that of its first leaf (>= 0) or of its second. */
enum class Orientation { Positive, Negative };

/** X[k] and X[k+8] of a 16-point unit from its leaves A (first) and B, in place; t = w_nl[k]. */
template <Direction D, Orientation O, class Z>
inline void joinLeaves(Z& a, Z& b, Twiddle<Z> t) {
    constexpr int Sign = KernelSign<D>;
    if constexpr (O == Orientation::Positive) {
        const Z turned = timesTwiddle<-Sign>(b, b, t);
        b = a - turned;
        a = a + turned;
    } else {
        const Z turned = timesTwiddle<Sign>(a, a, t);
        a = b + turned;
        b = b - turned;
    }
}

/**
 * Four values of a node a quarter apart, in place: U[k], U[k+M/4], Z[k], Z'[k] to X; w = w_M(k).
 *
 * Forward, with S and D the sum and the difference of Z·conj(w) and Z'·w, the four are U + S,
 * U - S, U - i·D and U + i·D. S and D come from p = Z + Z' and d = Z - Z' as p·cos - i·d·sin and
 * d·cos - i·p·sin: as many operations as the two products would take, with fewer roundings. The
 * inverse has +i for -i throughout.
 */
template <Direction D, class Z>
inline void butterfly4(Z& x0, Z& x1, Z& x2, Z& x3, Twiddle<Z> w) {
    constexpr int Sign = KernelSign<D>;
    const Z p = x2 + x3, d = x2 - x3;
    const Z sum = timesTwiddle<Sign>(p, d, w), difference = timesTwiddle<Sign>(d, p, w);
    x2 = x0 - sum;
    x0 = x0 + sum;
    x3 = addTimesI<-Sign>(x1, difference);
    x1 = addTimesI<Sign>(x1, difference);
}

/** The same operations; where turns move lanes, -i·D from -i·d needs one turn instead of three. */
template <Direction D, int L>
inline void butterfly4(Block<L>& x0, Block<L>& x1, Block<L>& x2, Block<L>& x3,
                       Twiddle<Block<L>> w) {
    constexpr int Sign = KernelSign<D>;
    const Block<L> p = x2 + x3, q = timesMinusI(x2 - x3);
    const simd::F32<L> pc = simd::mul(p.lanes, w.cosine), qc = simd::mul(q.lanes, w.cosine);
    const Block<L> sum = {addProduct<-Sign, L>(pc, q.lanes, w.sine)};
    const Block<L> turned = {addProduct<Sign, L>(qc, p.lanes, w.sine)};  // -i·difference
    x2 = x0 - sum;
    x0 = x0 + sum;
    x3 = Sign < 0 ? x1 - turned : x1 + turned;
    x1 = Sign < 0 ? x1 + turned : x1 - turned;
}

/** Values of a node a quarter apart. */
template <class Z>
struct Quarters {
    Z x0, x1, x2, x3;
};

/** Values of a node an eighth apart. */
template <class Z>
struct Eighths {
    Z x0, x1, x2, x3, x4, x5, x6, x7;
};

/**
 * Two levels: the 4-way combine of the front half, then that of the whole. `half` is w_(M/2)(k);
 * `whole` and `wholeLater` are w_M at k and k + M/8.
 */
template <Direction D, class Z>
inline void butterfly8(Eighths<Z>& x, Twiddle<Z> half, Twiddle<Z> whole, Twiddle<Z> wholeLater) {
    butterfly4<D>(x.x0, x.x1, x.x2, x.x3, half);
    butterfly4<D>(x.x0, x.x2, x.x4, x.x6, whole);
    butterfly4<D>(x.x1, x.x3, x.x5, x.x7, wholeLater);
}

// `stride` in floats

template <class Z>
inline Quarters<Z> loadQuarters(const float* from, std::ptrdiff_t stride) {
    using At = Memory<Z>;
    return {At::load(from), At::load(from + stride), At::load(from + 2 * stride),
            At::load(from + 3 * stride)};
}

template <Layout Out, class Z>
inline void storeQuarters(float* to, std::ptrdiff_t stride, const Quarters<Z>& x) {
    store<Out>(to, x.x0);
    store<Out>(to + stride, x.x1);
    store<Out>(to + 2 * stride, x.x2);
    store<Out>(to + 3 * stride, x.x3);
}

template <class Z>
inline Eighths<Z> loadEighths(const float* from, std::ptrdiff_t stride) {
    using At = Memory<Z>;
    return {At::load(from),
            At::load(from + stride),
            At::load(from + 2 * stride),
            At::load(from + 3 * stride),
            At::load(from + 4 * stride),
            At::load(from + 5 * stride),
            At::load(from + 6 * stride),
            At::load(from + 7 * stride)};
}

template <Layout Out, class Z>
inline void storeEighths(float* to, std::ptrdiff_t stride, const Eighths<Z>& x) {
    store<Out>(to, x.x0);
    store<Out>(to + stride, x.x1);
    store<Out>(to + 2 * stride, x.x2);
    store<Out>(to + 3 * stride, x.x3);
    store<Out>(to + 4 * stride, x.x4);
    store<Out>(to + 5 * stride, x.x5);
    store<Out>(to + 6 * stride, x.x6);
    store<Out>(to + 7 * stride, x.x7);
}

/** The values k = begin to end-1, of 0 to M/4-1, of a 4-way combine; both are multiples of 16. */
template <Direction D, Layout Out, class Z>
inline void combine4Part(int M, float* data, std::ptrdiff_t begin, std::ptrdiff_t end) {
    using At = Memory<Z>;
    const std::ptrdiff_t quarter = M / 2;  // in floats, as k is
    const float* const w = twiddlesOf(M);
    for (std::ptrdiff_t k = 2 * begin; k < 2 * end; k += 2 * Z::Elements) {
        Quarters<Z> x = loadQuarters<Z>(data + k, quarter);
        butterfly4<D>(x.x0, x.x1, x.x2, x.x3, At::loadTwiddle(w + k));
        storeQuarters<Out>(data + k, quarter, x);
    }
}

/** 4-way combine of a node of size M = 32 to FFT_MAX. */
template <Direction D, Layout Out, class Z>
inline void combine4(int M, float* data) {
    combine4Part<D, Out, Z>(M, data, 0, M / 4);
}

/** 8-way combine of a node of size M = 64 to FFT_MAX. */
template <Direction D, Layout Out, class Z>
inline void combine8(int M, float* data) {
    using At = Memory<Z>;
    const std::ptrdiff_t eighth = M / 4;  // in floats
    const float* const half = twiddlesOf(M / 2);
    const float* const whole = twiddlesOf(M);
    for (std::ptrdiff_t k = 0; k < eighth; k += 2 * Z::Elements) {
        Eighths<Z> x = loadEighths<Z>(data + k, eighth);
        butterfly8<D>(x, At::loadTwiddle(half + k), At::loadTwiddle(whole + k),
                      At::loadTwiddle(whole + eighth + k));
        storeEighths<Out>(data + k, eighth, x);
    }
}

/** Values from float k of four leaves on become those of a node of size 32: a unit, two leaves. */
template <Direction D, Orientation O, class Z>
inline void nodeOf32(Quarters<Z>& x, int k) {
    using At = Memory<Z>;
    joinLeaves<D, O>(x.x0, x.x1, At::loadTwiddle(w_nl.data() + k));
    butterfly4<D>(x.x0, x.x1, x.x2, x.x3, At::loadTwiddle(twiddlesOf(32) + k));
}

/** The same of eight leaves and a node of size 64: three units and two bare leaves, then 8-way. */
template <Direction D, Orientation O, class Z>
inline void nodeOf64(Eighths<Z>& x, int k) {
    using At = Memory<Z>;
    const Twiddle<Z> t = At::loadTwiddle(w_nl.data() + k);
    joinLeaves<D, O>(x.x0, x.x1, t);
    joinLeaves<D, Orientation::Positive>(x.x4, x.x5, t);
    joinLeaves<D, Orientation::Negative>(x.x6, x.x7, t);
    butterfly8<D>(x, At::loadTwiddle(twiddlesOf(32) + k), At::loadTwiddle(twiddlesOf(64) + k),
                  At::loadTwiddle(twiddlesOf(64) + LeafFloats + k));
}

/** A node of size 32 from its leaves. */
template <Direction D, Orientation O, Layout Out, class Z>
inline void combineLeaves32(float* data) {
    for (int k = 0; k < LeafFloats; k += 2 * Z::Elements) {
        Quarters<Z> x = loadQuarters<Z>(data + k, LeafFloats);
        nodeOf32<D, O>(x, k);
        storeQuarters<Out>(data + k, LeafFloats, x);
    }
}

// Eight leaves take all registers of an ARM core: as a part of its callers, the pass would spill.
#ifdef SP_SIMD_X86
#define CFFT_APART inline
#else
#define CFFT_APART [[gnu::noinline]]
#endif

/** A node of size 64 from its leaves. */
template <Direction D, Orientation O, Layout Out, class Z>
CFFT_APART void combineLeaves64(float* data) {
    for (int k = 0; k < LeafFloats; k += 2 * Z::Elements) {
        Eighths<Z> x = loadEighths<Z>(data + k, LeafFloats);
        nodeOf64<D, O>(x, k);
        storeEighths<Out>(data + k, LeafFloats, x);
    }
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
