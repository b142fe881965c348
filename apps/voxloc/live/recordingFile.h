/** The tracker's own recording to a file; the library says why when it loses frames. */
#ifndef VOXLOC_APP_LIVE_RECORDING_FILE_H
#define VOXLOC_APP_LIVE_RECORDING_FILE_H

#include <cstdint>
#include <string>

#include <voxloc/voxloc.h>

class RecordingFile {
  public:
    /** Throws BadData when the file cannot be written. */
    RecordingFile(VoxlocTracker* tracker, std::string path);
    ~RecordingFile() { finish(); }
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    /** Frames that the file lacks, so far. */
    std::uint32_t lostFrames() const { return voxloc_getLostFrames(tracker_); }

    void finish() { voxloc_stopRecording(tracker_); }

    const std::string& path() const { return path_; }

  private:
    VoxlocTracker* tracker_;
    std::string path_;
};

#endif
