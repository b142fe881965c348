/** Where a tracker's diagnostics go: the event log, or a function of the user's. */
#ifndef VOXLOC_TRACKER_LOG_H
#define VOXLOC_TRACKER_LOG_H

#include <cstdarg>
#include <cstdio>

#include "console/eventlog.h"
#include "voxloc.h"

namespace voxloc {

struct Log {
    VoxlocLog write;  // null: the event log
    void* context;
};

/** The longest text of the tracker, with room for numbers of any size. */
constexpr std::size_t LogTextSize = 320;

EVENTLOG_FORMAT(2, 3) inline void logText(const Log& log, const char* format, ...) {
    va_list args;
    va_start(args, format);
    if (log.write == nullptr) {
        veventlog(format, args);
    } else {
        char text[LogTextSize];
        std::vsnprintf(text, sizeof text, format, args);
        log.write(log.context, text);
    }
    va_end(args);
}

}  // namespace voxloc

#endif
