#include "locate/locator.h"

#include <array>
#include <cmath>

namespace {

/**
 * Mean square of a frame's samples, dB of full scale. Eight sums side by side keep the processor
 * busy; one after the other, as voxloc_calculateSignalEnergy adds, costs a tenth of the tracker.
 */
float levelOf(const float* samples, std::uint32_t bits) {
    constexpr int Sums = 8;
    std::array<float, Sums> sums = {};
    const float unit = std::ldexp(1.0f, 1 - static_cast<int>(bits));
    for (int n = 0; n < FRAME_SAMPLES; n += Sums) {
        for (int i = 0; i < Sums; ++i) {
            const float sample = samples[n + i] * unit;
            sums[static_cast<std::size_t>(i)] += sample * sample;
        }
    }
    float sum = 0.0f;
    for (const float part : sums) sum += part;
    return 10.0f * std::log10(sum / FRAME_SAMPLES);
}

}  // namespace

Locator::Locator(const NamedArray& array)
    : tracker_(createTracker(array)),
      channels_(array.array.channels),
      hasElevation_(array.array.elevationPairs > 0) {}

Record Locator::locate(const InputFrame& frame) {
    Record record;
    record.frame = frame.sample / FRAME_SAMPLES;
    record.sample = frame.sample;
    voxloc_track(tracker_.get(), frame.samples.data(), frame.bits, frame.flags, &record.result);
    record.hasEstimate = voxloc_hasEstimate(tracker_.get()) != 0;
    record.hasElevation = hasElevation_;
    record.ultrasoundLevel = voxloc_getTrackerUltraSoundLevel(tracker_.get());
    record.channels = channels_;
    for (int c = 0; c < channels_; ++c) {
        record.level[static_cast<std::size_t>(c)] =
            levelOf(frame.samples.data() + c * FRAME_SAMPLES, frame.bits);
    }
    return record;
}
