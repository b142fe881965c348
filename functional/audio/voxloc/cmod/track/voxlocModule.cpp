/**
 * The classic interface: one tracker that belongs to the module. Thin on top of tracker.h; what it
 * adds are the assertions on wrong use, and the module's noise buffer.
 */
#include <cstdlib>

#include "assertion/assertion.h"
#include "console/eventlog.h"
#include "flushToZero.h"
#include "tracker.h"

namespace {

using voxloc::Tracker;

constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/voxloc";

struct Module {
    Tracker tracker;
    float RawAudioInput[voxloc::CorrelationLags];  // scratch buffer of generateInput
};

// Set before any other object's start-up code runs, so that such code may use the module.
[[gnu::init_priority(101)]] Module module;

const VoxlocProduct* findOrReport(std::int32_t productType) {
    const VoxlocProduct* product = voxloc_findProduct(productType);
    if (product == nullptr) eventlog("No product has the type %d\n", static_cast<int>(productType));
    return product;
}

}  // namespace

voxloc::Tracker& voxloc::moduleTracker() {
    return module.tracker;
}

void voxloc_initialize(int32_t productType) {
    const voxloc::NoTraps noTraps;
    Tracker& tracker = module.tracker;
    tracker.ProductType = productType;
    const VoxlocProduct* product = findOrReport(productType);
    PLATFORM_ASSERT_AS("false", product != nullptr);
    applySettings(tracker, productType, product->array);
    PLATFORM_ASSERT_AS("!IsTransducersInitialized", !tracker.IsTransducersInitialized);
    setUp(tracker);
    initializeUltraSoundDistortionDetector(tracker.UltraSound, tracker.NumberOfChannels);
    checkMemoryAllocation(tracker);
    PLATFORM_ASSERT_AS("IsTransducersInitialized", tracker.IsTransducersInitialized);
}

void voxloc_destroy(void) {
    Tracker& tracker = module.tracker;
    if (!tracker.IsTransducersInitialized) return;
    releaseBuffers(tracker);
    destroyUltraSoundDistortionDetector(tracker.UltraSound);
    voxloc_record_stop();
    tracker.IsTransducersInitialized = false;
}

void voxloc_calculate(const float* frame, uint32_t bits, uint32_t flags, TrackerResult* result) {
    PLATFORM_ASSERT_AS("IsTransducersInitialized", module.tracker.IsTransducersInitialized);
    PLATFORM_ASSERT(frame != nullptr);
    PLATFORM_ASSERT(result != nullptr);
    calculate(module.tracker, frame, bits, flags, *result);
}

uint32_t voxloc_getNumberOfChannels(void) {
    return static_cast<uint32_t>(module.tracker.NumberOfChannels);
}

const Position* voxloc_getMicrophoneCoordinates(uint32_t channel) {
    PLATFORM_ASSERT_AS("IsTransducersInitialized", module.tracker.IsTransducersInitialized);
    return &module.tracker.Microphones[channel];
}

float voxloc_getUltraSoundLevel(void) {
    return module.tracker.UltraSound.MaxUltraSoundLevel_dB;
}

uint64_t voxloc_getSilencedSamples(void) {
    return module.tracker.Silenced.count;
}

int voxloc_record_start(const char* path) {
    Tracker& tracker = module.tracker;
    return voxloc::startRecording(tracker.recording, path, tracker.ProductType,
                                  tracker.NumberOfChannels);
}

void voxloc_record_stop(void) {
    voxloc::stopRecording(module.tracker.recording);
}

int voxloc_record_isOpen(void) {
    return isOpen(module.tracker.recording) ? 1 : 0;
}

uint32_t voxloc_record_getLostFrames(void) {
    return module.tracker.recording.lostFrames;
}

float* generateInput(void) {
    std::srand(1);
    for (float& sample : module.RawAudioInput) {
        sample = -0.5f + static_cast<float>(std::rand()) * 4.656613e-10f;
    }
    return module.RawAudioInput;
}
