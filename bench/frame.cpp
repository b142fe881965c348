/**
 * Cost of a frame and of initialising, for all products, beside the peers in the same run: the
 * partial frame on FFTW (aster) and the lag tables by their plain formulas.
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "cpuTime.h"
#include "fftwFrame.h"
#include "kit/talker.h"
#include "medians.h"
#include "plainTables.h"
#include "quiet.h"
#include "track/voxlocState.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

namespace {

constexpr std::size_t ScenarioFrames = 128;   // 5.5 s
constexpr std::size_t InterleavedFrames = 8;  // of one contender before the other takes its turn

void processFrame(const Scenario& scenario, std::size_t i, TrackerResult& result) {
    voxloc_calculate(scenario.frame(i), SignificantBits, scenario.flags[i], &result);
}

void benchFrame(benchmark::State& state, std::int32_t product) {
    voxloc_initialize(product);
    const Scenario scenario = mixedScenario(ScenarioFrames);
    TrackerResult result;
    double microseconds = 0.0;
    for (auto _ : state) {
        const CpuTime time(microseconds);
        for (std::size_t i = 0; i < scenario.frames(); ++i) processFrame(scenario, i, result);
    }
    const double frames = static_cast<double>(state.iterations() * scenario.frames());
    state.counters["us"] = microseconds / frames;
    state.counters["realTime"] = FrameMilliseconds * 1000.0 * frames / microseconds;
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

/** Each frame finds the caches empty, as in the turn of one of many processes with a stream each.
 */
