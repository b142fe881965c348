/**
 * The program's way from a recording to records, beside a bare loop over voxloc_calculate on the
 * same frames in memory: what reading, levels and writing cost on top of the tracker.
 */
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "kit/talker.h"
#include "locate/locate.h"
#include "medians.h"

namespace voxloc_bench {
namespace {

constexpr std::size_t Frames = 1024;  // 44 s of sound

/** The recording lies in memory: no disk is measured. */
std::string recordScenario(const kit::Scenario& scenario) {
    const std::string path = "/dev/shm/voxloc_bench_locate.rec";
    TrackerResult result;
    if (voxloc_record_start(path.c_str()) == 0) std::abort();
    for (std::size_t f = 0; f < scenario.frames(); ++f) {
        voxloc_calculate(scenario.frame(f), kit::SignificantBits, scenario.flags[f], &result);
    }
    voxloc_record_stop();
    return path;
}

void benchBareLoop(benchmark::State& state) {
    voxloc_initialize(PRODUCT_ASTER);
    const kit::Scenario scenario = kit::mixedScenario(Frames);
    for (auto _ : state) {
        for (std::size_t f = 0; f < Frames; ++f) {
            benchmark::DoNotOptimize(kit::processFrame(scenario, f));
        }
    }
    voxloc_destroy();
}

void benchLocate(benchmark::State& state, RecordForm form) {
    voxloc_initialize(PRODUCT_ASTER);
    LocateJob job;
    job.input = recordScenario(kit::mixedScenario(Frames));
    voxloc_destroy();
    job.output = "/dev/shm/voxloc_bench_locate.out";
    job.form = form;
    for (auto _ : state) {
        if (locate(job) != 0) std::abort();
    }
    std::remove(job.input.c_str());
    std::remove(job.output.c_str());
}

constexpr struct {
    const char* name;
    RecordForm form;
} Forms[] = {{"locate/text", RecordForm::Text},
             {"locate/csv", RecordForm::Csv},
             {"locate/jsonl", RecordForm::JsonLines}};

void printTable(const Medians& medians) {
    const auto time = [&medians](const char* name) {
        const auto found = medians.find(name);
        return found == medians.end() ? 0.0 : found->second.at(ProcessorTime) / 1000.0 / Frames;
    };
    const double bare = time("bare");
    std::printf("%-14s %9s %9s\n%-14s %9.1f\n", "us a frame", "median", "speed", "bare loop", bare);
    for (const auto& form : Forms) {
        const double with = time(form.name);
        std::printf("%-14s %9.1f %7.1f %%\n", form.name, with, 100.0 * bare / with);
    }
}

}  // namespace
}  // namespace voxloc_bench

int main(int argc, char** argv) {
    using namespace voxloc_bench;
    const auto add = [](const char* name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name, function, arguments...)->Iterations(1)->Repetitions(9);
    };
    add("bare", benchBareLoop);
    for (const auto& form : Forms) add(form.name, benchLocate, form.form);
    return runInterleaved(argc, argv, printTable);
}
