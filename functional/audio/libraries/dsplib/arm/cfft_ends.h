/**
 * The transform of FFT_MAX elements when most of its input is zero and only the ends of its output
 * are wanted, as for a band-limited spectrum whose first and last samples are looked at.
 *
 * Each value that is wanted goes through the very operations of the whole transform (sums with
 * zeros included), so it is the same value, bit for bit.
 */
#ifndef DSPLIB_CFFT_ENDS_H
#define DSPLIB_CFFT_ENDS_H

#include "cfft_drivers.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

/**
 * Three elements of a leaf are used: element 0 lies within N/16 of either end of the input, element
 * 1 up to N/8 behind that, element 7 as far before it. The others fall into the zeros.
 */
static_assert(SP_IFFT_ENDS_USED == FFT_MAX / 16 + FFT_MAX / 8);

template <int L>
inline auto loadEnds(const LeafInput& in) {
    alignas(64) static constexpr float Zeros[2 * L] = {};
    const auto zero = loadAdjacent<L>(Zeros);
    using Z = std::remove_const_t<decltype(zero)>;
    return Leaf<Z>{loadAdjacent<L>(in.first),
                   loadAdjacent<L>(in.second),
                   zero,
                   zero,
                   zero,
                   zero,
                   zero,
                   loadAdjacent<L>(in.second + 6 * in.stride)};
}

template <Direction D, int L>
void leafPassOfEnds(const float* x, float* y) {
    constexpr int Adjacent = decltype(loadAdjacent<L>(x))::Elements;
    const LeafPlan plan(FFT_MAX, 13);
    const float scale = scaleOf<D>(FFT_MAX);
    for (int q = 0; q < plan.partner; q += Adjacent) {
        float* units[Adjacent];
        float* partners[Adjacent];
        for (int i = 0; i < Adjacent; ++i) {
            units[i] = plan.unit(y, q + i);
            partners[i] = units[i] + LeafFloats;
        }
        storeLeaves(units, transformLeaf<D>(loadEnds<L>(leafInput(plan, x, q)), scale));
        storeLeaves(partners, transformLeaf<D>(loadEnds<L>(partnerInput(plan, x, q)), scale));
    }
}

/** Ends are computed in whole steps, which the vectors of every width divide. */
constexpr int EndStep = 32;

/** `wanted` > 0 elements rounded up */
constexpr int wholeEndSteps(int wanted) {
    return (wanted + EndStep - 1) / EndStep * EndStep;
}

// The ends of FFT_MAX elements must not meet within a quarter: each pass works in place.
static_assert(2 * wholeEndSteps(SP_IFFT_ENDS_MOST_WANTED) <= FFT_MAX / 4);

/** The first and the last `wanted` values, in whole steps, of a node of M from its children. */
template <Direction D, Layout Out, class Z>
inline void combine4Ends(int M, float* data, int wanted) {
    combine4Part<D, Out, Z>(M, data, 0, wanted);
    combine4Part<D, Out, Z>(M, data, M / 4 - wanted, M / 4);
}

/** The ends of a node of M elements whose leaves are stored; where they meet, the whole node. */
template <Direction D, Orientation O, int L>
void nodeEnds(int M, float* data, int wanted) {
    if (M <= 8 * wanted) return noLeaves<D, O, L>(M, data);
    nodeEnds<D, O, L>(M / 2, data, wanted);
    nodeEnds<D, Orientation::Positive, L>(M / 4, data + M, wanted);
    nodeEnds<D, Orientation::Negative, L>(M / 4, data + 3 * M / 2, wanted);
    combine4Ends<D, Layout::Blocks, Arranged<L>>(M, data, wanted);
}

/** The first and the last `wanted` elements of the transform; a node's ends need its children's. */
template <Direction D, int L>
void transformEnds(const float* x, float* y, int wanted) {
    constexpr int N = FFT_MAX;
    leafPassOfEnds<D, L>(x, y);
    nodeEnds<D, Orientation::Positive, L>(N / 2, y, wanted);
    nodeEnds<D, Orientation::Positive, L>(N / 4, y + N, wanted);
    nodeEnds<D, Orientation::Negative, L>(N / 4, y + 3 * N / 2, wanted);
    combine4Ends<D, Layout::Interleaved, Arranged<L>>(N, y, wanted);
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
