/** A node of 128 elements where a vector holds a whole leaf: all sixteen stay in registers. */
#ifndef DSPLIB_X86_CFFT_WIDE128_H
#define DSPLIB_X86_CFFT_WIDE128_H

#include "dsplib/arm/cfft_combines.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

/** A node of size 128 from its leaves: a node of 64, two of 32, then 4-way. */
template <Direction D, Orientation O, Layout Out>
inline void combineLeaves128(float* data) {
    using Z = Block<16>;
    using At = Memory<Z>;
    float* const third = data + 8 * LeafFloats;
    float* const last = data + 12 * LeafFloats;
    Eighths<Z> u = loadEighths<Z>(data, LeafFloats);
    Quarters<Z> z = loadQuarters<Z>(third, LeafFloats), zc = loadQuarters<Z>(last, LeafFloats);
    nodeOf64<D, O>(u, 0);
    nodeOf32<D, Orientation::Positive>(z, 0);
    nodeOf32<D, Orientation::Negative>(zc, 0);

    const float* const w = twiddlesOf(128);
    butterfly4<D>(u.x0, u.x4, z.x0, zc.x0, At::loadTwiddle(w));
    butterfly4<D>(u.x1, u.x5, z.x1, zc.x1, At::loadTwiddle(w + LeafFloats));
    butterfly4<D>(u.x2, u.x6, z.x2, zc.x2, At::loadTwiddle(w + 2 * LeafFloats));
    butterfly4<D>(u.x3, u.x7, z.x3, zc.x3, At::loadTwiddle(w + 3 * LeafFloats));
    storeEighths<Out>(data, LeafFloats, u);
    storeQuarters<Out>(third, LeafFloats, z);
    storeQuarters<Out>(last, LeafFloats, zc);
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
