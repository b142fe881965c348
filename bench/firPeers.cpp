#include "firPeers.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>

#include "dsplib/simd/simdLanes.h"

namespace {

void plainUnitStep(const float* x, const float* h, float* y, int nh, int outputs) {
    for (int i = 0; i < outputs; ++i) {
        float sum = 0.0f;
        for (int j = 0; j < nh; ++j) sum += h[j] * x[i + j];
        y[i] = sum;
    }
}

void unitStepOf32(const float* x, const float* h, float* y, int nh, int outputs) {
    int i = 0;
    for (; outputs - i >= 32; i += 32) {
        float sum[32] = {};
        for (int j = 0; j < nh; ++j) {
            for (int k = 0; k < 32; ++k) sum[k] += h[j] * x[i + j + k];
        }
        for (int k = 0; k < 32; ++k) y[i + k] = sum[k];
    }
    plainUnitStep(x + i, h, y + i, nh, outputs - i);
}

#ifdef __AVX__
constexpr int Lanes = 8;
#else
constexpr int Lanes = 4;
#endif
using Width = simd::Lanes<Lanes>;
using Vector = Width::Type;

constexpr int Chains = 12;  // enough to cover the latency of two operations a cycle
constexpr int Rounds = 2000;

/** Independent chains of multiply-adds, all in registers. */
float multiplyAdds() {
    Vector a0 = Width::splat(0.0f), a1 = a0, a2 = a0, a3 = a0, a4 = a0, a5 = a0;
    Vector a6 = a0, a7 = a0, a8 = a0, a9 = a0, a10 = a0, a11 = a0;
    Vector sample = Width::splat(0.5f);
    const Vector coefficient = Width::splat(0.25f);
    // The empty statement makes `sample` a new value each time, so that no product is shared.
    const auto step = [&](Vector& sum) {
        __asm__ volatile("" : "+x"(sample));
        sum = simd::mulAdd(sum, sample, coefficient);
    };
    for (int round = 0; round < Rounds; ++round) {
        step(a0), step(a1), step(a2), step(a3), step(a4), step(a5);
        step(a6), step(a7), step(a8), step(a9), step(a10), step(a11);
    }
    float lanes[Lanes];
    float total = 0.0f;
    for (Vector sum : {a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11}) {
        Width::store(lanes, sum);
        total += lanes[0];
    }
    return total;
}

}  // namespace

void plainLoop(const float* x, const float* h, float* y, int nh, int outputs, int step) {
    if (step == 1) return plainUnitStep(x, h, y, nh, outputs);
    for (int m = 0; m < outputs; ++m) {
        float sum = 0.0f;
        for (int j = 0; j < nh; ++j) sum += h[j] * x[m * step + j];
        y[m] = sum;
    }
}

void loopOf32(const float* x, const float* h, float* y, int nh, int outputs, int step) {
    if (step == 1) return unitStepOf32(x, h, y, nh, outputs);
    int m = 0;
    for (; outputs - m >= 32; m += 32) {
        float sum[32] = {};
        for (int j = 0; j < nh; ++j) {
            for (int k = 0; k < 32; ++k) sum[k] += h[j] * x[(m + k) * step + j];
        }
        for (int k = 0; k < 32; ++k) y[m + k] = sum[k];
    }
    plainLoop(x + m * step, h, y + m, nh, outputs - m, step);
}

void linearStream(BlockFilter filter, const float* x, const float* h, float* line, float* y, int nh,
                  int n) {
    const auto history = static_cast<std::size_t>(nh - 1);
    const auto block = static_cast<std::size_t>(n);
    std::memcpy(line + history, x, block * sizeof(float));
    filter(line, h, y, nh, n, 1);
    std::memmove(line, line + block, history * sizeof(float));
}

double measuredPeak() {
    using Clock = std::chrono::steady_clock;
    constexpr double PerCall = double{Lanes} * Chains * Rounds;
    constexpr int Trials = 2000;  // about 10 ms; the fastest one ran undisturbed
    double fastest = 1e9;
    volatile float sink = 0.0f;
    for (int trial = 0; trial < Trials; ++trial) {
        const auto start = Clock::now();
        sink = multiplyAdds();
        const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
        fastest = std::min(fastest, taken.count());
    }
    static_cast<void>(sink);
    return PerCall / fastest;
}

int peakLanes() {
    return Lanes;
}
