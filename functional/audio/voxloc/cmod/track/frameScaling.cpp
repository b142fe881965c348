#include "frameScaling.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "dsplib/simd/simdLanes.h"
#include "voxlocParts.h"

namespace voxloc {

namespace {

/** The first float above the square of LargestSample, which is a power of two. */
constexpr float RefusedSquare =
    LargestSample * LargestSample * (1.0f + std::numeric_limits<float>::epsilon());

/** Scales a channel as it is. False when it holds a sample that is to be silenced. */
bool scaleChannel(const float* samples, float scale, float* scaled) {
    constexpr int width = simd::StreamLanes;
    constexpr int together = 4;  // maxima, since each has to wait for the one before
    static_assert(FRAME_SAMPLES % (together * width) == 0, "whole rounds");
    using Lanes = simd::Lanes<width>;
    const auto factor = Lanes::splat(scale), refused = Lanes::splat(RefusedSquare);
    simd::F32<width> largest[together];
    for (auto& largestSquare : largest) largestSquare = Lanes::splat(0.0f);
    for (int i = 0; i < FRAME_SAMPLES; i += together * width) {
        int at = i;
        for (auto& largestSquare : largest) {
            const auto sample = simd::mul(Lanes::load(samples + at), factor);
            Lanes::store(scaled + at, sample);
            // In this order a NaN counts as refused.
            const auto square = simd::smaller(simd::mul(sample, sample), refused);
            largestSquare = simd::larger(square, largestSquare);
            at += width;
        }
    }
    return simd::largestLane(simd::larger(simd::larger(largest[0], largest[1]),
                                          simd::larger(largest[2], largest[3]))) < RefusedSquare;
}

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

void scaleFrame(SilencedSamples& silenced, const Log& log, const float* frame, std::uint32_t bits,
                int channels, float* scaled) {
    const float scale = fullScaleReciprocal(bits);
    Finding found;
    for (int c = 0; c < channels; ++c) {
        const float* samples = frame + c * FRAME_SAMPLES;
        float* out = scaled + c * FRAME_SAMPLES;
        if (!scaleChannel(samples, scale, out)) silenceChannel(samples, c, out, found);
    }
    noteFrame(silenced, log, found, bits);
}

}  // namespace voxloc
