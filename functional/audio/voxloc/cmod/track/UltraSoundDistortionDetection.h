/**
 * Ultrasound distortion detector: strong energy just below the top of the spectrum, such as a
 * presence beacon that overloads the microphones, compared with a neighbouring band below it.
 */
#ifndef VOXLOC_ULTRA_SOUND_DISTORTION_DETECTION_H
#define VOXLOC_ULTRA_SOUND_DISTORTION_DETECTION_H

#include <cstdint>

namespace voxloc {

/** Allocates one level of each band per channel of the module; asserts that memory was there. */
void initializeUltraSoundDistortionDetector();

void destroyUltraSoundDistortionDetector();

/**
 * Takes in one frame of spectra (a slot of SpectrumFloats per channel of the module). Writes 1 to
 * distorted on the frames (one in 20 at most) where the level is found too high, else 0.
 */
void detectUltraSoundDistortion(const float* spectra, std::uint8_t* distorted);

// State, for white-box checks
extern float* UltraSoundLevel;    // [channels], smoothed power of the ultrasound band
extern float* NeighborBandLevel;  // [channels], smoothed power of the neighbour band
extern float TimeSmoothingFactor;
extern std::int16_t AccCount;  // frames since the last evaluation
extern bool WarningIssued;
extern float MaxUltraSoundLevel_dB;      // loudest channel at the last evaluation
extern float LastMaxUltraSoundLevel_dB;  // the same, kept from the evaluation before

}  // namespace voxloc

#endif
