/**
 * Setting a tracker up, tearing it down and starting it again: everything that the frames need is
 * allocated and built here, once. voxloc.cpp is the other half, the frames.
 */
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "arrayCheck.h"
#include "assertion/assertion.h"
#include "gridSearch.h"
#include "loudspeakerZone.h"
#include "pairGeometry.h"
#include "tracker.h"

namespace voxloc {

namespace {

constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/voxloc";

constexpr float FarField = 1000.0f;  // metres, range of the azimuth-elevation grid

int countOf(Per per, const Tracker& tracker) {
    switch (per) {
        case Per::Channel:
            return tracker.NumberOfChannels;
        case Per::Pair:
            return numberOfPairs(tracker);
        case Per::Elevation:
            return tracker.NumberOfElevationPairs;
        case Per::Azimuth:
            return tracker.NumberOfAzimuthPairs;
        case Per::Tracker:
            break;
    }
    return 1;
}

template <class Element>
Element* allocateZeroed(int count) {
    const auto atLeastOne = static_cast<std::size_t>(std::max(count, 1));  // null means failure
    return static_cast<Element*>(std::calloc(atLeastOne, sizeof(Element)));
}

template <class Element>
void clear(Element* buffer, int count) {
    std::fill_n(buffer, count, Element{});
}

/** Results are looked at in checkMemoryAllocation and hasAllBuffers. */
void allocateBuffers(Tracker& tracker) {
#define VOXLOC_ALLOCATE(element, name, per, each, need, written) \
    tracker.name = allocateZeroed<element>(countOf(Per::per, tracker) * (each));
    VOXLOC_TRACKER_BUFFERS(VOXLOC_ALLOCATE)
#undef VOXLOC_ALLOCATE
}

/** The order in which buffers take turns begins with the first of each two. */
void pointAtBuffers(Tracker& tracker) {
    tracker.CurrentRawAudioInput = tracker.RawAudioInput1;
    tracker.PreviousRawAudioInput = tracker.RawAudioInput2;
    tracker.CurrentNumerator = tracker.Numerator1;
    tracker.PreviousNumerator = tracker.Numerator2;
    tracker.TimeoutLimit = ShortTimeout;
}

/** True when everything that the geometry is written to could be allocated. */
bool hasGeometryMemory(const Tracker& tracker) {
    const bool hasElevation = tracker.NumberOfElevationPairs == 0 ||
                              (tracker.ElevationPairs && tracker.AzimuthElevationLookupTable);
    return hasElevation && tracker.Microphones && tracker.Loudspeaker && tracker.AzimuthPairs &&
           tracker.AzimuthRangeLookupTable && tracker.KeptCorrelations;
}

void generateTransformTables(TransformTables& tables) {
    voxloc_generateHammingWindow(tables.HammingWindow);
    voxloc_generateTwiddleFactors(tables.TwiddleFactors, AnalysisSamples / 2);
    voxloc_generateTwiddleFactors(tables.TwiddleFactorsUpsampled, CorrelationLags / 2);
    voxloc_generateAbTables(tables.ATable, tables.BTable, AnalysisSamples / 2);
    voxloc_generateAbTables(tables.ATableUpsampled, tables.BTableUpsampled, CorrelationLags / 2);
}

void pointPairsAtTables(Tracker& tracker) {
    for (int k = 0; k < tracker.NumberOfElevationPairs; ++k) {
        tracker.ElevationPairs[k].lookupTable =
            tracker.AzimuthElevationLookupTable + k * AzimuthElevationPoints;
    }
    for (int k = 0; k < tracker.NumberOfAzimuthPairs; ++k) {
        tracker.AzimuthPairs[k].lookupTable =
            tracker.AzimuthRangeLookupTable + k * AzimuthRangePoints;
    }
}

/** The channels of a pair block: elevation pairs first. */
VoxlocPair channelsOfBlock(const VoxlocArray& array, int p) {
    return p < array.elevationPairs ? array.elevationPair[p]
                                    : array.azimuthPair[p - array.elevationPairs];
}

int reachOfBlock(const VoxlocArray& array, int p) {
    const VoxlocPair channels = channelsOfBlock(array, p);
    return reachInLags(array.microphone[channels.first], array.microphone[channels.second]);
}

/**
 * Slots so close that neither end of one reaches another's, or whole ones where the last slot's
 * first lags would lie on the first slot's last ones.
 */
KeptSlots keptSlots(const VoxlocArray& array) {
    const int blocks = array.elevationPairs + array.azimuthPairs;
    int reach = 0;
    for (int p = 0; p < blocks; ++p) reach = std::max(reach, reachOfBlock(array, p));
    constexpr int whole = CorrelationBufferFloats + GatherWindow;
    const int distance = 2 * reach + GatherWindow;
    const bool fit = (blocks - 1) * distance + reach + GatherWindow <= CorrelationLags - reach;
    const int used = fit ? distance : whole;
    return {used, (blocks - 1) * used + whole};
}

/**
 * A pair may serve both maps; all that goes into its correlation is then the same, and computed
 * once.
 */
int firstOfSameMicrophones(const VoxlocArray& array, int p) {
    const VoxlocPair wanted = channelsOfBlock(array, p);
    int q = 0;
    while (channelsOfBlock(array, q).first != wanted.first ||
           channelsOfBlock(array, q).second != wanted.second) {
        ++q;
    }
    return q;
}

void planPairBlocks(Tracker& tracker) {
    const int elevationPairs = tracker.NumberOfElevationPairs;
    for (int p = 0; p < numberOfPairs(tracker); ++p) {
        const int source = firstOfSameMicrophones(tracker.Array, p);
        tracker.Blocks[p] = {p < elevationPairs ? &tracker.ElevationPairs[p]
                                                : &tracker.AzimuthPairs[p - elevationPairs],
                             source, reachOfBlock(tracker.Array, p),
                             tracker.KeptCorrelations + source * tracker.Kept.distance};
    }
}

void fillAngles(float minimum, float interval, int count, float* angles) {
    for (int i = 0; i < count; ++i) angles[i] = std::asin(gridSine(minimum, interval, i));
}

void fillGrids(Tracker& tracker) {
    for (int i = 0; i < RangeCount; ++i) {
        tracker.Ranges[i] = NearestRange + RangeInterval * static_cast<float>(i);
    }
    fillAngles(tracker.MinimumAzimuth, tracker.AngleInterval, AzimuthCount, tracker.AzimuthAngles);
    fillAngles(tracker.MinimumElevation, tracker.AngleInterval, ElevationCount,
               tracker.ElevationAngles);
}

void fillLagTables(const Tracker& tracker) {
    std::array<float, AzimuthCount> sine, cosine;
    for (std::size_t a = 0; a < AzimuthCount; ++a) {
        sine[a] = std::sin(tracker.AzimuthAngles[a]);
        cosine[a] = std::cos(tracker.AzimuthAngles[a]);
    }
    const auto fillRow = [&](const MicrophonePair& pair, int row, float elevation, float range) {
        lagsOfRow({sine.data(), cosine.data()}, AzimuthCount, elevation, range,
                  tracker.Microphones[pair.firstMicrophone],
                  tracker.Microphones[pair.secondMicrophone],
                  pair.lookupTable + row * AzimuthCount);
    };
    for (int k = 0; k < tracker.NumberOfElevationPairs; ++k) {
        for (int e = 0; e < ElevationCount; ++e) {
            fillRow(tracker.ElevationPairs[k], e, tracker.ElevationAngles[e], FarField);
        }
    }
    for (int k = 0; k < tracker.NumberOfAzimuthPairs; ++k) {
        for (int r = 0; r < RangeCount; ++r) {
            fillRow(tracker.AzimuthPairs[k], r, 0.0f, tracker.Ranges[r]);
        }
    }
}

/** Without memory for it the geometry stays unset, which the checks at the end then report. */
void buildGeometry(Tracker& tracker) {
    if (!hasGeometryMemory(tracker)) return;
    initializeTransducerData(tracker, &tracker.Array);
    pointPairsAtTables(tracker);
    planPairBlocks(tracker);
    tracker.IsTransducersInitialized = true;
    fillGrids(tracker);
    fillLagTables(tracker);
}

/** All but the ultrasound detector, which has memory of its own. */
void resetDetectors(Tracker& tracker) {
    intializeNoiseLevel(tracker.Noise);
    initializeFrequencyDomainActivityDetector(tracker.FrequencyDomain);
    initializeTimeDomainActivityDetector(tracker.TimeDomain);
}

}  // namespace

void applySettings(Tracker& tracker, std::int32_t productType, const VoxlocArray& array) {
    const auto channel = [](std::int32_t index) { return static_cast<std::uint32_t>(index); };
    tracker.Array = array;
    tracker.ProductType = productType;
    tracker.NumberOfChannels = array.channels;
    tracker.NumberOfAzimuthPairs = array.azimuthPairs;
    tracker.NumberOfElevationPairs = array.elevationPairs;
    tracker.MinimumAzimuth = array.minimumAzimuth;
    tracker.MinimumElevation = array.minimumElevation;
    tracker.AngleInterval = array.angleInterval;
    tracker.AttenuateLoudspeaker = array.attenuateLoudspeaker != 0;
    tracker.Kept = keptSlots(array);
    const std::uint32_t timeDomainChannel = channel(array.timeDomainVoiceChannel);
    setTimeDomainVadChannel(tracker.TimeDomain, timeDomainChannel, timeDomainChannel);
    setFrequencyDomainVadChannels(tracker.FrequencyDomain, channel(array.voiceChannels.first),
                                  channel(array.voiceChannels.second));
    setNoiseLevelChannels(tracker.Noise, channel(array.noiseChannels.first),
                          channel(array.noiseChannels.second));
}

void setUp(Tracker& tracker) {
    allocateBuffers(tracker);
    pointAtBuffers(tracker);
    generateTransformTables(tracker.Tables);
    buildGeometry(tracker);
    tracker.Silenced = {};
    resetDetectors(tracker);
}

void initializeSinglePair(const Tracker& tracker, MicrophonePair* pair, int first, int second) {
    const Position& firstPosition = tracker.Microphones[first];
    const Position& secondPosition = tracker.Microphones[second];
    pair->firstMicrophone = static_cast<std::int16_t>(first);
    pair->secondMicrophone = static_cast<std::int16_t>(second);
    pair->lookupTable = nullptr;
    voxloc_setCutoffCoefficients(&firstPosition, &secondPosition, &pair->upperBin, &pair->lowerBin);
    LoudspeakerZone zone = NoLoudspeakerZone;
    if (tracker.AttenuateLoudspeaker) {
        zone = loudspeakerZone(voxloc_calculateDistance(tracker.Loudspeaker, &firstPosition),
                               voxloc_calculateDistance(tracker.Loudspeaker, &secondPosition));
    }
    pair->loudspeakerHalfWidth = zone.halfWidth;
    pair->loudspeakerLag = zone.lag;
    pair->loudspeakerGain = zone.gain;
}

void initializeTransducerData(Tracker& tracker, const VoxlocArray* array) {
    PLATFORM_ASSERT_AS("false", array != nullptr);
    std::copy_n(array->microphone, tracker.NumberOfChannels, tracker.Microphones);
    *tracker.Loudspeaker = array->loudspeaker;
    for (int k = 0; k < tracker.NumberOfElevationPairs; ++k) {
        const VoxlocPair channels = array->elevationPair[k];
        initializeSinglePair(tracker, &tracker.ElevationPairs[k], channels.first, channels.second);
    }
    for (int k = 0; k < tracker.NumberOfAzimuthPairs; ++k) {
        const VoxlocPair channels = array->azimuthPair[k];
        initializeSinglePair(tracker, &tracker.AzimuthPairs[k], channels.first, channels.second);
    }
}

void checkMemoryAllocation(const Tracker& tracker) {
    PLATFORM_ASSERT_AS("NumberOfChannels > 0", tracker.NumberOfChannels > 0);
    PLATFORM_ASSERT_AS("NumberOfAzimuthPairs > 0", tracker.NumberOfAzimuthPairs > 0);
    PLATFORM_ASSERT_AS("MinimumElevation != 0.0f", tracker.MinimumElevation != 0.0f);
    PLATFORM_ASSERT_AS("MinimumAzimuth != 0.0f", tracker.MinimumAzimuth != 0.0f);
    PLATFORM_ASSERT_AS("AngleInterval > 0.0f", tracker.AngleInterval > 0.0f);
#define VOXLOC_ASSERT_Must(name) PLATFORM_ASSERT_AS(#name, tracker.name)
#define VOXLOC_ASSERT_May(name) static_cast<void>(0)
#define VOXLOC_ASSERT(element, name, per, each, need, written) VOXLOC_ASSERT_##need(name);
    VOXLOC_TRACKER_BUFFERS(VOXLOC_ASSERT)
#undef VOXLOC_ASSERT
#undef VOXLOC_ASSERT_May
#undef VOXLOC_ASSERT_Must
}

bool hasAllBuffers(const Tracker& tracker) {
    bool all = true;
#define VOXLOC_LOOK(element, name, per, each, need, written) all = all && tracker.name != nullptr;
    VOXLOC_TRACKER_BUFFERS(VOXLOC_LOOK)
#undef VOXLOC_LOOK
    return all;
}

void releaseBuffers(Tracker& tracker) {
#define VOXLOC_RELEASE(element, name, per, each, need, written) std::free(tracker.name);
    VOXLOC_TRACKER_BUFFERS(VOXLOC_RELEASE)
#undef VOXLOC_RELEASE
}

void forgetFrames(Tracker& tracker) {
#define VOXLOC_CLEAR(element, name, per, each, need, written) \
    if (Written::written == Written::Frame)                   \
        clear(tracker.name, countOf(Per::per, tracker) * (each));
    VOXLOC_TRACKER_BUFFERS(VOXLOC_CLEAR)
#undef VOXLOC_CLEAR
    clear(tracker.AzimuthElevationResult, AzimuthElevationPoints);
    clear(tracker.AzimuthRangeResult, AzimuthRangePoints);
    tracker.BlockedCounter = 0;
    tracker.Silenced = {};
    pointAtBuffers(tracker);
    resetDetectors(tracker);
    resetUltraSoundDistortionDetector(tracker.UltraSound);
}

}  // namespace voxloc
