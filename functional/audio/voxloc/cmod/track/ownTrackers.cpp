/** Trackers of one's own, and what can be asked about arrays: nothing here asserts or aborts. */
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "arrayCheck.h"
#include "flushToZero.h"
#include "tracker.h"

namespace {

using voxloc::ArrayFault;

constexpr std::int32_t OwnArray = -1;  // the product type of an array of one's own
constexpr float DegreesPerRadian = 57.295776f;
constexpr std::uint32_t MostBits = 32;

void say(char* reason, const char* text) {
    if (reason != nullptr) std::snprintf(reason, VOXLOC_REASON_SIZE, "%s", text);
}

/** "azimuthPair[2].second: 7 is not one of the channels"; nothing without a fault. */
void describe(const ArrayFault& fault, char* reason) {
    if (reason == nullptr) return;
    reason[0] = '\0';
    if (fault.field == nullptr) return;
    char index[16] = "", value[32] = "";
    const bool isInteger =
        std::abs(fault.value) <= 2147483648.0 && fault.value == std::floor(fault.value);
    const char* format = isInteger ? "%.0f " : "%.7g ";
    if (fault.index >= 0) std::snprintf(index, sizeof index, "[%d]", fault.index);
    if (fault.hasValue) std::snprintf(value, sizeof value, format, fault.value);
    std::snprintf(reason, VOXLOC_REASON_SIZE, "%s%s%s: %s%s", fault.field, index, fault.member,
                  value, fault.problem);
}

/** All zero, then the values that differ from it; null when there is no memory. */
VoxlocTracker* allocateTracker() {
    void* memory = nullptr;
    if (posix_memalign(&memory, alignof(VoxlocTracker), sizeof(VoxlocTracker)) != 0) return nullptr;
    return new (memory) VoxlocTracker();
}

/** The array is one that can be tracked with. */
VoxlocTracker* create(std::int32_t productType, const VoxlocArray& array, char* reason) {
    const voxloc::NoTraps noTraps;
    VoxlocTracker* own = allocateTracker();
    if (own != nullptr) {
        voxloc::Tracker& tracker = own->tracker;
        applySettings(tracker, productType, array);
        setUp(tracker);
        allocateUltraSoundLevels(tracker.UltraSound, tracker.NumberOfChannels);
        const bool complete = hasAllBuffers(tracker) && tracker.UltraSound.UltraSoundLevel &&
                              tracker.UltraSound.NeighborBandLevel;
        if (complete) {
            resetUltraSoundDistortionDetector(tracker.UltraSound);
            return own;
        }
        voxloc_destroyTracker(own);
    }
    say(reason, "out of memory");
    return nullptr;
}

float degrees(float sine) {
    return std::asin(std::min(std::max(sine, -1.0f), 1.0f)) * DegreesPerRadian;
}

/** A function of its own, so that none of its comparisons moves to where exceptions trap. */
[[gnu::noinline]] ArrayFault firstFault(const VoxlocArray& array) {
    const ArrayFault fault = voxloc::findWiringFault(array);
    return fault.field == nullptr ? voxloc::findGridFault(array) : fault;
}

/** A function of its own for the same reason. */
[[gnu::noinline]] void fillGrid(const VoxlocArray& array, VoxlocGrid& grid) {
    const float step = array.angleInterval;
    const auto highest = [=](float minimum, int count) {
        return degrees(voxloc::gridSine(minimum, step, count - 1));
    };
    grid.azimuths = voxloc::AzimuthCount;
    grid.elevations = voxloc::ElevationCount;
    grid.ranges = voxloc::RangeCount;
    grid.lowestAzimuth = degrees(array.minimumAzimuth);
    grid.highestAzimuth = highest(array.minimumAzimuth, voxloc::AzimuthCount);
    grid.lowestElevation = degrees(array.minimumElevation);
    grid.highestElevation = highest(array.minimumElevation, voxloc::ElevationCount);
    grid.angleInterval = step;
    grid.nearestRange = voxloc::NearestRange;
    grid.rangeInterval = voxloc::RangeInterval;
    grid.farthestRange = voxloc::NearestRange + voxloc::RangeInterval * (voxloc::RangeCount - 1);
}

}  // namespace

