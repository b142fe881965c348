/**
 * The microphone arrays that the module knows. An eighth product is one more row in products.cpp
 * and one more enumerator in voxloc.h.
 */
#ifndef VOXLOC_PRODUCTS_H
#define VOXLOC_PRODUCTS_H

#include <array>
#include <cstdint>

#include "voxloc.h"

namespace voxloc {

constexpr int MaxElevationPairs = 5;
constexpr int MaxAzimuthPairs = 4;

struct ChannelPair {
    int first, second;
};

struct Product {
    std::int32_t type;  // PRODUCT_...
    std::int32_t channels, azimuthPairs, elevationPairs;
    float minimumAzimuth, minimumElevation, angleInterval;  // sines of angles
    ChannelPair frequencyDomainVadChannels, noiseLevelChannels;
    bool attenuateLoudspeaker;
    std::array<Position, VOXLOC_MAX_CHANNELS> microphone;  // metres
    Position loudspeaker;                                  // metres
    std::array<ChannelPair, MaxElevationPairs> elevationPair;
    std::array<ChannelPair, MaxAzimuthPairs> azimuthPair;
};

/** The product of that type, or null when there is none. */
const Product* findProduct(std::int32_t type);

}  // namespace voxloc

#endif
