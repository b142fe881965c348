/** Sound files that libsndfile reads: WAV, RF64, W64, FLAC and others. */
#ifndef VOXLOC_APP_READERS_SOUND_FILE_SOURCE_H
#define VOXLOC_APP_READERS_SOUND_FILE_SOURCE_H

#include <memory>
#include <string>

#include "readers/sampleSource.h"

/** Throws BadData when it is no sound file. */
std::unique_ptr<SampleSource> openSoundFile(const std::string& path);

#endif
