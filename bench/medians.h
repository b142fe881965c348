/**
 * The benchmark programs' reporter: keeps the medians over the repetitions, for tables of the
 * program's own. The JSON file that --benchmark_out asks for has every repetition.
 */
#ifndef VOXLOC_BENCH_MEDIANS_H
#define VOXLOC_BENCH_MEDIANS_H

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>

namespace voxloc_bench {

/** The counter with the processor time of a benchmark's iteration, nanoseconds. */
constexpr const char* ProcessorTime = "processor ns";

/** Counters by benchmark name, medians over the repetitions. */
using Medians = std::map<std::string, std::map<std::string, double>>;

/** Prints " " and a figure in that width, or blanks where the benchmark was filtered out. */
void printFigure(const Medians& medians, const std::string& benchmark, const std::string& counter,
                 int width, int digits);

/**
 * Runs the registered benchmarks, repetitions shuffled among each other so that a slow spell of the
 * machine hits all alike, and hands the medians to the function that prints them.
 *
 * @return the exit status for main
 */
int runInterleaved(int argc, char** argv, const std::function<void(const Medians&)>& print);

}  // namespace voxloc_bench

#endif
