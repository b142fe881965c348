#include "voxlocState.h"

namespace voxloc {

std::int32_t ProductType;
std::int32_t NumberOfChannels;
std::int32_t NumberOfAzimuthPairs;
std::int32_t NumberOfElevationPairs;
float MinimumAzimuth;
float MinimumElevation;
float AngleInterval;
bool AttenuateLoudspeaker;
bool IsTransducersInitialized;

Position* Microphones;
Position* Loudspeaker;
MicrophonePair* AzimuthPairs;
MicrophonePair* ElevationPairs;
float AzimuthAngles[AzimuthCount];
float ElevationAngles[ElevationCount];
float Ranges[RangeCount];
std::int16_t* AzimuthElevationLookupTable;
std::int16_t* AzimuthRangeLookupTable;

alignas(64) float HammingWindow[AnalysisSamples];
alignas(64) float TwiddleFactors[AnalysisSamples];
alignas(64) float ATable[AnalysisSamples];
alignas(64) float BTable[AnalysisSamples];
alignas(64) float TwiddleFactorsUpsampled[CorrelationLags];
alignas(64) float ATableUpsampled[CorrelationLags];
alignas(64) float BTableUpsampled[CorrelationLags];

alignas(64) float FftInput[CorrelationBufferFloats];
alignas(64) float FftOutput[CorrelationBufferFloats];
alignas(64) float KeptCorrelations[KeptCorrelationFloats];
float* InputAudio;
float* RawAudioInput1;
float* RawAudioInput2;
float* CurrentRawAudioInput;
float* PreviousRawAudioInput;
float* FftResult;
float* Numerator1;
float* Numerator2;
float* CurrentNumerator;
float* PreviousNumerator;
float* NoisePowerEstimate;
float* FrequencyWeight;
std::uint8_t* TimeoutCounter;
std::uint8_t TimeoutLimit;

alignas(64) float AzimuthElevationResult[AzimuthElevationPoints];
alignas(64) float AzimuthRangeResult[AzimuthRangePoints];
float* AzimuthQuality;
float* ElevationQuality;
std::int32_t BlockedCounter;

std::FILE* recording;
float RawAudioInput[CorrelationLags];

}  // namespace voxloc
