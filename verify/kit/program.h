/** Runs the program under test as a user would, and says what came out of it. */
#ifndef VERIFY_KIT_PROGRAM_H
#define VERIFY_KIT_PROGRAM_H

#include <string>
#include <vector>

#include "standardError.h"

struct ProgramOutcome {
    int status;  // the exit status; minus the signal that ended it otherwise
    std::string standardOutput;
    std::string standardError;
};

/** The path of the program under test, which is also its own argument 0. */
std::string programPath();

/** Runs it to its end with its standard error on a file or a terminal. */
ProgramOutcome runProgram(const std::vector<std::string>& arguments, Output standardError);

/** text with every duration of a report, such as "[1.234 ms]", replaced by "[T ms]" or "[T s]". */
std::string withoutTimes(const std::string& text);

#endif
