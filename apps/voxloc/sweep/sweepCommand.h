/** `voxloc sweep`: how well an array finds talkers, by simulation. */
#ifndef VOXLOC_APP_SWEEP_SWEEP_COMMAND_H
#define VOXLOC_APP_SWEEP_SWEEP_COMMAND_H

#include <CLI/CLI.hpp>

/** Adds the subcommand; when the user calls it, it runs and sets `status`. */
void addSweepCommand(CLI::App& program, int& status);

#endif
