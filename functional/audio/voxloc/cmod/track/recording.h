/** Recording of a tracker's raw input to a file; the format is described at voxloc_record_start. */
#ifndef VOXLOC_RECORDING_H
#define VOXLOC_RECORDING_H

#include <cstdint>
#include <cstdio>

namespace voxloc {

/**
 * Opens the file and writes the header; a recording that is open ends first. Returns 0 when the
 * file cannot be opened, else what the last write returned.
 */
int startRecording(std::FILE*& recording, const char* path, std::int32_t product,
                   std::int32_t channels);

/** Appends a frame of that many samples; does nothing without a recording. */
void recordFrame(std::FILE* recording, const float* frame, int samples, std::uint32_t bits,
                 std::uint32_t flags);

/** Does nothing without a recording. */
void stopRecording(std::FILE*& recording);

}  // namespace voxloc

#endif
