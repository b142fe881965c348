#include "sp_fir_neon.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "assertion/assertion.h"
#include "sp_fir_neon_blocks.h"
#include "sp_fir_neon_internal.h"
#include "sp_fir_neon_kernels.h"

namespace sp_fir {
namespace {

constexpr char SourcePath[] = "functional/audio/libraries/dsplib/arm/sp_fir_neon";

/** Passes of 4·Vectors outputs while there are so many. Returns the next output. */
template <int Vectors>
int passesOf(const float* x, const float* h, float* y, int nh, int ny, int i) {
    for (; ny - i >= 4 * Vectors; i += 4 * Vectors) {
        SumsOfOutputs<Vectors> sums = emptySums<Vectors>();
        addTaps(sums, x + i, h, nh);
        storeOutputs(y + i, sums);
    }
    return i;
}

/** The decimating counterpart: `outputs` windows lie `step` samples apart. */
template <int Outputs>
int decimatingPassesOf(const float* x, const float* h, float* y, int nh, int outputs, int step,
                       int m) {
    for (; outputs - m >= Outputs; m += Outputs) {
        SumsInLanes<Outputs> sums = emptyLanes<Outputs>();
        addTaps(sums, x + std::ptrdiff_t{m} * step, step, h, nh);
        storeOutputs(y + m, sums);
    }
    return m;
}

/** The unrolled kernel of `nh` taps, for nh = 1 + one of the indices. Returns its outputs. */
template <int... Index>
int unrolledFilterOf(int nh, const float* x, const float* h, float* y, int ny,
                     std::integer_sequence<int, Index...>) {
    int made = 0;
    static_cast<void>(
        ((nh == 1 + Index && (made = unrolledFilter<BlockWidth, 1 + Index>(x, h, y, ny), true)) ||
         ...));
    return made;
}

/**
 * Wide blocks for more taps than are unrolled, where they are faster than passes of 12: a host
 * splats each coefficient with an instruction of its own, which pays over eight vectors of outputs
 * and not over three. ARM multiplies by a lane, and the scalar build does what ARM does.
 */
int wideFilterOf([[maybe_unused]] const float* x, [[maybe_unused]] const float* h,
                 [[maybe_unused]] float* y, [[maybe_unused]] int nh, [[maybe_unused]] int ny) {
    int made = 0;
#if defined(__SSE2__) && !defined(SP_SIMD_SCALAR)
    made = wideFilter<BlockWidth>(x, h, y, nh, ny);
    if constexpr (BlockWidth::Count > 4) {
        made += wideFilter<FourLanes>(x + made, h, y + made, nh, ny - made);
    }
#endif
    return made;
}

void zeroFill(float* y, int count) {
    std::fill_n(y, count, 0.0f);
}

}  // namespace

void pipelined_unroll12x(const float* x, const float* h, float* y, int nh, int ny) {
    int i = passesOf<3>(x, h, y, nh, ny, 0);
    i = passesOf<1>(x, h, y, nh, ny, i);
    decimatingPassesOf<1>(x, h, y, nh, ny, 1, i);
}

void sp_fir_gen_(const float* x, const float* h, float* y, int nh, int ny) {
    constexpr int MostUnrolled = BlockWidth::MostTapsUnrolled;
    const int made =
        nh <= MostUnrolled
            ? unrolledFilterOf(nh, x, h, y, ny, std::make_integer_sequence<int, MostUnrolled>{})
            : wideFilterOf(x, h, y, nh, ny);
    if (made < ny) pipelined_unroll12x(x + made, h, y + made, nh, ny - made);
}

void sp_fir_gen_downsample_(const float* x, const float* h, float* y, int nh, int n, int step) {
    const int outputs = (n - 1) / step + 1;
    int m = decimatingPassesOf<8>(x, h, y, nh, outputs, step, 0);
    m = decimatingPassesOf<4>(x, h, y, nh, outputs, step, m);
    decimatingPassesOf<1>(x, h, y, nh, outputs, step, m);
}

}  // namespace sp_fir

void sp_fir_gen(const float* x, const float* h, float* y, int nh, int ny) {
    if (ny <= 0) return;
    if (nh <= 0) {
        sp_fir::zeroFill(y, ny);
        return;
    }
    sp_fir::sp_fir_gen_(x, h, y, nh, ny);
}

void sp_fir_gen_downsample(const float* x, const float* h, float* y, int nh, int n, int step) {
    using sp_fir::SourcePath;
    if (n <= 0) return;
    PLATFORM_ASSERT(step > 0);
    if (step == 1) {
        sp_fir_gen(x, h, y, nh, n);
        return;
    }
    if (nh <= 0) {
        sp_fir::zeroFill(y, (n - 1) / step + 1);
        return;
    }
    sp_fir::sp_fir_gen_downsample_(x, h, y, nh, n, step);
}
