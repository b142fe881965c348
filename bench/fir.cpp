/**
 * The FIR engine against the plain loop and the loop of 32 outputs, and against the core's own
 * multiply-add peak. After the rows of Google Benchmark comes a table of ratios; each of its times
 * is the fastest of the repetitions, in processor time. On a machine that does other things too,
 * let the repetitions of all cases take turns:
 *
 *     bench/fir --benchmark_enable_random_interleaving=true [--benchmark_filter=<regex>]
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "dsplib/sp_fir_neon.h"
#include "firPeers.h"

namespace {

constexpr int Outputs = 2048;
constexpr int LongestFilter = 256;
constexpr int Repetitions = 15;
constexpr double SecondsEach = 0.005;

enum class Peer { engine, plain, loop32 };
constexpr std::array<Peer, 3> Peers = {Peer::engine, Peer::plain, Peer::loop32};

const char* nameOf(Peer peer) {
    switch (peer) {
        case Peer::engine:
            return "engine";
        case Peer::plain:
            return "plain";
        case Peer::loop32:
            return "loop32";
    }
    return "";
}

BlockFilter loopOf(Peer peer) {
    return peer == Peer::plain ? plainLoop : loopOf32;
}

std::vector<float> noise(int count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1.0f, 1.0f);
    std::vector<float> samples(static_cast<std::size_t>(count));
    for (float& sample : samples) sample = level(random);
    return samples;
}

/** Reports nanoseconds per tap and output beside the time of a call. */
void countTaps(benchmark::State& state, int nh, int outputs) {
    const double products = double{1e-9} * nh * outputs;
    state.counters["ns/tap/output"] = benchmark::Counter(
        products, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void blockFilter(benchmark::State& state, Peer peer, int nh, int step) {
    const std::vector<float> x = noise(Outputs * step + LongestFilter, 1);
    const std::vector<float> h = noise(nh, 2);
    std::vector<float> y(Outputs);
    for (auto _ : state) {
        if (peer != Peer::engine) {
            loopOf(peer)(x.data(), h.data(), y.data(), nh, Outputs, step);
        } else {
            sp_fir_gen_downsample(x.data(), h.data(), y.data(), nh, (Outputs - 1) * step + 1, step);
        }
        benchmark::DoNotOptimize(y.data());
        benchmark::ClobberMemory();
    }
    countTaps(state, nh, Outputs);
}

void streamFilter(benchmark::State& state, Peer peer, int nh, int n) {
    const std::vector<float> x = noise(n, 1);
    const std::vector<float> h = noise(nh, 2);
    std::vector<float> y(static_cast<std::size_t>(n));
    std::vector<float> line(static_cast<std::size_t>(nh + n));
    int pos = 0;
    for (auto _ : state) {
        if (peer != Peer::engine) {
            linearStream(loopOf(peer), x.data(), h.data(), line.data(), y.data(), nh, n);
        } else {
            pos = sp_fir_filter(x.data(), h.data(), line.data(), pos, y.data(), nh, n);
        }
        benchmark::DoNotOptimize(y.data());
        benchmark::ClobberMemory();
    }
    countTaps(state, nh, n);
}

/** A line of the table: its name and the products in a call. */
struct Row {
    std::string name;
    double products;
};

std::vector<Row> Rows;

template <class Run>
void addRow(const std::string& name, int nh, int outputs, Run run) {
    Rows.push_back({name, double{1.0} * nh * outputs});
    for (const Peer peer : Peers) {
        const std::string caseName = name + "/" + nameOf(peer);
        benchmark::RegisterBenchmark(caseName.c_str(),
                                     [=](benchmark::State& state) { run(state, peer); })
            ->Repetitions(Repetitions)
            ->MinTime(SecondsEach);
    }
}

void addRows() {
    for (const int nh : {1, 4, 8, 16, 24, 32, 64, 128, 256}) {
        addRow("block/taps:" + std::to_string(nh), nh, Outputs,
               [nh](benchmark::State& state, Peer peer) { blockFilter(state, peer, nh, 1); });
    }
    for (const int n : {64, 2048}) {
        for (const int nh : {1, 4, 8, 16, 24, 32, 64, 128, 256}) {
            addRow(
                "stream:" + std::to_string(n) + "/taps:" + std::to_string(nh), nh, n,
                [nh, n](benchmark::State& state, Peer peer) { streamFilter(state, peer, nh, n); });
        }
    }
    for (const int step : {2, 3, 4}) {
        for (const int nh : {4, 16, 32, 64, 256}) {
            addRow("decimate:" + std::to_string(step) + "/taps:" + std::to_string(nh), nh, Outputs,
                   [nh, step](benchmark::State& state, Peer peer) {
                       blockFilter(state, peer, nh, step);
                   });
        }
    }
}

/** Prints as usual and keeps the fastest processor time of each case, in nanoseconds a call. */
class FastestTimes : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const std::string& name = run.run_name.function_name;
            const double time = run.GetAdjustedCPUTime();
            const auto known = fastest.find(name);
            if (known == fastest.end()) {
                fastest.emplace(name, time);
            } else {
                known->second = std::min(known->second, time);
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    /** 0 where the case was filtered out. */
    double of(const std::string& name) const {
        const auto known = fastest.find(name);
        return known == fastest.end() ? 0.0 : known->second;
    }

  private:
    std::map<std::string, double> fastest;
};

void printTable(const FastestTimes& times, double peak) {
    std::printf("\nmultiply-add peak, %d lanes: %.1f a ns\n", peakLanes(), peak);
    std::printf("%-24s %14s %10s %10s %10s\n", "", "ns/tap/output", "of peak", "x plain",
                "x loop32");
    for (const Row& row : Rows) {
        const double engine = times.of(row.name + "/engine");
        const double plain = times.of(row.name + "/plain");
        const double loop32 = times.of(row.name + "/loop32");
        if (engine <= 0.0 || plain <= 0.0 || loop32 <= 0.0) continue;
        std::printf("%-24s %14.4f %8.0f %% %10.2f %10.2f\n", row.name.c_str(),
                    engine / row.products, 100.0 * row.products / engine / peak, plain / engine,
                    loop32 / engine);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    addRows();
    FastestTimes times;
    const double peakBefore = measuredPeak();
    benchmark::RunSpecifiedBenchmarks(&times);
    printTable(times, std::max(peakBefore, measuredPeak()));
    benchmark::Shutdown();
    return 0;
}
