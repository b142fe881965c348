/** Finished runs as one file. */
#ifndef VOXLOC_APP_MANY_MERGE_H
#define VOXLOC_APP_MANY_MERGE_H

#include <string>
#include <vector>

#include "writers/output.h"

/**
 * Writes the runs, CSV or JSON lines, in the order of their inputs' names, each line with its
 * input's name in front. Folders stand for all finished runs below them. What is no finished run is
 * named and left out: the status is 1 then. Throws BadData when runs do not fit together.
 */
int mergeRuns(const std::vector<std::string>& paths, Output& output);

#endif
