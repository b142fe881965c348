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

#if defined(SP_SIMD_SCALAR)
#include "simdScalar.h"
#elif defined(__ARM_NEON)
#include "simdNeon.h"
#elif defined(__SSE2__)
#include "simdSse.h"
#else
#include "simdScalar.h"
#endif

#endif
