/** What the core's vectors can multiply and add at most, at the width that the engine runs at. */
#ifndef BENCH_FIR_PEAK_H
#define BENCH_FIR_PEAK_H

#include "dsplib/simd/simdKernel.h"

namespace firPeak {

constexpr int Chains = 12;  // enough to cover the latency of two operations a cycle
constexpr int Rounds = 2000;

/** Multiply-adds of each lane in a call of multiplyAdds(). */
constexpr int PerLane = Chains * Rounds;

/** Independent chains of multiply-adds, all in registers. */
SP_SIMD_KERNEL(multiplyAdds, float());

}  // namespace firPeak

#endif
