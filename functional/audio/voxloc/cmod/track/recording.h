/**
 * Recording of a tracker's raw input to a file; the format is described at voxloc_record_start.
 *
 * Nothing is kept back in the process: a frame's record goes to the system at once and whole, or
 * not at all. So a copy of the process has nothing to write a second time.
 */
#ifndef VOXLOC_RECORDING_H
#define VOXLOC_RECORDING_H

#include <cstddef>
#include <cstdint>

#include "trackerLog.h"

namespace voxloc {

/** Zero-filled, it is a recording that was never started. */
struct Recording {
    int descriptor;      // above 2; 0 while none is open
    bool isFile;         // can be cut back; else a pipe or a device
    bool isTorn;         // part of a record stands behind the file's `length`
    bool isStalled;      // the reader let a frame wait for too long and has not caught up
    bool isAbandoned;    // the reader has left: nothing more is written
    bool isHeaderOwed;   // goes in front of the first record
    bool isRestOfFrame;  // not of the header
    unsigned char header[4];
    std::int64_t length;  // bytes that stand whole in the file
    unsigned char* rest;  // what a pipe did not take of a record that it has begun to take
    std::size_t restBegin, restEnd;
    std::uint32_t lostFrames;  // that could not be written
};

/**
 * Opens the file and writes the header; a recording that is open ends first. Returns 0 when the
 * file cannot be opened, a negative value when the header could not be written yet, else the byte
 * of the channels, the header's last.
 */
int startRecording(Recording& recording, const char* path, std::int32_t product,
                   std::int32_t channels);

/**
 * Appends a frame of that many samples, VOXLOC_MAX_CHANNELS·FRAME_SAMPLES at most, or counts it as
 * lost and tells the log of the first one; does nothing without a recording.
 */
void recordFrame(Recording& recording, const Log& log, const float* frame, int samples,
                 std::uint32_t bits, std::uint32_t flags);

/** Does nothing without a recording. The count of lost frames stays. */
void stopRecording(Recording& recording);

inline bool isOpen(const Recording& recording) {
    return recording.descriptor != 0;
}

}  // namespace voxloc

#endif
