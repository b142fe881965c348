/** Any rate to the tracker's 48 kHz. */
#ifndef VOXLOC_APP_READERS_RESAMPLER_H
#define VOXLOC_APP_READERS_RESAMPLER_H

#include <memory>

#include "readers/sampleSource.h"

/** The source itself when it runs at 48 kHz already. Throws BadData for rates that cannot be. */
std::unique_ptr<SampleSource> resampled(std::unique_ptr<SampleSource> source);

#endif
