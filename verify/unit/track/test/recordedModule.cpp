#include "recordedModule.h"

#include <algorithm>
#include <cmath>

#include "kit/floatBits.h"
#include "kit/log.h"
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

Outcome run(unsigned (*test)(), const Script& script) {
    start(script);
    Outcome outcome{99, ""};
    outcome.log = kit::logOf([&] { outcome.errors = test(); });
    return outcome;
}

void expectSetUps(const std::vector<int>& products) {
    std::vector<std::string> expected;
    for (const int type : products) {
        expected.push_back("initialize " + std::to_string(type));
        expected.emplace_back("destroy");
    }
    EXPECT_EQ(lifetime, expected);
    EXPECT_FALSE(voxloc_tests::IsInitialized);
    EXPECT_EQ(voxloc_tests::AudioData, nullptr);
}

namespace {

void expectHeard(const ProcessedFrame& frame, int type, int clipId, const Degrees& place,
                 std::uint32_t flags) {
    EXPECT_FALSE(frame.generated.empty());
    EXPECT_EQ(frame.product, type);
    EXPECT_EQ(frame.clip, clipId);
    EXPECT_TRUE(frame.offsetSpeech);
    EXPECT_EQ(frame.bits, 24u);
    EXPECT_EQ(frame.flags, flags);
    EXPECT_EQ(frame.source[2], place.range);
    // A degree is rounded to a float, and so are the factor and the product.
    const double radians[2] = {kit::wide(place.azimuth) * M_PI / 180,
                               kit::wide(place.elevation) * M_PI / 180};
    for (std::size_t i = 0; i < 2; i++) {
        EXPECT_TRUE(std::fabs(kit::wide(frame.source[i]) - radians[i]) <=
                    1.5 * kit::Epsilon * std::fabs(radians[i]))
            << frame.source[i];
    }
}

}  // namespace

void expectGenerated(const ProcessedFrame& frame, int type, int clipId, const Degrees& place,
                     std::uint32_t flags) {
    expectHeard(frame, type, clipId, place, flags);
    EXPECT_EQ(frame.samples, frame.generated);
}

void expectChanged(const ProcessedFrame& frame, const Degrees& place) {
    expectHeard(frame, PRODUCT_ASTER, 0, place, 0);
    EXPECT_NE(frame.samples, frame.generated);
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
    *result = script_.result ? script_.result(frames.size()) : TrackerResult{};
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
