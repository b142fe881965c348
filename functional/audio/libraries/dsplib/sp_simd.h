/** The vectors at which the library and the tracker compute. */
#ifndef DSPLIB_SP_SIMD_H
#define DSPLIB_SP_SIMD_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The lanes of the widest vectors in use: 4, and 8 (AVX) or 16 (AVX-512) on x86-64.
 *
 * A build for the x86-64 baseline takes the widest vectors that the processor has and the operating
 * system saves; every width gives the same bits. It finds out at the first call that computes, and
 * the width then stays. To force a narrower one, for debugging or for comparison, set SP_SIMD_LANES
 * to 4 or 8 in the environment before that; a width that the machine does not have, or any other
 * text, changes nothing. Every other build has one width, which nothing changes.
 *
 * May be called by any thread at any time.
 */
int sp_simd_lanes(void);

#ifdef __cplusplus
}
#endif

#endif
