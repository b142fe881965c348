/**
 * From a point to a lag, written out plainly: once in single precision, operation by operation, for
 * exact comparisons, and once in double.
 */
#ifndef VERIFY_REFERENCE_GEOMETRY_MODEL_H
#define VERIFY_REFERENCE_GEOMETRY_MODEL_H

#include <cmath>

#include "voxloc/voxloc.h"

namespace reference {

constexpr float LagsPerMetre = 551.7241f;  // 192 kHz over 348 m/s
constexpr int Azimuths = 227;
constexpr int Elevations = 131;
constexpr int RangeSteps = 48;
constexpr float FarField = 1000.0f;  // metres

inline float gridAngle(float minimum, float interval, int index) {
    return std::asin(minimum + static_cast<float>(index) * interval);
}

inline float gridRange(int index) {
    return 0.5f + 0.2f * static_cast<float>(index);
}

/** Row of a point of a grid. */
inline int rowOf(int point) {
    return point / 227;
}

inline Position pointAt(float azimuth, float elevation, float range) {
    return {range * std::cos(elevation) * std::cos(azimuth),
            range * std::cos(elevation) * std::sin(azimuth), range * std::sin(elevation)};
}

inline float distance(const Position& a, const Position& b) {
    const float x = a.x - b.x;
    const float y = a.y - b.y;
    const float z = a.z - b.z;
    return std::sqrt(x * x + y * y + z * z);
}

inline int lagOf(float pathDifference) {
    float lag = pathDifference * LagsPerMetre;
    if (std::isnan(lag)) return 0;
    if (lag < 0.0f) lag += 16384.0f;
    return static_cast<int>(std::floor(lag + 0.5f));
}

inline int lagOf(const Position& point, const Position& first, const Position& second) {
    return lagOf(distance(point, first) - distance(point, second));
}

/** Distance in double of a point given in spherical coordinates from a microphone. */
inline double exactDistance(double azimuth, double elevation, double range, const Position& m) {
    const double x = range * std::cos(elevation) * std::cos(azimuth) - static_cast<double>(m.x);
    const double y = range * std::cos(elevation) * std::sin(azimuth) - static_cast<double>(m.y);
    const double z = range * std::sin(elevation) - static_cast<double>(m.z);
    return std::sqrt(x * x + y * y + z * z);
}

/** How far two lags are apart on the circle of 16,384. */
inline double circularDistance(double a, double b) {
    return std::abs(std::remainder(a - b, 16384.0));
}

}  // namespace reference

#endif
