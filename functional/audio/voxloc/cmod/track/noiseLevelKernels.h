/** The noise-level estimator's loops over the bins of a spectrum. No state. */
#ifndef VOXLOC_NOISE_LEVEL_KERNELS_H
#define VOXLOC_NOISE_LEVEL_KERNELS_H

#include "dsplib/simd/simdKernel.h"

namespace voxloc {

/**
 * The fast and the slow average of each bin follow its mean amplitude in two spectra.
 *
 * Both averages have the gain 4/π on a constant amplitude, deliberately: the noise estimate carries
 * it, and the voice detector's thresholds are set against that.
 */
SP_SIMD_KERNEL(trackLevels, void(const float* spectrum1, const float* spectrum2, float* fastLevel,
                                 float* slowLevel));

/** Sums over the speech band. */
struct BandLevels {
    float fast, slow, noise;
};
SP_SIMD_KERNEL(sumBand,
               BandLevels(const float* fastLevel, const float* slowLevel, const float* noiseLevel));

/** Each bin's noise level moves towards its slow level by a share, of its own up and down. */
SP_SIMD_KERNEL(adapt, void(const float* slowLevel, float rising, float sinking, float* noiseLevel));

}  // namespace voxloc

#endif
