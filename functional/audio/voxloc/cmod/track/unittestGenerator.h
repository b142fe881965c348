/**
 * Test audio generator: the microphone signals of a talker at a known place.
 *
 * One of two one-second clips is read for each microphone with the whole-sample delay that sound
 * needs from the source to it, relative to microphone 0. There is no fractional delay and no
 * attenuation with distance. The geometry comes from two functions, so any product can be served:
 *
 *     AudioGenerator* generator = createAudioGenerator(voxloc_getNumberOfChannels,
 *                                                      voxloc_getMicrophoneCoordinates, 1);
 *     const float source[3] = {0.26f, 0.07f, 5.6f};
 *     voxloc_calculate(getNextFrame(source, 0, generator), 24, 0, &result);
 *     destroyAudioGenerator(generator);
 */
#ifndef UNITTEST_GENERATOR_H
#define UNITTEST_GENERATOR_H

#include <stdint.h>

#include "voxloc.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Samples of each clip: one second at 48 kHz, mono, on the 24-bit scale (full scale 2^23). */
#define CLIP_SAMPLES 48000

/** Clip 0: a woman's voice, peak 2.4 million. */
extern const float femaleSpeech[CLIP_SAMPLES];
/** Clip 1: the noise of a quiet room with a 20.9 kHz beacon, whole numbers, peak 0.8 million. */
extern const float roomNoise[CLIP_SAMPLES];

typedef struct ClipInfo {
    const float* samples;
    uint32_t numSamples;
} ClipInfo;

extern const ClipInfo femaleSpeechInfo;
extern const ClipInfo roomNoiseInfo;

/** A generator; made by createAudioGenerator. */
typedef struct AudioGenerator {
    float* frame; /**< VOXLOC_MAX_CHANNELS·FRAME_SAMPLES floats, zero at first, channel-major */
    uint32_t position; /**< read position in the clip, samples */
    uint32_t (*getNumberOfChannels)(void);
    const Position* (*getMicrophoneCoordinates)(uint32_t channel);
    int offsetSpeech; /**< non-zero: speech is raised by 2^23 and scaled by a tenth */
} AudioGenerator;

/** A new generator; the caller destroys it. Asserts that there was enough memory. */
AudioGenerator* createAudioGenerator(uint32_t (*getNumberOfChannels)(void),
                                     const Position* (*getMicrophoneCoordinates)(uint32_t channel),
                                     int offsetSpeech);

/** Frees a generator and its frame. */
void destroyAudioGenerator(AudioGenerator* generator);

/**
 * Makes the next frame and advances by FRAME_SAMPLES, over the end of the clip and on at its start.
 *
 * @param position   in, the source: {azimuth (radians), elevation (radians), range (metres)}
 * @param clipId     0 speech, 1 room noise; anything else is an assertion
 * @param generator  in and out; it must report 1 to VOXLOC_MAX_CHANNELS channels, asserted
 * @return the generator's frame, valid until the next call or the generator's end. Channels beyond
 *         the reported count keep what they held.
 */
float* getNextFrame(const float position[3], int clipId, AudioGenerator* generator);

#ifdef __cplusplus
}
#endif

#endif
