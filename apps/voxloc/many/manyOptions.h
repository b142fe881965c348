/** The options of locate that many files take, and what is passed on to each file's process. */
#ifndef VOXLOC_APP_MANY_MANY_OPTIONS_H
#define VOXLOC_APP_MANY_MANY_OPTIONS_H

#include <string>
#include <vector>

#include "writers/recordWriter.h"

namespace CLI {
class App;
}

struct ManyOptions {
    std::string folder;  // empty: one file as usual
    int jobs = 0;        // 0: as many as there are processors
};

/** Adds --output-dir and --jobs. */
void addManyOptions(CLI::App& command, ManyOptions& options);

struct ManyInput {
    std::vector<std::string> files;
    RecordForm form = RecordForm::JsonLines;
    bool showsProgress = false;
};

/**
 * Locates the files as `command` was called. Returns the status; throws WrongUsage for several
 * files without a folder, and for options that only one file can have.
 */
int locateFiles(const CLI::App& command, const ManyOptions& options, const ManyInput& input);

#endif
