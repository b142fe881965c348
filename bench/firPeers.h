/**
 * What the FIR engine is measured against, compiled with its flags: the plain loop, and a loop that
 * computes 32 outputs at a time and that the compiler vectorises. Each as a block filter with a
 * step between windows, and as a stream filter that keeps its history in front of its input.
 */
#ifndef BENCH_FIR_PEERS_H
#define BENCH_FIR_PEERS_H

/** Computes `outputs` outputs whose windows lie `step` samples apart. */
using BlockFilter = void (*)(const float* x, const float* h, float* y, int nh, int outputs,
                             int step);

void plainLoop(const float* x, const float* h, float* y, int nh, int outputs, int step);
void loopOf32(const float* x, const float* h, float* y, int nh, int outputs, int step);

/** A stream filter on a block filter; line holds nh-1 samples of history and room for n more. */
void linearStream(BlockFilter filter, const float* x, const float* h, float* line, float* y, int nh,
                  int n);

/**
 * The core's multiply-adds a nanosecond at the width that the engine runs at: a product and a sum
 * apart from each other, or fused in a build that fuses them.
 */
double measuredPeak();

#endif
