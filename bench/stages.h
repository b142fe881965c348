/**
 * The stages of a frame, timed without a timer in the module: the linker leads the calls between
 * the module's units (of the very objects that ship) through wrappers that read the clock.
 */
#ifndef VOXLOC_BENCH_STAGES_H
#define VOXLOC_BENCH_STAGES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace voxloc_bench {

/** The stages of stages.txt, after what is in none of them: the walk itself, flags, copies. */
constexpr const char* StageNames[] = {
    "remainder",
#define STAGE(name) name,
#define TIMED(stage, function, identifier, symbol)
#include "stageList.inc"
#undef STAGE
#undef TIMED
};

constexpr auto StageCount = std::size(StageNames);

/** Time stamps of the processor, by stage, each without the stages that it calls. */
extern std::array<std::uint64_t, StageCount> StageTicks;

/** Microseconds a time stamp; takes a twentieth of a second. */
double measureTick();

/** Starts counting anew, in the remainder. */
void restartStages();

/** Ends counting: what has run since the last change of stage goes to the remainder. */
void stopStages();

}  // namespace voxloc_bench

#endif
