/**
 * Compares the dumps of two or more machines, each with each, and prints a table:
 *
 *     agreement_compare DUMP DUMP...
 *
 * Exits with 0 when all pairs agree within the bounds and every difference has a known cause.
 */
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "compare.h"

namespace {

constexpr std::size_t MostFailuresShown = 20;

void printHeader() {
    std::printf("%-20s %6s %6s %15s %7s %12s %12s\n", "", "frames", "on a", "largest quality",
                "other", "other bits", "other FFT or");
    std::printf("%-20s %6s %6s %15s %7s %12s %12s\n", "machines", "", "tie", "difference",
                "results", "on the way", "FIR outputs");
}

void print(const Comparison& pair) {
    std::printf("%-20s %6d %6d %15.1e %7d %12d %6d / %d\n",
                (pair.first + ":" + pair.second).c_str(), pair.frames, pair.framesOnATie,
                pair.largestQualityDifference, pair.framesWithOtherResults,
                pair.framesWithOtherStages, pair.vectorsThatDiffer, pair.vectors);
    for (const auto& [cause, count] : pair.causes)
        std::printf("    %6d %s\n", count, cause.c_str());
    for (const std::string& note : pair.notes) std::printf("    %s\n", note.c_str());
    for (std::size_t i = 0; i < pair.failures.size() && i < MostFailuresShown; ++i) {
        std::printf("    FAILED: %s\n", pair.failures[i].c_str());
    }
    if (pair.failures.size() > MostFailuresShown) {
        std::printf("    FAILED: %zu more\n", pair.failures.size() - MostFailuresShown);
    }
}

bool compareEachWithEach(const std::vector<MachineDump>& dumps) {
    bool agree = true;
    printHeader();
    for (std::size_t i = 0; i < dumps.size(); ++i) {
        for (std::size_t j = i + 1; j < dumps.size(); ++j) {
            const Comparison pair = compare(dumps[i], dumps[j]);
            print(pair);
            agree = agree && pair.failures.empty();
        }
    }
    return agree;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: agreement_compare DUMP DUMP...\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        std::vector<MachineDump> dumps;
        for (int i = 1; i < argc; ++i) dumps.push_back(readDump(argv[i]));
        return compareEachWithEach(dumps) ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "agreement_compare: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
