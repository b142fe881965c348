/**
 * voxloc: finds the active talker from frames of multichannel microphone audio.
 *
 *     voxloc_initialize(PRODUCT_ASTER);
 *     for each frame of FRAME_SAMPLES new samples a channel:
 *         voxloc_calculate(frame, 24, 0, &result);
 *     voxloc_destroy();
 *
 * The ten calls that such a program needs come first. They act on the one tracker of the module:
 * use them from one thread at a time. Broken preconditions are assertions that abort; there are no
 * error codes.
 *
 * Below them are trackers of one's own (voxloc_createTracker): several in one process, for any
 * array of microphones, and without assertions. The parts that trackers are made of (geometry,
 * frame arithmetic, real transforms) are in voxlocParts.h.
 *
 * Floating-point exceptions that the host program lets trap do not trap inside these calls, and
 * what the unit remembers of exceptions is as before on return. While a frame is processed, numbers
 * below the normal format count as zero. Rounding is the caller's: results are what they should be
 * when it is to nearest, as in every program that does not change it. The parts in voxlocParts.h
 * run in the caller's mode.
 *
 * Units: positions in metres, angles in radians inside the module and in degrees in the result,
 * 48,000 samples per second, lags of the correlations at 192,000 per second.
 */
#ifndef VOXLOC_H
#define VOXLOC_H

#include <stddef.h>
#include <stdint.h>

#include "voxlocParts.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version of this header; voxloc_getVersion tells that of the library. */
#define VOXLOC_VERSION_MAJOR 2
#define VOXLOC_VERSION_MINOR 0
#define VOXLOC_VERSION_PATCH 0

/** The most channels that any array has. */
#define VOXLOC_MAX_CHANNELS 8

/** The microphone arrays that are built in; 3 is not a product. */
enum {
    PRODUCT_ASTER = 0,
    PRODUCT_BRAMBLE = 1,
    PRODUCT_CINDER = 2,
    PRODUCT_ELMWOOD = 4,
    PRODUCT_DOVETAIL = 5,
    PRODUCT_FOXGLOVE = 6,
    PRODUCT_GANNET = 7
};

/** Bits of the flag word that goes in with a frame. */
enum {
    VOXLOC_INPUT_FAR_END = 0,   /**< the loudspeaker is playing: hold the cross-spectra */
    VOXLOC_INPUT_NOISE_FLAG = 1 /**< freeze the noise-level estimate */
};

/** Bits of the flag word that comes out with a result; all others are 0. */
enum {
    VOXLOC_FLAG_VOICE = 0,         /**< voice, frequency-domain detector. Drops out when speech goes
                                        on for 32,767 frames (23 minutes) without a pause of one
                                        frame, until there is a pause, or after 23 minutes more */
    VOXLOC_FLAG_TD_VOICE = 1,      /**< time-domain detector: 0 for a click and the frame after it;
                                        1 for steady sound, speech, noise and digital silence */
    VOXLOC_FLAG_SOUND = 2,         /**< any sound above the noise level */
    VOXLOC_FLAG_FAR_END = 3,       /**< copy of VOXLOC_INPUT_FAR_END */
    VOXLOC_FLAG_NOISE_INPUT = 4,   /**< copy of VOXLOC_INPUT_NOISE_FLAG */
    VOXLOC_FLAG_ULTRASOUND = 5,    /**< ultrasound distortion, on one frame in 20 at most; judged by
                                        voxloc_getUltraSoundLevel, the kept level included */
    VOXLOC_FLAG_POSITION_VALID = 7 /**< 0 when the panel seems to be mounted upside down, which only
                                        PRODUCT_ASTER can tell: 1 for all others */
};

/** What the tracker finds out about a frame. */
typedef struct TrackerResult {
    float azimuth;   /**< degrees, positive towards +y; PRODUCT_GANNET: NaN in silence and straight
                          ahead, where the columns of its grid beyond 90 degrees win */
    float elevation; /**< degrees, positive up; means nothing without elevation pairs */
    float range;     /**< metres, 0.5 to 9.9 */
    float quality;   /**< sum of the two correlation peaks: 0 when no bin has been heard, about 0.3
                          to 1.5 while somebody talks without echoes, 0.03 to 0.5 in rooms.
                          PRODUCT_FOXGLOVE adds what an earlier product left in its elevation map, a
                          constant */
    uint32_t flags;  /**< VOXLOC_FLAG_... by bit position; see voxloc_getFlag */
} TrackerResult;

/* --- The ten calls ---------------------------------------------------------------------------- */

/**
 * Selects a microphone array and allocates and builds everything that the frames need (about half a
 * millisecond on a desk machine, 0.4 to 1.3 MB). Asserts that productType is one of PRODUCT_...,
 * that the module is not initialised already, and that there was enough memory.
 */
