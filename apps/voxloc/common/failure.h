/** How a command of the program ends early: a line for the user and a status for the shell. */
#ifndef VOXLOC_APP_COMMON_FAILURE_H
#define VOXLOC_APP_COMMON_FAILURE_H

#include <stdexcept>
#include <string>

enum Status : int {
    StatusSuccess = 0,
    StatusBadData = 1,
    StatusWrongUsage = 2,
    StatusInterrupted = 130  // as shells report a program that ctrl-C ended
};

/** What came in or cannot be written: status 1. The text is one line without a full stop. */
struct BadData : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** What was asked for makes no sense: status 2. */
struct WrongUsage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** Nobody reads standard output any more: the program ends quietly. */
struct ClosedPipe : std::runtime_error {
    ClosedPipe() : std::runtime_error("closed pipe") {}
};

/** "cannot open NAME: No such file or directory", from errno. */
BadData cannot(const std::string& doWhat, const std::string& name);

/** Runs a command; turns what it throws into a message on standard error and a status. */
int guarded(int (*command)(void* context), void* context);

/** A line "voxloc: TEXT" on standard error. */
void say(const std::string& text);

#endif
