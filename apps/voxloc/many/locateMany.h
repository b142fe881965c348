/** Many inputs, each located by a process of its own. */
#ifndef VOXLOC_APP_MANY_LOCATE_MANY_H
#define VOXLOC_APP_MANY_LOCATE_MANY_H

#include <string>
#include <vector>

#include "writers/recordWriter.h"

struct ManyJob {
    std::vector<std::string> files;
    std::string folder;                // of the runs
    std::vector<std::string> options;  // for each process beside its input and output
    RecordForm form = RecordForm::JsonLines;
    int jobs = 1;
    bool showsProgress = false;
};

/**
 * Runs what is not finished yet and prints a table of all. A run that damage or an error ended does
 * not stop the others: what it computed goes to RUN.damaged, and the status is 1. Throws WrongUsage
 * when two of the files would share a run.
 */
int locateMany(const ManyJob& job);

#endif
