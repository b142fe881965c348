#include "pairGeometry.h"

#include <cmath>

#include "conversions.h"
#include "dsplib/simd/simdLanes.h"

namespace {

float roundHalfUp(float value) {
    return std::floor(value + 0.5f);
}

}  // namespace

void voxloc_sphericalToCartesian(const float spherical[3], Position* out) {
    const float azimuth = spherical[0];
    const float elevation = spherical[1];
    const float range = spherical[2];
    const float ground = range * std::cos(elevation);
    out->x = ground * std::cos(azimuth);
    out->y = ground * std::sin(azimuth);
    out->z = range * std::sin(elevation);
}

float voxloc_calculateDistance(const Position* a, const Position* b) {
    const float dx = a->x - b->x;
    const float dy = a->y - b->y;
    const float dz = a->z - b->z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

int16_t voxloc_distanceToSampleDelay(float pathDifference) {
    float lag = pathDifference * voxloc::SPEED_FACTOR;
    if (lag < 0.0f) lag += static_cast<float>(voxloc::CorrelationLags);
    return voxloc::toInteger<std::int16_t>(roundHalfUp(lag));
}

void voxloc_setCutoffCoefficients(const Position* a, const Position* b, uint16_t* upperBin,
                                  uint16_t* lowerBin) {
    const float spacing = voxloc_calculateDistance(a, b);
    *lowerBin = voxloc::toInteger<std::uint16_t>(roundHalfUp(voxloc::HalfWavelength / spacing));
    *upperBin = voxloc::HighestBin;
}

namespace voxloc {

int reachInLags(const Position& first, const Position& second) {
    // A far source's two distances are rounded to 1/16,000 m each: a tenth of a lag.
    const float reach = std::ceil(voxloc_calculateDistance(&first, &second) * SPEED_FACTOR) + 2.0f;
    return 2 * toInteger<std::int16_t>(std::ceil(reach / 2.0f));
}

void lagsOfRow(const Directions& azimuths, int count, float elevation, float range,
               const Position& first, const Position& second, std::int16_t* lags) {
    const float ground = range * std::cos(elevation), height = range * std::sin(elevation);
    simd::forLanes(0, count, [=](int i, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto zero = Lanes::splat(0.0f);
        const auto x = simd::mul(Lanes::splat(ground), Lanes::load(azimuths.cosine + i));
        const auto y = simd::mul(Lanes::splat(ground), Lanes::load(azimuths.sine + i));
        const auto distanceTo = [=](const Position& microphone) {
            const auto dx = simd::sub(x, Lanes::splat(microphone.x));
            const auto dy = simd::sub(y, Lanes::splat(microphone.y));
            const auto dz = Lanes::splat(height - microphone.z);
            return simd::squareRoot(
                simd::add(simd::add(simd::mul(dx, dx), simd::mul(dy, dy)), simd::mul(dz, dz)));
        };
        const auto path =
            simd::mul(simd::sub(distanceTo(first), distanceTo(second)), Lanes::splat(SPEED_FACTOR));
        const auto wrapped = simd::add(path, Lanes::splat(static_cast<float>(CorrelationLags)));
        const auto lag = simd::add(simd::selectLess(path, zero, wrapped, path), Lanes::splat(0.5f));
        // No lag is negative here, so truncation is the floor.
        const auto beyond = Lanes::splat(32767.0f);
        simd::storeIntegers(lags + i, simd::selectLess(lag, beyond, lag, zero));
    });
}

}  // namespace voxloc
