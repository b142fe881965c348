/** Interleaved samples to frames. */
#ifndef VOXLOC_APP_READERS_FRAMES_H
#define VOXLOC_APP_READERS_FRAMES_H

#include <memory>
#include <string>

#include "readers/reader.h"
#include "readers/sampleSource.h"

/** The source must run at 48 kHz; `rate` is what it ran at before. */
std::unique_ptr<FrameReader> framesOf(std::unique_ptr<SampleSource> source, const std::string& name,
                                      int rate);

#endif
