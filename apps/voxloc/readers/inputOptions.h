/** The options of the commands that take sound: what comes in, and how it is read. */
#ifndef VOXLOC_APP_READERS_INPUT_OPTIONS_H
#define VOXLOC_APP_READERS_INPUT_OPTIONS_H

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "readers/reader.h"

struct InputOptions {
    std::string array;   // name or file, or empty
    std::string farEnd;  // CSV of the loudspeaker's times, or empty
    ReadOptions read;
    std::string channels, clock;  // as they were typed
};

/** Adds --array, --channels, --gain, --far-end, --clock, --strict and the three of raw samples. */
void addInputOptions(CLI::App& command, InputOptions& options);

/** With the channels that were typed. Throws WrongUsage. */
ReadOptions readOptionsFrom(const InputOptions& options);

#endif
