#include "timeDomainVad.h"

#include <algorithm>

#include "dsplib/simd/simdLanes.h"

namespace voxloc {

namespace {

/** Half-band low-pass at 12 kHz, 31 taps behind a leading zero. */
constexpr float LowPassFilterCoefficients[32] = {
    0.0f,    -0.0012f, 0.002f,   -0.0021f, 0.0f, 0.0048f,  -0.0099f, 0.01f,
    -0.0f,   -0.0189f, 0.0362f,  -0.0347f, 0.0f, 0.0685f,  -0.1529f, 0.223f,
    0.7505f, 0.223f,   -0.1529f, 0.0685f,  0.0f, -0.0347f, 0.0362f,  -0.0189f,
    -0.0f,   0.01f,    -0.0099f, 0.0048f,  0.0f, -0.0021f, 0.002f,   -0.0012f,
};

/** High-pass, 23 taps behind a leading zero. */
constexpr float HighPassFilterCoefficients[24] = {
    0.0f,     -0.0013f, 0.0051f,  -0.0006f, -0.0122f, -0.009f,  0.0302f,  0.0438f,
    -0.0422f, -0.1475f, -0.0948f, 1.1146f,  -1.7722f, 1.1146f,  -0.0948f, -0.1475f,
    -0.0422f, 0.0438f,  0.0302f,  -0.009f,  -0.0122f, -0.0006f, 0.0051f,  -0.0013f,
};

/** Moving average over 32 samples. */
constexpr float EnvelopeFilterCoefficients[32] = {
    0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f,
    0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f,
    0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f,
    0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f, 0.03125f,
};

constexpr int LowPassOutputs = FilterInputSamples - 32 + 1;   // 2104
constexpr int HighPassOutputs = LowPassOutputs - 24 + 1 - 1;  // 2080: one more is not needed
constexpr int FirstHistorySample = 2005;  // 43 samples before the frame that is analysed
static_assert(LowPassOutputs == EnvelopeSamples, "the low-pass fills the envelope buffer");

constexpr float SmallestStep = 1e-12f;
constexpr float StepShare = 0.005f;      // of the median, per sample
constexpr float SmallestMedian = 1e-7f;  // samples below it say nothing about clicks
constexpr float ClickExcess = 1.7f;      // of the envelope over its median, relative

void appendToHistory(const float* channel, float* history) {
    std::copy_n(history + FRAME_SAMPLES, 2 * FRAME_SAMPLES, history);
    std::copy_n(channel, FRAME_SAMPLES, history + 2 * FRAME_SAMPLES);
}

/** Leaves the envelope in the first FRAME_SAMPLES samples of EnvelopeOutput. */
void followEnvelope(TimeDomainVad& detector) {
    float* input = detector.FilterInput;
    float* output = detector.EnvelopeOutput;
    std::copy_n(detector.AudioData + FirstHistorySample, FilterInputSamples, input);
    voxloc_firFilter(input, LowPassFilterCoefficients, output, 32, LowPassOutputs);
    std::copy_n(output, LowPassOutputs, input);
    voxloc_firFilter(input, HighPassFilterCoefficients, output, 24, HighPassOutputs);
    simd::forLanes(0, HighPassOutputs, [=](int i, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto sample = Lanes::load(output + i);
        Lanes::store(input + i, simd::larger(sample, simd::sub(Lanes::splat(0.0f), sample)));
    });
    voxloc_firFilter(input, EnvelopeFilterCoefficients, output, 32, FRAME_SAMPLES);
}

/** The tracker goes on from the previous frame's last median; the first sample only carries it. */
void followMedian(TimeDomainVad& detector) {
    const float* envelope = detector.EnvelopeOutput;
    float* medians = detector.MedianOutput;
    float median = medians[FRAME_SAMPLES - 1];
    float step = detector.CurrentMedianFilterDifference;
    medians[0] = median;
    for (int i = 1; i < FRAME_SAMPLES; ++i) {
        median = envelope[i] > median ? median + step : median - step;
        const float share = StepShare * median;
        step = share >= SmallestStep ? share : SmallestStep;
        medians[i] = median;
    }
    detector.CurrentMedianFilterDifference = step;
}

float largestRelativeExcess(const float* envelope, const float* medians) {
    constexpr int lanesInUse = simd::StreamLanes;
    static_assert(FRAME_SAMPLES % lanesInUse == 0, "whole vectors");
    using Lanes = simd::Lanes<lanesInUse>;
    const auto zero = Lanes::splat(0.0f), smallest = Lanes::splat(SmallestMedian);
    auto largest = zero;
    for (int i = 0; i < FRAME_SAMPLES; i += lanesInUse) {
        const auto median = Lanes::load(medians + i);
        const auto excess = simd::div(simd::sub(Lanes::load(envelope + i), median), median);
        largest = simd::larger(simd::selectLess(smallest, median, excess, zero), largest);
    }
    return simd::largestLane(largest);
}

}  // namespace

void initializeTimeDomainActivityDetector(TimeDomainVad& detector) {
    std::fill_n(detector.EnvelopeOutput, EnvelopeSamples, 0.0f);
    std::fill_n(detector.MedianOutput, FRAME_SAMPLES, 0.0f);
    std::fill_n(detector.FilterInput, FilterInputSamples, 0.0f);
    std::fill_n(detector.AudioData, HistorySamples, 0.0f);
    detector.PreviousResult = true;
    detector.CurrentMedianFilterDifference = SmallestStep;
}

void setTimeDomainVadChannel(TimeDomainVad& detector, std::uint32_t channel, std::uint32_t) {
    detector.ChannelOffset = channel * FRAME_SAMPLES;
}

void detectTimeDomainActivity(TimeDomainVad& detector, const float* frame, std::uint8_t* result) {
    *result = 0;
    appendToHistory(frame + detector.ChannelOffset, detector.AudioData);
    followEnvelope(detector);
    followMedian(detector);
    if (largestRelativeExcess(detector.EnvelopeOutput, detector.MedianOutput) > ClickExcess) {
        detector.PreviousResult = false;
    } else {
        *result = detector.PreviousResult ? 1 : 0;
        detector.PreviousResult = true;
    }
}

}  // namespace voxloc
