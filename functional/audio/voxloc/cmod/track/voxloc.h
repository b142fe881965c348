/**
 * voxloc: finds the active talker from frames of multichannel microphone audio.
 *
 *     voxloc_initialize(PRODUCT_ASTER);
 *     for each frame of FRAME_SAMPLES new samples a channel:
 *         voxloc_calculate(frame, 24, 0, &result);
 *     voxloc_destroy();
 *
 * The module is one instance with state of its own: use it from one thread at a time. Broken
 * preconditions are assertions that abort; there are no error codes. Nothing is allocated between
 * voxloc_initialize and voxloc_destroy.
 *
 * Units: positions in metres, angles in radians inside the module and in degrees in the result,
 * 48,000 samples per second, lags of the correlations at 192,000 per second.
 */
#ifndef VOXLOC_H
#define VOXLOC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** New samples per channel in a frame (42.7 ms). */
#define FRAME_SAMPLES 2048
/** The most channels that any geometry has. */
#define VOXLOC_MAX_CHANNELS 8

/** The microphone arrays; 3 is not a product. */
enum {
    PRODUCT_ASTER = 0,
    PRODUCT_BRAMBLE = 1,
    PRODUCT_CINDER = 2,
    PRODUCT_ELMWOOD = 4,
    PRODUCT_DOVETAIL = 5,
    PRODUCT_FOXGLOVE = 6,
    PRODUCT_GANNET = 7
};

/** Bits of the flag word that voxloc_calculate takes. */
enum {
    VOXLOC_INPUT_FAR_END = 0,   /**< the loudspeaker is playing: hold the cross-spectra */
    VOXLOC_INPUT_NOISE_FLAG = 1 /**< freeze the noise-level estimate */
};

/** Bits of the flag word that voxloc_calculate returns; all others are 0. */
enum {
    VOXLOC_FLAG_VOICE = 0,         /**< voice, frequency-domain detector */
    VOXLOC_FLAG_TD_VOICE = 1,      /**< voice, time-domain detector */
    VOXLOC_FLAG_SOUND = 2,         /**< any sound above the noise level */
    VOXLOC_FLAG_FAR_END = 3,       /**< copy of VOXLOC_INPUT_FAR_END */
    VOXLOC_FLAG_NOISE_INPUT = 4,   /**< copy of VOXLOC_INPUT_NOISE_FLAG */
    VOXLOC_FLAG_ULTRASOUND = 5,    /**< ultrasound distortion, on one frame in 20 at most */
    VOXLOC_FLAG_POSITION_VALID = 7 /**< 0 when the panel seems to be mounted upside down */
};

/** A point in metres: x is depth (towards the talker), y runs along the array, z is height. */
typedef struct Position {
    float x;
    float y;
    float z;
} Position;

/** What voxloc_calculate finds out about a frame. */
typedef struct TrackerResult {
    float azimuth;   /**< degrees, positive towards +y; PRODUCT_GANNET: NaN in silence and straight
                          ahead, where the columns of its grid beyond 90 degrees win */
    float elevation; /**< degrees, positive up; means nothing for PRODUCT_FOXGLOVE */
    float range;     /**< metres, 0.5 to 9.9 */
    float quality;   /**< sum of the two correlation peaks; near 0 when nobody talks */
    uint32_t flags;  /**< VOXLOC_FLAG_... by bit position; see voxloc_getFlag */
} TrackerResult;

/* --- Tracker ---------------------------------------------------------------------------------- */

/**
 * Selects a microphone array and allocates and builds everything that the frames need (tens of
 * milliseconds on a desk machine, about 1 MiB). Asserts that productType is one of PRODUCT_...,
 * that the module is not initialised already, and that memory was to be had.
 */
void voxloc_initialize(int32_t productType);

/**
 * Frees what voxloc_initialize allocated and ends a recording. Does nothing, and leaves a recording
 * open, when the module is not initialised.
 */
void voxloc_destroy(void);

/** Microphone channels of the selected product. */
uint32_t voxloc_getNumberOfChannels(void);

/**
 * Position of a microphone of the initialised product. Owned by the module and valid until
 * voxloc_destroy; channel is not checked.
 */
