/** Two runs, frame by frame: a regression check for whoever tunes a tracker or an array. */
#ifndef VOXLOC_APP_LOCATE_COMPARE_H
#define VOXLOC_APP_LOCATE_COMPARE_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/record.h"
#include "readers/runReader.h"

/** A tolerance is given in degrees. One degree allows so much of the others. */
constexpr double RangePerDegree = 0.1;     // metres: a degree across is as long at 5.7 m
constexpr double QualityPerDegree = 0.02;  // of 0.3 to 1.5 while somebody talks

/** What one frame has in the other run beyond what it has in this one. */
struct FrameDifference {
    std::uint64_t frame = 0, sample = 0;
    // Infinite when only one of the runs has a number there.
    float azimuth = 0.0f, elevation = 0.0f;  // degrees, -180 to 180
    float range = 0.0f, quality = 0.0f;
    unsigned flags = 0;     // bit k: the k-th of FlagNames differs
    bool estimate = false;  // only one of the runs has an estimate
    double degrees = 0.0;   // the largest of the four, as degrees
};

FrameDifference differenceOf(const Record& here, const Record& there);

struct Comparison {
    std::string name;        // of the other run
    double tolerance = 0.0;  // degrees
    std::uint64_t frames = 0, onlyHere = 0, onlyThere = 0;
    std::uint64_t differing = 0;  // frames that are not the same in all that is compared
    std::uint64_t beyond = 0;     // frames beyond the tolerance
    std::array<std::uint64_t, FlagNames.size()> flagChanges = {};
    float azimuth = 0.0f, elevation = 0.0f, range = 0.0f, quality = 0.0f;  // largest differences
    std::vector<FrameDifference> worst;                                    // the largest first

    bool agrees() const { return beyond == 0 && onlyHere == 0 && onlyThere == 0; }
};

/**
 * Compares a run that goes by with one in a file. A frame is beyond the tolerance when a position
 * or a quality is, when a flag differs, or when only one of the runs has an estimate; positions
 * without estimate are not looked at, nor elevations of an array that has no pairs for them. Levels
 * are the input's and are not compared.
 */
class Comparer {
  public:
    static constexpr std::size_t Listed = 20;

    /** `tolerance` in degrees, 0 or more. Throws BadData. */
    Comparer(const std::string& path, double tolerance);

    const std::string& header() const { return reader_.header(); }

    /** Frames in ascending order. The other run's record of this frame; null when it has none. */
    const Record* add(const Record& record);

    /** Reads the other run to its end. */
    const Comparison& finish();

  private:
    void advance();
    void count(const FrameDifference& difference);

    RunReader reader_;
    Record other_, match_;
    bool hasOther_ = true;
    Comparison result_;
};

/** Some lines for people; the worst frames as a table. */
std::string comparisonToText(const Comparison& comparison);

/** The same for programs, JSON in one line. */
std::string comparisonToJson(const Comparison& comparison);

#endif
