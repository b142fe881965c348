#include "plainTables.h"

#include <cmath>
#include <cstddef>

namespace voxloc_bench {

namespace {

using voxloc::AzimuthCount;
using voxloc::AzimuthElevationPoints;
using voxloc::AzimuthRangePoints;
using voxloc::ChannelPair;
using voxloc::ElevationCount;
using voxloc::Product;
using voxloc::RangeCount;

constexpr float FarField = 1000.0f;        // metres
constexpr float LagsPerMetre = 551.7241f;  // 192,000 lags a second, 348 m/s
constexpr float CircularLags = 16384.0f;

Position pointAt(float azimuth, float elevation, float range) {
    return {range * std::cos(elevation) * std::cos(azimuth),
            range * std::cos(elevation) * std::sin(azimuth), range * std::sin(elevation)};
}

float distance(const Position& a, const Position& b) {
    const float dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

std::int16_t hoistableLag(float pathDifference) {
    float lag = pathDifference * LagsPerMetre;
    if (lag < 0.0f) lag += CircularLags;
    lag = std::floor(lag + 0.5f);
    return lag == lag ? static_cast<std::int16_t>(lag) : std::int16_t{0};
}

struct Plain {
    static std::int16_t lag(const float spherical[3], const Position& first,
                            const Position& second) {
        Position point;
        voxloc_sphericalToCartesian(spherical, &point);
        return voxloc_distanceToSampleDelay(voxloc_calculateDistance(&point, &first) -
                                            voxloc_calculateDistance(&point, &second));
    }
};

struct Hoisted {
    static std::int16_t lag(const float spherical[3], const Position& first,
                            const Position& second) {
        const Position point = pointAt(spherical[0], spherical[1], spherical[2]);
        return hoistableLag(distance(point, first) - distance(point, second));
    }
};

struct RowPosition {
    float elevation, range;
};

/** One pair over a grid. */
template <class Formulas, class RowPlace>
void fillPair(const Product& product, ChannelPair pair, const std::vector<float>& azimuths,
              int rows, RowPlace placeOf, std::int16_t* table) {
    const Position first = product.microphone[static_cast<std::size_t>(pair.first)];
    const Position second = product.microphone[static_cast<std::size_t>(pair.second)];
    for (int row = 0; row < rows; ++row) {
        const RowPosition place = placeOf(static_cast<std::size_t>(row));
        for (const float azimuth : azimuths) {
            const float spherical[3] = {azimuth, place.elevation, place.range};
            *table++ = Formulas::lag(spherical, first, second);
        }
    }
}

std::vector<float> arcsines(float minimum, float interval, int count) {
    std::vector<float> angles;
    for (int i = 0; i < count; ++i) {
        angles.push_back(std::asin(minimum + static_cast<float>(i) * interval));
    }
    return angles;
}

template <class Formulas>
void fillTables(const Product& product, PlainTables& tables) {
    for (int k = 0; k < product.elevationPairs; ++k) {
        fillPair<Formulas>(
            product, product.elevationPair[static_cast<std::size_t>(k)], tables.azimuths,
            ElevationCount,
            [&](std::size_t e) {
                return RowPosition{tables.elevations[e], FarField};
            },
            tables.azimuthElevation.data() + k * AzimuthElevationPoints);
    }
    for (int k = 0; k < product.azimuthPairs; ++k) {
        fillPair<Formulas>(
            product, product.azimuthPair[static_cast<std::size_t>(k)], tables.azimuths, RangeCount,
            [&](std::size_t r) {
                return RowPosition{0.0f, tables.ranges[r]};
            },
            tables.azimuthRange.data() + k * AzimuthRangePoints);
    }
}

}  // namespace

PlainTables plainGrids(const Product& product) {
    PlainTables tables;
    tables.azimuths = arcsines(product.minimumAzimuth, product.angleInterval, AzimuthCount);
    tables.elevations = arcsines(product.minimumElevation, product.angleInterval, ElevationCount);
    for (int i = 0; i < RangeCount; ++i) {
        tables.ranges.push_back(0.5f + 0.2f * static_cast<float>(i));
    }
    tables.azimuthElevation.resize(
        static_cast<std::size_t>(product.elevationPairs * AzimuthElevationPoints));
    tables.azimuthRange.resize(static_cast<std::size_t>(product.azimuthPairs * AzimuthRangePoints));
    return tables;
}

void fillPlainTables(const Product& product, PlainTables& tables) {
    fillTables<Plain>(product, tables);
}

void fillHoistedTables(const Product& product, PlainTables& tables) {
    fillTables<Hoisted>(product, tables);
}

}  // namespace voxloc_bench
