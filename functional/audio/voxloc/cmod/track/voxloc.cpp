/**
 * The tracker's frames: voxloc_calculate at the end of this file reads as the list of a frame's
 * stages, which stand above it in that order. voxlocSetup.cpp is the other half, initialise and
 * destroy.
 */
#include "voxloc.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "UltraSoundDistortionDetection.h"
#include "console/eventlog.h"
#include "crossSpectrum.h"
#include "flushToZero.h"
#include "frequencyDomainVad.h"
#include "gridSearch.h"
#include "noiseLevel.h"
#include "pairGeometry.h"
#include "phaseTransform.h"
#include "timeDomainVad.h"
#include "voxlocState.h"

namespace voxloc {

namespace {

constexpr float DegreesPerRadian = 57.295776f;
constexpr std::uint8_t SpeechTimeout = 35;  // frames, while the near end talks
constexpr int SilencedBins = 4;             // DC to 35 Hz
constexpr float UpsideDownRatio = 1.8f;
constexpr std::int32_t BlockedFramesPerWarning = 100;
constexpr int IgnoredRadix = 2;  // part of the transforms' interface

/** Pair blocks are counted through: elevation pairs first, then azimuth pairs. */
const MicrophonePair& pairAt(int p) {
    return p < NumberOfElevationPairs ? ElevationPairs[p]
                                      : AzimuthPairs[p - NumberOfElevationPairs];
}

/** What the detectors find out about a frame. */
struct Detections {
    std::uint8_t voice, tdVoice, sound, ultrasound;
};

void recordFrame(const float* frame, std::uint32_t bits, std::uint32_t flags) {
    if (recording == nullptr) return;
    // Results are deliberately not looked at: a full disk must not stop the tracker.
    std::fwrite(&bits, sizeof bits, 1, recording);
    std::fwrite(&flags, sizeof flags, 1, recording);
    std::fwrite(frame, sizeof(float), static_cast<std::size_t>(NumberOfChannels * FRAME_SAMPLES),
                recording);
}

void computeSpectra() {
    for (int c = 0; c < NumberOfChannels; ++c) {
        float* spectrum = FftResult + c * SpectrumFloats;
        voxloc_vectorMultiply(InputAudio + c * AnalysisSamples, HammingWindow, FftInput,
                              AnalysisSamples);
        voxloc_realFft(AnalysisSamples, FftInput, TwiddleFactors, spectrum, IgnoredRadix, ATable,
                       BTable, FftOutput);
        for (int i = 0; i < 2 * SilencedBins; ++i) spectrum[i] = 0.0f;
    }
}

void weighFrequencies() {
    for (int c = 0; c < NumberOfChannels; ++c) {
        updateFrequencyWeights(FftResult + c * SpectrumFloats, SpectrumBins,
                               NoisePowerEstimate + c * SpectrumBins,
                               FrequencyWeight + c * SpectrumBins);
    }
}

void detect(int noiseFlag, Detections& found) {
    const float* noiseLevel = calculateNoiseLevel(FftResult, static_cast<unsigned>(noiseFlag));
    detectFrequencyDomainActivity(FftResult, noiseLevel, &found.voice, &found.sound);
    detectUltraSoundDistortion(FftResult, &found.ultrasound);
}

MicrophoneSpectrum microphoneSpectrum(int channel) {
    return {FftResult + channel * SpectrumFloats, FrequencyWeight + channel * SpectrumBins};
}

void smoothCrossSpectra(SmoothingGate gate) {
    for (int p = 0; p < numberOfPairs(); ++p) {
        const MicrophonePair& pair = pairAt(p);
        smoothCrossSpectrum(
            pair, gate, microphoneSpectrum(pair.firstMicrophone),
            microphoneSpectrum(pair.secondMicrophone), PreviousNumerator + p * SpectrumFloats,
            CurrentNumerator + p * SpectrumFloats, TimeoutCounter + p * SpectrumBins);
    }
}

/**
 * Where a pair's correlation is kept while the others are computed.
 *
 * A kept correlation is addressed by lag, from 0 to 16384, and lies where its first and last lags
 * do; the slots of the pairs overlap in the lags between, which nobody reads.
 */
float* keptCorrelation(int p) {
    return KeptCorrelations + p * KeptCorrelationDistance;
}

void correlate(int p) {
    const MicrophonePair& pair = pairAt(p);
    const int lags =
        reachInLags(Microphones[pair.firstMicrophone], Microphones[pair.secondMicrophone]);
    // The bin above the highest one takes part: it was smoothed like the others.
    correlateNear(CurrentNumerator + p * SpectrumFloats, pair.lowerBin, pair.upperBin + 2, lags,
                  ATableUpsampled, BTableUpsampled, FftInput, FftOutput);
    if (AttenuateLoudspeaker) attenuateLoudspeaker(pair, FftOutput);
    float* kept = keptCorrelation(p);
    std::copy_n(FftOutput, lags, kept);
    std::copy(FftOutput + CorrelationLags - lags, FftOutput + CorrelationBufferFloats,
              kept + CorrelationLags - lags);
}

/**
 * The first pair block of the same two microphones. A pair may serve both maps; all that goes into
 * its correlation is then the same, and computed once.
 */
int firstOfSameMicrophones(int p) {
    const MicrophonePair& pair = pairAt(p);
    for (int q = 0; q < p; ++q) {
        if (pairAt(q).firstMicrophone == pair.firstMicrophone &&
            pairAt(q).secondMicrophone == pair.secondMicrophone) {
            return q;
        }
    }
    return p;
}

/** One map from the pairs that add to it; returns its largest sum. `begin` counts pair blocks. */
float sumOverGrid(int begin, int count, int points, float* sum, float* quality) {
    std::array<PairContribution, MaxPairsPerMap> contributions;
    for (int k = 0; k < count; ++k) {
        const int source = firstOfSameMicrophones(begin + k);
        if (source == begin + k) correlate(source);
        contributions[static_cast<std::size_t>(k)] = {keptCorrelation(source),
                                                      pairAt(begin + k).lookupTable};
    }
    return sumCorrelations(contributions.data(), count, points, sum, quality);
}

/** The point of each map where its sum is largest. */
struct Peaks {
    int azimuthElevation, azimuthRange;
};

Peaks searchGrids() {
    // Without elevation pairs the map is never written and stays what it is.
    const float largestElevation =
        NumberOfElevationPairs > 0 ? sumOverGrid(0, NumberOfElevationPairs, AzimuthElevationPoints,
                                                 AzimuthElevationResult, ElevationQuality)
                                   : largestOf(AzimuthElevationResult, AzimuthElevationPoints);
    const float largestRange = sumOverGrid(NumberOfElevationPairs, NumberOfAzimuthPairs,
                                           AzimuthRangePoints, AzimuthRangeResult, AzimuthQuality);
    return {firstMaximum(AzimuthElevationResult, AzimuthElevationPoints, largestElevation),
            firstMaximum(AzimuthRangeResult, AzimuthRangePoints, largestRange)};
}

void pickPosition(Peaks peaks, TrackerResult& result) {
    result.elevation = ElevationAngles[peaks.azimuthElevation / AzimuthCount] * DegreesPerRadian;
    result.azimuth = AzimuthAngles[peaks.azimuthRange % AzimuthCount] * DegreesPerRadian;
    const RangeRows rows = flatRangeRows(AzimuthRangeResult, peaks.azimuthRange);
    result.range = (Ranges[rows.first] + Ranges[rows.last]) * 0.5f;
    result.quality =
        AzimuthRangeResult[peaks.azimuthRange] + AzimuthElevationResult[peaks.azimuthElevation];
}

/** The vertical pairs of an upside-down panel agree far better than its horizontal ones. */
bool looksUpsideDown() {
    const float vertical = ElevationQuality[0] + ElevationQuality[1];
    const float horizontal =
        AzimuthQuality[0] + AzimuthQuality[1] + AzimuthQuality[2] + ElevationQuality[2];
    return vertical / horizontal > UpsideDownRatio;
}

/** False when the frame speaks for a panel mounted upside down, which only one product can tell. */
bool isPositionValid(bool voice) {
    if (ProductType != PRODUCT_ASTER || !voice || !looksUpsideDown()) return true;
    ++BlockedCounter;
    if (BlockedCounter % BlockedFramesPerWarning == 0) {
        eventlog("Warning: The front panel is most likely mounted upside down\n");
        BlockedCounter = 0;
    }
    return false;
}

std::uint32_t outputFlags(const Detections& found, int farEnd, int noiseFlag, bool valid) {
    std::uint32_t flags = 0;
    voxloc_setFlag(VOXLOC_FLAG_VOICE, found.voice, &flags);
    voxloc_setFlag(VOXLOC_FLAG_TD_VOICE, found.tdVoice, &flags);
    voxloc_setFlag(VOXLOC_FLAG_SOUND, found.sound, &flags);
    voxloc_setFlag(VOXLOC_FLAG_FAR_END, farEnd, &flags);
    voxloc_setFlag(VOXLOC_FLAG_NOISE_INPUT, noiseFlag, &flags);
    voxloc_setFlag(VOXLOC_FLAG_ULTRASOUND, found.ultrasound, &flags);
    voxloc_setFlag(VOXLOC_FLAG_POSITION_VALID, valid ? 1 : 0, &flags);
    return flags;
}

void swapBuffers() {
    std::swap(CurrentNumerator, PreviousNumerator);
    std::swap(CurrentRawAudioInput, PreviousRawAudioInput);
}

}  // namespace

}  // namespace voxloc

