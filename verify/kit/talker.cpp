#include "talker.h"

#include <memory>
#include <random>

#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

namespace kit {

namespace {

constexpr std::uint32_t NoFlags = 0;
constexpr std::uint32_t FarEnd = 1u << VOXLOC_INPUT_FAR_END;

enum Clip { Speech = 0, RoomNoise = 1 };

struct Place {
    float azimuth, elevation, range;  // radians, radians, metres
};
constexpr Place Left = {-0.45f, 0.05f, 2.0f};
constexpr Place Right = {0.40f, -0.10f, 5.0f};

Place between(const Place& from, const Place& to, float share) {
    return {from.azimuth + (to.azimuth - from.azimuth) * share,
            from.elevation + (to.elevation - from.elevation) * share,
            from.range + (to.range - from.range) * share};
}

using Generator = std::unique_ptr<AudioGenerator, decltype(&destroyAudioGenerator)>;

Generator newGenerator() {
    return {createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1),
            &destroyAudioGenerator};
}

Scenario emptyScenario() {
    return {static_cast<std::size_t>(voxloc_getNumberOfChannels()) * FRAME_SAMPLES, {}, {}};
}

void append(Scenario& scenario, const float* frame, std::uint32_t flags) {
    scenario.samples.insert(scenario.samples.end(), frame, frame + scenario.frameSamples);
    scenario.flags.push_back(flags);
}

void appendClip(Scenario& scenario, Clip clip, const Place& from, const Place& to,
                std::size_t frames, std::uint32_t flags) {
    const Generator generator = newGenerator();
    for (std::size_t i = 0; i < frames; ++i) {
        const float share = static_cast<float>(i) / static_cast<float>(frames);
        const Place place = between(from, to, share);
        const float position[3] = {place.azimuth, place.elevation, place.range};
        append(scenario, getNextFrame(position, clip, generator.get()), flags);
    }
}

void appendSilence(Scenario& scenario, std::size_t frames) {
    const std::vector<float> silence(scenario.frameSamples, 0.0f);
    for (std::size_t i = 0; i < frames; ++i) append(scenario, silence.data(), NoFlags);
}

}  // namespace

Scenario mixedScenario(std::size_t frames) {
    Scenario scenario = emptyScenario();
    const std::size_t noise = frames * 3 / 16, silence = frames / 8, farEnd = frames / 8;
    const std::size_t laterNoise = frames / 16, laterTalk = frames / 8;
    const std::size_t talk = frames - noise - silence - farEnd - laterNoise - laterTalk;
    appendClip(scenario, RoomNoise, Right, Right, noise, NoFlags);
    appendClip(scenario, Speech, Left, Right, talk, NoFlags);
    appendSilence(scenario, silence);
    appendClip(scenario, Speech, Right, Right, farEnd, FarEnd);
    appendClip(scenario, RoomNoise, Right, Right, laterNoise, NoFlags);
    appendClip(scenario, Speech, Left, Left, laterTalk, NoFlags);
    return scenario;
}

Scenario talkerScenario(std::size_t frames) {
    Scenario scenario = emptyScenario();
    appendClip(scenario, Speech, Left, Right, frames, NoFlags);
    return scenario;
}

Scenario noiseScenario(std::size_t frames) {
    Scenario scenario = emptyScenario();
    scenario.flags.assign(frames, NoFlags);
    scenario.samples.resize(frames * scenario.frameSamples);
    std::mt19937 random(1);
    constexpr float fullScale = 1 << (SignificantBits - 1);
    std::uniform_real_distribution<float> amplitude(-fullScale, fullScale);
    for (float& sample : scenario.samples) sample = amplitude(random);
    return scenario;
}

}  // namespace kit
