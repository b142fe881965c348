/** Ctrl-C and closed pipes. */
#ifndef VOXLOC_APP_COMMON_SIGNALS_H
#define VOXLOC_APP_COMMON_SIGNALS_H

/**
 * From now on the first SIGINT or SIGTERM only raises the flag that stopRequested() reads, so that
 * output is finished properly; the second one ends the program. Writing to a closed pipe is an
 * error of the write.
 */
void catchSignals();

bool stopRequested();

#endif
