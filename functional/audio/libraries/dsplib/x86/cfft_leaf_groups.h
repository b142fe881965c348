/** How the leaf pass of the complex FFT stores from vectors of eight and sixteen lanes. */
#ifndef DSPLIB_X86_CFFT_LEAF_GROUPS_H
#define DSPLIB_X86_CFFT_LEAF_GROUPS_H

#include "dsplib/simd/simd.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

// Each stores one leaf per group of four lanes from its four blocks, the leaf of group g at to[2g].

inline void storeLeafOfEachGroup(float* const* to, simd::F32x8 v0, simd::F32x8 v1, simd::F32x8 v2,
                                 simd::F32x8 v3) {
    simd::store8(to[0], simd::lowGroups(v0, v1));
    simd::store8(to[0] + 8, simd::lowGroups(v2, v3));
    simd::store8(to[2], simd::highGroups(v0, v1));
    simd::store8(to[2] + 8, simd::highGroups(v2, v3));
}

#if SP_SIMD_WIDEST >= 16
inline void storeLeafOfEachGroup(float* const* to, simd::F32x16 v0, simd::F32x16 v1,
                                 simd::F32x16 v2, simd::F32x16 v3) {
    const simd::F32x16 low0 = simd::lowGroups(v0, v1), low2 = simd::lowGroups(v2, v3);
    const simd::F32x16 high0 = simd::highGroups(v0, v1), high2 = simd::highGroups(v2, v3);
    simd::store16(to[0], simd::evenGroups(low0, low2));
    simd::store16(to[2], simd::oddGroups(low0, low2));
    simd::store16(to[4], simd::evenGroups(high0, high2));
    simd::store16(to[6], simd::oddGroups(high0, high2));
}
#endif

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
