/**
 * The stages of a frame, timed without a timer in the module: the linker leads the calls between
 * the module's units (of the very objects that ship) through wrappers that read the clock.
 */
#ifndef VOXLOC_BENCH_STAGES_H
#define VOXLOC_BENCH_STAGES_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace voxloc_bench {

enum class Stage {
    Remainder,  // what is not below: the walk itself, flags, copies between the stages
    Normalise,
    TimeDomainVoice,
    Filters,  // of the time-domain detector
    Window,
    ForwardTransform,
    ForwardSplit,
    Weights,
    NoiseLevel,
    FrequencyDomainVoice,
    Ultrasound,
    SmoothedCrossSpectra,
    PhaseTransformAndSplit,
    InverseTransform,
    LoudspeakerZone,
    Gather,
    Maximum,
    Overlap,
    Count
};

constexpr auto StageCount = static_cast<std::size_t>(Stage::Count);

constexpr const char* StageNames[StageCount] = {"remainder",
                                                "normalise",
                                                "time-domain voice",
                                                "its filters",
                                                "window",
                                                "transforms",
                                                "split",
                                                "noise power, weights",
                                                "noise level",
                                                "frequency-domain voice",
                                                "ultrasound",
                                                "smoothed cross-spectra",
                                                "phase transform, split",
                                                "inverse transforms",
                                                "loudspeaker zone",
                                                "gather and sum",
                                                "first maximum",
                                                "analysis blocks"};

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
