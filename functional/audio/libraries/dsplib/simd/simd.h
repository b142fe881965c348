/**
 * The vector layer: a closed list of small inline functions on a 2-lane and a 4-lane float type.
 *
 * Exactly one back end is chosen here; each defines the same types and functions in namespace
 * `simd`, with the same lane order and the same order of additions in every reduction, so that a
 * kernel written once on this layer gives the same bits on each of them. Only where the compiler
 * was told that an x86 machine has fused multiply-add (-mfma, -march=native) does `mulAdd` round
 * once instead of twice; SP_SIMD_FUSED says so.
 *
 * Define SP_SIMD_SCALAR to get plain C++ on any machine.
 */
#ifndef DSPLIB_SIMD_SIMD_H
#define DSPLIB_SIMD_SIMD_H

/*
 * SP_SIMD_TARGET names what an object is compiled for. The layer, and every template built on it,
 * lives in an inline namespace of that name: objects for several machines can stand in one program,
 * and the linker never takes one's function for the other's.
 *
 * SP_SIMD_WIDEST is the number of lanes of the widest type: 4, and 8 or 16 on an x86 machine. Types
 * of more than four lanes do in each group of four what the 4-lane type does.
 */
#if defined(SP_SIMD_SCALAR) || !(defined(__ARM_NEON) || defined(__SSE2__))
#define SP_SIMD_TARGET scalar
#define SP_SIMD_WIDEST 4
#include "simdScalar.h"
#elif defined(__ARM_NEON)
#define SP_SIMD_TARGET neon
#define SP_SIMD_WIDEST 4
#include "simdNeon.h"
#else
#include "dsplib/x86/simdX86.h"
#endif

#endif
