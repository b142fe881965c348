/**
 * Setting the tracker up and tearing it down: everything that the frames need is allocated and
 * built here, once. voxloc.cpp is the other half, the frames.
 */
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "UltraSoundDistortionDetection.h"
#include "assertion/assertion.h"
#include "frequencyDomainVad.h"
#include "noiseLevel.h"
#include "pairGeometry.h"
#include "products.h"
#include "timeDomainVad.h"
#include "voxloc.h"
#include "voxlocState.h"

namespace voxloc {

namespace {

constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/voxloc";

constexpr std::uint32_t TimeDomainVadChannel = 2;
constexpr float FarField = 1000.0f;  // metres, range of the azimuth-elevation grid

void applySettings(const Product& product) {
    const auto channel = [](int index) { return static_cast<std::uint32_t>(index); };
    NumberOfChannels = product.channels;
    NumberOfAzimuthPairs = product.azimuthPairs;
    NumberOfElevationPairs = product.elevationPairs;
    MinimumAzimuth = product.minimumAzimuth;
    MinimumElevation = product.minimumElevation;
    AngleInterval = product.angleInterval;
    setTimeDomainVadChannel(TimeDomainVadChannel, TimeDomainVadChannel);
    setFrequencyDomainVadChannels(channel(product.frequencyDomainVadChannels.first),
                                  channel(product.frequencyDomainVadChannels.second));
    setNoiseLevelChannels(channel(product.noiseLevelChannels.first),
                          channel(product.noiseLevelChannels.second));
    AttenuateLoudspeaker = product.attenuateLoudspeaker;
}

template <class Element>
Element* allocateZeroed(int count) {
    const auto atLeastOne = static_cast<std::size_t>(std::max(count, 1));  // null means failure
    return static_cast<Element*>(std::calloc(atLeastOne, sizeof(Element)));
}

/** Results are looked at in checkMemoryAllocation. */
void allocateBuffers() {
    InputAudio = allocateZeroed<float>(NumberOfChannels * AnalysisSamples);
    RawAudioInput1 = allocateZeroed<float>(NumberOfChannels * FRAME_SAMPLES);
    CurrentRawAudioInput = RawAudioInput1;
    RawAudioInput2 = allocateZeroed<float>(NumberOfChannels * FRAME_SAMPLES);
    PreviousRawAudioInput = RawAudioInput2;
    FftResult = allocateZeroed<float>(NumberOfChannels * SpectrumFloats);
    Numerator1 = allocateZeroed<float>(numberOfPairs() * SpectrumFloats);
    CurrentNumerator = Numerator1;
    Numerator2 = allocateZeroed<float>(numberOfPairs() * SpectrumFloats);
    PreviousNumerator = Numerator2;
    NoisePowerEstimate = allocateZeroed<float>(NumberOfChannels * SpectrumBins);
    FrequencyWeight = allocateZeroed<float>(NumberOfChannels * SpectrumBins);
    TimeoutCounter = allocateZeroed<std::uint8_t>(numberOfPairs() * SpectrumBins);
    AzimuthElevationLookupTable =
        allocateZeroed<std::int16_t>(NumberOfElevationPairs * AzimuthElevationPoints);
    AzimuthRangeLookupTable =
        allocateZeroed<std::int16_t>(NumberOfAzimuthPairs * AzimuthRangePoints);
    Microphones = allocateZeroed<Position>(NumberOfChannels);
    Loudspeaker = allocateZeroed<Position>(1);
    AzimuthPairs = allocateZeroed<MicrophonePair>(NumberOfAzimuthPairs);
    ElevationPairs = allocateZeroed<MicrophonePair>(NumberOfElevationPairs);
    AzimuthQuality = allocateZeroed<float>(NumberOfAzimuthPairs);
    ElevationQuality = allocateZeroed<float>(NumberOfElevationPairs);
    TimeoutLimit = ShortTimeout;
}

/** True when everything that the geometry is written to could be allocated. */
bool hasGeometryMemory() {
    const bool hasElevation =
        NumberOfElevationPairs == 0 || (ElevationPairs && AzimuthElevationLookupTable);
    return hasElevation && Microphones && Loudspeaker && AzimuthPairs && AzimuthRangeLookupTable;
}

void generateTransformTables() {
    voxloc_generateHammingWindow(HammingWindow);
    voxloc_generateTwiddleFactors(TwiddleFactors, AnalysisSamples / 2);
    voxloc_generateTwiddleFactors(TwiddleFactorsUpsampled, CorrelationLags / 2);
    voxloc_generateAbTables(ATable, BTable, AnalysisSamples / 2);
    voxloc_generateAbTables(ATableUpsampled, BTableUpsampled, CorrelationLags / 2);
}

void pointPairsAtTables() {
    for (int k = 0; k < NumberOfElevationPairs; ++k) {
        ElevationPairs[k].lookupTable = AzimuthElevationLookupTable + k * AzimuthElevationPoints;
    }
    for (int k = 0; k < NumberOfAzimuthPairs; ++k) {
        AzimuthPairs[k].lookupTable = AzimuthRangeLookupTable + k * AzimuthRangePoints;
    }
}

void fillAngles(float minimum, int count, float* angles) {
    for (int i = 0; i < count; ++i) {
        angles[i] = std::asin(minimum + static_cast<float>(i) * AngleInterval);
    }
}

void fillGrids() {
    for (int i = 0; i < RangeCount; ++i) Ranges[i] = 0.5f + 0.2f * static_cast<float>(i);
    fillAngles(MinimumAzimuth, AzimuthCount, AzimuthAngles);
    fillAngles(MinimumElevation, ElevationCount, ElevationAngles);
}

void fillLagTables() {
    std::array<float, AzimuthCount> sine, cosine;
    for (std::size_t a = 0; a < AzimuthCount; ++a) {
        sine[a] = std::sin(AzimuthAngles[a]);
        cosine[a] = std::cos(AzimuthAngles[a]);
    }
    const auto fillRow = [&](const MicrophonePair& pair, int row, float elevation, float range) {
        lagsOfRow({sine.data(), cosine.data()}, AzimuthCount, elevation, range,
                  Microphones[pair.firstMicrophone], Microphones[pair.secondMicrophone],
                  pair.lookupTable + row * AzimuthCount);
    };
    for (int k = 0; k < NumberOfElevationPairs; ++k) {
        for (int e = 0; e < ElevationCount; ++e) {
            fillRow(ElevationPairs[k], e, ElevationAngles[e], FarField);
        }
    }
    for (int k = 0; k < NumberOfAzimuthPairs; ++k) {
        for (int r = 0; r < RangeCount; ++r) fillRow(AzimuthPairs[k], r, 0.0f, Ranges[r]);
    }
}

/** Without memory for it the geometry stays unset, which the checks at the end then report. */
void buildGeometry() {
    if (!hasGeometryMemory()) return;
    initializeTransducerData();
    pointPairsAtTables();
    IsTransducersInitialized = true;
    fillGrids();
    fillLagTables();
}

void initializeDetectors() {
    intializeNoiseLevel();
    initializeFrequencyDomainActivityDetector();
    initializeTimeDomainActivityDetector();
    initializeUltraSoundDistortionDetector();
}

}  // namespace

void initializeSinglePair(MicrophonePair* pair, int first, int second) {
    const Position& firstPosition = Microphones[first];
    const Position& secondPosition = Microphones[second];
    pair->firstMicrophone = static_cast<std::int16_t>(first);
    pair->secondMicrophone = static_cast<std::int16_t>(second);
    pair->lookupTable = nullptr;
    voxloc_setCutoffCoefficients(&firstPosition, &secondPosition, &pair->upperBin, &pair->lowerBin);
    LoudspeakerZone zone = {0, 0, 1.0f};
    if (AttenuateLoudspeaker) {
        zone = loudspeakerZone(voxloc_calculateDistance(Loudspeaker, &firstPosition),
                               voxloc_calculateDistance(Loudspeaker, &secondPosition));
    }
    pair->loudspeakerHalfWidth = zone.halfWidth;
    pair->loudspeakerLag = zone.lag;
    pair->loudspeakerGain = zone.gain;
}

void initializeTransducerData() {
    const Product* product = findProduct(ProductType);
    if (product == nullptr) PLATFORM_ASSERT(false);
    for (int c = 0; c < NumberOfChannels; ++c) {
        Microphones[c] = product->microphone[static_cast<std::size_t>(c)];
    }
    *Loudspeaker = product->loudspeaker;
    for (int k = 0; k < NumberOfElevationPairs; ++k) {
        const ChannelPair channels = product->elevationPair[static_cast<std::size_t>(k)];
        initializeSinglePair(&ElevationPairs[k], channels.first, channels.second);
    }
    for (int k = 0; k < NumberOfAzimuthPairs; ++k) {
        const ChannelPair channels = product->azimuthPair[static_cast<std::size_t>(k)];
        initializeSinglePair(&AzimuthPairs[k], channels.first, channels.second);
    }
}

/** Neither ElevationPairs nor its count is checked: one product deliberately has none. */
void checkMemoryAllocation() {
    PLATFORM_ASSERT(NumberOfChannels > 0);
    PLATFORM_ASSERT(NumberOfAzimuthPairs > 0);
    PLATFORM_ASSERT(MinimumElevation != 0.0f);
    PLATFORM_ASSERT(MinimumAzimuth != 0.0f);
    PLATFORM_ASSERT(AngleInterval > 0.0f);
    PLATFORM_ASSERT(InputAudio);
    PLATFORM_ASSERT(RawAudioInput1);
    PLATFORM_ASSERT(RawAudioInput2);
    PLATFORM_ASSERT(FftResult);
    PLATFORM_ASSERT(Numerator1);
    PLATFORM_ASSERT(Numerator2);
    PLATFORM_ASSERT(NoisePowerEstimate);
    PLATFORM_ASSERT(FrequencyWeight);
    PLATFORM_ASSERT(TimeoutCounter);
    PLATFORM_ASSERT(AzimuthElevationLookupTable);
    PLATFORM_ASSERT(AzimuthRangeLookupTable);
    PLATFORM_ASSERT(Microphones);
    PLATFORM_ASSERT(Loudspeaker);
    PLATFORM_ASSERT(AzimuthPairs);
    PLATFORM_ASSERT(AzimuthQuality);
    PLATFORM_ASSERT(ElevationQuality);
}

}  // namespace voxloc

