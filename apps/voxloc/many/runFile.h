/** Finished runs on the disk: where they stand and what they come to. */
#ifndef VOXLOC_APP_MANY_RUN_FILE_H
#define VOXLOC_APP_MANY_RUN_FILE_H

#include <optional>
#include <string>

#include "writers/recordWriter.h"

/** "csv", "jsonl" or "txt". */
const char* extensionOf(RecordForm form);

/**
 * Where the run of an input goes: its path mirrored below the folder, so that two inputs of one
 * name do not meet; "day1/a.wav" goes to FOLDER/day1/a.wav.jsonl, "/data/a.wav" to
 * FOLDER/data/a.wav.jsonl.
 */
std::string runPath(const std::string& folder, const std::string& input, RecordForm form);

/** What a run in CSV or JSON lines says of itself in its first and last line. */
struct RunEnds {
    std::string input;  // as the user gave it when the run was made
    bool isCsv = false;
    std::string columns;  // of CSV, its second line
    Json summary;
};

/** Throws BadData when it is no run or not a finished one. */
RunEnds readRunEnds(const std::string& path);

/** A line of a run as its Json, without the sign that CSV puts before it; nothing if it is none. */
std::optional<Json> jsonOfLine(const std::string& line);

#endif
