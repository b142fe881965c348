/*
 * Every public function of the platform services by its C name: this file links only if each of
 * them has C linkage.
 */
#include "audunittest/audunittest.h"
#include "console/audtime.h"
#include "console/console.h"
#include "console/eventlog.h"

typedef void (*any_function)(void);

extern const any_function platform_functions[];

const any_function platform_functions[] = {
    (any_function)audtime_cyclesPerTick,
    (any_function)audtime_getTicks,
    (any_function)audtime_ticksPerMs,
    (any_function)NYRA_currentTime,
    (any_function)NYRA_now64,
    (any_function)audunittest_commandline,
    (any_function)audunittest_commandline_with_console,
    (any_function)audunittest_fail_equals,
    (any_function)audunittest_fail_equals_double,
    (any_function)audunittest_fail_equals_int,
    (any_function)audunittest_fail_equals_uint,
    (any_function)audunittest_fail_test,
    (any_function)audunittest_num_assertions,
    (any_function)audunittest_num_failed,
    (any_function)audunittest_register_test,
    (any_function)audunittest_reset,
    (any_function)audunittest_set_context,
    (any_function)audunittest_succeed_test,
    (any_function)con_hexdump,
    (any_function)con_out,
    (any_function)con_puts,
    (any_function)con_vout,
    (any_function)con_write,
    (any_function)custom_printf,
    (any_function)custom_printf_color,
    (any_function)eventlog,
    (any_function)eventlog_die,
    (any_function)eventlogputs,
    (any_function)eventlogwrite,
    (any_function)veventlog,
};
