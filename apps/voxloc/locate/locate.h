/** One input from end to end. */
#ifndef VOXLOC_APP_LOCATE_LOCATE_H
#define VOXLOC_APP_LOCATE_LOCATE_H

#include <functional>
#include <optional>
#include <string>

#include "common/record.h"
#include "readers/reader.h"
#include "writers/recordWriter.h"

struct LocateJob {
    std::string input;  // a file, or "-"
    std::string output = "-";
    std::string array;   // name or file; empty: that of the recording
    std::string farEnd;  // CSV of the loudspeaker's times, or empty
    RecordForm form = RecordForm::Text;
    ReadOptions read;
    std::optional<double> clock;
    bool showsProgress = false;
};

/** Sees what the run gives beside its records' file; each may be empty. */
struct LocateObserver {
    std::function<void(const RunHeader&)> begin;
    std::function<void(const Record&, const InputFrame&)> record;
    std::function<void(const Summary&)> end;
};

/**
 * Locates to the end of the input, or up to damage or ctrl-C; what was computed until then is
 * finished properly. Returns the status and says what was wrong. Throws BadData when nothing can be
 * computed at all.
 */
int locate(const LocateJob& job, const LocateObserver& observer = {});

#endif
