#include "scenario.h"

#include <array>

#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

namespace {

constexpr int ClickSpacing = 701;  // samples

struct Stretch {
    Content content;
    int frames;
};

/** Each kind of signal, in an order that lets every detector switch both ways. */
constexpr Stretch Variety[] = {
    {Content::Speech, 40}, {Content::Silence, 10},       {Content::Noise, 15},
    {Content::Clicks, 10}, {Content::FaintNoise, 5},     {Content::Ultrasound, 20},
    {Content::Tone, 20},   {Content::FarEnd, 20},        {Content::NoiseFlag, 20},
    {Content::Speech, 20}, {Content::SpeechInNoise, 20},
};

/** Silence that lasts until the recursive averages have decayed through the denormal numbers. */
constexpr Stretch LongSilence[] = {
    {Content::Speech, 20}, {Content::Noise, 10},         {Content::Silence, 130},
    {Content::Speech, 20}, {Content::SpeechInNoise, 20},
};

/** A sine in 30-bit fixed point: x[n+1] = 2·cos(w)·x[n] - x[n-1]. */
struct Oscillator {
    std::int64_t twoCosine;  // 2^30 for 1
    std::int64_t previous, current;
};

constexpr std::int64_t FixedPointOne = std::int64_t{1} << 30;
constexpr Oscillator KiloHertz = {2129111628, 0, 1 << 18};    // 2·cos(2π/48)
constexpr Oscillator UltraSound = {-1984016189, 0, 1 << 18};  // 2·cos(2π·21/48)

struct State {
    std::int32_t product;
    int frame;
    std::uint32_t random;
    AudioGenerator* generator;
    Oscillator tone;
    std::array<float, VOXLOC_MAX_CHANNELS * FRAME_SAMPLES> samples;
};
State Run;

int channels() {
    return static_cast<int>(voxloc_getNumberOfChannels());
}

float* channel(int c) {
    return Run.samples.data() + c * FRAME_SAMPLES;
}

Content contentOf(int frame) {
    const bool isLongSilence = Run.product == PRODUCT_CINDER || Run.product == PRODUCT_FOXGLOVE;
    for (const Stretch* stretch = isLongSilence ? LongSilence : Variety;; ++stretch) {
        if (frame < stretch->frames) return stretch->content;
        frame -= stretch->frames;
    }
}

/** A talker on a walk: each coordinate swings between its bounds at a pace of its own. */
std::array<float, 3> talkerAt(int frame) {
    const auto swing = [frame](int period, float from, float to) {
        const int phase = frame % (2 * period);
        const int step = phase < period ? phase : 2 * period - phase;
        return from + (to - from) * (static_cast<float>(step) / static_cast<float>(period));
    };
    return {swing(37, -0.9f, 0.9f), swing(23, -0.3f, 0.35f), swing(61, 1.0f, 6.0f)};
}

void addClip(int clip, int frame) {
    const std::array<float, 3> position = talkerAt(frame);
    const float* samples = getNextFrame(position.data(), clip, Run.generator);
    for (int i = 0; i < channels() * FRAME_SAMPLES; ++i) {
        Run.samples[static_cast<std::size_t>(i)] += samples[i];
    }
}

/** Uniform whole numbers of the given number of bits, sign included. */
void addNoise(unsigned bits) {
    for (int i = 0; i < channels() * FRAME_SAMPLES; ++i) {
        const auto word = static_cast<std::int32_t>(nextRandom(Run.random));
        Run.samples[static_cast<std::size_t>(i)] += static_cast<float>(word / (1 << (32u - bits)));
    }
}

void addClicks() {
    for (int c = 0; c < channels(); ++c) {
        for (int i = 10 + 3 * c; i < FRAME_SAMPLES; i += ClickSpacing) channel(c)[i] += 6e6f;
    }
}

float nextSample(Oscillator& tone) {
    const std::int64_t next = tone.twoCosine * tone.current / FixedPointOne - tone.previous;
    tone.previous = tone.current;
    tone.current = next;
    return static_cast<float>(next);
}

/** The tone in each channel of [first, end), two samples later from one to the next. */
void addTone(int first, int end) {
    for (int i = 0; i < FRAME_SAMPLES; ++i) {
        const float sample = nextSample(Run.tone);
        for (int c = first; c < end; ++c) {
            const int late = i + 2 * (c - first);
            if (late < FRAME_SAMPLES) channel(c)[late] += sample;
        }
    }
}

}  // namespace

const char* nameOf(Content content) {
    constexpr const char* names[] = {"speech",     "silence",        "noise",      "faint noise",
                                     "clicks",     "tone",           "ultrasound", "far end",
                                     "noise flag", "speech in noise"};
    return names[static_cast<int>(content)];
}

/** A linear congruence with its weak low bits folded away by a permutation of the rest. */
std::uint32_t nextRandom(std::uint32_t& state) {
    state = state * 747796405u + 2891336453u;
    const std::uint32_t word = ((state >> ((state >> 28u) + 4u)) ^ state) * 277803737u;
    return (word >> 22u) ^ word;
}

void startScenario(std::int32_t product) {
    Run.product = product;
    Run.frame = 0;
    Run.random = 20240611u + static_cast<std::uint32_t>(product);
    Run.generator =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
}

ScenarioFrame nextScenarioFrame() {
    const int frame = Run.frame++;
    const Content content = contentOf(frame);
    const bool begins = frame == 0 || contentOf(frame - 1) != content;
    std::uint32_t flags = 0;
    Run.samples.fill(0.0f);
    switch (content) {
        case Content::Speech:
            addClip(0, frame);
            break;
        case Content::Silence:
            break;
        case Content::Noise:
            addNoise(static_cast<unsigned>(16 + frame % 7));
            break;
        case Content::FaintNoise:
            addNoise(2);
            break;
        case Content::Clicks:
            addClicks();
            break;
        case Content::Tone:
            if (begins) Run.tone = KiloHertz;
            addTone(0, channels());
            break;
        case Content::Ultrasound:
            if (begins) Run.tone = UltraSound;
            addTone(1, 2);
            break;
        case Content::FarEnd:
            addClip(0, frame);
            voxloc_setFlag(VOXLOC_INPUT_FAR_END, 1, &flags);
            break;
        case Content::NoiseFlag:
            addClip(1, frame);
            voxloc_setFlag(VOXLOC_INPUT_NOISE_FLAG, 1, &flags);
            break;
        case Content::SpeechInNoise:
            addClip(0, frame);
            addNoise(18);
            break;
    }
    return {content, Run.samples.data(), flags};
}

void endScenario() {
    destroyAudioGenerator(Run.generator);
}
