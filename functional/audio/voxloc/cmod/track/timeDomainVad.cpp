#include "timeDomainVad.h"

#include <algorithm>

#include "timeDomainKernels.h"

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

constexpr float ClickExcess = 1.7f;  // of the envelope over its median, relative

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
    rectify(output, HighPassOutputs, input);
    voxloc_firFilter(input, EnvelopeFilterCoefficients, output, 32, FRAME_SAMPLES);
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
    trackMedian(detector.EnvelopeOutput, &detector.CurrentMedianFilterDifference,
                detector.MedianOutput);
    if (largestRelativeExcess(detector.EnvelopeOutput, detector.MedianOutput) > ClickExcess) {
        detector.PreviousResult = false;
    } else {
        *result = detector.PreviousResult ? 1 : 0;
        detector.PreviousResult = true;
    }
}

}  // namespace voxloc
