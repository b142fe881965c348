/** Arithmetic on whole frames: no state. The functions are declared and described in voxloc.h. */
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "assertion/assertion.h"
#include "dsplib/simd/simd.h"
#include "flushToZero.h"
#include "frameKernels.h"
#include "frameScaling.h"
#include "grids.h"
#include "voxloc.h"

namespace {

constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/voxloc";

/** Four interleaved partial sums, added at the end. */
float channelEnergy(const float* samples, float scale) {
    const simd::F32x4 scales = simd::splat4(scale);
    simd::F32x4 sums = simd::splat4(0.0f);
    for (int i = 0; i < FRAME_SAMPLES; i += 4) {
        const simd::F32x4 scaled = simd::mul(simd::load4(samples + i), scales);
        sums = simd::mulAdd(sums, scaled, scaled);
    }
    return simd::sumLanes(sums);
}

/** A function of its own, so that none of its operations moves to where exceptions trap. */
[[gnu::noinline]] void sumEnergies(const float* frame, std::uint32_t bits, std::int32_t nchannels,
                                   float* energies) {
    const float scale = voxloc::fullScaleReciprocal(bits);
    for (std::int32_t c = 0; c < nchannels; ++c) {
        energies[c] = channelEnergy(frame + c * FRAME_SAMPLES, scale);
    }
}

}  // namespace

void voxloc_calculateSignalEnergy(const float* frame, uint32_t bits, int32_t nchannels,
                                  float* energies) {
    PLATFORM_ASSERT(nchannels <= VOXLOC_MAX_CHANNELS);
    PLATFORM_ASSERT(nchannels > 0);
    std::fill_n(energies, VOXLOC_MAX_CHANNELS, 0.0f);
    const voxloc::NoTraps noTraps;
    sumEnergies(frame, bits, nchannels, energies);
}

void voxloc_normalizeInput(const float* frame, float* out, uint32_t bits, int32_t nchannels) {
    voxloc::scale(frame, voxloc::fullScaleReciprocal(bits), out, nchannels * FRAME_SAMPLES);
}

void voxloc_vectorMultiply(const float* a, const float* b, float* out, int32_t count) {
    voxloc::multiply(a, b, out, count);
}

void voxloc_multiplyWithComplexConjugate(const float* a, const float* b, float* out,
                                         int32_t count) {
    voxloc::multiplyByConjugate(a, b, out, count / 2);
}

void voxloc_overlapInputChannels(float* block, const float* previous, const float* current,
                                 int32_t nchannels) {
    for (std::int32_t c = 0; c < nchannels; ++c) {
        float* channelBlock = block + c * voxloc::AnalysisSamples;
        std::copy_n(previous + c * FRAME_SAMPLES, FRAME_SAMPLES, channelBlock);
        std::copy_n(current + c * FRAME_SAMPLES, FRAME_SAMPLES, channelBlock + FRAME_SAMPLES);
    }
}

void voxloc_generateHammingWindow(float* window) {
    constexpr double step = 6.283185307179586 / (voxloc::AnalysisSamples - 1);
    window[0] = 0.08f;
    for (int k = 1; k < voxloc::AnalysisSamples; ++k) {
        window[k] = static_cast<float>(0.54 - 0.46 * std::cos(k * step));
    }
}
