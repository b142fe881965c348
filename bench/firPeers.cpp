#include "firPeers.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>

#include "dsplib/sp_simd.h"
#include "firPeak.h"

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
    constexpr int Trials = 2000;  // about 10 ms; the fastest one ran undisturbed
    double fastest = 1e9;
    volatile float sink = 0.0f;
    for (int trial = 0; trial < Trials; ++trial) {
        const auto start = Clock::now();
        sink = firPeak::multiplyAdds();
        const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
        fastest = std::min(fastest, taken.count());
    }
    static_cast<void>(sink);
    return double{1.0} * firPeak::PerLane * sp_simd_lanes() / fastest;
}
