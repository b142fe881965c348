/** A sweep's figures for people and for programs. */
#ifndef VOXLOC_APP_SWEEP_SWEEP_OUTPUT_H
#define VOXLOC_APP_SWEEP_SWEEP_OUTPUT_H

#include <string>
#include <vector>

#include "sweep/figures.h"

struct SweepResult {
    std::string array;
    std::string sound;  // "test generator", "room 6 x 5 x 3 m, RT60 0.5 s, SNR 20 dB"
    SweepFigures figures;
};

std::string sweepText(const SweepResult& result);

/** One line an array. */
std::string sweepOverview(const std::vector<SweepResult>& results);

/** A row for each array, kind of estimate and choice of frames. Unknown figures are empty. */
std::string sweepCsv(const std::vector<SweepResult>& results);

/** All figures, with quality against error. Unknown and infinite ones are null. */
std::string sweepJson(const std::vector<SweepResult>& results);

#endif
