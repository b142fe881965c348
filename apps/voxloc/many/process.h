/** Processes of this very program. */
#ifndef VOXLOC_APP_MANY_PROCESS_H
#define VOXLOC_APP_MANY_PROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

/**
 * Starts this program anew with those arguments, its standard input empty, its standard output
 * nowhere. It is asked to end when this one dies. Throws BadData.
 */
pid_t startSelf(const std::vector<std::string>& arguments);

/** A process that ended. */
struct Ended {
    pid_t process = 0;  // 0: none did
    int status = 0;     // of exit; 128 plus the signal that ended it otherwise
};

/** One that ended already, without waiting. */
Ended findEnded();

#endif
