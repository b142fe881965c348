#include <cmath>

#include "console/eventlog.h"
#include "testSupport.h"

namespace voxloc_tests {

namespace {

constexpr float FullScaleTenth = 838860.8f;  // of 2^23

/** The talker of the detector tests: straight ahead, 3 m. */
SourcePosition talker() {
    return positionFromDegrees(0.0f, -2.0f, 3.0f);
}

void processSpeech(int count) {
    processFrames(count, Speech, talker());
}

unsigned checkVad(int voice, int tdVoice) {
    return checkFlag(VOXLOC_FLAG_VOICE, voice) + checkFlag(VOXLOC_FLAG_TD_VOICE, tdVoice);
}

int largestMagnitude(const float* samples, int count) {
    int largest = 0;
    for (int i = 1; i < count; ++i) {
        if (std::fabs(samples[i]) > std::fabs(samples[largest])) largest = i;
    }
    return largest;
}

void processClick() {
    float* frame = nextFrame(Speech, talker());
    float* channel2 = frame + 2 * FRAME_SAMPLES;
    channel2[largestMagnitude(channel2, FRAME_SAMPLES)] *= 5.0f;
    process(frame);
}

void processSpeechWithClicks(int count) {
    for (int i = 0; i < count; ++i) {
        float* frame = nextFrame(Speech, talker());
        frame[FRAME_SAMPLES + 600] *= 25.0f;
        process(frame);
    }
}

/** Speech in which microphone 3 hears a tone alone; step in radians a sample. */
void processTone(int count, float step) {
    for (int i = 0; i < count; ++i) {
        float* frame = nextFrame(Speech, talker());
        float* channel3 = frame + 3 * FRAME_SAMPLES;
        channel3[0] = 0.0f;
        for (int n = 1; n < FRAME_SAMPLES; ++n) {
            channel3[n] = 529321.2f * std::sin(static_cast<float>(n) * step);
        }
        process(frame);
    }
}

unsigned checkInputFlags(unsigned inputFlags, int farEnd, int noiseInput) {
    TrackerResult result;
    voxloc_calculate(AudioData->frame, 24, inputFlags, &result);
    return checkFlag(VOXLOC_FLAG_FAR_END, farEnd, result.flags) +
           checkFlag(VOXLOC_FLAG_NOISE_INPUT, noiseInput, result.flags);
}

unsigned farEndFailure() {
    eventlog("FE VAD test failed: Quality = %f", static_cast<double>(LastResult.quality));
    return 1;
}

}  // namespace

unsigned vadOnTest() {
    setUp(PRODUCT_ASTER);
    replaceGenerator();
    processSilentFrames(1);
    unsigned errors = checkVad(0, 1);
    processSpeech(7);
    errors += checkVad(0, 1);
    processSpeech(1);
    errors += checkVad(1, 1);
    tearDown();
    return errors;
}

unsigned vadHangoverTest() {
    setUp(PRODUCT_ASTER);
    processSpeech(10);
    unsigned errors = checkVad(1, 1);
    replaceGenerator();
    processSilentFrames(34);
    errors += checkVad(1, 1);
    replaceGenerator();
    processSilentFrames(1);
    errors += checkVad(0, 1);
    tearDown();
    return errors;
}

unsigned timeDomainVadTest() {
    setUp(PRODUCT_ASTER);
    processSpeech(15);
    unsigned errors = checkVad(1, 1);
    processClick();
    errors += checkVad(1, 1);
    processSpeech(1);
    errors += checkVad(1, 0);
    processSpeech(1);
    errors += checkVad(1, 0);
    processSpeech(1);
    errors += checkVad(1, 1);
    tearDown();
    return errors;
}

unsigned soundActivityTest() {
    setUp(PRODUCT_ASTER);
    processSpeech(10);
    unsigned errors = checkFlag(VOXLOC_FLAG_SOUND, 1);
    replaceGenerator();
    processSilentFrames(3);
    errors += checkFlag(VOXLOC_FLAG_SOUND, 0);
    tearDown();
    return errors;
}

unsigned signalEnergyTest() {
    constexpr int channels = 6;
    constexpr float expected[channels] = {10.22f, 40.9f, 92.05f, 163.64f, 255.68f, 368.18f};
    constexpr float tolerance = 0.3f;
    replaceGenerator();
    for (int c = 0; c < channels; ++c) {
        const float amplitude = static_cast<float>(c + 1) * FullScaleTenth;
        for (int n = 0; n < FRAME_SAMPLES; ++n) {
            AudioData->frame[c * FRAME_SAMPLES + n] =
                amplitude * std::sin(static_cast<float>(n) * 0.1308997f);
        }
    }
    float energies[VOXLOC_MAX_CHANNELS];
    voxloc_calculateSignalEnergy(AudioData->frame, 24, channels, energies);
    unsigned errors = 0;
    for (int c = 0; c < channels; ++c) {
        if (energies[c] >= expected[c] - tolerance && energies[c] <= expected[c] + tolerance) {
            continue;
        }
        eventlog("SignalEnergy: Channel %d failed. Current = %f, correct = %f", c,
                 static_cast<double>(energies[c]), static_cast<double>(expected[c]));
        ++errors;
    }
    tearDown();
    return errors;
}

unsigned inputFlagTest() {
    setUp(PRODUCT_ASTER);
    replaceGenerator();
    uint32_t inputFlags = 0;
    unsigned errors = checkInputFlags(inputFlags, 0, 0);
    voxloc_setFlag(VOXLOC_INPUT_FAR_END, 1, &inputFlags);
    errors += checkInputFlags(inputFlags, 1, 0);
    voxloc_setFlag(VOXLOC_INPUT_NOISE_FLAG, 1, &inputFlags);
    errors += checkInputFlags(inputFlags, 1, 1);
    voxloc_setFlag(VOXLOC_INPUT_NOISE_FLAG, 0, &inputFlags);
    errors += checkInputFlags(inputFlags, 1, 0);
    voxloc_setFlag(VOXLOC_INPUT_FAR_END, 0, &inputFlags);
    errors += checkInputFlags(inputFlags, 0, 0);
    tearDown();
    return errors;
}

unsigned farEndVadTest() {
    constexpr float noQuality = 1e-7f;
    const SourcePosition source = positionFromDegrees(-1.0f, -7.4f, 6.0f);
    unsigned errors = 0;
    setUp(PRODUCT_ASTER);
    processFrames(10, Speech, source);
    const float nearEndQuality = LastResult.quality;
    uint32_t inputFlags = 0;
    voxloc_setFlag(VOXLOC_INPUT_FAR_END, 1, &inputFlags);
    process(nextFrame(Speech, source), inputFlags);
    const bool falls = LastResult.quality < nearEndQuality && LastResult.quality >= noQuality;
    if (!falls) errors += farEndFailure();
    process(nextFrame(Speech, source), inputFlags);
    const bool hasFallen = LastResult.quality <= noQuality;
    if (!hasFallen) errors += farEndFailure();
    tearDown();
    return errors;
}

unsigned ultraSoundDistortionTest() {
    constexpr float tone21kHz = 2.7488937f, tone22k5Hz = 2.9452434f;  // radians a sample
    setUp(PRODUCT_ASTER);
    processSpeech(20);
    unsigned errors = checkFlag(VOXLOC_FLAG_ULTRASOUND, 0);
    setUp(PRODUCT_ASTER);
    processSpeechWithClicks(20);
    errors += checkFlag(VOXLOC_FLAG_ULTRASOUND, 0);
    setUp(PRODUCT_ASTER);
    processTone(19, tone21kHz);
    errors += checkFlag(VOXLOC_FLAG_ULTRASOUND, 0);
    processTone(1, tone21kHz);
    errors += checkFlag(VOXLOC_FLAG_ULTRASOUND, 1);
    processSpeech(20);
    errors += checkFlag(VOXLOC_FLAG_ULTRASOUND, 0);
    setUp(PRODUCT_ASTER);
    processTone(40, tone22k5Hz);
    errors += checkFlag(VOXLOC_FLAG_ULTRASOUND, 0);
    tearDown();
    return errors;
}

unsigned roomNoiseTest() {
    constexpr int frames = 80, firstChecked = 62;
    unsigned errors = 0;
    setUp(PRODUCT_ASTER);
    for (int frame = 1; frame <= frames; ++frame) {
        processFrames(1, RoomNoise, talker());
        if (frame >= firstChecked) errors += checkVad(0, 1);
    }
    tearDown();
    return errors;
}

unsigned ultraSoundLevelTest() {
    setUp(PRODUCT_ASTER);
    processFrames(24, RoomNoise, positionFromDegrees(-1.0f, -7.4f, 6.0f));
    const float level = voxloc_getUltraSoundLevel();
    eventlog("Ultra sound level = %f", static_cast<double>(level));
    const bool isExpected = level >= -35.0f && level <= -30.0f;
    tearDown();
    return isExpected ? 0 : 1;
}

}  // namespace voxloc_tests
