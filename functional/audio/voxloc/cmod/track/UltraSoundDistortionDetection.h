/**
 * Ultrasound distortion detector: strong energy just below the top of the spectrum, such as a
 * presence beacon that overloads the microphones, compared with a neighbouring band below it.
 */
#ifndef VOXLOC_ULTRA_SOUND_DISTORTION_DETECTION_H
#define VOXLOC_ULTRA_SOUND_DISTORTION_DETECTION_H

#include <cstdint>

#include "trackerLog.h"

namespace voxloc {

struct UltraSoundDetector {
    int channels;              // of the two arrays
    float* UltraSoundLevel;    // [channels], smoothed power of the ultrasound band
    float* NeighborBandLevel;  // [channels], smoothed power of the neighbour band
    float TimeSmoothingFactor;
    std::int16_t AccCount;  // frames since the last evaluation
    bool WarningIssued;
    float MaxUltraSoundLevel_dB = -100.0f;      // loudest channel at the last evaluation
    float LastMaxUltraSoundLevel_dB = -100.0f;  // the same, kept from the evaluation before
};

/** Allocates one level of each band per channel; the caller looks whether memory was there. */
void allocateUltraSoundLevels(UltraSoundDetector& detector, int channels);

/** Starts again with the levels that are allocated. */
void resetUltraSoundDistortionDetector(UltraSoundDetector& detector);

/** Allocates and starts; asserts that there was enough memory. */
void initializeUltraSoundDistortionDetector(UltraSoundDetector& detector, int channels);

void destroyUltraSoundDistortionDetector(UltraSoundDetector& detector);

/**
 * Takes in one frame of spectra (a slot of SpectrumFloats per channel). Writes 1 to distorted on
 * the frames (one in 20 at most) where the level is found too high, else 0; logs when that begins
 * and when it ends.
 */
void detectUltraSoundDistortion(UltraSoundDetector& detector, const Log& log, const float* spectra,
                                std::uint8_t* distorted);

}  // namespace voxloc

#endif