void voxloc_initialize(int32_t productType);

/**
 * Frees what voxloc_initialize allocated and ends a recording. Does nothing, and leaves a recording
 * open, when the module is not initialised.
 */
void voxloc_destroy(void);

/**
 * Processes one frame. The position lags by one frame: it rests on the two frames before this one.
 *
 * @param frame   in, channels·FRAME_SAMPLES samples, channel-major (channel c from c·FRAME_SAMPLES
 *                on), integer values as floats; not modified, not kept
 * @param bits    significant bits of the samples: 24 for a full scale of 2^23, 1 for one of 1; 25
 *                to 32 for integers of so many bits, whose lowest ones a float cannot hold; 0 for a
 *                full scale of 1/2, and from 128 on everything counts as silence
 * @param flags   VOXLOC_INPUT_... by bit position
 * @param result  out, written last; must not overlap frame
 *
 * Asserts that the module is initialised and neither pointer is null. Nothing is allocated. Any
 * sample value and any number of bits is safe.
 *
 * Samples that no converter gives are taken as silence: what is no number, and what lies beyond 64
 * times full scale (36 dB). They are counted (voxloc_getSilencedSamples), and a warning in the log
 * tells of the first one of a spell; a spell ends after 24 frames without (a second). A recording
 * holds them as they came. Bits that are too few for the samples show in this way, too.
 *
 * Once the room is known, which takes the 40 first frames with sound (1.7 s), results are right
 * again 30 frames (1.3 s) after a frame of silenced samples, 40 (1.7 s) after a burst of one frame
 * at full scale and 60 (2.6 s) after one at 64 times that: the same flags, angles within a step of
 * the grid, quality within 0.001. Before, a burst counts as the noise of the room for a time: the
 * voice flag, and with it the position in pauses, may be missing for 120 frames (5 s) after one at
 * full scale, and for 210 (9 s) after the other.
 */
void voxloc_calculate(const float* frame, uint32_t bits, uint32_t flags, TrackerResult* result);

/**
 * A bit of word: 0 or 1. Asserts that bit is 0 to 31. voxlocParts.h has voxloc_setFlag for the word
 * that goes in.
 */
int voxloc_getFlag(uint32_t bit, uint32_t word);

/**
 * Microphone channels of the selected product: 0 before the first voxloc_initialize, still those of
 * the last product after voxloc_destroy.
 */
uint32_t voxloc_getNumberOfChannels(void);

/**
 * Position of a microphone of the initialised product. Owned by the module and valid until
 * voxloc_destroy. Asserts that the module is initialised; channel is not checked.
 */
const Position* voxloc_getMicrophoneCoordinates(uint32_t channel);

/**
 * Level of the loudest microphone in the band from 20.25 to 21.6 kHz, in dB. Refreshed on every
 * 20th frame; -100 before the first time, minus infinity for digital silence. 0 before the first
 * voxloc_initialize, the last level after voxloc_destroy.
 *
 * A level above -60 dB that stands less than 15 dB above that of the band from 18 to 20 kHz is
 * broadband noise, and the level found before is kept in its place: under such noise from the start
 * it stays -100. When a beacon gives way to such noise its level stays, and VOXLOC_FLAG_ULTRASOUND
 * is set as long as it lies above -25 dB and more than 15 dB above what that band has now.
 */
float voxloc_getUltraSoundLevel(void);

/**
 * Samples that were taken as silence since voxloc_initialize, see voxloc_calculate; of a program
 * that hands in what a converter gives, 0. Stays after voxloc_destroy.
 */
uint64_t voxloc_getSilencedSamples(void);

/**
 * Energy of each channel of a frame: the sum over its samples of (sample / 2^(bits-1))². Needs no
 * initialised module.
 *
 * @param frame      in, nchannels·FRAME_SAMPLES samples, layout as for voxloc_calculate
 * @param bits       significant bits of the samples
 * @param nchannels  1 to VOXLOC_MAX_CHANNELS, asserted
 * @param energies   out, VOXLOC_MAX_CHANNELS floats; those from nchannels on are set to 0; what
 *                   voxloc_calculate silences counts here, and may give infinity or NaN
 */
void voxloc_calculateSignalEnergy(const float* frame, uint32_t bits, int32_t nchannels,
                                  float* energies);

