/**
 * The FIR engine against the plain loop and the loop of 32 outputs, and against the core's own
 * multiply-add peak.
 */
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "dsplib/sp_fir_neon.h"
#include "dsplib/sp_simd.h"
#include "firPeers.h"
#include "medians.h"

namespace voxloc_bench {

namespace {

constexpr int Outputs = 2048;
constexpr int LongestFilter = 256;
constexpr double SecondsEach = 0.005;

enum class Peer { engine, plain, loop32 };
constexpr std::array<Peer, 3> Peers = {Peer::engine, Peer::plain, Peer::loop32};

const char* nameOf(Peer peer) {
    constexpr const char* names[] = {"engine", "plain", "loop32"};
    return names[static_cast<int>(peer)];
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
        benchmark::RegisterBenchmark(caseName.c_str(), [=](benchmark::State& state) {
            run(state, peer);
        })->MinTime(SecondsEach);
    }
}

void addRows() {
    for (const int nh : {1, 4, 8, 16, 24, 32, 64, 128, 256}) {
        addRow("block/taps:" + std::to_string(nh), nh, Outputs,
               [nh](benchmark::State& state, Peer peer) { blockFilter(state, peer, nh, 1); });
    }
    const auto addStream = [](int n, int nh) {
        addRow("stream:" + std::to_string(n) + "/taps:" + std::to_string(nh), nh, n,
               [nh, n](benchmark::State& state, Peer peer) { streamFilter(state, peer, nh, n); });
    };
    for (const int nh : {4, 32, 256}) addStream(1, nh);
    for (const int n : {64, 2048}) {
        for (const int nh : {1, 4, 8, 16, 24, 32, 64, 128, 256}) addStream(n, nh);
    }
    for (const int nh : {1800, 2048, 3000}) addStream(512, nh);
    for (const int step : {2, 3, 4}) {
        for (const int nh : {4, 16, 32, 64, 256}) {
            addRow("decimate:" + std::to_string(step) + "/taps:" + std::to_string(nh), nh, Outputs,
                   [nh, step](benchmark::State& state, Peer peer) {
                       blockFilter(state, peer, nh, step);
                   });
        }
    }
}

void printTable(const Medians& medians, double peak) {
    std::printf("multiply-add peak, %d lanes: %.1f a ns\n", sp_simd_lanes(), peak);
    std::printf("%-24s %14s %10s %10s %10s\n", "", "ns/tap/output", "of peak", "x plain",
                "x loop32");
    for (const Row& row : Rows) {
        if (medians.find(row.name + "/engine") == medians.end()) continue;  // filtered out
        const auto timeOf = [&](Peer peer) {
            return medians.at(row.name + "/" + nameOf(peer)).at(ProcessorTime);
        };
        const double engine = timeOf(Peer::engine);
        std::printf("%-24s %14.4f %8.0f %% %10.2f %10.2f\n", row.name.c_str(),
                    engine / row.products, 100.0 * row.products / engine / peak,
                    timeOf(Peer::plain) / engine, timeOf(Peer::loop32) / engine);
    }
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char** argv) {
    using namespace voxloc_bench;
    addRows();
    return runInterleaved(argc, argv,
                          [](const Medians& medians) { printTable(medians, measuredPeak()); });
}
