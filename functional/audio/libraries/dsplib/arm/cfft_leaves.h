/** The first pass of the complex FFT: 8-point transforms of the input's subsequences. */
#ifndef DSPLIB_CFFT_LEAVES_H
#define DSPLIB_CFFT_LEAVES_H

#include "cfft_complex.h"
#include "cfft_tables.h"

namespace cfft {

/** √½ rounded to single precision: 0x3f3504f3 */
constexpr float SqrtHalf = 0.70710677f;

template <int L>
struct Leaf {
    Complex<L> x0, x1, x2, x3, x4, x5, x6, x7;
};

/**
 * What the last stage of an 8-point transform multiplies by. Forward nothing is scaled; the inverse
 * folds its 1/N in here, so that no later pass scales.
 */
template <int L>
struct LeafScale {
    simd::F32<L> sums, rotations;

    explicit LeafScale(float scale)
        : sums(simd::Lanes<L>::splat(scale)),
          rotations(simd::Lanes<L>::splat(scale * SqrtHalf)) {}
};

/** The inverse of N points scales by 1/N, the forward transform by 1. */
template <Direction D>
constexpr float scaleOf(int N) {
    return D == Direction::Inverse ? 1.0f / static_cast<float>(N) : 1.0f;
}

template <Direction D, int L>
inline Complex<L> scaledSum(Complex<L> sum, const LeafScale<L>& scale) {
    if constexpr (D == Direction::Forward) {
        return sum;
    } else {
        return scaled(sum, scale.sums);
    }
}

/** L 8-point transforms side by side: radix-2 decimation in time. */
template <Direction D, int L>
inline Leaf<L> transformLeaf(const Leaf<L>& x, const LeafScale<L>& scale) {
    const Complex<L> a0 = x.x0 + x.x4, a1 = x.x0 - x.x4, a2 = x.x2 + x.x6, a3 = x.x2 - x.x6;
    const Complex<L> b0 = x.x1 + x.x5, b1 = x.x1 - x.x5, b2 = x.x3 + x.x7, b3 = x.x3 - x.x7;

    const Complex<L> even0 = scaledSum<D>(a0 + a2, scale);
    const Complex<L> even2 = scaledSum<D>(a0 - a2, scale);
    const Complex<L> even1 = scaledSum<D>(addQuarterTurn<D>(a1, a3), scale);
    const Complex<L> even3 = scaledSum<D>(subQuarterTurn<D>(a1, a3), scale);
    const Complex<L> odd0 = scaledSum<D>(b0 + b2, scale);
    const Complex<L> odd2 = scaledSum<D>(b0 - b2, scale);
    const Complex<L> odd1 = addQuarterTurn<D>(b1, b3);
    const Complex<L> odd3 = subQuarterTurn<D>(b1, b3);

    // odd1 and odd3 times √2 and an eighth and three eighths of a turn with the kernel
    const Complex<L> eighth1 = addQuarterTurn<D>(odd1, odd1);
    const Complex<L> eighth3 = subQuarterTurn<D>(odd3, odd3);  // and half a turn more: subtracted

    const simd::F32<L> r = scale.rotations;
    return {even0 + odd0,
            {simd::mulAdd(even1.re, eighth1.re, r), simd::mulAdd(even1.im, eighth1.im, r)},
            addQuarterTurn<D>(even2, odd2),
            {simd::mulSub(even3.re, eighth3.re, r), simd::mulSub(even3.im, eighth3.im, r)},
            even0 - odd0,
            {simd::mulSub(even1.re, eighth1.re, r), simd::mulSub(even1.im, eighth1.im, r)},
            subQuarterTurn<D>(even2, odd2),
            {simd::mulAdd(even3.re, eighth3.re, r), simd::mulAdd(even3.im, eighth3.im, r)}};
}

/** Where the leaves of one size lie in the input and in the output buffer. */
struct LeafPlan {
    int size;
    int stride;    // between the elements of a leaf, N/8
    int partner;   // from a leaf's offset down to its partner's, N/16
    int lastOwn;   // the last offset at which a leaf, not its partner, is its unit's own offset
    int shift;     // of the table of positions

    LeafPlan(int N, int log2N)
        : size(N),
          stride(N / 8),
          partner(N / 16),
          lastOwn(N / 16 - N / 48 - 1),
          shift(13 - log2N) {}

