/** The module, initialised for the length of a scope, and what it listens to. */
#ifndef VERIFY_TRACK_INITIALIZED_MODULE_H
#define VERIFY_TRACK_INITIALIZED_MODULE_H

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

class InitializedModule {
  public:
    explicit InitializedModule(std::int32_t product) { voxloc_initialize(product); }
    ~InitializedModule() { voxloc_destroy(); }
    InitializedModule(const InitializedModule&) = delete;
    InitializedModule& operator=(const InitializedModule&) = delete;
};

/** The clips as the module's microphones hear them, frame by frame. */
class Clips {
  public:
    enum Clip { Speech = 0, RoomNoise = 1 };

    Clips()
        : generator_(createAudioGenerator(voxloc_getNumberOfChannels,
                                          voxloc_getMicrophoneCoordinates, 0)) {}
    ~Clips() { destroyAudioGenerator(generator_); }
    Clips(const Clips&) = delete;
    Clips& operator=(const Clips&) = delete;

    /** source: azimuth and elevation in radians, range in metres */
    const float* next(const float source[3], int clip = Speech) {
        return getNextFrame(source, clip, generator_);
    }

    /** The next frame of a talker in front of the array. */
    const float* talker() {
        const float source[3] = {0.3f, 0.1f, 2.0f};
        return next(source);
    }

  private:
    AudioGenerator* generator_;
};

/** Whole numbers, uniform up to a peak, of 2^23 at most. */
inline std::vector<float> noiseFrame(int channels, unsigned int seed, float peak = 1048576.0f) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> sample(-peak, peak);
    std::vector<float> frame(static_cast<std::size_t>(channels) * 2048);
    for (float& value : frame) value = std::round(sample(random));
    return frame;
}

#endif
