#include "frameScaling.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "frameKernels.h"
#include "voxlocParts.h"

namespace voxloc {

namespace {

/** The first float above the square of LargestSample, which is a power of two. */
constexpr float RefusedSquare =
    LargestSample * LargestSample * (1.0f + std::numeric_limits<float>::epsilon());

/** What is silenced of a frame. */
struct Finding {
    std::uint32_t samples = 0;
    int channel = 0;     // of the first one
    float value = 0.0f;  // the first one as it came
};

void silenceChannel(const float* samples, int channel, float* scaled, Finding& found) {
    for (int i = 0; i < FRAME_SAMPLES; ++i) {
        if (std::fabs(scaled[i]) <= LargestSample) continue;
        scaled[i] = 0.0f;
        if (found.samples == 0) {
            found.channel = channel;
            found.value = samples[i];
        }
        ++found.samples;
    }
}

void noteFrame(SilencedSamples& silenced, const Log& log, const Finding& found,
               std::uint32_t bits) {
    if (found.samples == 0) {
        silenced.framesLeft = std::max(silenced.framesLeft - 1, 0);
        return;
    }
    if (silenced.framesLeft == 0) {
        logText(log,
                "Warning: Samples beyond %g times full scale are taken as silence, channel: %d "
                "value: %g bits: %u\n",
                static_cast<double>(LargestSample), found.channel, static_cast<double>(found.value),
                static_cast<unsigned int>(bits));
    }
    silenced.framesLeft = FramesBetweenSpells;
    silenced.count += found.samples;
}

}  // namespace

float fullScaleReciprocal(std::uint32_t bits) {
    constexpr std::uint32_t beyondAnyExponent = 1024;
    return std::ldexp(1.0f, 1 - static_cast<int>(std::min(bits, beyondAnyExponent)));
}

static_assert(FRAME_SAMPLES % 64 == 0, "what the kernel takes");

void scaleFrame(SilencedSamples& silenced, const Log& log, const float* frame, std::uint32_t bits,
                int channels, float* scaled) {
    const float factor = fullScaleReciprocal(bits);
    Finding found;
    for (int c = 0; c < channels; ++c) {
        const float* samples = frame + c * FRAME_SAMPLES;
        float* out = scaled + c * FRAME_SAMPLES;
        const float square = scaleAndSquare(samples, factor, RefusedSquare, out, FRAME_SAMPLES);
        if (!(square < RefusedSquare)) silenceChannel(samples, c, out, found);
    }
    noteFrame(silenced, log, found, bits);
}

}  // namespace voxloc