/**
 * Starts recording every frame that voxloc_calculate is given; ends a recording that is open.
 *
 * The file holds the bytes 172, 1, product, channels, and then for each frame bits (4 bytes), flags
 * (4 bytes) and the frame's samples (4 bytes each), in the machine's byte order. Product and
 * channels are what the module has at this moment: of the product before, or 0, when it is not
 * initialised, whatever it is initialised for later. A file's size has no limit but the system's.
 *
 * The tracker goes on unharmed whatever becomes of the file, and no signal ends the process. Only
 * whole records ever stand in a file: a frame that cannot be written leaves nothing there and is
 * counted as lost, those after it are recorded as soon as that is possible. Each recording tells
 * the log of its first lost frame, with one warning.
 *
 * A pipe must have its reader at the start. It holds a frame up for a tenth of a second at most,
 * and after a wait in vain no frame until it has taken a whole record again; frames that it has no
 * room for are lost. When the reader leaves, all further frames are. A record that the pipe has
 * taken a part of is completed before the next one, and stays incomplete only when the recording
 * ends before. For a pipe or a device 64 KiB are allocated, for a file nothing.
 *
 * The file is closed in programs that the process starts (close-on-exec), never takes the number of
 * a standard stream, and is written without a buffer, so that a forked child repeats nothing.
 *
 * @return 0 when the file cannot be opened, or is a pipe that nobody reads (nothing is recorded
 *         then), else the channel count (0 before the first voxloc_initialize), or a negative value
 *         when the header cannot be written yet; it then goes in front of the first record
 */
int voxloc_record_start(const char* path);

/** Ends the recording; does nothing when none is open. */
void voxloc_record_stop(void);

/** Frames of the module's latest recording that could not be written; it may have ended. */
uint32_t voxloc_record_getLostFrames(void);

/* --- About the library and its products ------------------------------------------------------- */

/** The version of the library, such as "2.0.0". */
const char* voxloc_getVersion(void);

/** 1 while the module records, else 0. */
int voxloc_record_isOpen(void);

/** Samples between the newest one that a position rests on and the newest one that went in. */
uint32_t voxloc_getLatency(void);

/** Two microphones, by channel. Their order decides the sign of their lags and the rounding. */
typedef struct VoxlocPair {
    int32_t first, second;
} VoxlocPair;

/** The most pairs that each of the two searches takes. */
#define VOXLOC_MAX_PAIRS 8

/**
 * An array of microphones and how it is listened to.
 *
 * Two maps are searched. Azimuth pairs are summed over azimuth and range, and give both; pairs that
 * lie along y. Elevation pairs are summed over azimuth and elevation, and give the elevation; pairs
 * that lie along z, and horizontal ones that tell the azimuths apart. A pair may serve both.
 *
 * Both angles are searched at equal steps of their sine: 227 azimuths from minimumAzimuth and 131
 * elevations from minimumElevation upwards, angleInterval apart.
 */
typedef struct VoxlocArray {
    int32_t channels;       /**< microphones, 1 to VOXLOC_MAX_CHANNELS */
    int32_t azimuthPairs;   /**< in use of azimuthPair, 1 to VOXLOC_MAX_PAIRS */
    int32_t elevationPairs; /**< in use of elevationPair, 0 to VOXLOC_MAX_PAIRS; 0: no elevation */
    float minimumAzimuth;   /**< sine of the lowest azimuth */
    float minimumElevation; /**< sine of the lowest elevation */
    float angleInterval;    /**< step of both, in sine */
    VoxlocPair voiceChannels; /**< of the frequency-domain voice detector */
    VoxlocPair noiseChannels; /**< of the noise-level estimator */
    int32_t timeDomainVoiceChannel;
    int32_t attenuateLoudspeaker; /**< not 0: damp the lags of the loudspeaker's direct sound */
    Position microphone[VOXLOC_MAX_CHANNELS]; /**< metres */
    Position loudspeaker;                     /**< metres */
    VoxlocPair elevationPair[VOXLOC_MAX_PAIRS];
    VoxlocPair azimuthPair[VOXLOC_MAX_PAIRS];
} VoxlocArray;

/** An array that is built in. */
typedef struct VoxlocProduct {
    const char* name; /**< in lower case */
    int32_t type;     /**< PRODUCT_... */
    VoxlocArray array;
} VoxlocProduct;

/** The built-in products, in the order of their types. */
uint32_t voxloc_getNumberOfProducts(void);

/** The product with that index, from 0 on; null past the last one. */
const VoxlocProduct* voxloc_getProduct(uint32_t index);

/** The product of that type (PRODUCT_...); null when there is none. */
const VoxlocProduct* voxloc_findProduct(int32_t type);

/** The product of that name, letter for letter; null when there is none, and for null. */
const VoxlocProduct* voxloc_findProductByName(const char* name);

/** What an array's search covers. Angles in degrees, ranges in metres. */
typedef struct VoxlocGrid {
    int32_t azimuths, elevations, ranges;    /**< points along each axis */
    float lowestAzimuth, highestAzimuth;     /**< within -90 to 90 */
    float lowestElevation, highestElevation; /**< within -90 to 90 */
    float angleInterval;                     /**< of both angles, in sine */
    float nearestRange, farthestRange, rangeInterval;
} VoxlocGrid;

