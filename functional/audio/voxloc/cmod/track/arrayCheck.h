/**
 * What an array must be for the tracker to work with it. The checks run while compiling for the
 * built-in products, and at run time for a user's own array.
 */
#ifndef VOXLOC_ARRAY_CHECK_H
#define VOXLOC_ARRAY_CHECK_H

#include <cstdint>

#include "grids.h"
#include "pairGeometry.h"
#include "voxloc.h"

namespace voxloc {

/** The first thing that is wrong with an array; without a field nothing is. */
struct ArrayFault {
    const char* field = nullptr;
    int index = -1;           // of a field that is an array
    const char* member = "";  // of a pair: ".first" or ".second"
    bool hasValue = false;    // whether the value is worth telling
    double value = 0.0;
    const char* problem = "";  // goes on after the value, or after the field
};

constexpr bool isFinite(float value) {
    return value - value == 0.0f;
}

constexpr bool isFinite(const Position& p) {
    return isFinite(p.x) && isFinite(p.y) && isFinite(p.z);
}

constexpr ArrayFault valueFault(const char* field, std::int32_t value, const char* problem) {
    return {field, -1, "", true, static_cast<double>(value), problem};
}

constexpr ArrayFault valueFault(const char* field, float value, const char* problem) {
    return {field, -1, "", true, static_cast<double>(value), problem};
}

constexpr ArrayFault findChannelFault(const char* field, int index, const char* member,
                                      std::int32_t channel, const VoxlocArray& array) {
    if (channel >= 0 && channel < array.channels) return {};
    return {field, index, member, true, static_cast<double>(channel), "is not one of the channels"};
}

constexpr ArrayFault findChannelsFault(const char* field, int index, VoxlocPair pair,
                                       const VoxlocArray& array) {
    const ArrayFault first = findChannelFault(field, index, ".first", pair.first, array);
    if (first.field != nullptr) return first;
    return findChannelFault(field, index, ".second", pair.second, array);
}

constexpr ArrayFault findPairFault(const char* field, int index, VoxlocPair pair,
                                   const VoxlocArray& array) {
    const ArrayFault channels = findChannelsFault(field, index, pair, array);
    if (channels.field != nullptr) return channels;
    if (pair.first == pair.second) {
        return {field, index, "", false, 0.0, "is one microphone twice"};
    }
    const Position& a = array.microphone[pair.first];
    const Position& b = array.microphone[pair.second];
    const float dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
    const float squared = dx * dx + dy * dy + dz * dz;
    if (squared < SmallestSpacing * SmallestSpacing) {
        return {field, index, "", false, 0.0, "has its microphones less than 1.03 cm apart"};
    }
    if (squared > LargestSpacing * LargestSpacing) {
        return {field, index, "", false, 0.0, "has its microphones more than 14.8 m apart"};
    }
    return {};
}

constexpr ArrayFault findCountFault(const VoxlocArray& array) {
    if (array.channels < 1 || array.channels > VOXLOC_MAX_CHANNELS) {
        return valueFault("channels", array.channels, "is not 1 to 8");
    }
    if (array.azimuthPairs < 1 || array.azimuthPairs > VOXLOC_MAX_PAIRS) {
        return valueFault("azimuthPairs", array.azimuthPairs, "is not 1 to 8");
    }
    if (array.elevationPairs < 0 || array.elevationPairs > VOXLOC_MAX_PAIRS) {
        return valueFault("elevationPairs", array.elevationPairs, "is not 0 to 8");
    }
    return {};
}

/**
 * Far from the origin, where the talker is looked for, single precision cannot tell two
 * microphones' distances apart any more: their lags would be wrong, and at last beyond the
 * correlation.
 */
constexpr float FarthestCoordinate = 100.0f;  // metres

constexpr bool isNear(float coordinate) {
    return coordinate >= -FarthestCoordinate && coordinate <= FarthestCoordinate;
}

constexpr ArrayFault findPlaceFault(const char* field, int index, const Position& p) {
    if (!isFinite(p))
        return {field, index, "", false, 0.0, "has a coordinate that is not a number"};
    if (isNear(p.x) && isNear(p.y) && isNear(p.z)) return {};
    return {field, index, "", false, 0.0, "has a coordinate beyond 100 m"};
}

constexpr ArrayFault findPositionFault(const VoxlocArray& array) {
    for (int c = 0; c < array.channels; ++c) {
        const ArrayFault place = findPlaceFault("microphone", c, array.microphone[c]);
        if (place.field != nullptr) return place;
    }
    return findPlaceFault("loudspeaker", -1, array.loudspeaker);
}

constexpr ArrayFault findListenerFault(const VoxlocArray& array) {
    const ArrayFault voice = findChannelsFault("voiceChannels", -1, array.voiceChannels, array);
    if (voice.field != nullptr) return voice;
    const ArrayFault noise = findChannelsFault("noiseChannels", -1, array.noiseChannels, array);
    if (noise.field != nullptr) return noise;
    return findChannelFault("timeDomainVoiceChannel", -1, "", array.timeDomainVoiceChannel, array);
}

/** Counts, positions, channels and pairs: what the tracker's memory depends on. */
constexpr ArrayFault findWiringFault(const VoxlocArray& array) {
    const ArrayFault count = findCountFault(array);
    if (count.field != nullptr) return count;
    const ArrayFault position = findPositionFault(array);
    if (position.field != nullptr) return position;
    const ArrayFault listener = findListenerFault(array);
    if (listener.field != nullptr) return listener;
    for (int k = 0; k < array.azimuthPairs; ++k) {
        const ArrayFault pair = findPairFault("azimuthPair", k, array.azimuthPair[k], array);
        if (pair.field != nullptr) return pair;
    }
    for (int k = 0; k < array.elevationPairs; ++k) {
        const ArrayFault pair = findPairFault("elevationPair", k, array.elevationPair[k], array);
        if (pair.field != nullptr) return pair;
    }
    return {};
}

/** Sine of a grid's point, as the grid itself is filled. */
constexpr float gridSine(float minimum, float interval, int index) {
    return minimum + static_cast<float>(index) * interval;
}

/** The grid's angles: each must be the arc sine of something. */
constexpr ArrayFault findGridFault(const VoxlocArray& array) {
    if (!(array.minimumAzimuth >= -1.0f && array.minimumAzimuth <= 1.0f)) {
        return valueFault("minimumAzimuth", array.minimumAzimuth, "is no sine");
    }
    if (!(array.minimumElevation >= -1.0f && array.minimumElevation <= 1.0f)) {
        return valueFault("minimumElevation", array.minimumElevation, "is no sine");
    }
    if (!(array.angleInterval > 0.0f && isFinite(array.angleInterval))) {
        return valueFault("angleInterval", array.angleInterval, "is not a positive step");
    }
    const float highestAzimuth =
        gridSine(array.minimumAzimuth, array.angleInterval, AzimuthCount - 1);
    if (highestAzimuth > 1.0f) {
        return valueFault("angleInterval", array.angleInterval,
                          "takes the last of 227 azimuths beyond the sine of 90 degrees");
    }
    const float highestElevation =
        gridSine(array.minimumElevation, array.angleInterval, ElevationCount - 1);
    if (highestElevation > 1.0f) {
        return valueFault("angleInterval", array.angleInterval,
                          "takes the last of 131 elevations beyond the sine of 90 degrees");
    }
    return {};
}

}  // namespace voxloc

#endif
