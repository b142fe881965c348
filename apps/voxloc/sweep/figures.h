/** What a sweep shows, in figures. */
#ifndef VOXLOC_APP_SWEEP_FIGURES_H
#define VOXLOC_APP_SWEEP_FIGURES_H

#include <limits>
#include <vector>

#include "sweep/sweep.h"

constexpr double GrossDegrees = 15.0;
constexpr double CloseDegrees = 1.0, CloserDegrees = 0.5;
constexpr double CloseMetres = 0.5;
constexpr double FoundDegrees = 5.0;  // of azimuth, three frames in a row
constexpr int FoundFrames = 3;
constexpr double NotKnown = std::numeric_limits<double>::quiet_NaN();

/** A set of errors without their signs. An error that is not a number counts as infinite. */
struct Spread {
    std::size_t count = 0;
    double median = NotKnown, ninety = NotKnown;  // 90 per cent are no larger
    double gross = NotKnown;                      // shares, 0 to 1
    double close = NotKnown, closer = NotKnown;
};
Spread angleSpread(std::vector<double> errors);
Spread rangeSpread(std::vector<double> errors);

struct ErrorFigures {
    Spread azimuth, elevation, range;
    Spread toldRange;  // where a metre changes the lags by one or more
};

/** Frames with that quality or more, of those with a talker's voice found in them. */
struct QualityRow {
    double quality = 0.0;  // the bin's lower end, or the threshold
    double share = 0.0;    // of the frames
    Spread azimuth;
};

/** What the geometry says, taken at the places of the sweep. */
struct GeometryFigures {
    bool hasElevation = false;
    double azimuthStep = NotKnown, elevationStep = NotKnown;  // degrees told apart, median
    double rangeStep = NotKnown;                              // metres a lag, median
    double toldTo = 0.0;  // metres: up to here straight ahead a metre is a lag or more; 0: nowhere
    double toldShare = 0.0;  // of the places
};

struct SweepFigures {
    std::size_t places = 0, frames = 0, talking = 0;
    // Voice found, and the tracker settled; or every frame since the first place, the pause too.
    ErrorFigures frameWithVoice, frameAlways, halfWithVoice, halfAlways;
    double noEstimate = NotKnown;  // share of the frames since the first place
    double foundMedian = NotKnown, foundNinety = NotKnown;    // frames after a jump
    double neverFound = NotKnown;                             // share of jumps
    double voiceHits = NotKnown, timeVoiceHits = NotKnown;    // share of frames with a voice
    double falseVoice = NotKnown, falseTimeVoice = NotKnown;  // of those long without one
    GeometryFigures geometry;
    std::vector<QualityRow> bins, thresholds;
};

SweepFigures figuresOf(const SweepRun& run, int framesAtPlace);

/** Degrees between two angles, 0 to 180. */
double angleBetween(double a, double b);

#endif
