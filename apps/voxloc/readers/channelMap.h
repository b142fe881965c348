/** Which channel of the input is which microphone, how loud, and from when to when. */
#ifndef VOXLOC_APP_READERS_CHANNEL_MAP_H
#define VOXLOC_APP_READERS_CHANNEL_MAP_H

#include <memory>
#include <vector>

#include "readers/reader.h"

/** Throws BadData for channels that the input lacks. Without options the reader itself. */
std::unique_ptr<FrameReader> mapped(std::unique_ptr<FrameReader> reader,
                                    const ReadOptions& options);

/** Microphones after mapping. */
int mappedChannels(const InputFormat& format, const ReadOptions& options);

#endif
