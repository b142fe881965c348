/** Where a sweep puts the talker. */
#ifndef VOXLOC_APP_SWEEP_PLACES_H
#define VOXLOC_APP_SWEEP_PLACES_H

#include <cstdint>
#include <optional>
#include <vector>

#include "arrays/arrays.h"
#include "simulator/simulator.h"

/** From the lowest to the highest. */
struct Span {
    double low = 0.0, high = 0.0;
};

/** Steps along each coordinate. */
struct GridSteps {
    int azimuths = 0, elevations = 0, ranges = 0;
};

struct PlaceChoice {
    // Degrees, degrees, metres. Left out: the inner 70 per cent of the angles that the array
    // searches, azimuths up to 60 and elevations up to 30 degrees, 0 without elevation pairs; 1 to
    // 5 m.
    std::optional<Span> azimuth, elevation, range;
    bool isWholeSearch = false;     // instead: all angles that the array searches
    std::optional<GridSteps> grid;  // else at random
    int places = 100;
    std::uint64_t seed = 1;
};

/** The spans that a choice means for an array. */
struct Field {
    Span azimuth, elevation, range;
};
Field fieldOf(const VoxlocArray& array, const PlaceChoice& choice);

/**
 * Places in that field and, in a room with walls, inside it: at random evenly over angles and
 * range, on a grid at equal steps, the ends included. Throws BadData when the room leaves none.
 */
std::vector<Direction> placesOf(const VoxlocArray& array, const PlaceChoice& choice,
                                const Room& room, const ArrayPlace& at);

#endif
