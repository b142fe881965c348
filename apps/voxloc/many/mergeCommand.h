/** `voxloc merge`: finished runs to one file. */
#ifndef VOXLOC_APP_MANY_MERGE_COMMAND_H
#define VOXLOC_APP_MANY_MERGE_COMMAND_H

#include <CLI/CLI.hpp>

/** Adds the subcommand; when the user calls it, it runs and sets `status`. */
void addMergeCommand(CLI::App& program, int& status);

#endif
