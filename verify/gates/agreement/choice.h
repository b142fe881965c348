/** Which grid points the last frame chose, and how close the choices were. */
#ifndef VERIFY_AGREEMENT_CHOICE_H
#define VERIFY_AGREEMENT_CHOICE_H

#include "track/tracker.h"

/**
 * By how much the sum at the chosen point exceeds the largest at a point that reads other lags; the
 * points that read the same lags hold the same sum by construction and compete with nobody. For the
 * range, how far the sum below the flat run is from belonging to it, or its last row from leaving
 * it. FLT_MAX where there is nothing to compare with.
 */
struct Margins {
    float elevation, azimuth, range;
};

struct Choice {
    int elevation, azimuth;  // indices into the grids of angles
    Margins margins;
};

/** Of the frame that the tracker has just computed. */
Choice choiceOfFrame(const voxloc::Tracker& tracker);

#endif
