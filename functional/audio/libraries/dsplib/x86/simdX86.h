/** The vector layer on x86-64: four lanes on every machine, 8 and 16 where the compiler may. */
#ifndef DSPLIB_X86_SIMD_X86_H
#define DSPLIB_X86_SIMD_X86_H

/** Defined where the layer runs on x86. */
#define SP_SIMD_X86

#if defined(__AVX512F__)
#define SP_SIMD_TARGET avx512
#define SP_SIMD_WIDEST 16
#elif defined(__AVX__)
#define SP_SIMD_TARGET avx
#define SP_SIMD_WIDEST 8
#else
#define SP_SIMD_TARGET sse
#define SP_SIMD_WIDEST 4
#endif

// The build defines SP_SIMD_UNFUSED for the objects with wider vectors than the program's baseline.
// They do not fuse, whatever their vectors come with: every width gives the baseline's bits.
#if !defined(__AVX__) || defined(SP_SIMD_UNFUSED)
#define SP_SIMD_SEVERAL_WIDTHS
#endif

#if defined(__FMA__) && !defined(SP_SIMD_UNFUSED)
#define SP_SIMD_FUSED
#endif

#include "simdSse.h"
#if SP_SIMD_WIDEST >= 8
#include "simdAvx.h"
#endif
#if SP_SIMD_WIDEST >= 16
#include "simdAvx512.h"
#endif

namespace simd {
inline namespace SP_SIMD_TARGET {

/** The width at which a kernel that works at any width runs best. */
constexpr int BestLanes = SP_SIMD_WIDEST;

}  // namespace SP_SIMD_TARGET
}  // namespace simd

#endif
