/** A voice from a sound file. */
#ifndef VOXLOC_APP_SWEEP_VOICE_FILE_H
#define VOXLOC_APP_SWEEP_VOICE_FILE_H

#include <string>

#include "simulator/simulator.h"

/** One channel at 48 kHz, up to ten minutes. Throws BadData. */
Voice readVoice(const std::string& path);

#endif
