/** A talker at many places, and what the tracker made of each frame. */
#ifndef VOXLOC_APP_SWEEP_SWEEP_H
#define VOXLOC_APP_SWEEP_SWEEP_H

#include <cstdint>
#include <vector>

#include "sweep/places.h"

/**
 * The talker visits ten places in a row, jumping from one to the next while talking on. Silence of
 * `Pause` frames comes before and after; then the tracker starts anew with the next ten.
 */
constexpr int PlacesInARow = 10;
constexpr int PauseFrames = 48;     // longer than any detector holds on
constexpr int SettlingFrames = 24;  // after a jump; left out where the tracker is to have settled
constexpr int HalfSecond = 12;      // frames: 0.512 s

struct SweepJob {
    PlaceChoice choice;
    int framesAtPlace = 48;
    bool isSimulated = false;  // else the test generator's signals: whole delays, nothing else
    Room room;
    ArrayPlace place;
    NoiseSettings noise;
    MicrophoneError error;  // limits of random ones
    Voice voice;            // simulated
    int jobs = 1;
};

struct SweepFrame {
    std::int32_t place = -1;  // index; -1: before the first
    std::int32_t since = 0;   // frames since the talker came there
    TrackerResult result = {};
    bool hasEstimate = false;
    bool isTalking = false;     // by what was played
    bool isLongSilent = false;  // for longer than any detector holds on
};

struct SweepRun {
    NamedArray array;
    std::vector<Direction> places;
    std::vector<SweepFrame> frames;  // place after place; the same whatever the number of jobs
};

/** Throws BadData; std::invalid_argument for what the simulator refuses; Interrupted. */
SweepRun sweep(const NamedArray& array, const SweepJob& job);

/** Ctrl-C came. */
struct Interrupted {};

#endif
