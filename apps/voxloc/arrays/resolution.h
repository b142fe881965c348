/**
 * What an array can tell apart, by its geometry alone. One lag is 1/192,000 s; directions whose
 * lags differ by less than one look the same to a pair.
 */
#ifndef VOXLOC_APP_ARRAYS_RESOLUTION_H
#define VOXLOC_APP_ARRAYS_RESOLUTION_H

#include <vector>

#include <voxloc/voxloc.h>

/** A pair over the whole grid. */
struct PairReach {
    VoxlocPair pair;
    double spacing;          // metres
    int leastLag, mostLag;   // of all grid points
    double lowestFrequency;  // Hz: half a wave fits between the microphones; used from here on
    double aliasFrequency;   // Hz: from here on two directions of the grid look the same to it
};

/** Degrees by which a talker must move to be seen moving: one lag, or a step of the grid. */
struct AngleResolution {
    double azimuth, elevation;           // degrees, the place
    double azimuthLag, azimuthStep;      // degrees
    double elevationLag, elevationStep;  // degrees; infinite without elevation pairs
    double azimuthOf() const { return azimuthLag > azimuthStep ? azimuthLag : azimuthStep; }
    double elevationOf() const {
        return elevationLag > elevationStep ? elevationLag : elevationStep;
    }
};

/** What is left of a range's lags when the azimuth that explains most of them is taken away. */
struct RangeResolution {
    double range;         // metres
    double metresPerLag;  // infinite where the range cannot be told
    double lagsBeyond;    // between here and the farthest range
};

/** How an array's pairs see the grid. */
class Resolution {
  public:
    explicit Resolution(const VoxlocArray& array);

    const VoxlocGrid& grid() const { return grid_; }
    std::vector<PairReach> azimuthPairs() const;
    std::vector<PairReach> elevationPairs() const;

    /** Anywhere on the grid; far away for the elevation, at the middle range for the azimuth. */
    AngleResolution at(double azimuth, double elevation) const;

    /** Along one azimuth at the height of the array. */
    std::vector<RangeResolution> ranges(double azimuth) const;

    /** `count` angles in degrees from the lowest to the highest, at equal steps of their sine. */
    std::vector<double> azimuths(int count) const;
    std::vector<double> elevations(int count) const;

  private:
    std::vector<PairReach> reaches(const VoxlocPair* pairs, int count, bool isElevation) const;
    PairReach reach(VoxlocPair pair, bool isElevation) const;

    VoxlocArray array_;
    VoxlocGrid grid_;
};

/** Metres from the first to the last microphone along x, y and z. */
Position extentOf(const VoxlocArray& array);

#endif
