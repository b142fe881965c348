/** Cost of initialising for all products, beside the lag tables alone by their plain formulas. */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "cpuTime.h"
#include "kit/products.h"
#include "medians.h"
#include "plainTables.h"
#include "track/tracker.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

namespace {

std::int64_t differingLags(const std::vector<std::int16_t>& plain, const std::int16_t* table) {
    std::int64_t differing = 0;
    for (std::size_t i = 0; i < plain.size(); ++i) differing += plain[i] != table[i];
    return differing;
}

/** Entries of the module's tables that the plain formulas give another lag. */
std::int64_t differingLags(const PlainTables& plain) {
    const voxloc::Tracker& tracker = voxloc::moduleTracker();
    return differingLags(plain.azimuthElevation, tracker.AzimuthElevationLookupTable) +
           differingLags(plain.azimuthRange, tracker.AzimuthRangeLookupTable);
}

void benchInitialize(benchmark::State& state, const VoxlocProduct& product) {
    PlainTables plain = plainGrids(product.array);
    double moduleTime = 0.0, plainTime = 0.0, hoistedTime = 0.0;  // microseconds
    std::int64_t differing = 0;
    for (auto _ : state) {
        {
            const CpuTime time(moduleTime);
            voxloc_initialize(product.type);
        }
        {
            const CpuTime time(plainTime);
            fillPlainTables(product.array, plain);
        }
        differing = std::max(differing, differingLags(plain));
        {
            const CpuTime time(hoistedTime);
            fillHoistedTables(product.array, plain);
        }
        differing = std::max(differing, differingLags(plain));
        voxloc_destroy();
    }
    const auto runs = static_cast<double>(state.iterations());
    state.counters["ms"] = moduleTime / runs / 1000.0;
    state.counters["plainMs"] = plainTime / runs / 1000.0;
    state.counters["hoistedMs"] = hoistedTime / runs / 1000.0;
    state.counters["ratio"] = plainTime / moduleTime;
    state.counters["hoistedRatio"] = hoistedTime / moduleTime;
    state.counters["differingLags"] = static_cast<double>(differing);
}

std::string nameOf(const VoxlocProduct& product) {
    return std::string("initialize/") + product.name;
}

void printTable(const Medians& medians) {
    std::printf("%-10s %8s %9s %6s %10s %6s %8s\n", "product", "init ms", "plain ms", "ratio",
                "hoisted ms", "ratio", "lags off");
    for (const VoxlocProduct& product : kit::products()) {
        const std::string name = nameOf(product);
        std::printf("%-10s", product.name);
        printFigure(medians, name, "ms", 8, 2);
        printFigure(medians, name, "plainMs", 9, 2);
        printFigure(medians, name, "ratio", 6, 2);
        printFigure(medians, name, "hoistedMs", 10, 2);
        printFigure(medians, name, "hoistedRatio", 6, 2);
        printFigure(medians, name, "differingLags", 8, 0);
        std::printf("\n");
    }
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char** argv) {
    using namespace voxloc_bench;
    for (const VoxlocProduct& product : kit::products()) {
        benchmark::RegisterBenchmark(nameOf(product).c_str(), benchInitialize, product);
    }
    return runInterleaved(argc, argv, printTable);
}
