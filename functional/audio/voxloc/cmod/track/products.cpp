#include "products.h"

#include <cstddef>

namespace voxloc {
namespace {

constexpr Position NoLoudspeaker = {0.0f, 0.0f, 0.0f};

// clang-format off
constexpr Product Products[] = {
    // type          channels, pairs  lowest sines, step         voice   noise   attenuate
    //               (azimuth, elevation)
    {PRODUCT_ASTER,    6, 3, 3,       -0.905f, -0.52f,  0.008f,  {1, 2}, {1, 2}, false,
     {{{-0.13f,  0.3753f,  0.133f}, {-0.13f,  0.2253f,  0.133f}, {-0.13f, -0.2253f,  0.133f},
       {-0.13f, -0.3753f,  0.133f}, {-0.13f,  0.3753f, -0.067f}, {-0.13f, -0.3753f, -0.067f}}},
     NoLoudspeaker,
     {{{3, 5}, {4, 0}, {2, 1}}},  // the upside-down check relies on this order
     {{{2, 1}, {3, 2}, {0, 1}}}},

    {PRODUCT_BRAMBLE,  8, 4, 5,       -0.905f, -0.52f,  0.008f,  {1, 5}, {1, 5}, false,
     {{{0.028f, -0.329f,  0.085f}, {0.028f, -0.244f,  0.085f}, {0.028f, -0.159f,  0.085f},
       {0.028f, -0.244f, -0.085f}, {0.028f,  0.159f,  0.085f}, {0.028f,  0.244f,  0.085f},
       {0.028f,  0.329f,  0.085f}, {0.028f,  0.244f, -0.085f}}},
     NoLoudspeaker,
     {{{1, 3}, {5, 7}, {1, 7}, {3, 5}, {1, 5}}},
     {{{1, 5}, {0, 6}, {0, 2}, {4, 6}}}},

    {PRODUCT_CINDER,   6, 3, 3,       -0.72f,  -0.65f,  0.0064f, {3, 4}, {3, 4}, true,
     {{{0.0f,     0.33f,  0.0305f}, {0.0028f,  0.17f,  0.0305f}, {0.0028f, -0.17f,  0.0305f},
       {0.0f,    -0.33f,  0.0305f}, {0.0f,    -0.33f, -0.0305f}, {0.0028f, -0.17f, -0.0305f}}},
     {0.0028f, 0.067f, 0.0f},
     {{{3, 4}, {3, 5}, {2, 4}}},
     {{{3, 2}, {3, 0}, {1, 0}}}},

    {PRODUCT_ELMWOOD,  8, 3, 4,       -0.825f, -0.55f,  0.0073f, {2, 4}, {3, 4}, false,
     {{{0.0f,  0.275f,  0.04f}, {0.0f,  0.435f,  0.04f}, {0.0f,  0.275f, -0.04f},
       {0.0f,  0.435f, -0.04f}, {0.0f, -0.275f,  0.04f}, {0.0f, -0.435f,  0.04f},
       {0.0f, -0.275f, -0.04f}, {0.0f, -0.435f, -0.04f}}},
     {0.0f, 0.157f, 0.005f},  // known, though nothing is attenuated here
     {{{6, 4}, {5, 6}, {7, 4}, {3, 1}}},
     {{{7, 6}, {6, 2}, {3, 2}}}},

    {PRODUCT_DOVETAIL, 6, 3, 3,       -0.72f,  -0.65f,  0.0064f, {3, 4}, {3, 4}, true,
     {{{0.0f,    -0.396f, 0.03602f}, {0.0f,     -0.236f,  0.03602f}, {0.0f,     0.236f,  0.03602f},
       {0.0f,     0.396f, 0.03602f}, {-0.0038f,  0.396f, -0.02498f}, {-0.0038f, 0.236f, -0.02498f}}},
     {0.0f, -0.127f, 0.009f},
     {{{2, 5}, {3, 4}, {2, 4}}},
     {{{4, 5}, {2, 1}, {1, 0}}}},

    {PRODUCT_FOXGLOVE, 4, 3, 0,       -0.825f, -0.55f,  0.0073f, {1, 2}, {1, 2}, false,
     {{{0.0f, -0.24f, 0.0f}, {0.0f, -0.08f, 0.0f}, {0.0f, 0.1f, 0.0f}, {0.0f, 0.28f, 0.0f}}},
     NoLoudspeaker,
     {},
     {{{2, 1}, {0, 1}, {3, 2}}}},

    // The ends of this product's azimuth grid lie outside [-1, 1] deliberately: nine azimuths have
    // NaN angles and lags of 0, as its users know it.
    {PRODUCT_GANNET,   8, 3, 2,       -1.045f, -0.825f, 0.0092f, {1, 2}, {1, 2}, false,
     {{{0.0f, -0.1725f, -0.0225f}, {0.0f, -0.0835f, -0.0225f}, {0.0f, -0.0435f, -0.0225f},
       {0.0f,  0.0155f, -0.0225f}, {0.0f,  0.0485f, -0.0225f}, {0.0f,  0.1225f, -0.0225f},
       {0.0f, -0.0835f,  0.0175f}, {0.0f,  0.0485f,  0.0175f}}},
     NoLoudspeaker,
     {{{1, 6}, {4, 7}}},
     {{{0, 2}, {3, 5}, {1, 4}}}},
};
// clang-format on

/** Correlations are computed at the first and last NearLags lags: 0.928 m of path. */
constexpr float LargestSpacing = 0.92f;  // metres

constexpr bool isNear(const Product& product, ChannelPair pair) {
    const Position& a = product.microphone[static_cast<std::size_t>(pair.first)];
    const Position& b = product.microphone[static_cast<std::size_t>(pair.second)];
    const float dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
    return dx * dx + dy * dy + dz * dz < LargestSpacing * LargestSpacing;
}

constexpr bool arePairsNear(const Product& product) {
    for (const ChannelPair pair : product.elevationPair) {
        if (!isNear(product, pair)) return false;
    }
    for (const ChannelPair pair : product.azimuthPair) {
        if (!isNear(product, pair)) return false;
    }
    return true;
}

constexpr bool areAllPairsNear() {
    for (const Product& product : Products) {
        if (!arePairsNear(product)) return false;
    }
    return true;
}
static_assert(areAllPairsNear(), "a pair is wider than the correlations reach (NearLags)");

}  // namespace

const Product* findProduct(std::int32_t type) {
    for (const Product& product : Products) {
        if (product.type == type) return &product;
    }
    return nullptr;
}

}  // namespace voxloc
