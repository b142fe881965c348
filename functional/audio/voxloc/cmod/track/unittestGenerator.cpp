#include "unittestGenerator.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "assertion/assertion.h"
#include "conversions.h"

const ClipInfo femaleSpeechInfo = {femaleSpeech, CLIP_SAMPLES};
const ClipInfo roomNoiseInfo = {roomNoise, CLIP_SAMPLES};

namespace {

constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/unittestGenerator";

constexpr float SamplesPerMetre = 137.93103f;  // 48,000 samples a second, 348 m/s
constexpr int Speech = 0, RoomNoise = 1;

const ClipInfo& clipInfoFromId(int clipId) {
    if (clipId != Speech && clipId != RoomNoise) PLATFORM_ASSERT(false);
    return clipId == Speech ? femaleSpeechInfo : roomNoiseInfo;
}

std::uint32_t delayInSamples(const Position& source, const Position& microphone) {
    const float distance = voxloc_calculateDistance(&source, &microphone);
    const float delay = std::floor(0.5f + distance * SamplesPerMetre);
    return static_cast<std::uint32_t>(voxloc::toInteger<std::int32_t>(delay));
}

void readClip(const ClipInfo& clip, std::uint32_t start, bool offset, float* channel) {
    for (std::uint32_t k = 0; k < FRAME_SAMPLES; ++k) {
        const float sample = clip.samples[(start + k) % clip.numSamples];
        channel[k] = offset ? 838860.8f + 0.1f * sample : sample;
    }
}

}  // namespace

AudioGenerator* createAudioGenerator(uint32_t (*getNumberOfChannels)(void),
                                     const Position* (*getMicrophoneCoordinates)(uint32_t channel),
                                     int offsetSpeech) {
    auto* generator = static_cast<AudioGenerator*>(std::malloc(sizeof(AudioGenerator)));
    PLATFORM_ASSERT(generator != nullptr);
    generator->frame =
        static_cast<float*>(std::calloc(VOXLOC_MAX_CHANNELS * FRAME_SAMPLES, sizeof(float)));
    PLATFORM_ASSERT(generator->frame != nullptr);
    generator->position = 0;
    generator->getNumberOfChannels = getNumberOfChannels;
    generator->getMicrophoneCoordinates = getMicrophoneCoordinates;
    generator->offsetSpeech = offsetSpeech;
    return generator;
}

void destroyAudioGenerator(AudioGenerator* generator) {
    std::free(generator->frame);
    std::free(generator);
}

float* getNextFrame(const float position[3], int clipId, AudioGenerator* generator) {
    const std::uint32_t numChannels = generator->getNumberOfChannels();
    const ClipInfo& clip = clipInfoFromId(clipId);
    // The line is part of the report, wherever the check stands.
    PLATFORM_ASSERT_AT(71, numChannels > 0 && numChannels <= VOXLOC_MAX_CHANNELS);
    Position source;
    voxloc_sphericalToCartesian(position, &source);
    const std::uint32_t delay0 = delayInSamples(source, *generator->getMicrophoneCoordinates(0));
    const bool offset = clipId == Speech && generator->offsetSpeech != 0;
    for (std::uint32_t c = 0; c < numChannels; ++c) {
        const std::uint32_t delay = delayInSamples(source, *generator->getMicrophoneCoordinates(c));
        // A start before the clip deliberately wraps at 2^32 and not at the clip's length: the
        // signals that the tests' expectations were met with begin like that.
        const std::uint32_t start = generator->position - (delay - delay0);
        readClip(clip, start, offset, generator->frame + c * FRAME_SAMPLES);
    }
    generator->position = (generator->position + FRAME_SAMPLES) % clip.numSamples;
    return generator->frame;
}
