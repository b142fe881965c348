/**
 * Complex FFT of single-precision data for the power-of-two sizes 1 to 8192.
 *
 * Data are interleaved: element n is the float pair (real, imaginary) at floats 2n and 2n+1. Both
 * buffers are owned by the caller. The transforms keep no state: calls on distinct buffers may run
 * at the same time.
 *
 * Alignment: both buffers must begin at a multiple of 8 bytes, the size of an element. Every call
 * asserts that, also one with N <= 0, and nothing beyond it: malloc gives more on every platform,
 * an array of float may have less. A multiple of 64 bytes is the fastest on x86-64.
 *
 * Broken preconditions that are called assertions below end the process with the expression, the
 * source path and the function name on standard error.
 */
#ifndef DSPLIB_CFFT_POW2_CONJPAIR_SPLITRAD_C89_NEON_H
#define DSPLIB_CFFT_POW2_CONJPAIR_SPLITRAD_C89_NEON_H

#ifdef __cplusplus
extern "C" {
#endif

/** The largest size in complex elements. */
#define FFT_MAX 8192

/**
 * Forward transform, unscaled: y[k] = sum over n of x[n]·e^(-2πi·nk/N).
 *
 * @param N       size in complex elements, a power of two up to FFT_MAX; N <= 0 leaves y untouched
 * @param log2_N  base-2 logarithm of N; not looked at for N <= 0
 * @param x       in, 2N floats, 8-byte aligned, not modified
 * @param y       out, 2N floats, 8-byte aligned; must not overlap x
 *
 * A size, a logarithm or an alignment outside these bounds is an assertion. Buffers that overlap
 * are not looked for, and their results mean nothing.
 */
void cfft_pow2_conjpair_splitrad_c89(int N, int log2_N, const float* x, float* y);

/**
 * Inverse transform, scaled: y[n] = (1/N)·sum over k of x[k]·e^(+2πi·nk/N), so that the inverse of
 * the forward transform returns its input up to rounding. Arguments as for the forward transform.
 */
void cifft_pow2_conjpair_splitrad_c89(int N, int log2_N, const float* x, float* y);

/**
 * The forward transform behind an interface that other transforms of this family share.
 *
 * Only N, x and y are used. The twiddle table, the byte table, the two integers and the second size
 * are accepted and deliberately ignored: tables are this library's own. They may be null or hold
 * anything.
 */
void sp_fftSPxSP(int N, float* x, const float* twiddles, float* y, const unsigned char* byteTable,
                 int radix, int offset, int size);

/** The scaled inverse transform behind the same interface. */
void sp_ifftSPxSP(int N, float* x, const float* twiddles, float* y, const unsigned char* byteTable,
                  int radix, int offset, int size);

/** Elements at either end of the input that sp_ifft_ends uses: 1536. */
#define SP_IFFT_ENDS_USED (3 * FFT_MAX / 16)

/** The most elements at either end of the output that sp_ifft_ends gives: 256. */
#define SP_IFFT_ENDS_MOST_WANTED (FFT_MAX / 32)

/**
 * The ends of the scaled inverse transform of FFT_MAX elements when the middle of its input is
 * zero: a band-limited spectrum whose first and last samples are wanted, in about half the time.
 *
 * @param x       in, 2·FFT_MAX floats, 8-byte aligned. Of its elements the first and the last
 *                SP_IFFT_ENDS_USED are used; those between are taken to be zero and are not read
 * @param y       out, 2·FFT_MAX floats, 8-byte aligned, must not overlap x; its first and its last
 *                `wanted` elements are what the whole transform gives, bit for bit (a zero may have
 *                the other sign); all others are overwritten with values of no meaning
 * @param wanted  1 to SP_IFFT_ENDS_MOST_WANTED; the fewer, the faster
 *
 * An alignment or a number outside these bounds is an assertion, and so are buffers of which any of
 * the 2·FFT_MAX floats overlap.
 */
void sp_ifft_ends(const float* x, float* y, int wanted);

#ifdef __cplusplus
}
#endif

#endif
