#include "sweep/sounds.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <voxloc/unittestGenerator.h>

namespace {

constexpr float Degree = static_cast<float>(M_PI / 180.0);
constexpr double QuietShare = 1e-4;  // of the loudest frame's power: a gap in the voice

// The generator asks for the array without saying which.
thread_local const VoxlocArray* playedArray = nullptr;

std::uint32_t channelsPlayed() {
    return static_cast<std::uint32_t>(playedArray->channels);
}

const Position* microphonePlayed(std::uint32_t channel) {
    return &playedArray->microphone[channel];
}

struct DestroyGenerator {
    void operator()(AudioGenerator* generator) const { destroyAudioGenerator(generator); }
};

double powerOfFrame(const std::vector<float>& voice, std::size_t first) {
    double sum = 0.0;
    for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) {
        const double sample = static_cast<double>(voice[(first + n) % voice.size()]);
        sum += sample * sample;
    }
    return sum;
}

}  // namespace

void playPlainly(const VoxlocArray& array, const SweepJob& job,
                 const std::vector<Direction>& places, const TakeFrame& take) {
    playedArray = &array;
    const std::unique_ptr<AudioGenerator, DestroyGenerator> generator(
        createAudioGenerator(channelsPlayed, microphonePlayed, 1));
    const std::vector<float> silence(static_cast<std::size_t>(array.channels) * FRAME_SAMPLES,
                                     0.0f);
    int k = 0;
    for (int i = 0; i < PauseFrames; ++i) take(k++, silence.data());
    for (const Direction& place : places) {
        const float source[3] = {static_cast<float>(place.azimuth) * Degree,
                                 static_cast<float>(place.elevation) * Degree,
                                 static_cast<float>(place.range)};
        for (int i = 0; i < job.framesAtPlace; ++i) {
            take(k++, getNextFrame(source, 0, generator.get()));
        }
    }
    for (int i = 0; i < PauseFrames; ++i) take(k++, silence.data());
}

void playInRoom(const VoxlocArray& array, const SweepJob& job, const std::vector<Direction>& places,
                std::uint64_t seed, const TakeFrame& take) {
    constexpr double FrameSeconds = FRAME_SAMPLES / 48000.0;
    constexpr double Hair = 1e-9;  // seconds, so that rounding does not lose a sample
    Scene scene;
    scene.room = job.room;
    scene.place = job.place;
    scene.noise = job.noise;
    scene.seed = seed;
    scene.errors = drawErrors(array.channels, job.error, job.choice.seed);
    const Segment pause{nullptr, {}, {}, PauseFrames * FrameSeconds + Hair};
    scene.segments.push_back(pause);
    for (const Direction& place : places) {
        scene.segments.push_back(
            {job.voice, place, place, job.framesAtPlace * FrameSeconds + Hair});
    }
    scene.segments.push_back(pause);
    const Recording recording = simulate(array, scene);
    std::vector<float> frame(recording.channel.size() * FRAME_SAMPLES);
    for (int k = 0; k < recording.frames(); ++k) {
        recording.copyFrame(k, frame.data());
        take(k, frame.data());
    }
}

std::vector<bool> activityOf(const SweepJob& job, std::size_t count) {
    const std::size_t talking = count * static_cast<std::size_t>(job.framesAtPlace);
    const std::vector<float>& voice = job.isSimulated ? *job.voice : *builtInVoice();
    // The generator begins with its clip at the first place, the simulator with the recording.
    const std::size_t first = job.isSimulated ? PauseFrames : 0;
    std::vector<double> powers;
    for (std::size_t k = 0; k < talking; ++k) {
        powers.push_back(powerOfFrame(voice, (first + k) * FRAME_SAMPLES));
    }
    const double loudest = *std::max_element(powers.begin(), powers.end());
    std::vector<bool> activity(talking + 2 * PauseFrames, false);
    for (std::size_t k = 0; k < talking; ++k) {
        activity[PauseFrames + k] = powers[k] > QuietShare * loudest;
    }
    return activity;
}
