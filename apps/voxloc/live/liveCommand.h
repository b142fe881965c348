/** `voxloc live`: who talks from where, now. */
#ifndef VOXLOC_APP_LIVE_LIVE_COMMAND_H
#define VOXLOC_APP_LIVE_LIVE_COMMAND_H

#include <CLI/CLI.hpp>

/** Adds the subcommand; when the user calls it, it runs and sets `status`. */
void addLiveCommand(CLI::App& program, int& status);

#endif
