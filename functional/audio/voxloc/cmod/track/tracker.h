/**
 * The one struct that is a tracker: all that voxloc_initialize builds and the frames carry along.
 *
 * The module behind voxloc_initialize is one object of this kind, voxloc_createTracker makes more.
 * Stages and detectors take from it what they need; only voxlocSetup.cpp, voxloc.cpp and the two
 * interfaces (voxlocModule.cpp, ownTrackers.cpp) know all of it.
 */
#ifndef VOXLOC_TRACKER_H
#define VOXLOC_TRACKER_H

#include <cstdint>

#include "UltraSoundDistortionDetection.h"
#include "frameScaling.h"
#include "frequencyDomainVad.h"
#include "grids.h"
#include "microphonePair.h"
#include "noiseLevel.h"
#include "recording.h"
#include "timeDomainVad.h"
#include "trackerLog.h"
#include "voxloc.h"

namespace voxloc {

/** What a buffer has its elements for: a channel, any pair, a pair of one of the maps, all. */
enum class Per { Channel, Pair, Elevation, Azimuth, Tracker };

/** When a buffer is written. */
enum class Written { Setup, Frame };

// clang-format off
/**
 * Every buffer on the heap, named once: declared, allocated, checked and released in this order.
 * Memory for those that it needs (Must) is asserted; that excepts ElevationPairs, deliberately,
 * since one product has none. A reset clears what frames write, and keeps what the set-up wrote.
 */
#define VOXLOC_TRACKER_BUFFERS(X)                                                                  \
    /* element         name                         of each    elements                need from */  \
    X(float,          InputAudio,                  Channel,   AnalysisSamples,        Must,Frame)  \
    X(float,          RawAudioInput1,              Channel,   FRAME_SAMPLES,          Must,Frame)  \
    X(float,          RawAudioInput2,              Channel,   FRAME_SAMPLES,          Must,Frame)  \
    X(float,          FftResult,                   Channel,   SpectrumFloats,         Must,Frame)  \
    X(float,          Numerator1,                  Pair,      SpectrumFloats,         Must,Frame)  \
    X(float,          Numerator2,                  Pair,      SpectrumFloats,         Must,Frame)  \
    X(float,          NoisePowerEstimate,          Channel,   SpectrumBins,           Must,Frame)  \
    X(float,          FrequencyWeight,             Channel,   SpectrumBins,           Must,Frame)  \
    X(std::uint8_t,   TimeoutCounter,              Pair,      SpectrumBins,           Must,Frame)  \
    X(std::int16_t,   AzimuthElevationLookupTable, Elevation, AzimuthElevationPoints, Must,Setup)  \
    X(std::int16_t,   AzimuthRangeLookupTable,     Azimuth,   AzimuthRangePoints,     Must,Setup)  \
    X(Position,       Microphones,                 Channel,   1,                      Must,Setup)  \
    X(Position,       Loudspeaker,                 Tracker,   1,                      Must,Setup)  \
    X(MicrophonePair, AzimuthPairs,                Azimuth,   1,                      Must,Setup)  \
    X(MicrophonePair, ElevationPairs,              Elevation, 1,                      May, Setup)  \
    X(float,          AzimuthQuality,              Azimuth,   1,                      Must,Frame)  \
    X(float,          ElevationQuality,            Elevation, 1,                      Must,Frame)  \
    X(float,          KeptCorrelations,            Tracker,   tracker.Kept.floats,    Must,Frame)
// clang-format on

/**
 * Where the correlations of all pairs are kept while the maps are summed.
 *
 * A kept correlation is addressed by lag, from 0 to 16384, and lies where its first and last lags
 * do. The slots of the pairs overlap in the lags between, which nobody reads.
 */
struct KeptSlots {
    int distance;  // floats from one slot to the next
    int floats;    // of all
};

/** What a frame needs to know of a pair block beyond the pair: found out once. */
struct PairBlock {
    const MicrophonePair* pair;
    int source;   // the first block of the same two microphones: its correlation serves this one
    int reach;    // lags at either end that the pair's table can hold
    float* kept;  // the correlation, by lag
};

/** Tables of the window and of the transforms. */
struct TransformTables {
    alignas(64) float HammingWindow[AnalysisSamples];
    alignas(64) float TwiddleFactors[AnalysisSamples];
    alignas(64) float ATable[AnalysisSamples];
    alignas(64) float BTable[AnalysisSamples];
    alignas(64) float TwiddleFactorsUpsampled[CorrelationLags];
    alignas(64) float ATableUpsampled[CorrelationLags];
    alignas(64) float BTableUpsampled[CorrelationLags];
};

/** A bin may hold its value that many frames while nobody talks. */
constexpr std::uint8_t ShortTimeout = 2;

struct Tracker {
    // Settings
    VoxlocArray Array;
    std::int32_t ProductType;
    std::int32_t NumberOfChannels;
    std::int32_t NumberOfAzimuthPairs;
    std::int32_t NumberOfElevationPairs;
    float MinimumAzimuth;    // sine of the lowest azimuth
    float MinimumElevation;  // sine of the lowest elevation
    float AngleInterval;     // step of both angle grids, in sine of angle
    bool AttenuateLoudspeaker;
    bool IsTransducersInitialized;

