/** The transform of 32 elements where a vector holds all four leaves: nothing leaves registers. */
#ifndef DSPLIB_X86_CFFT_WIDE32_H
#define DSPLIB_X86_CFFT_WIDE32_H

#include "dsplib/arm/cfft_combines.h"
#include "dsplib/arm/cfft_leaves.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

/** The blocks k and k+2 of the leaves in the lower groups (first) and in the upper ones. */
struct LeafBlocks {
    Block<8> first, second;
};

inline LeafBlocks blocksOf(simd::F32x8 v0, simd::F32x8 v1) {
    return {{simd::lowGroups(v0, v1)}, {simd::highGroups(v0, v1)}};
}

/** What blocksOf() gives of a leaf's two halves, as far as vectors of L lanes hold it. */
template <Direction D, int L>
inline void combine32(float* y, const LeafBlocks (&even)[2], const LeafBlocks (&odd)[2]) {
    constexpr Orientation Positive = Orientation::Positive;
    constexpr Layout Out = Layout::Interleaved;
#if SP_SIMD_WIDEST >= 16
    if constexpr (L >= 16) {
        const auto whole = [](Block<8> low, Block<8> high) {
            return Block<16>{simd::joined(low.lanes, high.lanes)};
        };
        Quarters<Block<16>> x = {
            whole(even[0].first, even[1].first), whole(even[0].second, even[1].second),
            whole(odd[0].first, odd[1].first), whole(odd[0].second, odd[1].second)};
        nodeOf32<D, Positive>(x, 0);
        return storeQuarters<Out>(y, LeafFloats, x);
    }
#endif
    for (int i = 0; i < 2; ++i) {
        Quarters<Block<8>> x = {even[i].first, even[i].second, odd[i].first, odd[i].second};
        nodeOf32<D, Positive>(x, 8 * i);
        storeQuarters<Out>(y + 8 * i, LeafFloats, x);
    }
}

/** L = 8 or 16. The lower groups of a vector hold leaves 0 and 1, the upper ones their partners. */
template <Direction D, int L>
inline void transform32(const float* x, float* y) {
    const LeafPlan plan(32, 5);
    const LeafInput own = leafInput(plan, x, 0), partner = partnerInput(plan, x, 0);
    const auto at = [](const float* low, const float* high) {
        return Interleaved<8>{simd::joined(simd::load4(low), simd::load4(high))};
    };
    const float* const p = own.second;
    const float* const q = partner.second;
    const std::ptrdiff_t s = own.stride;
    const Leaf<Interleaved<8>> z =
        transformLeaf<D>(Leaf<Interleaved<8>>{at(own.first, partner.first), at(p, q),
                                              at(p + s, q + s), at(p + 2 * s, q + 2 * s),
                                              at(p + 3 * s, q + 3 * s), at(p + 4 * s, q + 4 * s),
                                              at(p + 5 * s, q + 5 * s), at(p + 6 * s, q + 6 * s)},
                         scaleOf<D>(32));
    const auto low = [](Interleaved<8> a, Interleaved<8> b) {
        return simd::zipLow(a.lanes, b.lanes);
    };
    const auto high = [](Interleaved<8> a, Interleaved<8> b) {
        return simd::zipHigh(a.lanes, b.lanes);
    };
    combine32<D, L>(
        y, {blocksOf(low(z.x0, z.x1), low(z.x2, z.x3)), blocksOf(low(z.x4, z.x5), low(z.x6, z.x7))},
        {blocksOf(high(z.x0, z.x1), high(z.x2, z.x3)),
         blocksOf(high(z.x4, z.x5), high(z.x6, z.x7))});
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
