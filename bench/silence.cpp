/** Cost of a frame in minutes of silence after a talker, relative to the talker's (aster). */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "cpuTime.h"
#include "kit/talker.h"
#include "medians.h"
#include "quiet.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

namespace {

constexpr std::size_t TalkerFrames = 128;

/** Microseconds a frame. */
double timeFrames(const kit::Scenario& scenario) {
    double microseconds = 0.0;
    {
        const CpuTime time(microseconds);
        for (std::size_t i = 0; i < scenario.frames(); ++i) kit::processFrame(scenario, i);
    }
    return microseconds / static_cast<double>(scenario.frames());
}

void benchQuiet(benchmark::State& state, const Quiet& kind) {
    for (auto _ : state) {
        voxloc_initialize(PRODUCT_ASTER);
        const kit::Scenario talker = kit::talkerScenario(TalkerFrames);
        QuietFrames quiet(kind);
        timeFrames(talker);  // settles
        const double speech = timeFrames(talker);
        std::vector<double> blocks;
        for (std::size_t i = 0; i < quiet.blocks(); ++i) blocks.push_back(timeFrames(quiet.next()));
        voxloc_destroy();
        std::sort(blocks.begin(), blocks.end());
        const double median = blocks[blocks.size() / 2];
        state.counters["us"] = median;
        state.counters["ratio"] = median / speech;
        state.counters["dearRatio"] = blocks[blocks.size() * 95 / 100] / speech;
    }
}

std::string nameOf(const Quiet& kind) {
    return std::string("quiet/") + kind.name;
}

void printTable(const Medians& medians) {
    std::printf("%-12s %9s %7s %7s\n", "", "median us", "median", "95 %");
    for (const Quiet& kind : QuietKinds) {
        std::printf("%-12s", kind.name);
        printFigure(medians, nameOf(kind), "us", 9, 1);
        printFigure(medians, nameOf(kind), "ratio", 7, 2);
        printFigure(medians, nameOf(kind), "dearRatio", 7, 2);
        std::printf("\n");
    }
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char** argv) {
    using namespace voxloc_bench;
    for (const Quiet& kind : QuietKinds) {
        benchmark::RegisterBenchmark(nameOf(kind).c_str(), benchQuiet, kind)
            ->Iterations(1)
            ->Repetitions(5);
    }
    return runInterleaved(argc, argv, printTable);
}
