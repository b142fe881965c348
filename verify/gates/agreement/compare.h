/** Do two machines compute the same? */
#ifndef VERIFY_AGREEMENT_COMPARE_H
#define VERIFY_AGREEMENT_COMPARE_H

#include <map>
#include <string>
#include <vector>

#include "dumpFile.h"

constexpr float QualityBound = 1e-4f;    // of the difference of two machines
constexpr double TieShareBound = 0.005;  // of all frames
constexpr float GridStepOfRange = 0.2f;  // metres

struct Comparison {
    std::string first, second;
    int frames = 0;
    int framesOnATie = 0;  // a neighbouring grid point was chosen
    double largestQualityDifference = 0.0;
    int framesWithOtherResults = 0;  // a bit of the result differs
    int framesWithOtherStages = 0;   // a bit of some array on the way differs
    int vectors = 0, vectorsThatDiffer = 0;
    std::map<std::string, int> causes;  // why bits differ, and in how many frames or tables
    std::vector<std::string> notes;     // every frame on a tie
    std::vector<std::string> failures;  // what is out of bounds or has no known cause
};

Comparison compare(const MachineDump& first, const MachineDump& second);

#endif
