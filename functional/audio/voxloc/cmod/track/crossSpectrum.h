/**
 * The stages of a frame between the channel spectra and the correlations: how far each bin is to be
 * trusted, the smoothing of the cross-spectra, and the phase transform. No state of its own.
 */
#ifndef VOXLOC_CROSS_SPECTRUM_H
#define VOXLOC_CROSS_SPECTRUM_H

#include <cstdint>

#include "microphonePair.h"

namespace voxloc {

/**
 * Follows the noise power of `count` bins (it falls fast and rises slowly) and sets each bin's
 * weight, 0 to 0.5, by how far the bin's power stands above it. spectrum: count complex bins.
 */
void updateFrequencyWeights(const float* spectrum, int count, float* noisePower, float* weight);

/** What one pair's smoothing reads besides the spectra. */
struct SmoothingGate {
    float open;                 // 1 to take in new spectra, 0 to hold
    std::uint8_t timeoutLimit;  // frames that a bin may hold its value without an update
};

/**
 * Recursive smoothing of one pair's cross-spectrum. A bin that gets no update holds its previous
 * value until the timeout, is zeroed for one frame, and its counter restarts.
 *
 * @param pair      the bins in use; those outside are cleared
 * @param gate      see above
 * @param weight1   in, weights of the first microphone, one per bin
 * @param weight2   in, weights of the second microphone
 * @param previous  in, the smoothed cross-spectrum of the frame before
 * @param current   in: this frame's cross-spectrum; out: smoothed
 * @param counter   in and out, frames without update, one per bin
 */
void smoothCrossSpectrum(const MicrophonePair& pair, SmoothingGate gate, const float* weight1,
                         const float* weight2, const float* previous, float* current,
                         std::uint8_t* counter);

/**
 * Phase transform: writes each of the SpectrumBins complex values with magnitude 1, or 0 where it
 * is too small to have a phase, and lays the spectrum out for the upsampling inverse transform:
 * `out` has CorrelationBufferFloats floats, zero beyond the spectrum.
 */
void whiten(const float* crossSpectrum, float* out);

/** Damps the zone of the correlation where the loudspeaker's direct sound peaks. */
void attenuateLoudspeaker(const MicrophonePair& pair, float* correlation);

}  // namespace voxloc

#endif
