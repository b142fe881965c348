#include "locate/locator.h"

#include <cmath>

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
    voxloc_calculateSignalEnergy(frame.samples.data(), frame.bits, channels_, record.level.data());
    for (float& level : record.level) level = 10.0f * std::log10(level / FRAME_SAMPLES);
    return record;
}