/** The grid that an array is searched on. */
void voxloc_getGrid(const VoxlocArray* array, VoxlocGrid* grid);

/* --- Trackers of one's own -------------------------------------------------------------------- */

/*
 * Any number of trackers, beside the module's. A tracker serves one thread at a time; trackers
 * share nothing that changes, so each may have a thread of its own. Nothing here aborts.
 */

/** A tracker; made by voxloc_createTracker or voxloc_createProductTracker. */
typedef struct VoxlocTracker VoxlocTracker;

/** Room for each text that says why something was refused, its terminator included. */
#define VOXLOC_REASON_SIZE 160

/**
 * Looks an array over: counts, channels that exist, coordinates up to 100 m, two microphones apart
 * in each pair and no more than 14.8 m, a grid within what sines can be.
 *
 * @param array   in; null is refused, too
 * @param reason  out, VOXLOC_REASON_SIZE bytes, may be null: what is wrong, beginning with the
 *                field ("azimuthPair[2].second: 7 is not one of the channels"), or an empty text
 * @return 1 when the array can be tracked with, else 0
 */
int voxloc_checkArray(const VoxlocArray* array, char* reason);

/**
 * A new tracker for an array, or null: then reason says why, as for voxloc_checkArray, or that
 * memory ran out. The array is copied. Takes half a millisecond on a desk machine and 1.1 MB plus
 * 0.4 to 1.3 MB for arrays like the products; more pairs and wider pairs take more.
 */
VoxlocTracker* voxloc_createTracker(const VoxlocArray* array, char* reason);

/**
 * The same for a built-in product. Its frames give what voxloc_calculate gives, bit for bit.
 * PRODUCT_GANNET can only be had in this way: its grid goes beyond what voxloc_checkArray accepts.
 */
VoxlocTracker* voxloc_createProductTracker(int32_t productType, char* reason);

/** Ends a recording and frees the tracker; does nothing for null. */
void voxloc_destroyTracker(VoxlocTracker* tracker);

/**
 * Processes one frame as voxloc_calculate does.
 *
 * @return null when result is written, else what is wrong with the arguments: one of them is null,
 *         or bits is not 1 to 32. The tracker is then as it was.
 */
const char* voxloc_track(VoxlocTracker* tracker, const float* frame, uint32_t bits, uint32_t flags,
                         TrackerResult* result);

/**
 * Forgets every frame: what follows gives the bits of a new tracker. Allocates nothing and builds
 * nothing again. A recording and the log stay as they are.
 */
void voxloc_resetTracker(VoxlocTracker* tracker);

/**
 * 1 when the position of the last frame rests on any sound at all, else 0: nothing has been heard
 * since the start, or everything heard has timed out. The result then holds the corner of the grid,
 * with VOXLOC_FLAG_POSITION_VALID set all the same.
 */
int voxloc_hasEstimate(const VoxlocTracker* tracker);

/** The array that the tracker was made for. Valid as long as the tracker. */
const VoxlocArray* voxloc_getArray(const VoxlocTracker* tracker);

/** As voxloc_getUltraSoundLevel. */
float voxloc_getTrackerUltraSoundLevel(const VoxlocTracker* tracker);

/** As voxloc_getSilencedSamples, since the tracker was made or reset. */
uint64_t voxloc_getTrackerSilencedSamples(const VoxlocTracker* tracker);

/**
 * Takes a text of the tracker's log, one line or more with their ends, on the tracker's thread and
 * in its floating-point mode: nothing traps, tiny numbers count as zero.
 */
typedef void (*VoxlocLog)(void* context, const char* text);

/** Where the tracker's log goes from now on; a null log means standard error, as at first. */
void voxloc_setLog(VoxlocTracker* tracker, VoxlocLog log, void* context);

/**
 * Starts recording the tracker's frames, as voxloc_record_start does; the product's byte is 255 for
 * an array of one's own. Returns 1, or 0 when the file cannot be opened or its header not written;
 * nothing is recorded then.
 */
int voxloc_startRecording(VoxlocTracker* tracker, const char* path);

/** Ends the recording; does nothing when none is open. */
void voxloc_stopRecording(VoxlocTracker* tracker);

/** 1 while the tracker records, else 0. */
int voxloc_isRecording(const VoxlocTracker* tracker);

/** Frames of the tracker's latest recording that could not be written; it may have ended. */
uint32_t voxloc_getLostFrames(const VoxlocTracker* tracker);

#ifdef __cplusplus
}
#endif

#endif
