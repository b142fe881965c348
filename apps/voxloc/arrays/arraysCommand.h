/** `voxloc arrays`: lists, prints, checks and completes microphone arrays. */
#ifndef VOXLOC_APP_ARRAYS_ARRAYS_COMMAND_H
#define VOXLOC_APP_ARRAYS_ARRAYS_COMMAND_H

#include <CLI/CLI.hpp>

/** Adds the subcommand; when the user calls it, it runs and sets `status`. */
void addArraysCommand(CLI::App& program, int& status);

#endif
