#include "arrays/resolution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "common/sound.h"

namespace {

constexpr double BinWidth = 11.71875;                    // Hz
constexpr double Radian = 180.0 / M_PI;                  // degrees
constexpr double FarAway = 1000.0;                       // metres, where elevations are looked for
constexpr double MiddleRange = 3.0;                      // metres
constexpr double TinyAngle = 1e-4;                       // radians, for slopes
constexpr double TinyRange = 1e-3;                       // metres, for slopes
constexpr int ReachAzimuths = 45, ReachElevations = 27;  // enough for the ends of a pair's lags

using PairValues = std::array<double, VOXLOC_MAX_PAIRS>;

double dot(const PairValues& a, const PairValues& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
}

/** The length of what `a` has and `b` cannot explain. */
double lengthBeside(const PairValues& a, const PairValues& b) {
    const double along = dot(b, b);
    const double share = along > 0.0 ? dot(a, b) / along : 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += (a[i] - share * b[i]) * (a[i] - share * b[i]);
    }
    return std::sqrt(sum);
}

double perLag(double lagsPerUnit) {
    // Less than a ten-thousandth of a lag is rounding.
    return lagsPerUnit > 1e-4 ? 1.0 / lagsPerUnit : std::numeric_limits<double>::infinity();
}

struct Place {
    double azimuth, elevation, range;  // radians, radians, metres
};

double distance(const Place& place, const Position& to) {
    const double ground = place.range * std::cos(place.elevation);
    const double dx = ground * std::cos(place.azimuth) - static_cast<double>(to.x);
    const double dy = ground * std::sin(place.azimuth) - static_cast<double>(to.y);
    const double dz = place.range * std::sin(place.elevation) - static_cast<double>(to.z);
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

/** In double precision, so that slopes can be taken. */
double lagsOf(const VoxlocArray& array, VoxlocPair pair, const Place& place) {
    return (distance(place, array.microphone[pair.first]) -
            distance(place, array.microphone[pair.second])) *
           LagRate / SpeedOfSound;
}

/** Change of each pair's lags between two places, per unit. */
PairValues slopes(const VoxlocArray& array, const VoxlocPair* pairs, int count, const Place& before,
                  const Place& after, double units) {
    PairValues values = {};
    for (int i = 0; i < count; ++i) {
        values[static_cast<std::size_t>(i)] =
            (lagsOf(array, pairs[i], after) - lagsOf(array, pairs[i], before)) / units;
    }
    return values;
}

PairValues azimuthSlopes(const VoxlocArray& array, const VoxlocPair* pairs, int count,
                         const Place& at) {
    return slopes(array, pairs, count, {at.azimuth - TinyAngle, at.elevation, at.range},
                  {at.azimuth + TinyAngle, at.elevation, at.range}, 2 * TinyAngle * Radian);
}

PairValues elevationSlopes(const VoxlocArray& array, const Place& at) {
    return slopes(array, array.elevationPair, array.elevationPairs,
                  {at.azimuth, at.elevation - TinyAngle, at.range},
                  {at.azimuth, at.elevation + TinyAngle, at.range}, 2 * TinyAngle * Radian);
}

/** Lags a metre that no other azimuth explains. */
double rangeSlope(const VoxlocArray& array, double azimuth, double range) {
    const Place at{azimuth, 0.0, range};
    const PairValues slope =
        slopes(array, array.azimuthPair, array.azimuthPairs, {azimuth, 0.0, range - TinyRange},
               {azimuth, 0.0, range + TinyRange}, 2 * TinyRange);
    return lengthBeside(slope, azimuthSlopes(array, array.azimuthPair, array.azimuthPairs, at));
}

/** Degrees between neighbours of a grid with equal steps of the sine. */
double stepAt(double angle, double interval) {
    const double sine = std::sin(angle);
    const double next = std::fabs(sine) - interval;  // towards the middle: the smaller step
    return (std::fabs(angle) - std::asin(std::max(-1.0, next))) * Radian;
}

std::vector<double> anglesBetween(double lowest, double highest, int count) {
    const double first = std::sin(lowest / Radian), last = std::sin(highest / Radian);
    std::vector<double> angles;
    for (int i = 0; i < count; ++i) {
        const double sine = count > 1 ? first + (last - first) * i / (count - 1) : first;
        angles.push_back(std::asin(std::clamp(sine, -1.0, 1.0)) * Radian);
    }
    return angles;
}

/** The library's whole lag with its sign back. */
int wholeLag(double lags) {
    return static_cast<int>(std::floor(lags + 0.5));
}

}  // namespace

