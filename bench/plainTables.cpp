#include "plainTables.h"

#include <cstddef>

#include "models/geometryModel.h"

namespace voxloc_bench {

namespace {

using reference::Azimuths;
using reference::Elevations;
using reference::RangeSteps;

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
        const Position point = reference::pointAt(spherical[0], spherical[1], spherical[2]);
        return static_cast<std::int16_t>(reference::lagOf(point, first, second));
    }
};

struct RowPosition {
    float elevation, range;
};

/** One pair over a grid; returns where the next pair's table begins. */
template <class Formulas>
std::int16_t* fillPair(const VoxlocArray& array, VoxlocPair pair,
                       const std::vector<float>& azimuths, const std::vector<RowPosition>& rows,
                       std::int16_t* table) {
    const Position first = array.microphone[pair.first];
    const Position second = array.microphone[pair.second];
    for (const RowPosition row : rows) {
        for (const float azimuth : azimuths) {
            const float spherical[3] = {azimuth, row.elevation, row.range};
            *table++ = Formulas::lag(spherical, first, second);
        }
    }
    return table;
}

std::vector<float> gridAngles(float minimum, float interval, int count) {
    std::vector<float> angles;
    for (int i = 0; i < count; ++i) {
        angles.push_back(reference::gridAngle(minimum, interval, i));
    }
    return angles;
}

template <class Formulas>
void fillTables(const VoxlocArray& array, PlainTables& tables) {
    std::vector<RowPosition> directions, places;
    for (const float elevation : tables.elevations) {
        directions.push_back({elevation, reference::FarField});
    }
    for (const float range : tables.ranges) places.push_back({0.0f, range});
    std::int16_t* table = tables.azimuthElevation.data();
    for (int k = 0; k < array.elevationPairs; ++k) {
        table =
            fillPair<Formulas>(array, array.elevationPair[k], tables.azimuths, directions, table);
    }
    table = tables.azimuthRange.data();
    for (int k = 0; k < array.azimuthPairs; ++k) {
        table = fillPair<Formulas>(array, array.azimuthPair[k], tables.azimuths, places, table);
    }
}

}  // namespace

PlainTables plainGrids(const VoxlocArray& array) {
    PlainTables tables;
    tables.azimuths = gridAngles(array.minimumAzimuth, array.angleInterval, Azimuths);
    tables.elevations = gridAngles(array.minimumElevation, array.angleInterval, Elevations);
    for (int i = 0; i < RangeSteps; ++i) tables.ranges.push_back(reference::gridRange(i));
    tables.azimuthElevation.resize(
        static_cast<std::size_t>(array.elevationPairs * Elevations * Azimuths));
    tables.azimuthRange.resize(
        static_cast<std::size_t>(array.azimuthPairs * RangeSteps * Azimuths));
    return tables;
}

void fillPlainTables(const VoxlocArray& array, PlainTables& tables) {
    fillTables<Plain>(array, tables);
}

void fillHoistedTables(const VoxlocArray& array, PlainTables& tables) {
    fillTables<Hoisted>(array, tables);
}

}  // namespace voxloc_bench
