/**
 * What the microphones of an array hear of a talker in a room that is a box.
 *
 *     Scene scene;
 *     scene.room = {{6.0, 5.0, 3.0}, 0.5};
 *     scene.place.origin = {1.0, 2.5, 1.2};
 *     scene.segments = {{builtInVoice(), {20.0, 5.0, 2.5}, {20.0, 5.0, 2.5}, 5.0}};
 *     scene.noise.diffuseRatio = 20.0;
 *     const Recording recording = simulate(voxloc_findProductByName("aster")->array, scene);
 *     for (int k = 0; k < recording.frames(); ++k) {
 *         recording.copyFrame(k, frame.data());
 *         voxloc_track(tracker, frame.data(), 24, 0, &result);
 *     }
 *
 * Walls reflect alike at all frequencies, and sources and microphones hear alike in all directions.
 * Sound travels at the tracker's 348 m/s and fades with the distance; at 1 m the talker is as loud
 * as the voice's samples say. A scene gives the same samples each time and on every machine whose
 * build does not fuse products and sums.
 */
#ifndef VOXLOC_APP_SIMULATOR_SIMULATOR_H
#define VOXLOC_APP_SIMULATOR_SIMULATOR_H

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <voxloc/voxloc.h>

#include "common/sound.h"

/** Metres. In a room x, y and z count from a corner of the floor, z upwards. */
struct Point {
    double x = 0.0, y = 0.0, z = 0.0;
};

struct Room {
    Point size;         // metres; not looked at without walls
    double rt60 = 0.0;  // seconds until an echo has fallen by 60 dB; 0: no walls
};

/** Where the array's own coordinates begin, and how it is turned. */
struct ArrayPlace {
    Point origin;
    double yaw = 0.0;   // degrees from the room's x to the array's, towards the room's y
    double roll = 0.0;  // degrees about the array's own x; 180: mounted upside down
};

/** A place as the array sees it. */
struct Direction {
    double azimuth = 0.0, elevation = 0.0;  // degrees
    double range = 1.0;                     // metres
};

/**
 * A single voice, on the scale of 24 bits at 48 kHz. Its sample n sounds at sample n of the
 * recording, whatever segment that is in, and again each time that its length has gone by.
 */
using Voice = std::shared_ptr<const std::vector<float>>;

/** The clip that the test audio generator reads. */
Voice builtInVoice();

/** A stretch of the talker's time. Its echoes ring on into the next one. */
struct Segment {
    Voice voice;           // null: silent
    Direction from, to;    // the same: sits still; else goes there on a straight line
    double seconds = 1.0;  // down to a whole sample
};

/** What differs from the drawing of the array, in the order of sound, microphone, converter. */
struct MicrophoneError {
    Point offset;             // metres that the microphone is off its place, array's coordinates
    double delay = 0.0;       // samples by which the channel is late, 0 to 1000, also fractions
    double gain = 0.0;        // dB
    bool isInverted = false;  // polarity
};

/**
 * Ratios are decibels of the talker's mean power over the noise's, both over all microphones; the
 * talker's with echoes, over the segments with a voice. Noise falls by 3 dB an octave above 50 Hz.
 */
struct NoiseSettings {
    std::optional<double> diffuseRatio;      // from everywhere alike: spherically diffuse
    std::optional<double> independentRatio;  // of its own in every channel
    std::optional<double> pointRatio;        // from one place, through the room
    Direction pointPlace;
};

struct Scene {
    Room room;
    ArrayPlace place;
    std::vector<Segment> segments;
    NoiseSettings noise;
    std::vector<MicrophoneError> errors;  // one a channel, or none
    double gain = 0.0;                    // dB on all that is heard
    std::uint64_t seed = 1;               // of the noise
    double stepLength = 512.0;            // samples after which a moving talker's place is renewed
};

/** What was heard: whole numbers of 24 bits as floats, clipped there. */
struct Recording {
    std::vector<std::vector<float>> channel;

    /** Whole ones. */
    int frames() const;

    /** Frame k as voxloc_track takes it: channels·FRAME_SAMPLES floats, channel after channel. */
    void copyFrame(int k, float* frame) const;
};

/** Where a place is in the room. */
Point pointOf(const ArrayPlace& place, const Direction& direction);

/** Where the microphones are in the room, their errors counted in. */
std::vector<Point> microphonesOf(const VoxlocArray& array, const Scene& scene);

/**
 * Throws std::invalid_argument with one line when something lies outside the room or in a wall,
 * when the room cannot have such an echo, or when counts do not match.
 */
Recording simulate(const VoxlocArray& array, const Scene& scene);

/**
 * The same in two steps, to hear one talker in several noises: the talker alone, and the recording
 * with the noise, the errors and the gain of a scene whose other fields are those of the talker's.
 */
struct TalkerSound {
    std::vector<std::vector<float>> channel;
    double power = 0.0;  // mean square over the segments with a voice
};
TalkerSound talkerSound(const VoxlocArray& array, const Scene& scene);
Recording recordingOf(const VoxlocArray& array, const Scene& scene, TalkerSound talker);

/** Errors drawn evenly from -limit to limit (delays from 0 on), the same ones for the same seed. */
std::vector<MicrophoneError> drawErrors(int channels, const MicrophoneError& limit,
                                        std::uint64_t seed);

#endif
