/** The lag tables without cleverness: the yardsticks of voxloc_initialize. */
#ifndef VOXLOC_BENCH_PLAIN_TABLES_H
#define VOXLOC_BENCH_PLAIN_TABLES_H

#include <cstdint>
#include <vector>

#include "track/grids.h"
#include "track/products.h"

namespace voxloc_bench {

struct PlainTables {
    std::vector<float> azimuths, elevations, ranges;  // radians, radians, metres
    std::vector<std::int16_t> azimuthElevation;       // [elevation pairs][AzimuthElevationPoints]
    std::vector<std::int16_t> azimuthRange;           // [azimuth pairs][AzimuthRangePoints]
};

/** The grids of a product and room for its tables. */
PlainTables plainGrids(const voxloc::Product& product);

/** Fills the tables by the public functions: grid point by grid point, one call after the other. */
void fillPlainTables(const voxloc::Product& product, PlainTables& tables);

/** The same with the formulas in the loop's sight, so that the compiler hoists a row's share. */
void fillHoistedTables(const voxloc::Product& product, PlainTables& tables);

}  // namespace voxloc_bench

#endif
