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

#include "voxloc.h"

namespace voxloc {

void initializeTimeDomainActivityDetector();

/**
 * The channel to analyse, an index into the frame. The history is not cleared. The second argument
 * is accepted and ignored, deliberately: all detectors are handed two channels.
 */
void setTimeDomainVadChannel(std::uint32_t channel, std::uint32_t ignored);

/** Takes in one normalised frame (FRAME_SAMPLES per channel); writes 0 or 1 to result. */
void detectTimeDomainActivity(const float* frame, std::uint8_t* result);

constexpr int HistorySamples = 3 * FRAME_SAMPLES;
constexpr int FilterInputSamples = 2135;
constexpr int EnvelopeSamples = 2104;

// State, for white-box checks
extern std::uint32_t ChannelOffset;      // samples from the start of the frame
extern float AudioData[HistorySamples];  // three frames of the channel, oldest first
extern float FilterInput[FilterInputSamples];
extern float EnvelopeOutput[EnvelopeSamples];
extern float MedianOutput[FRAME_SAMPLES];    // running median of the envelope
extern float CurrentMedianFilterDifference;  // step of the median tracker
extern bool PreviousResult;  // the previous frame's decision, before the two-frame rule

}  // namespace voxloc

#endif
