#include "recordedModule.h"

#include <algorithm>

#include "track/test/testSupport.h"
#include "voxloc/unittestGenerator.h"

namespace recordedModule {

std::vector<ProcessedFrame> frames;
std::vector<std::string> lifetime;
std::vector<Energies> energyCalls;

namespace {

Script script_;
int product = -1;

// The last call of the generator, until its frame is processed or its generator replaced.
std::vector<float> generated;
std::array<float, 3> source;
int clip = -1;

std::size_t samplesOfFrame() {
    return static_cast<std::size_t>(voxloc_getNumberOfChannels()) * FRAME_SAMPLES;
}

}  // namespace

void start(const Script& script) {
    script_ = script;
    frames.clear();
    lifetime.clear();
    energyCalls.clear();
    generated.clear();
}

}  // namespace recordedModule

using namespace recordedModule;

extern "C" {

// Names of the linker's --wrap.
void __real_voxloc_initialize(int32_t productType);
void __real_voxloc_destroy(void);
float* __real_getNextFrame(const float position[3], int clipId, AudioGenerator* generator);
void __wrap_voxloc_initialize(int32_t productType);
void __wrap_voxloc_destroy(void);
void __wrap_voxloc_calculate(const float* frame, uint32_t bits, uint32_t flags,
                             TrackerResult* result);
void __wrap_voxloc_calculateSignalEnergy(const float* frame, uint32_t bits, int32_t nchannels,
                                         float* energies);
float __wrap_voxloc_getUltraSoundLevel(void);
float* __wrap_getNextFrame(const float position[3], int clipId, AudioGenerator* generator);

void __wrap_voxloc_initialize(int32_t productType) {
    lifetime.push_back("initialize " + std::to_string(productType));
    // The geometry is all that the generator needs of it, so it is kept from run to run.
    if (product == productType) return;
    if (product >= 0) __real_voxloc_destroy();
    __real_voxloc_initialize(productType);
    product = productType;
}

void __wrap_voxloc_destroy(void) {
    lifetime.emplace_back("destroy");
}

float* __wrap_getNextFrame(const float position[3], int clipId, AudioGenerator* generator) {
    float* frame = __real_getNextFrame(position, clipId, generator);
    if (script_.changeGenerated) script_.changeGenerated(frames.size() + 1, frame);
    generated.assign(frame, frame + samplesOfFrame());
    std::copy(position, position + 3, source.begin());
    clip = clipId;
    return frame;
}

void __wrap_voxloc_calculate(const float* frame, uint32_t bits, uint32_t flags,
                             TrackerResult* result) {
    const AudioGenerator* generator = voxloc_tests::AudioData;
    frames.push_back({product,
                      {frame, frame + samplesOfFrame()},
                      generated,
                      source,
                      clip,
                      generator != nullptr && generator->offsetSpeech == 1,
                      bits,
                      flags});
    generated.clear();
    *result = script_.result(frames.size());
}

void __wrap_voxloc_calculateSignalEnergy(const float* frame, uint32_t bits, int32_t nchannels,
                                         float* energies) {
    energyCalls.push_back({{frame, frame + 6 * FRAME_SAMPLES}, bits, nchannels});
    std::copy(script_.energies.begin(), script_.energies.end(), energies);
}

float __wrap_voxloc_getUltraSoundLevel(void) {
    return script_.ultraSoundLevel;
}

}  // extern "C"
