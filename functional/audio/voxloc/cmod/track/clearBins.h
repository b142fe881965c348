/** Zeroes of spectra, for units with kernels: compiled anew for each width of vectors. */
#ifndef VOXLOC_CLEAR_BINS_H
#define VOXLOC_CLEAR_BINS_H

#include <cstddef>
#include <cstring>

#include "dsplib/simd/simd.h"

namespace voxloc {
inline namespace SP_SIMD_TARGET {

/** Zeroes the complex bins from `begin` up to `end`; none where there are none between. */
inline void clearBins(float* bins, int begin, int end) {
    if (begin >= end) return;
    std::memset(bins + 2 * begin, 0, static_cast<std::size_t>(end - begin) * 2 * sizeof *bins);
}

}  // namespace SP_SIMD_TARGET
}  // namespace voxloc

#endif
