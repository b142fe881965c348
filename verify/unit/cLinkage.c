/*
 * Every public function of the platform services by its C name: this file links only if each of
 * them has C linkage.
 */
#include "audunittest/audunittest.h"
#include "console/audtime.h"
#include "console/console.h"
#include "console/eventlog.h"

typedef void (*any_function)(void);

#define THREE(a, b, c) (any_function)(a), (any_function)(b), (any_function)(c)

extern const any_function platform_functions[];

const any_function platform_functions[] = {
    THREE(audtime_cyclesPerTick, audtime_getTicks, audtime_ticksPerMs),
    THREE(NYRA_currentTime, NYRA_now64, audunittest_commandline_with_console),
    THREE(audunittest_commandline, audunittest_fail_equals, audunittest_fail_equals_double),
    THREE(audunittest_fail_equals_int, audunittest_fail_equals_uint, audunittest_fail_test),
    THREE(audunittest_num_assertions, audunittest_num_failed, audunittest_register_test),
    THREE(audunittest_reset, audunittest_set_context, audunittest_succeed_test),
    THREE(con_hexdump, con_out, con_puts),
    THREE(con_vout, con_write, custom_printf),
    THREE(custom_printf_color, eventlog, eventlog_die),
    THREE(eventlogputs, eventlogwrite, veventlog),
};
