/**
 * Cost of a frame for all products, with warm and with empty caches, and beside the peer in the
 * same run: the partial frame on FFTW (aster).
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cpuTime.h"
#include "fftwFrame.h"
#include "kit/products.h"
#include "kit/talker.h"
#include "medians.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

namespace {

using kit::processFrame;
using kit::Scenario;

constexpr std::size_t ScenarioFrames = 128;   // 5.5 s
constexpr std::size_t InterleavedFrames = 8;  // of one contender before the other takes its turn

void benchFrame(benchmark::State& state, std::int32_t product) {
    voxloc_initialize(product);
    const Scenario scenario = kit::mixedScenario(ScenarioFrames);
    double microseconds = 0.0;
    for (auto _ : state) {
        const CpuTime time(microseconds);
        for (std::size_t i = 0; i < scenario.frames(); ++i) processFrame(scenario, i);
    }
    const double frames = static_cast<double>(state.iterations() * scenario.frames());
    state.counters["us"] = microseconds / frames;
    state.counters["realTime"] = kit::FrameMilliseconds * 1000.0 * frames / microseconds;
    voxloc_destroy();
}

/** Reads so much memory that no cache level keeps anything else. */
void evictCaches() {
    constexpr std::size_t lineFloats = 16;
    static const std::vector<float> filler((128u << 20) / sizeof(float), 1.0f);
    float sum = 0.0f;
    for (std::size_t i = 0; i < filler.size(); i += lineFloats) sum += filler[i];
    benchmark::DoNotOptimize(sum);
}

/** Each frame finds the caches empty, as in the turn of one of many trackers. */
void benchColdFrame(benchmark::State& state, std::int32_t product) {
    voxloc_initialize(product);
    const Scenario scenario = kit::mixedScenario(ScenarioFrames);
    std::vector<double> times;
    for (auto _ : state) {
        for (std::size_t i = 0; i < scenario.frames(); ++i) {
            evictCaches();
            double microseconds = 0.0;
            {
                const CpuTime time(microseconds);
                processFrame(scenario, i);
            }
            times.push_back(microseconds);
        }
    }
    std::sort(times.begin(), times.end());
    state.counters["us"] = times[times.size() / 2];
    voxloc_destroy();
}

// --- Against the peer ---------------------------------------------------------------------------

Decisions decisionsOf(const TrackerResult& result) {
    return {voxloc_getFlag(VOXLOC_FLAG_VOICE, result.flags) != 0,
            voxloc_getFlag(VOXLOC_FLAG_TD_VOICE, result.flags) != 0,
            voxloc_getFlag(VOXLOC_FLAG_FAR_END, result.flags) != 0};
}

bool samePosition(const TrackerResult& result, const PeerPosition& peer) {
    // Peaks are sums of bins of 1/8192 each; where a bin stands just at a floor, rounding decides
    // whether it counts.
    constexpr float qualityTolerance = 16.0f / 8192.0f;
    return result.azimuth == peer.azimuth && result.elevation == peer.elevation &&
           result.range == peer.range &&
           std::fabs(result.quality - peer.quality) <= qualityTolerance;
}

/** Runs the scenario through both and returns the detectors' decisions; aborts on a difference. */
std::vector<Decisions> checkPeer(const Scenario& scenario, FftwFrame& peer) {
    std::vector<Decisions> decisions;
    for (std::size_t i = 0; i < scenario.frames(); ++i) {
        const TrackerResult result = processFrame(scenario, i);
        decisions.push_back(decisionsOf(result));
        const PeerPosition position = peer.calculate(scenario.frame(i), decisions.back());
        if (samePosition(result, position)) continue;
        std::fprintf(stderr, "frame %zu: module %g° %g° %g m %g, peer %g° %g° %g m %g\n", i,
                     static_cast<double>(result.azimuth), static_cast<double>(result.elevation),
                     static_cast<double>(result.range), static_cast<double>(result.quality),
                     static_cast<double>(position.azimuth), static_cast<double>(position.elevation),
                     static_cast<double>(position.range), static_cast<double>(position.quality));
        std::abort();
    }
    return decisions;
}

void benchAgainstPeer(benchmark::State& state) {
    voxloc_initialize(PRODUCT_ASTER);
    const Scenario scenario = kit::mixedScenario(ScenarioFrames);
    FftwFrame peer(voxloc_findProduct(PRODUCT_ASTER)->array);  // planned once a process
    const std::vector<Decisions> decisions = checkPeer(scenario, peer);
    double moduleTime = 0.0, peerTime = 0.0;  // microseconds
    for (auto _ : state) {
        for (std::size_t from = 0; from < scenario.frames(); from += InterleavedFrames) {
            const std::size_t to = from + InterleavedFrames;
            {
                const CpuTime time(moduleTime);
                for (std::size_t i = from; i < to; ++i) processFrame(scenario, i);
            }
            const CpuTime time(peerTime);
            for (std::size_t i = from; i < to; ++i) {
                benchmark::DoNotOptimize(peer.calculate(scenario.frame(i), decisions[i]));
            }
        }
    }
    const double frames = static_cast<double>(state.iterations() * scenario.frames());
    state.counters["us"] = moduleTime / frames;
    state.counters["peerUs"] = peerTime / frames;
    state.counters["ratio"] = peerTime / moduleTime;
    voxloc_destroy();
}

// --- Tables -------------------------------------------------------------------------------------

constexpr const char* PeerName = "frame_peer/aster";

std::string frameName(const VoxlocProduct& product) {
    return std::string("frame/") + product.name;
}

std::string coldName(const VoxlocProduct& product) {
    return std::string("frame_cold/") + product.name;
}

void printTables(const Medians& medians) {
    std::printf("%-10s %9s %10s %9s\n", "product", "frame us", "real times", "cold us");
    for (const VoxlocProduct& product : kit::products()) {
        std::printf("%-10s", product.name);
        printFigure(medians, frameName(product), "us", 9, 1);
        printFigure(medians, frameName(product), "realTime", 10, 0);
        printFigure(medians, coldName(product), "us", 9, 1);
        std::printf("\n");
    }
    std::printf("\naster, whole frame with detectors and partial frame on FFTW, us; ratio\n");
    printFigure(medians, PeerName, "us", 9, 1);
    printFigure(medians, PeerName, "peerUs", 9, 1);
    printFigure(medians, PeerName, "ratio", 9, 2);
    std::printf("\n");
}

void registerBenchmarks() {
    for (const VoxlocProduct& product : kit::products()) {
        benchmark::RegisterBenchmark(frameName(product).c_str(), benchFrame, product.type);
        benchmark::RegisterBenchmark(coldName(product).c_str(), benchColdFrame, product.type)
            ->Iterations(1)
            ->Repetitions(5);
    }
    benchmark::RegisterBenchmark(PeerName, benchAgainstPeer);
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char** argv) {
    voxloc_bench::registerBenchmarks();
    return voxloc_bench::runInterleaved(argc, argv, voxloc_bench::printTables);
}
