/**
 * The module's state: what one voxloc_initialize builds and the frames carry along.
 *
 * Only voxlocSetup.cpp (initialise, destroy) and voxloc.cpp (the frames) write it. This header is
 * not installed; besides those two only the white-box checks of the module include it.
 */
#ifndef VOXLOC_STATE_H
#define VOXLOC_STATE_H

#include <cstdint>
#include <cstdio>

#include "gridSearch.h"
#include "grids.h"
#include "microphonePair.h"
#include "phaseTransform.h"
#include "products.h"
#include "voxloc.h"

namespace voxloc {

/** Floats from one kept correlation to the next, so that neither end of one reaches another's. */
constexpr int KeptCorrelationDistance = 2 * NearLags + GatherWindow;
constexpr int KeptCorrelationFloats =
    CorrelationBufferFloats + (MaxElevationPairs + MaxAzimuthPairs - 1) * KeptCorrelationDistance +
    GatherWindow;

// Product
extern std::int32_t ProductType;
extern std::int32_t NumberOfChannels;
extern std::int32_t NumberOfAzimuthPairs;
extern std::int32_t NumberOfElevationPairs;
extern float MinimumAzimuth;    // sine of the lowest azimuth
extern float MinimumElevation;  // sine of the lowest elevation
extern float AngleInterval;     // step of both angle grids, in sine of angle
extern bool AttenuateLoudspeaker;
extern bool IsTransducersInitialized;

// Geometry
extern Position* Microphones;                      // [channels]
extern Position* Loudspeaker;                      // [1]
extern MicrophonePair* AzimuthPairs;               // [azimuth pairs]
extern MicrophonePair* ElevationPairs;             // [elevation pairs]
extern float AzimuthAngles[AzimuthCount];          // radians
extern float ElevationAngles[ElevationCount];      // radians
extern float Ranges[RangeCount];                   // metres
extern std::int16_t* AzimuthElevationLookupTable;  // [elevation pairs][AzimuthElevationPoints]
extern std::int16_t* AzimuthRangeLookupTable;      // [azimuth pairs][AzimuthRangePoints]

// Transform tables
extern float HammingWindow[AnalysisSamples];
extern float TwiddleFactors[AnalysisSamples];
extern float ATable[AnalysisSamples];
extern float BTable[AnalysisSamples];
extern float TwiddleFactorsUpsampled[CorrelationLags];
extern float ATableUpsampled[CorrelationLags];
extern float BTableUpsampled[CorrelationLags];

// Audio, spectra and correlations
extern float FftInput[CorrelationBufferFloats];
extern float FftOutput[CorrelationBufferFloats];
extern float KeptCorrelations[KeptCorrelationFloats];  // of all pairs
extern float* InputAudio;                              // [channels][AnalysisSamples]
extern float* RawAudioInput1;                          // [channels][FRAME_SAMPLES]
extern float* RawAudioInput2;                          // [channels][FRAME_SAMPLES]
extern float* CurrentRawAudioInput;
extern float* PreviousRawAudioInput;
extern float* FftResult;   // [channels][SpectrumFloats]
extern float* Numerator1;  // [pairs][SpectrumFloats], elevation pairs first
extern float* Numerator2;  // [pairs][SpectrumFloats], elevation pairs first
extern float* CurrentNumerator;
extern float* PreviousNumerator;
extern float* NoisePowerEstimate;     // [channels][SpectrumBins]
extern float* FrequencyWeight;        // [channels][SpectrumBins], 0 to 0.5
extern std::uint8_t* TimeoutCounter;  // [pairs][SpectrumBins]
extern std::uint8_t TimeoutLimit;     // frames that a bin may hold its value without an update

// Results
extern float AzimuthElevationResult[AzimuthElevationPoints];
extern float AzimuthRangeResult[AzimuthRangePoints];
extern float* AzimuthQuality;        // [azimuth pairs]
extern float* ElevationQuality;      // [elevation pairs]
extern std::int32_t BlockedCounter;  // frames judged as a panel mounted upside down

// Services
extern std::FILE* recording;
extern float RawAudioInput[CorrelationLags];

/** A bin may hold its value that many frames while nobody talks. */
constexpr std::uint8_t ShortTimeout = 2;

/** Blocks in the numerators and counters. */
inline int numberOfPairs() {
    return NumberOfElevationPairs + NumberOfAzimuthPairs;
}

void initializeTransducerData();
void initializeSinglePair(MicrophonePair* pair, int first, int second);
void checkMemoryAllocation();

}  // namespace voxloc

#endif
