/** Listening as it happens. */
#ifndef VOXLOC_APP_LIVE_LIVE_H
#define VOXLOC_APP_LIVE_LIVE_H

#include <optional>
#include <string>

#include "live/access.h"
#include "live/capture.h"
#include "readers/reader.h"
#include "writers/recordWriter.h"

struct LiveJob {
    std::string array;
    CaptureOptions capture;
    ReadOptions read;  // channels and gain
    std::string farEnd;
    std::optional<double> clock;
    std::optional<RecordForm>
        form;               // of the records on standard output; none: they are not printed
    std::string recording;  // the file, or empty
    std::optional<ServeAddress> serve;
    std::optional<std::string> token;
    std::optional<double> duration;  // seconds of sound after which it ends
};

/** Until the input ends or ctrl-C. Returns the status; throws what stands in the way at the start.
 */
int live(LiveJob job);

#endif
