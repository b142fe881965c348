/** The built-in microphone arrays once more, as data of the checks' own. */
#ifndef VERIFY_MODELS_PRODUCT_ROWS_H
#define VERIFY_MODELS_PRODUCT_ROWS_H

#include <array>
#include <cstdint>
#include <vector>

#include "voxloc/voxloc.h"

namespace reference {

struct ProductRow {
    const char* name;
    std::int32_t type;
    float minimumAzimuth, minimumElevation, angleInterval;  // sines of angles
    VoxlocPair voiceChannels, noiseChannels;
    bool attenuates;
    Position loudspeaker;               // metres
    std::vector<Position> microphones;  // metres
    std::vector<VoxlocPair> elevationPair, azimuthPair;
    int timeDomainVoiceChannel = 2;
};

// clang-format off
/** In the order of the product numbers. A new product needs a row here, too. */
inline const std::vector<ProductRow>& productRows() {
    static const std::vector<ProductRow> rows{
        {"aster", PRODUCT_ASTER, -0.905f, -0.52f, 0.008f, {1, 2}, {1, 2}, false, {0, 0, 0},
         {{-0.13f, 0.3753f, 0.133f}, {-0.13f, 0.2253f, 0.133f}, {-0.13f, -0.2253f, 0.133f},
          {-0.13f, -0.3753f, 0.133f}, {-0.13f, 0.3753f, -0.067f}, {-0.13f, -0.3753f, -0.067f}},
         {{3, 5}, {4, 0}, {2, 1}}, {{2, 1}, {3, 2}, {0, 1}}},
        {"bramble", PRODUCT_BRAMBLE, -0.905f, -0.52f, 0.008f, {1, 5}, {1, 5}, false, {0, 0, 0},
         {{0.028f, -0.329f, 0.085f}, {0.028f, -0.244f, 0.085f}, {0.028f, -0.159f, 0.085f},
          {0.028f, -0.244f, -0.085f}, {0.028f, 0.159f, 0.085f}, {0.028f, 0.244f, 0.085f},
          {0.028f, 0.329f, 0.085f}, {0.028f, 0.244f, -0.085f}},
         {{1, 3}, {5, 7}, {1, 7}, {3, 5}, {1, 5}}, {{1, 5}, {0, 6}, {0, 2}, {4, 6}}},
        {"cinder", PRODUCT_CINDER, -0.72f, -0.65f, 0.0064f, {3, 4}, {3, 4}, true, {0.0028f, 0.067f, 0},
         {{0, 0.33f, 0.0305f}, {0.0028f, 0.17f, 0.0305f}, {0.0028f, -0.17f, 0.0305f},
          {0, -0.33f, 0.0305f}, {0, -0.33f, -0.0305f}, {0.0028f, -0.17f, -0.0305f}},
         {{3, 4}, {3, 5}, {2, 4}}, {{3, 2}, {3, 0}, {1, 0}}},
        {"elmwood", PRODUCT_ELMWOOD, -0.825f, -0.55f, 0.0073f, {2, 4}, {3, 4}, false, {0, 0.157f, 0.005f},
         {{0, 0.275f, 0.04f}, {0, 0.435f, 0.04f}, {0, 0.275f, -0.04f}, {0, 0.435f, -0.04f},
          {0, -0.275f, 0.04f}, {0, -0.435f, 0.04f}, {0, -0.275f, -0.04f}, {0, -0.435f, -0.04f}},
         {{6, 4}, {5, 6}, {7, 4}, {3, 1}}, {{7, 6}, {6, 2}, {3, 2}}},
        {"dovetail", PRODUCT_DOVETAIL, -0.72f, -0.65f, 0.0064f, {3, 4}, {3, 4}, true, {0, -0.127f, 0.009f},
         {{0, -0.396f, 0.03602f}, {0, -0.236f, 0.03602f}, {0, 0.236f, 0.03602f},
          {0, 0.396f, 0.03602f}, {-0.0038f, 0.396f, -0.02498f}, {-0.0038f, 0.236f, -0.02498f}},
         {{2, 5}, {3, 4}, {2, 4}}, {{4, 5}, {2, 1}, {1, 0}}},
        {"foxglove", PRODUCT_FOXGLOVE, -0.825f, -0.55f, 0.0073f, {1, 2}, {1, 2}, false, {0, 0, 0},
         {{0, -0.24f, 0}, {0, -0.08f, 0}, {0, 0.1f, 0}, {0, 0.28f, 0}},
         {}, {{2, 1}, {0, 1}, {3, 2}}},
        {"gannet", PRODUCT_GANNET, -1.045f, -0.825f, 0.0092f, {1, 2}, {1, 2}, false, {0, 0, 0},
         {{0, -0.1725f, -0.0225f}, {0, -0.0835f, -0.0225f}, {0, -0.0435f, -0.0225f},
          {0, 0.0155f, -0.0225f}, {0, 0.0485f, -0.0225f}, {0, 0.1225f, -0.0225f},
          {0, -0.0835f, 0.0175f}, {0, 0.0485f, 0.0175f}},
         {{1, 6}, {4, 7}}, {{0, 2}, {3, 5}, {1, 4}}},
    };
    return rows;
}
// clang-format on

}  // namespace reference

#endif
