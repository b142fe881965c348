/**
 * The first pass of the complex FFT: 8-point transforms of the input's subsequences, the leaves.
 *
 * Leaf q takes the elements (q + m·N/8) mod N, m = 0 to 7, of the input, q = -N/16 to N/16-1. Its
 * partner is leaf q - N/16; the two stand side by side in the output buffer as one unit of 16
 * elements, where the table of positions says. Adjacent leaves run side by side in a vector.
 */
#ifndef DSPLIB_CFFT_LEAVES_H
#define DSPLIB_CFFT_LEAVES_H

#include <algorithm>

#include "cfft_complex.h"
#include "cfft_tables.h"
#if SP_SIMD_WIDEST > 4
#include "dsplib/x86/cfft_leaf_groups.h"
#endif

namespace cfft {
inline namespace SP_SIMD_TARGET {

/** √½ rounded to single precision: 0x3f3504f3 */
constexpr float SqrtHalf = 0.70710677f;

/** Eight elements of each of Z::Elements leaves. */
template <class Z>
struct Leaf {
    Z x0, x1, x2, x3, x4, x5, x6, x7;
};

/** The inverse of N points scales by 1/N, the forward transform by 1. */
template <Direction D>
constexpr float scaleOf(int N) {
    return D == Direction::Inverse ? 1.0f / static_cast<float>(N) : 1.0f;
}

template <Direction D, class Z>
inline Z scaledSum(Z sum, float scale) {
    if constexpr (D == Direction::Forward) {
        return sum;
    } else {
        return scaled(sum, scale);
    }
}

/**
 * 8-point transforms, radix-2 decimation in time. The inverse's 1/N is folded into what the last
 * stage adds up, so that no later pass scales.
 */
template <Direction D, class Z>
inline Leaf<Z> transformLeaf(const Leaf<Z>& x, float scale) {
    constexpr int Sign = KernelSign<D>;
    const Z a0 = x.x0 + x.x4, a1 = x.x0 - x.x4, a2 = x.x2 + x.x6, a3 = x.x2 - x.x6;
    const Z b0 = x.x1 + x.x5, b1 = x.x1 - x.x5, b2 = x.x3 + x.x7, b3 = x.x3 - x.x7;

    const Z even0 = scaledSum<D>(a0 + a2, scale), odd0 = scaledSum<D>(b0 + b2, scale);
    const Z even2 = scaledSum<D>(a0 - a2, scale), odd2 = scaledSum<D>(b0 - b2, scale);
    const Z even1 = scaledSum<D>(addTimesI<Sign>(a1, a3), scale);
    const Z even3 = scaledSum<D>(addTimesI<-Sign>(a1, a3), scale);

    // √2 times the odd ones turned with the kernel: the first by an eighth, the third by three
    // eighths less half a turn, which is why it is subtracted where the first is added.
    const Z u = b1 - b3, v = b1 + b3;
    const Z turned1 = addTimesI<Sign>(u, v), turned3 = addTimesI<-Sign>(u, v);
    const float factor = scale * SqrtHalf;

    return {even0 + odd0,
            addScaled<1>(even1, turned1, factor),
            addTimesI<Sign>(even2, odd2),
            addScaled<-1>(even3, turned3, factor),
            even0 - odd0,
            addScaled<-1>(even1, turned1, factor),
            addTimesI<-Sign>(even2, odd2),
            addScaled<1>(even3, turned3, factor)};
}

/** Where the leaves of one size lie in the input and in the output buffer. */
struct LeafPlan {
    int size;
    int stride;   // between the elements of a leaf, N/8
    int partner;  // from a leaf's offset down to its partner's, N/16
    int lastOwn;  // the last q at which q is the offset of its unit, above it q - N/16
    int shift;    // of the table of positions

    LeafPlan(int N, int log2N)
        : size(N),
          stride(N / 8),
          partner(N / 16),
          lastOwn(N / 16 - N / 48 - 1),
          shift(13 - log2N) {}

    /** Where the unit of leaf q >= 0 and its partner goes: 32 floats, leaf q first. */
    float* unit(float* y, int q) const {
        const int offset = q <= lastOwn ? q : q - partner;
        return y + 2 * (index_lut_[static_cast<std::size_t>(offset & 511)] >> shift);
    }
};

/** Where the eight elements of the adjacent leaves of one vector begin in the input. */
struct LeafInput {
    const float* first;     // element 0
    const float* second;    // element 1; the others follow at the stride
    std::ptrdiff_t stride;  // in floats

    template <class Load>
    auto load(Load at) const {
        const float* const p = second;
        const std::ptrdiff_t s = stride;
        using Z = decltype(at(p));
        return Leaf<Z>{at(first),     at(p),         at(p + s),     at(p + 2 * s),
                       at(p + 3 * s), at(p + 4 * s), at(p + 5 * s), at(p + 6 * s)};
    }
};

/** The input of leaf q >= 0. */
inline LeafInput leafInput(const LeafPlan& plan, const float* x, int q) {
    const float* const first = x + 2 * q;
    return {first, first + 2 * plan.stride, 2 * plan.stride};
}

/** The input of its partner, whose element 0 wraps round to the end of the buffer. */
inline LeafInput partnerInput(const LeafPlan& plan, const float* x, int q) {
    const int offset = q - plan.partner;
    return {x + 2 * (offset + plan.size), x + 2 * (offset + plan.stride), 2 * plan.stride};
}

/** Stores the leaves of two lanes from one block of each; `block` counts from 0 to 3. */
inline void storeBlockOfTwo(float* const* to, int block, Split<2> even, Split<2> odd) {
    simd::store2(to[0] + 4 * block, simd::zipLow(even.re, odd.re));
    simd::store2(to[0] + 4 * block + 2, simd::zipLow(even.im, odd.im));
    simd::store2(to[1] + 4 * block, simd::zipHigh(even.re, odd.re));
    simd::store2(to[1] + 4 * block + 2, simd::zipHigh(even.im, odd.im));
}

inline void storeLeaves(float* const* to, const Leaf<Split<2>>& z) {
    storeBlockOfTwo(to, 0, z.x0, z.x1);
    storeBlockOfTwo(to, 1, z.x2, z.x3);
    storeBlockOfTwo(to, 2, z.x4, z.x5);
    storeBlockOfTwo(to, 3, z.x6, z.x7);
}

/** Stores one leaf per group of four lanes from its four blocks, the leaf of group g at to[2g]. */
inline void storeLeafOfEachGroup(float* const* to, simd::F32x4 v0, simd::F32x4 v1, simd::F32x4 v2,
                                 simd::F32x4 v3) {
    simd::store4(to[0], v0);
    simd::store4(to[0] + 4, v1);
    simd::store4(to[0] + 8, v2);
    simd::store4(to[0] + 12, v3);
}

/**
 * The elements k and k+1 of two adjacent leaves, (re, im, re, im) each, zip into the block of the
 * first leaf, (re k, re k+1, im k, im k+1), and that of the second.
 */
template <int L>
inline void storeLeaves(float* const* to, const Leaf<Interleaved<L>>& z) {
    storeLeafOfEachGroup(to, simd::zipLow(z.x0.lanes, z.x1.lanes),
                         simd::zipLow(z.x2.lanes, z.x3.lanes), simd::zipLow(z.x4.lanes, z.x5.lanes),
                         simd::zipLow(z.x6.lanes, z.x7.lanes));
    storeLeafOfEachGroup(
        to + 1, simd::zipHigh(z.x0.lanes, z.x1.lanes), simd::zipHigh(z.x2.lanes, z.x3.lanes),
        simd::zipHigh(z.x4.lanes, z.x5.lanes), simd::zipHigh(z.x6.lanes, z.x7.lanes));
}

/** The elements of adjacent leaves, read from the caller's interleaved buffer. */
template <int L>
inline auto loadAdjacent(const float* from) {
    if constexpr (L == 2) {
        const simd::F32x2Zipped elements = simd::loadZipped(from);
        return Split<2>{elements.a, elements.b};
    } else {
        return Interleaved<L>{simd::Lanes<L>::load(from)};
    }
}

/** One vector of adjacent leaves: from `in`, which belongs to leaf q on, to `at` in their units. */
template <Direction D, int L>
inline void leafVector(const LeafPlan& plan, int q, const LeafInput& in, float* y, int at) {
    const auto load = [](const float* from) { return loadAdjacent<L>(from); };
    const auto z = transformLeaf<D>(in.load(load), scaleOf<D>(plan.size));
    constexpr int Adjacent = decltype(z.x0)::Elements;
    float* to[Adjacent];
    for (int i = 0; i < Adjacent; ++i) to[i] = plan.unit(y, q + i) + at;
    storeLeaves(to, z);
}

/**
 * All N/8 leaves, in vectors of adjacent ones; `Line` of them and then their partners in turn. Line
 * divides the N/16 offsets q >= 0.
 */
template <Direction D, int L, int Line>
inline void leafPassOfWidth(const LeafPlan plan, const float* x, float* y) {
    constexpr int Adjacent = decltype(loadAdjacent<L>(x))::Elements;
    for (int line = 0; line < plan.partner; line += Line) {
        for (int q = line; q < line + Line; q += Adjacent) {
            leafVector<D, L>(plan, q, leafInput(plan, x, q), y, 0);
        }
        for (int q = line; q < line + Line; q += Adjacent) {
            leafVector<D, L>(plan, q, partnerInput(plan, x, q), y, LeafFloats);
        }
    }
}

/**
 * The leaf pass of N >= 32 elements on vectors of up to L lanes. A frame of the tracker takes the
 * general case alone; 32, 64 and FFT_MAX are for the public interface.
 */
template <Direction D, int L>
inline void leafPass(int N, int log2N, const float* x, float* y) {
    constexpr int Adjacent = decltype(loadAdjacent<L>(x))::Elements;
    if (N == 32) {
        leafPassOfWidth<D, std::min(L, 4), 2>(LeafPlan(32, 5), x, y);
    } else if (N == 64) {
        leafPassOfWidth<D, std::min(L, 8), (L < 8 ? Adjacent : 4)>(LeafPlan(64, 6), x, y);
    } else if (N < FFT_MAX) {
        leafPassOfWidth<D, L, Adjacent>(LeafPlan(N, log2N), x, y);
    } else {
        // The streams of leaves and partners, sixteen in all, compete for one set of a first-level
        // cache: the leaves that share cache lines, eight of them, come before their partners.
        leafPassOfWidth<D, L, 8>(LeafPlan(FFT_MAX, 13), x, y);
    }
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
