/** Sound at 48 kHz from sound at any other rate. */
#ifndef VOXLOC_APP_LIVE_RESAMPLED_CAPTURE_H
#define VOXLOC_APP_LIVE_RESAMPLED_CAPTURE_H

#include "live/capture.h"

std::unique_ptr<Capture> resampled(std::unique_ptr<Capture> source);

#endif