void benchColdFrame(benchmark::State& state, std::int32_t product) {
    voxloc_initialize(product);
    const Scenario scenario = mixedScenario(ScenarioFrames);
    TrackerResult result;
    std::vector<double> times;
    for (auto _ : state) {
        for (std::size_t i = 0; i < scenario.frames(); ++i) {
            evictCaches();
            double microseconds = 0.0;
            {
                const CpuTime time(microseconds);
                processFrame(scenario, i, result);
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
        TrackerResult result;
        processFrame(scenario, i, result);
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
    const Scenario scenario = mixedScenario(ScenarioFrames);
    FftwFrame peer(*voxloc::findProduct(PRODUCT_ASTER));  // planned once a process
    const std::vector<Decisions> decisions = checkPeer(scenario, peer);
    double moduleTime = 0.0, peerTime = 0.0;  // microseconds
    TrackerResult result;
    for (auto _ : state) {
        for (std::size_t from = 0; from < scenario.frames(); from += InterleavedFrames) {
            const std::size_t to = from + InterleavedFrames;
            {
                const CpuTime time(moduleTime);
                for (std::size_t i = from; i < to; ++i) processFrame(scenario, i, result);
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

// --- Initialise ---------------------------------------------------------------------------------

/** Entries of the module's tables that the plain formulas give another lag. */
std::int64_t differingLags(const PlainTables& plain) {
    std::int64_t differing = 0;
    for (std::size_t i = 0; i < plain.azimuthElevation.size(); ++i) {
        differing += plain.azimuthElevation[i] != voxloc::AzimuthElevationLookupTable[i];
    }
    for (std::size_t i = 0; i < plain.azimuthRange.size(); ++i) {
        differing += plain.azimuthRange[i] != voxloc::AzimuthRangeLookupTable[i];
    }
    return differing;
}

void benchInitialize(benchmark::State& state, std::int32_t type) {
    const voxloc::Product& product = *voxloc::findProduct(type);
    PlainTables plain = plainGrids(product);
    double moduleTime = 0.0, plainTime = 0.0, hoistedTime = 0.0;  // microseconds
    std::int64_t differing = 0;
    for (auto _ : state) {
        {
            const CpuTime time(moduleTime);
            voxloc_initialize(type);
        }
        {
            const CpuTime time(plainTime);
            fillPlainTables(product, plain);
        }
        differing = differingLags(plain);
        {
            const CpuTime time(hoistedTime);
            fillHoistedTables(product, plain);
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

// --- Silence ------------------------------------------------------------------------------------

constexpr std::size_t TalkerFrames = 128;

/** Microseconds a frame. */
double timeFrames(const Scenario& scenario) {
    double microseconds = 0.0;
    TrackerResult result;
    {
        const CpuTime time(microseconds);
        for (std::size_t i = 0; i < scenario.frames(); ++i) processFrame(scenario, i, result);
    }
    return microseconds / static_cast<double>(scenario.frames());
}

struct QuietRun {
    double speech, median, dear;  // microseconds a frame; dear: the block at the 95th percentile
};

QuietRun runQuiet(const Quiet& kind) {
    voxloc_initialize(PRODUCT_ASTER);
    const Scenario talker = talkerScenario(TalkerFrames);
    QuietFrames quiet(kind);
    QuietRun run = {};
    std::vector<double> blocks;
    timeFrames(talker);  // settles
    run.speech = timeFrames(talker);
    for (std::size_t i = 0; i < quiet.blocks(); ++i) blocks.push_back(timeFrames(quiet.next()));
    voxloc_destroy();
    std::sort(blocks.begin(), blocks.end());
    run.median = blocks[blocks.size() / 2];
    run.dear = blocks[blocks.size() * 95 / 100];
    return run;
}

void benchQuiet(benchmark::State& state, const Quiet& kind) {
    for (auto _ : state) {
        const QuietRun run = runQuiet(kind);
        state.counters["us"] = run.median;
        state.counters["ratio"] = run.median / run.speech;
        state.counters["dearRatio"] = run.dear / run.speech;
    }
}

std::string quietName(const Quiet& kind) {
    return std::string("quiet/") + kind.name;
}

// --- Tables -------------------------------------------------------------------------------------

std::string nameFor(const char* what, const Product& product) {
    return std::string(what) + "/" + product.name;
}

/** One figure of a benchmark, or a blank where it was filtered out. */
void printFigure(const Medians& medians, const std::string& benchmark, const char* counter,
                 int width, int digits) {
    const auto found = medians.find(benchmark);
    if (found == medians.end()) {
        std::printf(" %*s", width, "");
    } else {
        std::printf(" %*.*f", width, digits, found->second.at(counter));
    }
}

void printProducts(const Medians& medians) {
    std::printf("%-10s %9s %10s %9s   %8s %8s %6s %10s %6s %8s\n", "product", "frame us",
                "real times", "cold us", "init ms", "plain ms", "ratio", "hoisted ms", "ratio",
                "lags off");
    for (const Product& product : Products) {
        std::printf("%-10s", product.name);
        const std::string init = nameFor("initialize", product);
        printFigure(medians, nameFor("frame", product), "us", 9, 1);
        printFigure(medians, nameFor("frame", product), "realTime", 10, 0);
        printFigure(medians, nameFor("frame_cold", product), "us", 9, 1);
        printFigure(medians, init, "ms", 10, 2);
        printFigure(medians, init, "plainMs", 8, 2);
        printFigure(medians, init, "ratio", 6, 2);
        printFigure(medians, init, "hoistedMs", 10, 2);
        printFigure(medians, init, "hoistedRatio", 6, 2);
        printFigure(medians, init, "differingLags", 8, 0);
        std::printf("\n");
    }
}

void printPeer(const Medians& medians) {
    const auto peer = medians.find("frame_peer/aster");
    if (peer == medians.end()) return;
    std::printf(
        "\naster, whole frame with detectors: %.1f us; partial frame on FFTW: %.1f us; "
        "ratio %.2fx\n",
        peer->second.at("us"), peer->second.at("peerUs"), peer->second.at("ratio"));
}

void printQuiet(const Medians& medians) {
    if (medians.lower_bound("quiet/") == medians.end()) return;  // all filtered out
    std::printf(
        "\naster, minutes of silence after a talker, relative to the talker's frames\n"
        "%-12s %9s %7s %8s\n",
        "", "median us", "median", "95 %");
    for (const Quiet& kind : QuietKinds) {
        const auto found = medians.find(quietName(kind));
        if (found == medians.end()) continue;
        const auto& figures = found->second;
        std::printf("%-12s %9.1f %6.2fx %7.2fx\n", kind.name, figures.at("us"), figures.at("ratio"),
                    figures.at("dearRatio"));
    }
}

void printTables(const Medians& medians) {
    printProducts(medians);
    printPeer(medians);
    printQuiet(medians);
}

void registerBenchmarks() {
    for (const Product& product : Products) {
        benchmark::RegisterBenchmark(nameFor("frame", product).c_str(), benchFrame, product.type);
        benchmark::RegisterBenchmark(nameFor("frame_cold", product).c_str(), benchColdFrame,
                                     product.type)
            ->Iterations(1)
            ->Repetitions(5);
        benchmark::RegisterBenchmark(nameFor("initialize", product).c_str(), benchInitialize,
                                     product.type);
    }
    benchmark::RegisterBenchmark("frame_peer/aster", benchAgainstPeer);
    for (const Quiet& kind : QuietKinds) {
        benchmark::RegisterBenchmark(quietName(kind).c_str(), benchQuiet, kind)
            ->Iterations(1)
            ->Repetitions(5);
    }
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char** argv) {
    voxloc_bench::registerBenchmarks();
    return voxloc_bench::runInterleaved(argc, argv, voxloc_bench::printTables);
}