using namespace voxloc;

void voxloc_initialize(int32_t productType) {
    ProductType = productType;
    const Product* product = findProduct(productType);
    if (product == nullptr) PLATFORM_ASSERT(false);
    applySettings(*product);
    PLATFORM_ASSERT(!IsTransducersInitialized);
    allocateBuffers();
    generateTransformTables();
    buildGeometry();
    initializeDetectors();
    checkMemoryAllocation();
    PLATFORM_ASSERT(IsTransducersInitialized);
}

void voxloc_destroy(void) {
    if (!IsTransducersInitialized) return;
    void* const buffers[] = {InputAudio,
                             RawAudioInput1,
                             RawAudioInput2,
                             FftResult,
                             Numerator1,
                             Numerator2,
                             NoisePowerEstimate,
                             FrequencyWeight,
                             TimeoutCounter,
                             AzimuthElevationLookupTable,
                             AzimuthRangeLookupTable,
                             Microphones,
                             Loudspeaker,
                             AzimuthPairs,
                             ElevationPairs,
                             AzimuthQuality,
                             ElevationQuality};
    for (void* buffer : buffers) std::free(buffer);
    destroyUltraSoundDistortionDetector();
    voxloc_record_stop();
    IsTransducersInitialized = false;
}

uint32_t voxloc_getNumberOfChannels(void) {
    return static_cast<std::uint32_t>(NumberOfChannels);
}

const Position* voxloc_getMicrophoneCoordinates(uint32_t channel) {
    return &Microphones[channel];
}
