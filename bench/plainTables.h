/** The lag tables without cleverness: the yardsticks of voxloc_initialize. */
#ifndef VOXLOC_BENCH_PLAIN_TABLES_H
#define VOXLOC_BENCH_PLAIN_TABLES_H

#include <cstdint>
#include <vector>

#include "voxloc/voxloc.h"

namespace voxloc_bench {

struct PlainTables {
    std::vector<float> azimuths, elevations, ranges;  // radians, radians, metres
    std::vector<std::int16_t> azimuthElevation;       // [elevation pairs][elevations][azimuths]
    std::vector<std::int16_t> azimuthRange;           // [azimuth pairs][ranges][azimuths]
};

/** The grids of an array and room for its tables. */
PlainTables plainGrids(const VoxlocArray& array);

/** Fills the tables by the public functions: grid point by grid point, one call after the other. */
void fillPlainTables(const VoxlocArray& array, PlainTables& tables);

/** The same with the formulas in the loop's sight, so that the compiler hoists a row's share. */
void fillHoistedTables(const VoxlocArray& array, PlainTables& tables);

}  // namespace voxloc_bench

#endif
