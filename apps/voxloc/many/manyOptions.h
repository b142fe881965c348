/** The options of locate that many files take, and what is passed on to each file's process. */
#ifndef VOXLOC_APP_MANY_MANY_OPTIONS_H
#define VOXLOC_APP_MANY_MANY_OPTIONS_H

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "many/locateMany.h"

struct ManyOptions {
    std::string folder;  // empty: one file as usual
    int jobs = 0;        // 0: as many as there are processors
};

/** Adds --output-dir and --jobs. */
void addManyOptions(CLI::App& command, ManyOptions& options);

/**
 * What `command` was called with as a job for many files. Throws WrongUsage for several files
 * without a folder, and for options that only one file can have.
 */
ManyJob manyJob(const CLI::App& command, const ManyOptions& options,
                const std::vector<std::string>& files, RecordForm form);

#endif
