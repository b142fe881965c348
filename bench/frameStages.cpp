/** A frame's cost stage by stage: for each product, and for silence after a talker. */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

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
StageTimes timeStages(const Scenario& scenario) {
    static const double microsecondsPerTick = measureTick();
    std::array<std::vector<double>, StageCount> ticks;
    for (std::size_t i = 0; i < scenario.frames(); ++i) {
        TrackerResult result;
        restartStages();
        voxloc_calculate(scenario.frame(i), SignificantBits, scenario.flags[i], &result);
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
    const Scenario scenario = mixedScenario(ScenarioFrames);
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
    timeStages(talkerScenario(TalkerFrames));
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
    const Scenario talker = talkerScenario(TalkerFrames);
    timeStages(talker);
    for (auto _ : state) count(state, timeStages(talker));
    voxloc_destroy();
}

// --- Tables -------------------------------------------------------------------------------------

struct Column {
    const char* title;
    std::string benchmark;
};

void printTable(const Medians& medians, const std::vector<Column>& columns) {
    std::vector<std::string> rows(StageNames, StageNames + StageCount);
    rows.emplace_back("frame");
    std::printf("%-24s", "");
    for (const Column& column : columns) std::printf(" %11s", column.title);
    std::printf("\n");
    for (const std::string& row : rows) {
        std::printf("%-24s", row.c_str());
        for (const Column& column : columns) {
            const auto found = medians.find(column.benchmark);
            if (found != medians.end()) std::printf(" %11.2f", found->second.at(row));
        }
        std::printf("\n");
    }
}

std::string productName(const Product& product) {
    return std::string("stages/") + product.name;
}

std::string quietName(const Quiet& kind) {
    return std::string("stages_quiet/") + kind.name;
}

constexpr const char* TalkerName = "stages_quiet/talker";

/** False when a stage's calls did not come by its wrapper: the table would blame the caller. */
bool allStagesSeen(const Medians& medians) {
    const auto product = medians.find("stages/cinder");  // has all stages
    if (product == medians.end()) return true;
    for (const char* stage : StageNames) {
        if (product->second.at(stage) > 0.0) continue;
        std::fprintf(stderr, "stage never seen: %s\n", stage);
        return false;
    }
    return true;
}

void printTables(const Medians& medians) {
    std::vector<Column> products, kinds = {{"talker", TalkerName}};
    for (const Product& product : Products) {
        products.push_back({product.name, productName(product)});
    }
    for (const Quiet& kind : QuietKinds) kinds.push_back({kind.name, quietName(kind)});
    std::printf("microseconds a frame by stage, mixed scenario\n");
    printTable(medians, products);
    std::printf("\naster, minutes of silence after a talker, blocks at the 95th percentile\n");
    printTable(medians, kinds);
}

void registerBenchmarks() {
    for (const Product& product : Products) {
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
        complete = allStagesSeen(medians);
    });
    return complete ? status : 1;
}