const char* voxloc_getVersion(void) {
#define VOXLOC_TEXT(number) #number
#define VOXLOC_VERSION_TEXT(major, minor, patch) \
    VOXLOC_TEXT(major) "." VOXLOC_TEXT(minor) "." VOXLOC_TEXT(patch)
    return VOXLOC_VERSION_TEXT(VOXLOC_VERSION_MAJOR, VOXLOC_VERSION_MINOR, VOXLOC_VERSION_PATCH);
#undef VOXLOC_VERSION_TEXT
#undef VOXLOC_TEXT
}

uint32_t voxloc_getLatency(void) {
    return FRAME_SAMPLES;
}

void voxloc_getGrid(const VoxlocArray* array, VoxlocGrid* grid) {
    const voxloc::NoTraps noTraps;
    fillGrid(*array, *grid);
}

int voxloc_checkArray(const VoxlocArray* array, char* reason) {
    if (array == nullptr) {
        say(reason, "array: none given");
        return 0;
    }
    const voxloc::NoTraps noTraps;
    const ArrayFault fault = firstFault(*array);
    describe(fault, reason);
    return fault.field == nullptr ? 1 : 0;
}

VoxlocTracker* voxloc_createTracker(const VoxlocArray* array, char* reason) {
    return voxloc_checkArray(array, reason) != 0 ? create(OwnArray, *array, reason) : nullptr;
}

VoxlocTracker* voxloc_createProductTracker(int32_t productType, char* reason) {
    describe({}, reason);
    const VoxlocProduct* product = voxloc_findProduct(productType);
    if (product != nullptr) return create(productType, product->array, reason);
    describe(voxloc::valueFault("productType", productType, "is not one of the products"), reason);
    return nullptr;
}

void voxloc_destroyTracker(VoxlocTracker* tracker) {
    if (tracker == nullptr) return;
    releaseBuffers(tracker->tracker);
    destroyUltraSoundDistortionDetector(tracker->tracker.UltraSound);
    voxloc_stopRecording(tracker);
    std::free(tracker);
}

const char* voxloc_track(VoxlocTracker* tracker, const float* frame, uint32_t bits, uint32_t flags,
                         TrackerResult* result) {
    if (tracker == nullptr) return "tracker: none given";
    if (frame == nullptr) return "frame: none given";
    if (bits < 1 || bits > MostBits) return "bits: not 1 to 32";
    if (result == nullptr) return "result: none given";
    calculate(tracker->tracker, frame, bits, flags, *result);
    return nullptr;
}

void voxloc_resetTracker(VoxlocTracker* tracker) {
    forgetFrames(tracker->tracker);
}

int voxloc_hasEstimate(const VoxlocTracker* tracker) {
    const float* quality = tracker->tracker.AzimuthQuality;
    const bool heard = std::any_of(quality, quality + tracker->tracker.NumberOfAzimuthPairs,
                                   [](float peak) { return peak != 0.0f; });
    return heard ? 1 : 0;
}

const VoxlocArray* voxloc_getArray(const VoxlocTracker* tracker) {
    return &tracker->tracker.Array;
}

float voxloc_getTrackerUltraSoundLevel(const VoxlocTracker* tracker) {
    return tracker->tracker.UltraSound.MaxUltraSoundLevel_dB;
}

uint64_t voxloc_getTrackerSilencedSamples(const VoxlocTracker* tracker) {
    return tracker->tracker.Silenced.count;
}

void voxloc_setLog(VoxlocTracker* tracker, VoxlocLog log, void* context) {
    tracker->tracker.log = {log, context};
}

int voxloc_startRecording(VoxlocTracker* tracker, const char* path) {
    const voxloc::Tracker& settings = tracker->tracker;
    if (path == nullptr) return 0;
    const int started = voxloc::startRecording(tracker->tracker.recording, path,
                                               settings.ProductType, settings.NumberOfChannels);
    if (started > 0) return 1;
    voxloc_stopRecording(tracker);
    return 0;
}

void voxloc_stopRecording(VoxlocTracker* tracker) {
    voxloc::stopRecording(tracker->tracker.recording);
}

int voxloc_isRecording(const VoxlocTracker* tracker) {
    return isOpen(tracker->tracker.recording) ? 1 : 0;
}

uint32_t voxloc_getLostFrames(const VoxlocTracker* tracker) {
    return tracker->tracker.recording.lostFrames;
}
