/**
 * A seeded run of frames for one product, the same bits on every machine.
 *
 * Speech from a moving talker, silence, noise, clicks, tones, a far end that talks and frames with
 * the noise flag. Everything but the talker's delays is made in integers or in single correctly
 * rounded float operations, so that no machine's mathematics library has a say in it.
 */
#ifndef VERIFY_AGREEMENT_SCENARIO_H
#define VERIFY_AGREEMENT_SCENARIO_H

#include <cstdint>

constexpr int ScenarioFrames = 200;

/** What a frame of the scenario holds. */
enum class Content {
    Speech,         // a talker who moves
    Silence,        // digital silence
    Noise,          // loud, independent in each channel
    FaintNoise,     // one step of 24 bits, independent in each channel
    Clicks,         // a few samples per frame, delayed from channel to channel
    Tone,           // 1 kHz, delayed from channel to channel
    Ultrasound,     // 21 kHz, on one channel
    FarEnd,         // speech with the far-end flag
    NoiseFlag,      // the room's noise with the noise flag
    SpeechInNoise,  // a talker who moves, and noise
};

const char* nameOf(Content content);

struct ScenarioFrame {
    Content content;
    const float* samples;  // channels·FRAME_SAMPLES, valid until the next frame
    std::uint32_t flags;   // of voxloc_calculate
};

/** Starts the run of the product that the module is initialised for; one run at a time. */
void startScenario(std::int32_t product);

/** The next of ScenarioFrames frames. */
ScenarioFrame nextScenarioFrame();

/** Frees what startScenario allocated. */
void endScenario();

/** The generator behind all noise: 32 uniform bits from a state that is seeded with any value. */
std::uint32_t nextRandom(std::uint32_t& state);

#endif
