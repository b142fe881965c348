/**
 * Time-domain voice activity detector: one channel's waveform, without the transforms.
 *
 * The channel is band-limited and rectified, smoothed into an envelope, and compared with a slow
 * running median of it. A click, whose envelope leaps above the median, clears the decision for two
 * frames; steady sound and speech leave it set. The frame before the newest one is analysed, so the
 * decision is one frame late.
 */
#ifndef VOXLOC_TIME_DOMAIN_VAD_H
#define VOXLOC_TIME_DOMAIN_VAD_H

#include <cstdint>

#include "voxlocParts.h"

namespace voxloc {

constexpr int HistorySamples = 3 * FRAME_SAMPLES;
constexpr int FilterInputSamples = 2135;
constexpr int EnvelopeSamples = 2104;

struct TimeDomainVad {
    std::uint32_t ChannelOffset;                  // samples from the start of the frame
    alignas(64) float AudioData[HistorySamples];  // three frames of the channel, oldest first
    alignas(64) float FilterInput[FilterInputSamples];
    alignas(64) float EnvelopeOutput[EnvelopeSamples];
    alignas(64) float MedianOutput[FRAME_SAMPLES];  // running median of the envelope
    float CurrentMedianFilterDifference = 1e-12f;   // step of the median tracker
    bool PreviousResult = true;  // the previous frame's decision, before the two-frame rule
};

/** Starts again; the channel stays. */
void initializeTimeDomainActivityDetector(TimeDomainVad& detector);

/**
 * The channel to analyse, an index into the frame. The history is not cleared. The second argument
 * is accepted and ignored, deliberately: all detectors are handed two channels.
 */
void setTimeDomainVadChannel(TimeDomainVad& detector, std::uint32_t channel, std::uint32_t ignored);

/** Takes in one normalised frame (FRAME_SAMPLES per channel); writes 0 or 1 to result. */
void detectTimeDomainActivity(TimeDomainVad& detector, const float* frame, std::uint8_t* result);

}  // namespace voxloc

#endif
