/**
 * The parts that the tracker is made of and that are useful by themselves: geometry of microphone
 * pairs, arithmetic on frames, real transforms. A program that only tracks needs none of them.
 *
 * All functions but generateInput are free of state: calls on distinct buffers may run at the same
 * time.
 */
#ifndef VOXLOC_PARTS_H
#define VOXLOC_PARTS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** New samples per channel in a frame (42.7 ms). */
#define FRAME_SAMPLES 2048

/** A point in metres: x is depth (towards the talker), y runs along the array, z is height. */
typedef struct Position {
    float x;
    float y;
    float z;
} Position;

/* --- Flag words and noise --------------------------------------------------------------------- */

/**
 * Clears a bit of word, then ORs in value shifted left by bit. The value is deliberately not
 * reduced to 0 or 1: 2 sets the next bit up. Asserts that bit is 0 to 31.
 */
void voxloc_setFlag(uint32_t bit, int32_t value, uint32_t* word);

/**
 * Fills the module's noise buffer with 16,384 pseudo-random samples, uniform in about [-0.5, 0.5],
 * the same ones at each call, and returns it. Seeds the standard library's rand().
 */
float* generateInput(void);

/* --- Geometry --------------------------------------------------------------------------------- */

/**
 * Turns {azimuth (radians), elevation (radians), range (metres)} into a point. Azimuth 0 is
 * straight ahead along +x and turns towards +y; positive elevation points up.
 */
void voxloc_sphericalToCartesian(const float spherical[3], Position* out);

/** Distance of two points in metres. */
float voxloc_calculateDistance(const Position* a, const Position* b);

/**
 * Lag, 0 to 16384, at which the correlation of a microphone pair peaks when the sound's path to the
 * first microphone is longer by pathDifference metres; negative differences wrap to the end.
 * Differences just below 0 give 16384, one past the last lag. A NaN gives 0.
 *
 * Paths differ by less than 14.8 m in all that trackers take. Beyond 29.7 m either way the result
 * is no lag: above 16384, and 32767 from 59.4 m on; below 0, and -32768 from -89.1 m on.
 */
int16_t voxloc_distanceToSampleDelay(float pathDifference);

/**
 * The spectrum bins (11.71875 Hz each) that a pair of microphones uses: from where half a
 * wavelength equals their spacing up to about 17 kHz. Closer than 1.03 cm there are none: the lower
 * bin is above the upper one, 65,535 at most and where the microphones coincide.
 */
void voxloc_setCutoffCoefficients(const Position* a, const Position* b, uint16_t* upperBin,
                                  uint16_t* lowerBin);

/* --- Frame arithmetic ------------------------------------------------------------------------- */

/**
 * out[i] = frame[i] / 2^(bits-1) for nchannels·FRAME_SAMPLES samples, whatever they are; out may be
 * frame. What voxloc_calculate silences stays as it is here.
 */
void voxloc_normalizeInput(const float* frame, float* out, uint32_t bits, int32_t nchannels);

/** out[i] = a[i]·b[i] for count floats; out may be a or b. */
void voxloc_vectorMultiply(const float* a, const float* b, float* out, int32_t count);

/**
 * out = a·conj(b), element by element, for count floats of interleaved complex values (count/2 of
 * them); out may be a or b.
 */
void voxloc_multiplyWithComplexConjugate(const float* a, const float* b, float* out, int32_t count);

/**
 * Joins the previous and the current frame into analysis blocks of 2·FRAME_SAMPLES a channel.
 * block must not overlap the frames.
 */
void voxloc_overlapInputChannels(float* block, const float* previous, const float* current,
                                 int32_t nchannels);

/** Symmetric Hamming window of 2·FRAME_SAMPLES points. */
void voxloc_generateHammingWindow(float* window);

/* --- Real FFT --------------------------------------------------------------------------------- */

/*
 * A real transform of `size` points is a complex transform of h = size/2 points and a split pass.
 * Spectra are h+1 interleaved complex bins, 2h+2 floats: bin 0 is DC, bin h is the Nyquist
 * frequency, both purely real. The forward transform is unscaled, the inverse divides by h (so that
 * the inverse of the forward transform returns its input). Buffers are 8-byte aligned.
 */

/** Fills the first 6·(groups) floats of a table of 2n floats for complex size n; n < 4: nothing. */
void voxloc_generateTwiddleFactors(float* table, int n);

/** Fills the split tables, n complex entries each, for complex size n; n <= 0 writes nothing. */
void voxloc_generateAbTables(float* aTable, float* bTable, int n);

/**
 * Complex forward transform of n points from input to output, which must not overlap. The twiddle
 * table and radix are handed through to the library, which ignores both.
 */
void voxloc_fft(int n, float* input, const float* twiddles, float* output, int radix);

/** Complex inverse transform, scaled by 1/n; arguments as for voxloc_fft. */
void voxloc_ifft(int n, float* input, const float* twiddles, float* output, int radix);

/**
 * Real forward transform.
 *
 * @param size      real samples, twice a power of two up to 8192, asserted; one below 0 does
 *                  nothing
 * @param input     in, size floats
 * @param twiddles  in, handed through and ignored
 * @param result    out, size+2 floats
 * @param radix     handed through and ignored
 * @param aTable    in, from voxloc_generateAbTables(..., size/2)
 * @param bTable    in, likewise
 * @param work      scratch, size+2 floats; no two of input, result and work overlap
 */
void voxloc_realFft(int size, float* input, const float* twiddles, float* result, int radix,
                    const float* aTable, const float* bTable, float* work);

/**
 * Real inverse transform, in place: spectrum holds size/2+1 bins on entry (size+2 floats) and the
 * size real samples on return; its last two floats are left as they were. scratch (size floats) is
 * overwritten and must not overlap it. A size below 0 does nothing.
 */
void voxloc_realIfft(int size, float* spectrum, const float* twiddles, float* scratch, int radix,
                     const float* aTable, const float* bTable);

/** Block FIR filter: sp_fir_gen of the signal library with the arguments in this module's order. */
void voxloc_firFilter(const float* input, const float* coefficients, float* output, int taps,
                      int outputs);

#ifdef __cplusplus
}
#endif

#endif
