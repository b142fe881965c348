/**
 * A tracker's frames: `calculate` at the end of this file is the list of a frame's stages, one call
 * a line; the stages stand above it in that order. voxlocSetup.cpp is the other half: set-up.
 */
#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "crossSpectrum.h"
#include "flushToZero.h"
#include "frameKernels.h"
#include "gridSearch.h"
#include "loudspeakerZone.h"
#include "phaseTransform.h"
#include "tracker.h"

namespace voxloc {

namespace {

constexpr float DegreesPerRadian = 57.295776f;
constexpr std::uint8_t SpeechTimeout = 35;  // frames, while the near end talks
constexpr int SilencedBins = 4;             // DC to 35 Hz
constexpr float UpsideDownRatio = 1.8f;
constexpr std::int32_t BlockedFramesPerWarning = 100;
constexpr int IgnoredRadix = 2;  // part of the transforms' interface

/** What goes in with a frame. */
struct InputFlags {
    int farEnd, noiseFlag;
};

/** What the detectors find out about a frame. */
struct Detections {
    std::uint8_t voice, tdVoice, sound, ultrasound;
};

/** Spectra of the analysis blocks, each of which then takes in the frame that has come. */
void computeSpectra(Tracker& tracker) {
    const TransformTables& tables = tracker.Tables;
    for (int c = 0; c < tracker.NumberOfChannels; ++c) {
        float* spectrum = tracker.FftResult + c * SpectrumFloats;
        windowAndAdvance(tracker.InputAudio + c * AnalysisSamples, tables.HammingWindow,
                         tracker.CurrentRawAudioInput + c * FRAME_SAMPLES, tracker.FftInput);
        voxloc_realFft(AnalysisSamples, tracker.FftInput, tables.TwiddleFactors, spectrum,
                       IgnoredRadix, tables.ATable, tables.BTable, tracker.FftOutput);
        std::fill_n(spectrum, 2 * SilencedBins, 0.0f);
    }
}

void weighFrequencies(Tracker& tracker) {
    for (int c = 0; c < tracker.NumberOfChannels; ++c) {
        updateFrequencyWeights(tracker.FftResult + c * SpectrumFloats, SpectrumBins,
                               tracker.NoisePowerEstimate + c * SpectrumBins,
                               tracker.FrequencyWeight + c * SpectrumBins);
    }
}

std::uint8_t timeoutLimit(const Detections& found, InputFlags in) {
    return found.voice == 1 && in.farEnd == 0 ? SpeechTimeout : ShortTimeout;
}

MicrophoneSpectrum microphoneSpectrum(const Tracker& tracker, int channel) {
    return {tracker.FftResult + channel * SpectrumFloats,
            tracker.FrequencyWeight + channel * SpectrumBins};
}

void smoothCrossSpectra(Tracker& tracker, SmoothingGate gate) {
    for (int p = 0; p < numberOfPairs(tracker); ++p) {
        const MicrophonePair& pair = *tracker.Blocks[p].pair;
        smoothCrossSpectrum(pair, gate, microphoneSpectrum(tracker, pair.firstMicrophone),
                            microphoneSpectrum(tracker, pair.secondMicrophone),
                            tracker.PreviousNumerator + p * SpectrumFloats,
                            tracker.CurrentNumerator + p * SpectrumFloats,
                            tracker.TimeoutCounter + p * SpectrumBins);
    }
}

void correlatePair(Tracker& tracker, int p) {
    const PairBlock& block = tracker.Blocks[p];
    // The bin above the highest one takes part as it took part in the smoothing; it holds 0.
    correlate(tracker.CurrentNumerator + p * SpectrumFloats, block.pair->lowerBin,
              block.pair->upperBin + 2, block.reach, tracker.Tables.ATableUpsampled,
              tracker.Tables.BTableUpsampled, tracker.FftInput, tracker.FftOutput);
    if (tracker.AttenuateLoudspeaker) attenuateLoudspeaker(*block.pair, tracker.FftOutput);
    std::copy_n(tracker.FftOutput, block.reach, block.kept);
    const int last = CorrelationLags - block.reach;
    std::copy(tracker.FftOutput + last, tracker.FftOutput + CorrelationBufferFloats,
              block.kept + last);
}

void correlatePairs(Tracker& tracker) {
    for (int p = 0; p < numberOfPairs(tracker); ++p) {
        if (tracker.Blocks[p].source == p) correlatePair(tracker, p);
    }
}

/** One map from the pair blocks that add to it; returns its largest sum. */
float sumOverGrid(const PairBlock* blocks, int count, int points, float* sum, float* quality) {
    std::array<PairContribution, MaxPairsPerMap> contributions;
    for (int k = 0; k < count; ++k) {
        contributions[static_cast<std::size_t>(k)] = {blocks[k].kept, blocks[k].pair->lookupTable};
    }
    return sumCorrelations(contributions.data(), count, points, sum, quality);
}

/** The largest sum of each map. */
struct LargestSums {
    float azimuthElevation, azimuthRange;
};

LargestSums sumMaps(Tracker& tracker) {
    const int elevationPairs = tracker.NumberOfElevationPairs;
    LargestSums largest;
    // Without elevation pairs the map is never written and stays what it is.
    largest.azimuthElevation =
        elevationPairs > 0 ? sumOverGrid(tracker.Blocks, elevationPairs, AzimuthElevationPoints,
                                         tracker.AzimuthElevationResult, tracker.ElevationQuality)
                           : largestOf(tracker.AzimuthElevationResult, AzimuthElevationPoints);
    largest.azimuthRange =
        sumOverGrid(tracker.Blocks + elevationPairs, tracker.NumberOfAzimuthPairs,
                    AzimuthRangePoints, tracker.AzimuthRangeResult, tracker.AzimuthQuality);
    return largest;
}

void pickPosition(const Tracker& tracker, LargestSums largest, TrackerResult& result) {
    const float* directions = tracker.AzimuthElevationResult;
    const float* ranges = tracker.AzimuthRangeResult;
    const int direction =
        firstMaximum(directions, AzimuthElevationPoints, largest.azimuthElevation);
    const int place = firstMaximum(ranges, AzimuthRangePoints, largest.azimuthRange);
    const RangeRows rows = flatRangeRows(ranges, place);
    result.elevation = tracker.ElevationAngles[direction / AzimuthCount] * DegreesPerRadian;
    result.azimuth = tracker.AzimuthAngles[place % AzimuthCount] * DegreesPerRadian;
    result.range = (tracker.Ranges[rows.first] + tracker.Ranges[rows.last]) * 0.5f;
    result.quality = ranges[place] + directions[direction];
}

/** The vertical pairs of an upside-down panel agree far better than its horizontal ones. */
bool looksUpsideDown(const float* elevationQuality, const float* azimuthQuality) {
    const float vertical = elevationQuality[0] + elevationQuality[1];
    const float horizontal =
        azimuthQuality[0] + azimuthQuality[1] + azimuthQuality[2] + elevationQuality[2];
    return vertical / horizontal > UpsideDownRatio;
}

/** False when the frame speaks for a panel mounted upside down, which only one product can tell. */
bool isPositionValid(Tracker& tracker, bool voice) {
    if (tracker.ProductType != PRODUCT_ASTER || !voice) return true;
    if (!looksUpsideDown(tracker.ElevationQuality, tracker.AzimuthQuality)) return true;
    ++tracker.BlockedCounter;
    if (tracker.BlockedCounter % BlockedFramesPerWarning == 0) {
        logText(tracker.log, "Warning: The front panel is most likely mounted upside down\n");
        tracker.BlockedCounter = 0;
    }
    return false;
}

std::uint32_t outputFlags(const Detections& found, InputFlags in, bool valid) {
    std::uint32_t flags = 0;
    voxloc_setFlag(VOXLOC_FLAG_VOICE, found.voice, &flags);
    voxloc_setFlag(VOXLOC_FLAG_TD_VOICE, found.tdVoice, &flags);
    voxloc_setFlag(VOXLOC_FLAG_SOUND, found.sound, &flags);
    voxloc_setFlag(VOXLOC_FLAG_FAR_END, in.farEnd, &flags);
    voxloc_setFlag(VOXLOC_FLAG_NOISE_INPUT, in.noiseFlag, &flags);
    voxloc_setFlag(VOXLOC_FLAG_ULTRASOUND, found.ultrasound, &flags);
    voxloc_setFlag(VOXLOC_FLAG_POSITION_VALID, valid ? 1 : 0, &flags);
    return flags;
}

void swapBuffers(Tracker& tracker) {
    std::swap(tracker.CurrentNumerator, tracker.PreviousNumerator);
    std::swap(tracker.CurrentRawAudioInput, tracker.PreviousRawAudioInput);
}

}  // namespace

void calculate(Tracker& tracker, const float* frame, std::uint32_t bits, std::uint32_t flags,
               TrackerResult& result) {
    const FlushToZero flushToZero;
    const int channels = tracker.NumberOfChannels;
    const InputFlags in = {voxloc_getFlag(VOXLOC_INPUT_FAR_END, flags),
                           voxloc_getFlag(VOXLOC_INPUT_NOISE_FLAG, flags)};
    Detections found = {0, 0, 0, 0};
    recordFrame(tracker.recording, tracker.log, frame, channels * FRAME_SAMPLES, bits, flags);
    scaleFrame(tracker.Silenced, tracker.log, frame, bits, channels, tracker.CurrentRawAudioInput);
    detectTimeDomainActivity(tracker.TimeDomain, tracker.CurrentRawAudioInput, &found.tdVoice);
    computeSpectra(tracker);
    weighFrequencies(tracker);
    const float* noiseLevel =
        calculateNoiseLevel(tracker.Noise, tracker.FftResult, static_cast<unsigned>(in.noiseFlag));
    detectFrequencyDomainActivity(tracker.FrequencyDomain, tracker.FftResult, noiseLevel,
                                  &found.voice, &found.sound);
    detectUltraSoundDistortion(tracker.UltraSound, tracker.log, tracker.FftResult,
                               &found.ultrasound);
    tracker.TimeoutLimit = timeoutLimit(found, in);
    smoothCrossSpectra(tracker,
                       {static_cast<float>(found.tdVoice * (1 - in.farEnd)), tracker.TimeoutLimit});
    correlatePairs(tracker);
    const LargestSums largest = sumMaps(tracker);
    pickPosition(tracker, largest, result);
    const bool valid = isPositionValid(tracker, found.voice == 1);
    result.flags = outputFlags(found, in, valid);
    swapBuffers(tracker);
}

}  // namespace voxloc
