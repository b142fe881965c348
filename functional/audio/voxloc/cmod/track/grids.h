/** Sizes that the tracker's buffers, tables and search grids share, each from those it rests on. */
#ifndef VOXLOC_GRIDS_H
#define VOXLOC_GRIDS_H

#include "voxloc.h"

namespace voxloc {

constexpr int AnalysisSamples = 2 * FRAME_SAMPLES;     // 50 % overlap
constexpr int SpectrumBins = AnalysisSamples / 2 + 1;  // of 11.71875 Hz
constexpr int SpectrumFloats = 2 * SpectrumBins;

constexpr int CorrelationLags = 4 * AnalysisSamples;          // upsampled four-fold
constexpr int CorrelationBufferFloats = CorrelationLags + 8;  // lag 16384 can be read, too

constexpr int AzimuthCount = 227;
constexpr int ElevationCount = 131;
constexpr int RangeCount = 48;
constexpr int AzimuthElevationPoints = ElevationCount * AzimuthCount;  // row-major
constexpr int AzimuthRangePoints = RangeCount * AzimuthCount;          // row-major

constexpr float NearestRange = 0.5f, RangeInterval = 0.2f;  // metres

/** Pair blocks are counted through: elevation pairs first, then azimuth pairs. */
constexpr int MaxPairBlocks = 2 * VOXLOC_MAX_PAIRS;

}  // namespace voxloc

#endif
