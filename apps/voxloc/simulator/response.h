/** The response of a room from one place to others, by mirror images of the source. */
#ifndef VOXLOC_APP_SIMULATOR_RESPONSE_H
#define VOXLOC_APP_SIMULATOR_RESPONSE_H

#include <vector>

#include "simulator/simulator.h"

/**
 * One response a microphone, 48 kHz, gain 1 at 1 m. An image that is between two samples is a sinc
 * under a window, `ResponseDelay` samples late, so that what comes before its middle has room.
 *
 * Up to 18 kHz that is off an ideal delay by 1/1000 of the amplitude at most. With walls, responses
 * lose what is below 40 Hz: walls that reflect without turning the sign pile images up there, which
 * no room does.
 */
using Responses = std::vector<std::vector<float>>;

constexpr int ResponseDelay = 16;  // samples

/** How a room reflects. */
struct Walls {
    Point size;
    double reflection = 0.0;  // of the amplitude, by each wall; 0: no walls
    double seconds = 0.0;     // after which images are left out
};

/**
 * The walls of a room with that echo: the reflection is searched so that the energy of the images
 * falls as stated. With that of Sabine's or Eyring's formula images ring a quarter longer and more.
 * Throws std::invalid_argument.
 */
Walls wallsOf(const Room& room);

Responses responsesOf(const Walls& walls, const Point& source, const std::vector<Point>& heard);

/**
 * Seconds in which a response's energy falls by 60 dB: a line through the part of the energy
 * that is still to come (Schroeder's backward integration) from -5 to -35 dB.
 */
double reverberationTime(const std::vector<float>& response);

#endif