    // Geometry
    float AzimuthAngles[AzimuthCount];      // radians
    float ElevationAngles[ElevationCount];  // radians
    float Ranges[RangeCount];               // metres
    KeptSlots Kept;
    PairBlock Blocks[MaxPairBlocks];  // elevation pairs first
    TransformTables Tables;

    // The buffers on the heap; pair blocks are elevation pairs first
#define VOXLOC_DECLARE_BUFFER(element, name, per, each, need, written) element* name;
    VOXLOC_TRACKER_BUFFERS(VOXLOC_DECLARE_BUFFER)
#undef VOXLOC_DECLARE_BUFFER

    // Work of a frame, and which buffers take turns. The raw input of the frame before is kept for
    // who looks at it: what a frame needs of it stands in InputAudio.
    alignas(64) float FftInput[CorrelationBufferFloats];
    alignas(64) float FftOutput[CorrelationBufferFloats];
    float* CurrentRawAudioInput;
    float* PreviousRawAudioInput;
    float* CurrentNumerator;
    float* PreviousNumerator;
    std::uint8_t TimeoutLimit;  // frames that a bin may hold its value without an update

    // Results
    alignas(64) float AzimuthElevationResult[AzimuthElevationPoints];
    alignas(64) float AzimuthRangeResult[AzimuthRangePoints];
    std::int32_t BlockedCounter;  // frames judged as a panel mounted upside down
    SilencedSamples Silenced;

    // Detectors
    TimeDomainVad TimeDomain;
    NoiseLevelEstimator Noise;
    FrequencyDomainVad FrequencyDomain;
    UltraSoundDetector UltraSound;

    // Services
    Recording recording;
    Log log;
};

/** Blocks in the numerators and counters. */
inline int numberOfPairs(const Tracker& tracker) {
    return tracker.NumberOfElevationPairs + tracker.NumberOfAzimuthPairs;
}

// voxlocSetup.cpp

/** Takes an array's settings over; the array is one that findWiringFault has nothing against. */
void applySettings(Tracker& tracker, std::int32_t productType, const VoxlocArray& array);

/**
 * Allocates the buffers and builds everything in them, the ultrasound detector's excepted. Whether
 * there was enough memory is for the caller to find out: with too little, IsTransducersInitialized
 * stays unset.
 */
void setUp(Tracker& tracker);

/** Asserts that the settings are made and that there was memory for each buffer. */
void checkMemoryAllocation(const Tracker& tracker);

/** True when there was memory for each buffer. */
bool hasAllBuffers(const Tracker& tracker);

/** Frees each buffer; the pointers stay as they are. */
void releaseBuffers(Tracker& tracker);

/** Puts everything that frames change back to what setUp left. */
void forgetFrames(Tracker& tracker);

void initializeTransducerData(Tracker& tracker, const VoxlocArray* array);
void initializeSinglePair(const Tracker& tracker, MicrophonePair* pair, int first, int second);

// voxloc.cpp

/** Processes one frame; see voxloc_calculate. */
void calculate(Tracker& tracker, const float* frame, std::uint32_t bits, std::uint32_t flags,
               TrackerResult& result);

// voxlocModule.cpp

/** The tracker behind voxloc_initialize and voxloc_calculate, for white-box checks. */
Tracker& moduleTracker();

}  // namespace voxloc

/** A tracker of the user's own. */
struct VoxlocTracker {
    voxloc::Tracker tracker;
};

#endif
