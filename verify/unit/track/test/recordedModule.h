/**
 * The module and the generator as the tests see them, recorded. The frames are the real
 * generator's; what the module answers is a script's.
 *
 * A program that links this is linked with --wrap for each function that recordedModule.cpp wraps.
 */
#ifndef VERIFY_TRACK_TEST_RECORDED_MODULE_H
#define VERIFY_TRACK_TEST_RECORDED_MODULE_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "voxloc/voxloc.h"

namespace recordedModule {

/** A frame that went to the module. */
struct ProcessedFrame {
    int product;
    std::vector<float> samples;    // as the module got them
    std::vector<float> generated;  // as the generator made them; empty: not from its clips
    std::array<float, 3> source;   // radians, radians, metres
    int clip;
    bool offsetSpeech;
    std::uint32_t bits;
    std::uint32_t flags;
};

/** What happened since start(). */
extern std::vector<ProcessedFrame> frames;
extern std::vector<std::string> lifetime;  // "initialize 0" and "destroy" in order

struct Energies {
    std::vector<float> frame;
    std::uint32_t bits;
    std::int32_t channels;
};
extern std::vector<Energies> energyCalls;

/** The module's answers; all 0 unless a test says otherwise. */
struct Script {
    std::function<TrackerResult(std::size_t)> result = {};  // of a frame, counted from 1
    std::array<float, VOXLOC_MAX_CHANNELS> energies = {};
    float ultraSoundLevel = 0;
    // Changes what the generator made of the frame that is processed next, counted from 1.
    std::function<void(std::size_t, float*)> changeGenerated = {};
};

/** Forgets what was recorded and answers as scripted from here on. */
void start(const Script& script);

struct Outcome {
    unsigned errors;
    std::string log;
};

/** Runs one of the eighteen on a module that answers as scripted. */
Outcome run(unsigned (*test)(), const Script& script = {});

/** That the tests since start() left nothing behind, and initialised the module for these. */
void expectSetUps(const std::vector<int>& products);

/** A talker's place: degrees, degrees, metres. */
struct Degrees {
    float azimuth, elevation, range;
};

/** That the generator's clip went to the module as the talker at that place says it. */
void expectGenerated(const ProcessedFrame& frame, int product, int clip, const Degrees& place,
                     std::uint32_t flags = 0);

/** The same for what the test made of the generator's frame, given by its samples. */
void expectChanged(const ProcessedFrame& frame, const Degrees& place);

}  // namespace recordedModule

#endif
