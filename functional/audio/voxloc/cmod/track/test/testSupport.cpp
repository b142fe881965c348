#include "testSupport.h"

#include "console/eventlog.h"

namespace voxloc_tests {

bool IsInitialized;
AudioGenerator* AudioData;
TrackerResult LastResult;

namespace {

constexpr float RadiansPerDegree = 3.14159265f / 180.0f;
constexpr unsigned SignificantBits = 24;

AudioGenerator* newGenerator() {
    return createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
}

}  // namespace

void tearDown() {
    if (IsInitialized) voxloc_destroy();
    if (AudioData != nullptr) destroyAudioGenerator(AudioData);
    AudioData = nullptr;
    IsInitialized = false;
}

void setUp(int product) {
    tearDown();
    voxloc_initialize(product);
    AudioData = newGenerator();
    IsInitialized = true;
}

void replaceGenerator() {
    if (AudioData != nullptr) destroyAudioGenerator(AudioData);
    AudioData = newGenerator();
}

SourcePosition positionFromDegrees(float azimuth, float elevation, float range) {
    return {azimuth * RadiansPerDegree, elevation * RadiansPerDegree, range};
}

float* nextFrame(Clip clip, const SourcePosition& source) {
    const float position[3] = {source.azimuth, source.elevation, source.range};
    return getNextFrame(position, clip, AudioData);
}

void process(const float* frame, unsigned inputFlags) {
    voxloc_calculate(frame, SignificantBits, inputFlags, &LastResult);
}

void processFrames(int count, Clip clip, const SourcePosition& source) {
    for (int i = 0; i < count; ++i) process(nextFrame(clip, source));
}

void processSilentFrames(int count) {
    for (int i = 0; i < count; ++i) process(AudioData->frame);
}

unsigned checkFlag(unsigned bit, int expected, unsigned flags) {
    const int value = voxloc_getFlag(bit, flags);
    if (value == expected) return 0;
    eventlog("Flag failed\n");
    eventlog("Bit position: %d Calculated: %d Expected: %d\n", static_cast<int>(bit), value,
             expected);
    return 1;
}

unsigned checkFlag(unsigned bit, int expected) {
    return checkFlag(bit, expected, LastResult.flags);
}

}  // namespace voxloc_tests