    /** Float index of element m of leaf q, q >= 0, in the input. */
    std::ptrdiff_t own(int q, int m) const { return 2 * (q + m * stride); }

    /** Float index of element m of the partner of leaf q: element 0 wraps round to the end. */
    std::ptrdiff_t partners(int q, int m) const {
        return 2 * (q - partner + (m == 0 ? size : m * stride));
    }

    /** Float index of the unit of leaf q and its partner, q >= 0: leaf q first, 16 floats each. */
    int unit(int q) const {
        const int offset = q <= lastOwn ? q : q - partner;
        return 2 * (index_lut_[static_cast<std::size_t>(offset & 511)] >> shift);
    }
};

/** One block, two elements, of each of the four leaves of a group of lanes. */
template <int L>
struct LeafBlocks {
    simd::F32<L> leaf0, leaf1, leaf2, leaf3;
};

template <int L>
inline LeafBlocks<L> blocksOf(Complex<L> first, Complex<L> second) {
    const simd::F32<L> re01 = simd::zipLow(first.re, second.re);
    const simd::F32<L> re23 = simd::zipHigh(first.re, second.re);
    const simd::F32<L> im01 = simd::zipLow(first.im, second.im);
    const simd::F32<L> im23 = simd::zipHigh(first.im, second.im);
    return {simd::lowHalves(re01, im01), simd::highHalves(re01, im01),
            simd::lowHalves(re23, im23), simd::highHalves(re23, im23)};
}

/** Stores one leaf per group of four lanes from its four blocks, group g at `to[g]`. */
inline void storeLeafOfEachGroup(float* const* to, simd::F32x4 v0, simd::F32x4 v1, simd::F32x4 v2,
                                 simd::F32x4 v3) {
    simd::store4(to[0], v0);
    simd::store4(to[0] + 4, v1);
    simd::store4(to[0] + 8, v2);
    simd::store4(to[0] + 12, v3);
}

#ifdef DSPLIB_SIMD_SIMD_AVX_H
inline void storeLeafOfEachGroup(float* const* to, simd::F32x8 v0, simd::F32x8 v1, simd::F32x8 v2,
                                 simd::F32x8 v3) {
    simd::store8(to[0], simd::lowGroups(v0, v1));
    simd::store8(to[0] + 8, simd::lowGroups(v2, v3));
    simd::store8(to[1], simd::highGroups(v0, v1));
    simd::store8(to[1] + 8, simd::highGroups(v2, v3));
}
#endif

#ifdef DSPLIB_SIMD_SIMD_AVX512_H
inline void storeLeafOfEachGroup(float* const* to, simd::F32x16 v0, simd::F32x16 v1,
                                 simd::F32x16 v2, simd::F32x16 v3) {
    const simd::F32x16 low0 = simd::lowGroups(v0, v1), low2 = simd::lowGroups(v2, v3);
    const simd::F32x16 high0 = simd::highGroups(v0, v1), high2 = simd::highGroups(v2, v3);
    simd::store16(to[0], simd::evenGroups(low0, low2));
    simd::store16(to[1], simd::oddGroups(low0, low2));
    simd::store16(to[2], simd::evenGroups(high0, high2));
    simd::store16(to[3], simd::oddGroups(high0, high2));
}
#endif

/** Element m of the leaves o, o+1, … in the lower half of each group, of their partners above. */
template <int L>
inline Complex<L> leafElements(const float* own, const float* partners) {
    const simd::F32<L> a = simd::Lanes<L>::load(own);
    const simd::F32<L> b = simd::Lanes<L>::load(partners);
    return {simd::evenLanes(a, b), simd::oddLanes(a, b)};
}

/**
 * L leaves at once: the L/2 adjacent offsets from o on, and the partner of each. Reads elements o to
 * o + L/2 - 1 of each eighth of the input and as many half an eighth before; L/2 divides N/16, so no
 * read passes the end of an eighth.
 */
template <Direction D, int L>
inline void leafGroup(const LeafPlan& plan, int o, const float* x, float* y,
                      const LeafScale<L>& scale) {
    const auto elements = [=](int m) {
        return leafElements<L>(x + plan.own(o, m), x + plan.partners(o, m));
    };
    const Leaf<L> z = transformLeaf<D, L>(
        {elements(0), elements(1), elements(2), elements(3),
         elements(4), elements(5), elements(6), elements(7)},
        scale);

    float* even[L / 4];
    float* odd[L / 4];
    for (int g = 0; g < L / 4; ++g) {
        even[g] = y + plan.unit(o + 2 * g);
        odd[g] = y + plan.unit(o + 2 * g + 1);
    }
    const LeafBlocks<L> b0 = blocksOf(z.x0, z.x1), b1 = blocksOf(z.x2, z.x3);
    const LeafBlocks<L> b2 = blocksOf(z.x4, z.x5), b3 = blocksOf(z.x6, z.x7);
    storeLeafOfEachGroup(even, b0.leaf0, b1.leaf0, b2.leaf0, b3.leaf0);
    storeLeafOfEachGroup(odd, b0.leaf1, b1.leaf1, b2.leaf1, b3.leaf1);
    for (int g = 0; g < L / 4; ++g) {
        even[g] += 16;
        odd[g] += 16;
    }
    storeLeafOfEachGroup(even, b0.leaf2, b1.leaf2, b2.leaf2, b3.leaf2);
    storeLeafOfEachGroup(odd, b0.leaf3, b1.leaf3, b2.leaf3, b3.leaf3);
}

inline void storeLanePair(float* lane0, float* lane1, Complex<2> first, Complex<2> second) {
    simd::store2(lane0, simd::zipLow(first.re, second.re));
    simd::store2(lane0 + 2, simd::zipLow(first.im, second.im));
    simd::store2(lane1, simd::zipHigh(first.re, second.re));
    simd::store2(lane1 + 2, simd::zipHigh(first.im, second.im));
}

/** The leaves of two adjacent offsets; `first` is their element 0, `second` their element 1. */
template <Direction D>
inline void leafPair(const float* first, const float* second, std::ptrdiff_t s, float* lane0,
                     float* lane1, const LeafScale<2>& scale) {
    const auto elements = [](const float* at) {
        const simd::F32x2 a = simd::load2(at), b = simd::load2(at + 2);
        return Complex<2>{simd::zipLow(a, b), simd::zipHigh(a, b)};
    };
    const Leaf<2> z = transformLeaf<D, 2>(
        {elements(first), elements(second), elements(second + s), elements(second + 2 * s),
         elements(second + 3 * s), elements(second + 4 * s), elements(second + 5 * s),
         elements(second + 6 * s)},
        scale);
    storeLanePair(lane0, lane1, z.x0, z.x1);
    storeLanePair(lane0 + 4, lane1 + 4, z.x2, z.x3);
    storeLanePair(lane0 + 8, lane1 + 8, z.x4, z.x5);
    storeLanePair(lane0 + 12, lane1 + 12, z.x6, z.x7);
}

/** Two lanes hold the leaves o and o+1; their partners follow in a second round. */
template <Direction D>
inline void leafGroup(const LeafPlan& plan, int o, const float* x, float* y,
                      const LeafScale<2>& scale) {
    const std::ptrdiff_t s = 2 * plan.stride;
    float* const unit0 = y + plan.unit(o);
    float* const unit1 = y + plan.unit(o + 1);
    leafPair<D>(x + plan.own(o, 0), x + plan.own(o, 1), s, unit0, unit1, scale);
    leafPair<D>(x + plan.partners(o, 0), x + plan.partners(o, 1), s, unit0 + 16, unit1 + 16, scale);
}

/**
 * All N/8 leaves, N >= 32. Leaf q takes the elements (q + m·N/8) mod N, m = 0 to 7, of the input;
 * it is stored with its partner q - N/16 as one unit of 16 elements where the table says.
 */
template <Direction D, int L>
inline void leafPassOfWidth(int N, int log2N, const float* x, float* y) {
    const LeafPlan plan(N, log2N);
    const LeafScale<L> scale(scaleOf<D>(N));
    constexpr int Step = L == 2 ? 2 : L / 2;
    for (int o = 0; o < plan.partner; o += Step) {
        if constexpr (L == 2) {
            leafGroup<D>(plan, o, x, y, scale);
        } else {
            leafGroup<D, L>(plan, o, x, y, scale);
        }
    }
}

/** The leaf pass at the widest step, up to L lanes, that divides the N/16 offsets. */
template <Direction D, int L>
inline void leafPass(int N, int log2N, const float* x, float* y) {
    if constexpr (L > 4) {
        if (N < 8 * L) return leafPass<D, L / 2>(N, log2N, x, y);
    }
    leafPassOfWidth<D, L>(N, log2N, x, y);
}

}  // namespace cfft

#endif