using namespace voxloc;

void voxloc_calculate(const float* frame, uint32_t bits, uint32_t flags, TrackerResult* result) {
    const FlushToZero flushToZero;
    recordFrame(frame, bits, flags);
    const int farEnd = voxloc_getFlag(VOXLOC_INPUT_FAR_END, flags);
    const int noiseFlag = voxloc_getFlag(VOXLOC_INPUT_NOISE_FLAG, flags);
    Detections found = {0, 0, 0, 0};
    voxloc_normalizeInput(frame, CurrentRawAudioInput, bits, NumberOfChannels);
    detectTimeDomainActivity(CurrentRawAudioInput, &found.tdVoice);
    computeSpectra();
    weighFrequencies();
    detect(noiseFlag, found);
    TimeoutLimit = found.voice == 1 && farEnd == 0 ? SpeechTimeout : ShortTimeout;
    smoothCrossSpectra({static_cast<float>(found.tdVoice * (1 - farEnd)), TimeoutLimit});
    pickPosition(searchGrids(), *result);
    voxloc_overlapInputChannels(InputAudio, PreviousRawAudioInput, CurrentRawAudioInput,
                                NumberOfChannels);
    const bool valid = isPositionValid(found.voice == 1);
    result->flags = outputFlags(found, farEnd, noiseFlag, valid);
    swapBuffers();
}

int voxloc_record_start(const char* path) {
    voxloc_record_stop();
    recording = std::fopen(path, "wb");
    if (recording == nullptr) return 0;
    std::fputc(0xAC, recording);
    std::fputc(1, recording);
    std::fputc(ProductType, recording);
    return std::fputc(NumberOfChannels, recording);
}

void voxloc_record_stop(void) {
    if (recording == nullptr) return;
    std::fclose(recording);
    recording = nullptr;
}

float* generateInput(void) {
    std::srand(1);
    for (float& sample : RawAudioInput) {
        sample = -0.5f + static_cast<float>(std::rand()) * 4.656613e-10f;
    }
    return RawAudioInput;
}