Resolution::Resolution(const VoxlocArray& array) : array_(array) {
    voxloc_getGrid(&array_, &grid_);
}

std::vector<double> Resolution::azimuths(int count) const {
    return anglesBetween(static_cast<double>(grid_.lowestAzimuth),
                         static_cast<double>(grid_.highestAzimuth), count);
}

std::vector<double> Resolution::elevations(int count) const {
    return anglesBetween(static_cast<double>(grid_.lowestElevation),
                         static_cast<double>(grid_.highestElevation), count);
}

std::vector<PairReach> Resolution::azimuthPairs() const {
    return reaches(array_.azimuthPair, array_.azimuthPairs, false);
}

std::vector<PairReach> Resolution::elevationPairs() const {
    return reaches(array_.elevationPair, array_.elevationPairs, true);
}

std::vector<PairReach> Resolution::reaches(const VoxlocPair* pairs, int count,
                                           bool isElevation) const {
    std::vector<PairReach> all;
    all.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) all.push_back(reach(pairs[i], isElevation));
    return all;
}

PairReach Resolution::reach(VoxlocPair pair, bool isElevation) const {
    const Position& first = array_.microphone[pair.first];
    const Position& second = array_.microphone[pair.second];
    std::uint16_t upper = 0, lower = 0;
    voxloc_setCutoffCoefficients(&first, &second, &upper, &lower);
    double least = std::numeric_limits<double>::infinity(), most = -least;
    const std::vector<double> heights =
        isElevation ? elevations(ReachElevations) : std::vector<double>{0.0};
    const std::vector<double> ranges =
        isElevation ? std::vector<double>{FarAway}
                    : std::vector<double>{static_cast<double>(grid_.nearestRange),
                                          static_cast<double>(grid_.farthestRange)};
    for (const double azimuth : azimuths(ReachAzimuths)) {
        for (const double elevation : heights) {
            for (const double range : ranges) {
                const double lags =
                    lagsOf(array_, pair, {azimuth / Radian, elevation / Radian, range});
                least = std::min(least, lags);
                most = std::max(most, lags);
            }
        }
    }
    const double spacing = static_cast<double>(voxloc_calculateDistance(&first, &second));
    return {pair,
            spacing,
            wholeLag(least),
            wholeLag(most),
            lower * BinWidth,
            most > least ? LagRate / (most - least) : std::numeric_limits<double>::infinity()};
}

AngleResolution Resolution::at(double azimuth, double elevation) const {
    const Place near{azimuth / Radian, elevation / Radian, MiddleRange};
    const Place far{azimuth / Radian, elevation / Radian, FarAway};
    const PairValues turn = azimuthSlopes(array_, array_.azimuthPair, array_.azimuthPairs, near);
    const PairValues turnFar =
        azimuthSlopes(array_, array_.elevationPair, array_.elevationPairs, far);
    const double interval = static_cast<double>(grid_.angleInterval);
    return {azimuth,
            elevation,
            perLag(std::sqrt(dot(turn, turn))),
            stepAt(azimuth / Radian, interval),
            perLag(lengthBeside(elevationSlopes(array_, far), turnFar)),
            stepAt(elevation / Radian, interval)};
}

std::vector<RangeResolution> Resolution::ranges(double azimuth) const {
    const double nearest = static_cast<double>(grid_.nearestRange);
    const double farthest = static_cast<double>(grid_.farthestRange);
    const double interval = static_cast<double>(grid_.rangeInterval);
    std::vector<RangeResolution> all(static_cast<std::size_t>(grid_.ranges));
    double lags = 0.0, slopeBeyond = rangeSlope(array_, azimuth / Radian, farthest);
    for (std::size_t i = all.size(); i-- > 0;) {
        const double range = nearest + interval * static_cast<double>(i);
        const double slope = rangeSlope(array_, azimuth / Radian, range);
        if (i + 1 < all.size()) lags += 0.5 * (slope + slopeBeyond) * interval;
        slopeBeyond = slope;
        all[i] = {range, perLag(slope), lags};
    }
    return all;
}

Position extentOf(const VoxlocArray& array) {
    Position least = array.microphone[0], most = least;
    for (std::int32_t c = 1; c < array.channels; ++c) {
        const Position& p = array.microphone[c];
        least = {std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z)};
        most = {std::max(most.x, p.x), std::max(most.y, p.y), std::max(most.z, p.z)};
    }
    return {most.x - least.x, most.y - least.y, most.z - least.z};
}
