/**
 * What one core of this machine can do at most: multiply-adds a nanosecond, and bytes a nanosecond
 * out of each level of memory. The yardstick for how much of it a frame uses.
 */
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "cpuTime.h"
#include "dsplib/sp_simd.h"
#include "firPeak.h"
#include "medians.h"

namespace voxloc_bench {

namespace {

#if defined(__AVX512F__)
constexpr std::size_t VectorBytes = 64;
#elif defined(__AVX__)
constexpr std::size_t VectorBytes = 32;
#else
constexpr std::size_t VectorBytes = 16;
#endif
typedef float Vector __attribute__((vector_size(VectorBytes)));

constexpr std::size_t EnoughBytes = 8u << 20;

/** At the width that the library runs at; fused where these flags allow it. */
void benchMultiplyAdds(benchmark::State& state) {
    constexpr int Calls = 50;  // between two looks at the clock
    double microseconds = 0.0;
    for (auto _ : state) {
        const CpuTime time(microseconds);
        for (int i = 0; i < Calls; ++i) benchmark::DoNotOptimize(firPeak::multiplyAdds());
    }
    const double each = double{Calls} * firPeak::PerLane * sp_simd_lanes();
    state.counters["perNs"] =
        static_cast<double>(state.iterations()) * each / microseconds / 1000.0;
}

/** Reads a block of that size over and over, 8 MiB or more between two looks at the clock. */
void benchLoads(benchmark::State& state, std::size_t bytes) {
    const std::size_t count = bytes / VectorBytes;
    const std::size_t rounds = bytes < EnoughBytes ? EnoughBytes / bytes : 1;
    std::vector<Vector> block(count, Vector{} + 1.0f);
    double microseconds = 0.0;
    for (auto _ : state) {
        Vector sums[8] = {};
        const CpuTime time(microseconds);
        for (std::size_t round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i + 8 <= count; i += 8) {
                for (std::size_t k = 0; k < 8; ++k) sums[k] += block[i + k];
            }
            benchmark::DoNotOptimize(sums);
        }
    }
    state.counters["perNs"] =
        static_cast<double>(state.iterations() * rounds * bytes) / microseconds / 1000.0;
}

struct Level {
    const char* name;
    std::size_t bytes;
};
constexpr Level Levels[] = {{"loads of 16 KiB", 16u << 10},
                            {"loads of 512 KiB", 512u << 10},
                            {"loads of 8 MiB", 8u << 20},
                            {"loads of 256 MiB", 256u << 20}};
constexpr const char* MultiplyAdds = "multiply-adds";

void printTable(const Medians& medians) {
    for (const auto& [name, figures] : medians) {
        std::printf("%-18s %8.1f %s\n", name.c_str(), figures.at("perNs"),
                    name == MultiplyAdds ? "a ns" : "bytes a ns");
    }
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char** argv) {
    using namespace voxloc_bench;
    benchmark::RegisterBenchmark(MultiplyAdds, benchMultiplyAdds);
    for (const Level& level : Levels) {
        benchmark::RegisterBenchmark(level.name, benchLoads, level.bytes);
    }
    return runInterleaved(argc, argv, printTable);
}
