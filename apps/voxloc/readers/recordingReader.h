/** Recordings of voxloc_record_start. */
#ifndef VOXLOC_APP_READERS_RECORDING_READER_H
#define VOXLOC_APP_READERS_RECORDING_READER_H

#include <memory>
#include <string>

#include "readers/file.h"
#include "readers/reader.h"

constexpr unsigned char RecordingMagic[2] = {172, 1};

/** `file` stands at its beginning. Throws BadData when it is no recording. */
std::unique_ptr<FrameReader> openRecording(File file);

#endif
