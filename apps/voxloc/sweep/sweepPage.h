/** The page of a sweep: where each array errs. One HTML file that opens without a network. */
#ifndef VOXLOC_APP_SWEEP_SWEEP_PAGE_H
#define VOXLOC_APP_SWEEP_SWEEP_PAGE_H

#include <string>
#include <vector>

#include "sweep/errorMaps.h"
#include "sweep/sweepOutput.h"

namespace CLI {
class App;
}

/** Adds --report; `file` stays empty without it. */
void addSweepPageOption(CLI::App& command, std::string& file);

struct SweepPageData {
    std::string command;               // what makes the same figures again
    std::vector<SweepResult> results;  // these three: one for each array
    std::vector<ErrorMaps> maps;
    std::vector<NamedArray> arrays;
};

/** The words that were given to the command, without files that it writes and without threads. */
std::string sweepCommandLine(const CLI::App& command);

std::string sweepPageText(const SweepPageData& data);

#endif
