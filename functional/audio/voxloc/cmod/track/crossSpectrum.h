/**
 * The stages of a frame between the channel spectra and the correlations: how far each bin is to be
 * trusted, and the smoothing of the cross-spectra. No state of its own.
 */
#ifndef VOXLOC_CROSS_SPECTRUM_H
#define VOXLOC_CROSS_SPECTRUM_H

#include <cstdint>

#include "dsplib/simd/simdKernel.h"
#include "microphonePair.h"

namespace voxloc {

/**
 * Follows the noise power of `count` bins (it falls fast and rises slowly) and sets each bin's
 * weight, 0 to 0.5, by how far the bin's power stands above it. spectrum: count complex bins.
 */
SP_SIMD_KERNEL(updateFrequencyWeights,
               void(const float* spectrum, int count, float* noisePower, float* weight));

/** What one pair's smoothing reads besides the spectra. */
struct SmoothingGate {
    float open;                 // 1 to take in new spectra, 0 to hold
    std::uint8_t timeoutLimit;  // frames that a bin may hold its value without an update
};

/** What one pair's smoothing reads of one microphone. */
struct MicrophoneSpectrum {
    const float* bins;    // complex
    const float* weight;  // one per bin
};

/**
 * One pair's smoothed cross-spectrum: the product of the first spectrum with the conjugate of the
 * second, recursively averaged. A bin that gets no update holds its previous value until the
 * timeout, is zeroed for one frame, and its counter restarts.
 *
 * @param pair      the bins in use; those outside are cleared
 * @param gate      see above
 * @param first     in, the first microphone
 * @param second    in, the second microphone
 * @param previous  in, the smoothed cross-spectrum of the frame before
 * @param current   out, the smoothed cross-spectrum, SpectrumBins complex values
 * @param counter   in and out, frames without update, one per bin
 */
SP_SIMD_KERNEL(smoothCrossSpectrum,
               void(const MicrophonePair& pair, SmoothingGate gate, const MicrophoneSpectrum& first,
                    const MicrophoneSpectrum& second, const float* previous, float* current,
                    std::uint8_t* counter));

}  // namespace voxloc

#endif
