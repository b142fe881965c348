/** Sound recordings of an array in a room, and faults to put into them. */
#ifndef VERIFY_GATES_APP_DOCTOR_FAULTS_H
#define VERIFY_GATES_APP_DOCTOR_FAULTS_H

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "doctor/diagnosis.h"
#include "simulator/simulator.h"

using Channels = std::vector<std::vector<float>>;  // on the scale of 24 bits

/** The same numbers from the same seed on every machine, as standard distributions are not. */
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}
    double between(double least, double most) {
        constexpr double Unit = 1.0 / 18446744073709551616.0;  // 2^-64
        return least + (most - least) * static_cast<double>(engine_()) * Unit;
    }
    /** 0 to count-1. */
    int below(int count) { return static_cast<int>(engine_() % static_cast<std::uint64_t>(count)); }
    /** Roughly normal, variance 1. */
    double normal();

  private:
    std::mt19937_64 engine_;
};

/** What is put in, how strongly, and what should be said. */
struct Injection {
    Fault fault;
    double strength;
    const char* text;  // of kind and strength, for the table
};

/** All kinds at all strengths. */
const std::vector<Injection>& injections();

/** Puts the fault in; gives the channels that should be named. */
std::vector<int> inject(const Injection& injection, Dice& dice, Channels& channels);

/**
 * Ten seconds of a talker in three places of the array's field of view, in a room with 0.2 to 0.5 s
 * of reverberation and 10 to 25 dB above diffuse noise; microphones up to 2 mm off their places
 * along each axis and up to 1 dB off their gain.
 */
Channels soundRecording(const VoxlocArray& array, std::uint64_t seed);

/** What the doctor says of it. */
Diagnosis diagnosed(const VoxlocProduct& product, const Channels& channels);

#endif
