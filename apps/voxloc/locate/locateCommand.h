/** `voxloc locate`: recordings and sound files to records. */
#ifndef VOXLOC_APP_LOCATE_LOCATE_COMMAND_H
#define VOXLOC_APP_LOCATE_LOCATE_COMMAND_H

#include <CLI/CLI.hpp>

/** Adds the subcommand; when the user calls it, it runs and sets `status`. */
void addLocateCommand(CLI::App& program, int& status);

#endif
