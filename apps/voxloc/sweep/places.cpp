#include "sweep/places.h"

#include <algorithm>

#include "common/failure.h"
#include "simulator/exactMath.h"

namespace {

constexpr double InnerShare = 0.7;      // of the angles that an array searches
constexpr double MostAzimuth = 60.0;    // degrees
constexpr double MostElevation = 30.0;  // degrees
constexpr double NearestTalker = 1.0;   // metres
constexpr double FarthestTalker = 5.0;  // metres
constexpr double FromWall = 0.3;        // metres
constexpr int TriesPerPlace = 1000;

/** Where people sit before an array: neither at the very ends of its search nor beside it. */
Span innerPart(const Span& searched, double most) {
    return {std::max(InnerShare * searched.low, -most), std::min(InnerShare * searched.high, most)};
}

bool isInside(const Room& room, const ArrayPlace& at, const Direction& direction) {
    if (room.rt60 == 0.0) return true;
    const Point p = pointOf(at, direction);
    const auto isBetween = [](double x, double size) {
        return x >= FromWall && x <= size - FromWall;
    };
    return isBetween(p.x, room.size.x) && isBetween(p.y, room.size.y) &&
           isBetween(p.z, room.size.z);
}

double stepOf(const Span& span, int step, int steps) {
    return steps == 1 ? 0.5 * (span.low + span.high)
                      : span.low + (span.high - span.low) * step / (steps - 1);
}

std::vector<Direction> onGrid(const Field& field, const GridSteps& steps) {
    std::vector<Direction> places;
    for (int r = 0; r < steps.ranges; ++r) {
        for (int e = 0; e < steps.elevations; ++e) {
            for (int a = 0; a < steps.azimuths; ++a) {
                places.push_back({stepOf(field.azimuth, a, steps.azimuths),
                                  stepOf(field.elevation, e, steps.elevations),
                                  stepOf(field.range, r, steps.ranges)});
            }
        }
    }
    return places;
}

Direction drawPlace(const Field& field, RandomNumbers& random) {
    const double azimuth = random.between(field.azimuth.low, field.azimuth.high);
    const double elevation = random.between(field.elevation.low, field.elevation.high);
    return {azimuth, elevation, random.between(field.range.low, field.range.high)};
}

}  // namespace

Field fieldOf(const VoxlocArray& array, const PlaceChoice& choice) {
    VoxlocGrid grid;
    voxloc_getGrid(&array, &grid);
    Span azimuth{static_cast<double>(grid.lowestAzimuth), static_cast<double>(grid.highestAzimuth)};
    Span elevation{static_cast<double>(grid.lowestElevation),
                   static_cast<double>(grid.highestElevation)};
    if (!choice.isWholeSearch) {
        azimuth = innerPart(azimuth, MostAzimuth);
        elevation = innerPart(elevation, MostElevation);
    }
    if (array.elevationPairs == 0) elevation = {};
    return {choice.azimuth.value_or(azimuth), choice.elevation.value_or(elevation),
            choice.range.value_or(Span{NearestTalker, FarthestTalker})};
}

std::vector<Direction> placesOf(const VoxlocArray& array, const PlaceChoice& choice,
                                const Room& room, const ArrayPlace& at) {
    const Field field = fieldOf(array, choice);
    std::vector<Direction> places;
    if (choice.grid) {
        places = onGrid(field, *choice.grid);
        places.erase(std::remove_if(places.begin(), places.end(),
                                    [&](const Direction& p) { return !isInside(room, at, p); }),
                     places.end());
    } else {
        RandomNumbers random(choice.seed);
        for (int tries = choice.places * TriesPerPlace; tries > 0; --tries) {
            const Direction place = drawPlace(field, random);
            if (isInside(room, at, place)) places.push_back(place);
            if (places.size() == static_cast<std::size_t>(choice.places)) break;
        }
    }
    if (places.empty()) throw BadData("none of the places is inside the room");
    return places;
}
