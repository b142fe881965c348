/**
 * The microphone arrays that are built in, a row each. An eighth product is one more row here and
 * one more enumerator in voxloc.h: whatever needs all products goes over the rows.
 */
#include <cstring>
#include <iterator>

#include "arrayCheck.h"
#include "voxloc.h"

namespace voxloc {
namespace {

constexpr Position NoLoudspeaker = {0.0f, 0.0f, 0.0f};
constexpr std::int32_t Off = 0, On = 1;

// clang-format off
constexpr VoxlocProduct Products[] = {
    // name, type; channels, azimuth pairs, elevation pairs; lowest sine of azimuth, of elevation, step;
    // channels of the voice detector, of the noise level, of the time-domain voice detector; attenuate
    {"aster",    PRODUCT_ASTER,     {6, 3, 3,      -0.905f, -0.52f,  0.008f,  {1, 2}, {1, 2}, 2, Off,
     {{-0.13f,  0.3753f,  0.133f}, {-0.13f,  0.2253f,  0.133f}, {-0.13f, -0.2253f,  0.133f},
      {-0.13f, -0.3753f,  0.133f}, {-0.13f,  0.3753f, -0.067f}, {-0.13f, -0.3753f, -0.067f}},
     NoLoudspeaker,
     {{3, 5}, {4, 0}, {2, 1}},  // the upside-down check relies on this order
     {{2, 1}, {3, 2}, {0, 1}}}},

    {"bramble",  PRODUCT_BRAMBLE,   {8, 4, 5,      -0.905f, -0.52f,  0.008f,  {1, 5}, {1, 5}, 2, Off,
     {{0.028f, -0.329f,  0.085f}, {0.028f, -0.244f,  0.085f}, {0.028f, -0.159f,  0.085f},
      {0.028f, -0.244f, -0.085f}, {0.028f,  0.159f,  0.085f}, {0.028f,  0.244f,  0.085f},
      {0.028f,  0.329f,  0.085f}, {0.028f,  0.244f, -0.085f}},
     NoLoudspeaker,
     {{1, 3}, {5, 7}, {1, 7}, {3, 5}, {1, 5}},
     {{1, 5}, {0, 6}, {0, 2}, {4, 6}}}},

    {"cinder",   PRODUCT_CINDER,    {6, 3, 3,      -0.72f,  -0.65f,  0.0064f, {3, 4}, {3, 4}, 2, On,
     {{0.0f,     0.33f,  0.0305f}, {0.0028f,  0.17f,  0.0305f}, {0.0028f, -0.17f,  0.0305f},
      {0.0f,    -0.33f,  0.0305f}, {0.0f,    -0.33f, -0.0305f}, {0.0028f, -0.17f, -0.0305f}},
     {0.0028f, 0.067f, 0.0f},
     {{3, 4}, {3, 5}, {2, 4}},
     {{3, 2}, {3, 0}, {1, 0}}}},

    {"elmwood",  PRODUCT_ELMWOOD,   {8, 3, 4,      -0.825f, -0.55f,  0.0073f, {2, 4}, {3, 4}, 2, Off,
     {{0.0f,  0.275f,  0.04f}, {0.0f,  0.435f,  0.04f}, {0.0f,  0.275f, -0.04f},
      {0.0f,  0.435f, -0.04f}, {0.0f, -0.275f,  0.04f}, {0.0f, -0.435f,  0.04f},
      {0.0f, -0.275f, -0.04f}, {0.0f, -0.435f, -0.04f}},
     {0.0f, 0.157f, 0.005f},  // known, though nothing is attenuated here
     {{6, 4}, {5, 6}, {7, 4}, {3, 1}},
     {{7, 6}, {6, 2}, {3, 2}}}},

    {"dovetail", PRODUCT_DOVETAIL,  {6, 3, 3,      -0.72f,  -0.65f,  0.0064f, {3, 4}, {3, 4}, 2, On,
     {{0.0f,    -0.396f, 0.03602f}, {0.0f,     -0.236f,  0.03602f}, {0.0f,     0.236f,  0.03602f},
      {0.0f,     0.396f, 0.03602f}, {-0.0038f,  0.396f, -0.02498f}, {-0.0038f, 0.236f, -0.02498f}},
     {0.0f, -0.127f, 0.009f},
     {{2, 5}, {3, 4}, {2, 4}},
     {{4, 5}, {2, 1}, {1, 0}}}},

    {"foxglove", PRODUCT_FOXGLOVE,  {4, 3, 0,      -0.825f, -0.55f,  0.0073f, {1, 2}, {1, 2}, 2, Off,
     {{0.0f, -0.24f, 0.0f}, {0.0f, -0.08f, 0.0f}, {0.0f, 0.1f, 0.0f}, {0.0f, 0.28f, 0.0f}},
     NoLoudspeaker,
     {},
     {{2, 1}, {0, 1}, {3, 2}}}},

    // The ends of this product's azimuth grid lie outside [-1, 1] deliberately: nine azimuths have
    // NaN angles and lags of 0, as its users know it.
    {"gannet",   PRODUCT_GANNET,    {8, 3, 2,      -1.045f, -0.825f, 0.0092f, {1, 2}, {1, 2}, 2, Off,
     {{0.0f, -0.1725f, -0.0225f}, {0.0f, -0.0835f, -0.0225f}, {0.0f, -0.0435f, -0.0225f},
      {0.0f,  0.0155f, -0.0225f}, {0.0f,  0.0485f, -0.0225f}, {0.0f,  0.1225f, -0.0225f},
      {0.0f, -0.0835f,  0.0175f}, {0.0f,  0.0485f,  0.0175f}},
     NoLoudspeaker,
     {{1, 6}, {4, 7}},
     {{0, 2}, {3, 5}, {1, 4}}}},
};
// clang-format on

/** A grid may go beyond what sines can be, as one does deliberately; nothing else may be wrong. */
constexpr bool areAllWired() {
    for (const VoxlocProduct& product : Products) {
        if (findWiringFault(product.array).field != nullptr) return false;
    }
    return true;
}
static_assert(areAllWired(),
              "a row names a microphone that it lacks, or microphones too far apart");

}  // namespace
}  // namespace voxloc

using voxloc::Products;

uint32_t voxloc_getNumberOfProducts(void) {
    return static_cast<uint32_t>(std::size(Products));
}

const VoxlocProduct* voxloc_getProduct(uint32_t index) {
    return index < std::size(Products) ? &Products[index] : nullptr;
}

const VoxlocProduct* voxloc_findProduct(int32_t type) {
    for (const VoxlocProduct& product : Products) {
        if (product.type == type) return &product;
    }
    return nullptr;
}

const VoxlocProduct* voxloc_findProductByName(const char* name) {
    if (name == nullptr) return nullptr;
    for (const VoxlocProduct& product : Products) {
        if (std::strcmp(product.name, name) == 0) return &product;
    }
    return nullptr;
}
