/** Where an array errs: a sweep's figures, cell by cell. */
#ifndef VOXLOC_APP_SWEEP_ERROR_MAPS_H
#define VOXLOC_APP_SWEEP_ERROR_MAPS_H

#include <vector>

#include "sweep/figures.h"

constexpr int MostMapCells = 40;  // along a coordinate; a finer grid is taken together

/** Cells of one width between two ends; one cell alone may have no width. */
struct MapAxis {
    double low = 0.0, high = 0.0;
    int cells = 1;
    bool isGrid = false;  // each cell is a step of the grid and its middle where the talkers are

    int cellOf(double value) const;
};

struct MapCell {
    int across = 0, up = 0;
    SweepFigures figures;  // of the talkers in it
};

struct ErrorMap {
    MapAxis across, up;
    std::vector<MapCell> cells;  // those with talkers alone, the lowest first
};

/** Over azimuth and elevation, all ranges taken together; over azimuth and range, all elevations.
 */
struct ErrorMaps {
    ErrorMap elevation, range;
};

/** On a grid a cell for each step, else cells with two talkers or more on the average. */
ErrorMaps errorMapsOf(const SweepRun& run, const SweepJob& job);

#endif
