#include "medians.h"

#include <cstdio>
#include <vector>

namespace voxloc_bench {

namespace {

class MedianReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(),
                             run.error_message.c_str());
                failed = true;
            }
            if (run.aggregate_name != "median") continue;
            auto& figures = medians[run.run_name.function_name];
            figures[ProcessorTime] = run.GetAdjustedCPUTime();
            for (const auto& [name, counter] : run.counters) figures[name] = counter.value;
        }
    }

    Medians medians;
    bool failed = false;
};

}  // namespace

void printFigure(const Medians& medians, const std::string& benchmark, const std::string& counter,
                 int width, int digits) {
    const auto found = medians.find(benchmark);
    if (found == medians.end()) {
        std::printf(" %*s", width, "");
    } else {
        std::printf(" %*.*f", width, digits, found->second.at(counter));
    }
}

int runInterleaved(int argc, char** argv, const std::function<void(const Medians&)>& print) {
    // Before the caller's own arguments, which therefore win.
    std::vector<std::string> defaults = {"--benchmark_repetitions=9", "--benchmark_min_time=0.1",
                                         "--benchmark_enable_random_interleaving=true"};
    std::vector<char*> arguments = {argv[0]};
    for (std::string& option : defaults) arguments.push_back(option.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;

    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    print(reporter.medians);
    return reporter.failed ? 1 : 0;
}

}  // namespace voxloc_bench
