/**
 * The vector layer: a closed list of small inline functions on a 2-lane and a 4-lane float type.
 *
 * Exactly one back end is chosen here; each defines the same types and functions in namespace
 * `simd`, with the same lane order and the same order of additions in every reduction, so that a
 * kernel written once on this layer gives the same bits on each of them. Only where the compiler
 * was told that the machine has fused multiply-add (-mfma, -march=native) does `mulAdd` round once
 * instead of twice.
 *
 * Define SP_SIMD_SCALAR to get plain C++ on any machine.
 */
#ifndef DSPLIB_SIMD_SIMD_H
#define DSPLIB_SIMD_SIMD_H

/*
 * SP_SIMD_TARGET names what an object is compiled for. The layer, and every template built on it,
 * lives in an inline namespace of that name: objects for several machines can stand in one program,
 * and the linker never takes one's function for the other's.
 */
// Define SP_SIMD_UNFUSED where a compiler takes fused multiply-add for part of the vectors asked
// for.
#if defined(__FMA__) && !defined(SP_SIMD_UNFUSED)
#define SP_SIMD_FUSED
#endif

#if defined(SP_SIMD_SCALAR)
#define SP_SIMD_TARGET scalar
#include "simdScalar.h"
#elif defined(__ARM_NEON)
#define SP_SIMD_TARGET neon
#include "simdNeon.h"
#elif defined(__AVX512F__)
#define SP_SIMD_TARGET avx512
#include "simdSse.h"
#elif defined(__AVX__)
#define SP_SIMD_TARGET avx
#include "simdSse.h"
#elif defined(__SSE2__)
#define SP_SIMD_TARGET sse
#include "simdSse.h"
#else
#define SP_SIMD_TARGET scalar
#include "simdScalar.h"
#endif

#endif
