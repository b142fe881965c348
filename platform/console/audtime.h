/**
 * The time services: a monotonic clock that starts at an arbitrary moment (on Linux, at boot) and
 * is not moved by changes of the time of day. Any thread may call them.
 */
#ifndef PLATFORM_CONSOLE_AUDTIME_H
#define PLATFORM_CONSOLE_AUDTIME_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A moment of the monotonic clock. */
typedef struct NYRA_time {
    uint32_t seconds;     /**< wraps after 136 years */
    uint32_t nanoseconds; /**< 0 to 999,999,999 */
} NYRA_time;

/**
 * Reads the clock into out and returns out. A clock that fails is fatal: the reason goes to the
 * event log and the process aborts.
 */
NYRA_time* NYRA_currentTime(NYRA_time* out);

/** The monotonic clock in whole microseconds, rounded down. Fatal as NYRA_currentTime is. */
uint64_t NYRA_now64(void);

/**
 * The clock in ticks of one microsecond: the low 32 bits of NYRA_now64. Wraps after 2^32 ticks,
 * about 71.6 minutes.
 */
uint32_t audtime_getTicks(void);

/** Ticks in a millisecond: 1000. */
int audtime_ticksPerMs(void);

/** Processor cycles in a tick: -1, the cycle rate is not known on this platform. */
int audtime_cyclesPerTick(void);

#ifdef __cplusplus
}
#endif

#endif
