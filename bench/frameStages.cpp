/** A frame's cost stage by stage: for each product, and for silence after a talker. */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include "kit/products.h"
#include "kit/talker.h"
#include "medians.h"
#include "quiet.h"
#include "stages.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

namespace {

constexpr std::size_t ScenarioFrames = 128, TalkerFrames = 64;

using StageTimes = std::array<double, StageCount>;  // microseconds a frame

double sumOf(const StageTimes& times) {
    double sum = 0.0;
    for (const double time : times) sum += time;
    return sum;
}

/** Medians over the frames, so that one that the machine disturbed does not count. */
StageTimes timeStages(const kit::Scenario& scenario) {
    static const double microsecondsPerTick = measureTick();
    std::array<std::vector<double>, StageCount> ticks;
    for (std::size_t i = 0; i < scenario.frames(); ++i) {
        restartStages();
        kit::processFrame(scenario, i);
        stopStages();
        for (std::size_t s = 0; s < StageCount; ++s) {
            ticks[s].push_back(static_cast<double>(StageTicks[s]));
        }
    }
    StageTimes times;
    for (std::size_t s = 0; s < StageCount; ++s) {
        const auto middle = ticks[s].begin() + static_cast<std::ptrdiff_t>(ticks[s].size() / 2);
        std::nth_element(ticks[s].begin(), middle, ticks[s].end());
        times[s] = *middle * microsecondsPerTick;
    }
    return times;
}

void count(benchmark::State& state, const StageTimes& times) {
    for (std::size_t s = 0; s < StageCount; ++s) state.counters[StageNames[s]] = times[s];
    state.counters["frame"] = sumOf(times);
}

void benchProduct(benchmark::State& state, std::int32_t product) {
    voxloc_initialize(product);
    const kit::Scenario scenario = kit::mixedScenario(ScenarioFrames);
    StageTimes sum = {};
    for (auto _ : state) {
        const StageTimes times = timeStages(scenario);
        for (std::size_t s = 0; s < StageCount; ++s) sum[s] += times[s];
    }
    for (double& time : sum) time /= static_cast<double>(state.iterations());
    count(state, sum);
    voxloc_destroy();
}

/** The block at the 95th percentile: dear, but not one that the machine disturbed. */
void benchQuiet(benchmark::State& state, const Quiet& kind) {
    voxloc_initialize(PRODUCT_ASTER);
    timeStages(kit::talkerScenario(TalkerFrames));
    for (auto _ : state) {
        QuietFrames quiet(kind);
        std::vector<StageTimes> blocks;
        for (std::size_t i = 0; i < quiet.blocks(); ++i) blocks.push_back(timeStages(quiet.next()));
        const auto dear = blocks.begin() + static_cast<std::ptrdiff_t>(blocks.size() * 95 / 100);
        std::nth_element(blocks.begin(), dear, blocks.end(),
                         [](const auto& a, const auto& b) { return sumOf(a) < sumOf(b); });
        count(state, *dear);
    }
    voxloc_destroy();
}

void benchTalker(benchmark::State& state) {
    voxloc_initialize(PRODUCT_ASTER);
    const kit::Scenario talker = kit::talkerScenario(TalkerFrames);
    timeStages(talker);
    for (auto _ : state) count(state, timeStages(talker));
    voxloc_destroy();
}

// --- Tables -------------------------------------------------------------------------------------

struct Column {
    const char* title;
    std::string benchmark;
};

void printTable(const char* title, const Medians& medians, std::vector<Column> columns) {
    const auto isFilteredOut = [&](const Column& column) {
        return medians.find(column.benchmark) == medians.end();
    };
    columns.erase(std::remove_if(columns.begin(), columns.end(), isFilteredOut), columns.end());
    if (columns.empty()) return;
    std::vector<std::string> rows(std::begin(StageNames), std::end(StageNames));
    rows.emplace_back("frame");
    std::printf("%s\n%-24s", title, "");
    for (const Column& column : columns) std::printf(" %11s", column.title);
    std::printf("\n");
    for (const std::string& row : rows) {
        std::printf("%-24s", row.c_str());
        for (const Column& column : columns) printFigure(medians, column.benchmark, row, 11, 2);
        std::printf("\n");
    }
}

std::string productName(const VoxlocProduct& product) {
    return std::string("stages/") + product.name;
}

std::string quietName(const Quiet& kind) {
    return std::string("stages_quiet/") + kind.name;
}

constexpr const char* TalkerName = "stages_quiet/talker";

/** False when no product's calls of a stage came by its wrapper: the table would blame the caller.
 */
bool isSeen(const Medians& medians, const char* stage) {
    for (const VoxlocProduct& product : kit::products()) {
        const auto found = medians.find(productName(product));
        // One that was filtered out may have been the one that has the stage.
        if (found == medians.end() || found->second.at(stage) > 0.0) return true;
    }
    std::fprintf(stderr, "stage never seen: %s\n", stage);
    return false;
}

void printTables(const Medians& medians) {
    std::vector<Column> products, kinds = {{"talker", TalkerName}};
    for (const VoxlocProduct& product : kit::products()) {
        products.push_back({product.name, productName(product)});
    }
    for (const Quiet& kind : QuietKinds) kinds.push_back({kind.name, quietName(kind)});
    printTable("microseconds a frame by stage, mixed scenario", medians, products);
    printTable("aster, minutes of silence after a talker, blocks at the 95th percentile", medians,
               kinds);
}

void registerBenchmarks() {
    for (const VoxlocProduct& product : kit::products()) {
        benchmark::RegisterBenchmark(productName(product).c_str(), benchProduct, product.type);
    }
    benchmark::RegisterBenchmark(TalkerName, benchTalker);
    for (const Quiet& kind : QuietKinds) {
        benchmark::RegisterBenchmark(quietName(kind).c_str(), benchQuiet, kind)
            ->Iterations(1)
            ->Repetitions(3);
    }
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char** argv) {
    using namespace voxloc_bench;
    registerBenchmarks();
    bool complete = true;
    const int status = runInterleaved(argc, argv, [&](const Medians& medians) {
        printTables(medians);
        for (const char* stage : StageNames) complete = isSeen(medians, stage) && complete;
    });
    return complete ? status : 1;
}
