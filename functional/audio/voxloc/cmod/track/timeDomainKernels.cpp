#include "timeDomainKernels.h"

#include "dsplib/simd/simdLanes.h"
#include "voxlocParts.h"

namespace voxloc {

namespace {

constexpr float StepShare = 0.005f;      // of the median, per sample
constexpr float SmallestMedian = 1e-7f;  // samples below it say nothing about clicks

/**
 * Samples in which a median cannot fall to a quarter of itself, and a median of which a quarter has
 * steps well above the smallest one.
 */
constexpr int Stretch = 256;
constexpr float SafeMedian = 1e-9f;
static_assert(StepShare * Stretch < 1.3f, "the logarithm of 4 is 1.386");
static_assert(StepShare * SafeMedian / 4 > SmallestStep);

inline float stepFrom(float median) {
    const float share = StepShare * median;
    return share >= SmallestStep ? share : SmallestStep;
}

/**
 * Samples `begin` to `end` behind a safe median. Each has to wait for the one before, so what
 * matters is how soon a median follows from the last: no bound for the step, and no branch, which
 * noise would have the processor guess wrongly.
 */
inline float trackSafely(const float* envelope, int begin, int end, float median, float step,
                         float* medians) {
    const simd::F32x2 share = simd::splat2(StepShare);
    simd::F32x2 now = simd::splat2(median), next = simd::splat2(step);
    for (int i = begin; i < end; ++i) {
        now = simd::addIfLess(now, simd::splat2(envelope[i]), now, next);
        next = simd::mul(now, share);
        medians[i] = simd::firstLane(now);
    }
    return simd::firstLane(now);
}

inline float trackTiny(const float* envelope, int begin, int end, float median, float step,
                       float* medians) {
    for (int i = begin; i < end; ++i) {
        median = envelope[i] > median ? median + step : median - step;
        step = stepFrom(median);
        medians[i] = median;
    }
    return median;
}

}  // namespace

void SP_SIMD_HERE::rectify(const float* in, int count, float* out) {
    simd::forLanes(0, count, [=](int i, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto sample = Lanes::load(in + i);
        Lanes::store(out + i, simd::larger(sample, simd::sub(Lanes::splat(0.0f), sample)));
    });
}

void SP_SIMD_HERE::trackMedian(const float* envelope, float* step, float* medians) {
    float median = medians[FRAME_SAMPLES - 1];
    medians[0] = median;
    // The step that comes first may be anything; from then on it follows from the median.
    median = trackTiny(envelope, 1, 2, median, *step, medians);
    for (int begin = 2, end; begin < FRAME_SAMPLES; begin = end) {
        end = begin + Stretch < FRAME_SAMPLES ? begin + Stretch : FRAME_SAMPLES;
        const auto track = median > SafeMedian ? trackSafely : trackTiny;
        median = track(envelope, begin, end, median, stepFrom(median), medians);
    }
    *step = stepFrom(median);
}

float SP_SIMD_HERE::largestRelativeExcess(const float* envelope, const float* medians) {
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

}  // namespace voxloc
