/** A talker in three places, as the plain generator has it: whole-sample delays and nothing else.
 */
#ifndef VERIFY_UNIT_APP_DOCTOR_TALK_H
#define VERIFY_UNIT_APP_DOCTOR_TALK_H

#include <voxloc/unittestGenerator.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "doctor/doctor.h"

using Channels = std::vector<std::vector<float>>;  // on the scale of 24 bits

constexpr int TalkFrames = 66;  // 2.8 s

inline NamedArray namedArray(const char* name) {
    const VoxlocProduct& product = *voxloc_findProductByName(name);
    return {product.name, product.array, product.type};
}

/** The generator asks functions without arguments for the microphones. */
inline const VoxlocArray* g_talkArray = nullptr;

inline Channels talk(const NamedArray& array, int clip = 0) {
    g_talkArray = &array.array;
    AudioGenerator* generator = createAudioGenerator(
        [] { return static_cast<std::uint32_t>(g_talkArray->channels); },
        [](std::uint32_t c) -> const Position* { return &g_talkArray->microphone[c]; }, 0);
    const std::array<std::array<float, 3>, 3> places{
        {{0.6f, -0.3f, 1.5f}, {-0.5f, 0.15f, 2.2f}, {0.15f, -0.1f, 1.1f}}};
    Channels channels(static_cast<std::size_t>(array.array.channels));
    for (int f = 0; f < TalkFrames; ++f) {
        const auto place = static_cast<std::size_t>(3 * f / TalkFrames);
        const float* frame = getNextFrame(places[place].data(), clip, generator);
        for (std::size_t c = 0; c < channels.size(); ++c) {
            channels[c].insert(channels[c].end(), frame + c * FRAME_SAMPLES,
                               frame + (c + 1) * FRAME_SAMPLES);
        }
    }
    destroyAudioGenerator(generator);
    return channels;
}

inline Diagnosis diagnosed(const NamedArray& array, const Channels& channels,
                           std::uint32_t flags = 0) {
    Doctor doctor(array);
    InputFrame frame;
    frame.flags = flags;
    frame.samples.resize(channels.size() * FRAME_SAMPLES);
    for (std::size_t n = 0; n + FRAME_SAMPLES <= channels.front().size(); n += FRAME_SAMPLES) {
        for (std::size_t c = 0; c < channels.size(); ++c) {
            std::copy_n(channels[c].begin() + static_cast<std::ptrdiff_t>(n), FRAME_SAMPLES,
                        frame.samples.begin() + static_cast<std::ptrdiff_t>(c * FRAME_SAMPLES));
        }
        doctor.add(frame);
        frame.sample += FRAME_SAMPLES;
    }
    return doctor.diagnose();
}

#endif