const Position* voxloc_getMicrophoneCoordinates(uint32_t channel);

/**
 * Processes one frame. The position lags by one frame: it rests on the two frames before this one.
 *
 * @param frame   in, channels·FRAME_SAMPLES samples, channel-major (channel c from c·FRAME_SAMPLES
 *                on), integer values as floats; not modified, not kept
 * @param bits    significant bits of the samples: 24 for a full scale of 2^23
 * @param flags   VOXLOC_INPUT_... by bit position
 * @param result  out, written last; must not overlap frame
 *
 * The module must be initialised. Any sample value is safe: the process is unharmed. A NaN, an
 * infinity or a value whose square overflows stays in the noise power of the bins that it reached,
 * as a rule all bins of its channel. They are not updated any more and drop out of the position: at
 * once, or where they still hold an earlier value after 35 frames at most. When the noise level
 * takes it in, too, the sound flag reads 0 from then on and the voice flag from the end of its
 * hangover on (34 frames at most). The other flags recover by themselves. voxloc_destroy followed
 * by voxloc_initialize restores everything.
 */
void voxloc_calculate(const float* frame, uint32_t bits, uint32_t flags, TrackerResult* result);

/**
 * Level of the loudest microphone in the band from 20.25 to 21.6 kHz, in dB. Refreshed on every
 * 20th frame; -100 before the first time, minus infinity for digital silence.
 */
float voxloc_getUltraSoundLevel(void);

/* --- Flags ------------------------------------------------------------------------------------ */

/**
 * Clears a bit (0 to 31) of word, then ORs in value shifted left by bit. The value is deliberately
 * not reduced to 0 or 1: 2 sets the next bit up.
 */
void voxloc_setFlag(uint32_t bit, int32_t value, uint32_t* word);

/** A bit (0 to 31) of word: 0 or 1. */
int voxloc_getFlag(uint32_t bit, uint32_t word);

/* --- Signal energy, recording, noise ---------------------------------------------------------- */

/**
 * Energy of each channel of a frame: the sum over its samples of (sample / 2^(bits-1))². Needs no
 * initialised module.
 *
 * @param frame      in, nchannels·FRAME_SAMPLES samples, layout as for voxloc_calculate
 * @param bits       significant bits of the samples
 * @param nchannels  1 to VOXLOC_MAX_CHANNELS, asserted
 * @param energies   out, VOXLOC_MAX_CHANNELS floats; those from nchannels on are set to 0
 */
void voxloc_calculateSignalEnergy(const float* frame, uint32_t bits, int32_t nchannels,
                                  float* energies);

/**
 * Starts recording every frame that voxloc_calculate is given; ends a recording that is open.
 *
 * The file holds the bytes 172, 1, product, channels, and then for each frame bits (4 bytes), flags
 * (4 bytes) and the frame's samples (4 bytes each), in the machine's byte order. Write errors while
 * frames go by are ignored: the tracker goes on unharmed.
 *
 * @return 0 when the file cannot be opened (nothing is recorded then), else what writing the last
 *         header byte returned: the channel count (0 before the first voxloc_initialize), or a
 *         negative value
 */
int voxloc_record_start(const char* path);

/** Ends the recording; does nothing when none is open. */
void voxloc_record_stop(void);

/**
 * Fills a buffer of the module's with 16,384 pseudo-random samples, uniform in about [-0.5, 0.5],
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
 */
int16_t voxloc_distanceToSampleDelay(float pathDifference);

/**
 * The spectrum bins (11.71875 Hz each) that a pair of microphones uses: from where half a
 * wavelength equals their spacing up to about 17 kHz.
 */
void voxloc_setCutoffCoefficients(const Position* a, const Position* b, uint16_t* upperBin,
                                  uint16_t* lowerBin);

/* --- Frame arithmetic ------------------------------------------------------------------------- */

/** out[i] = frame[i] / 2^(bits-1) for nchannels·FRAME_SAMPLES samples; out may be frame. */
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
 * @param size      real samples, twice a power of two up to 8192
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
 * overwritten and must not overlap it.
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
