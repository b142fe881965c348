/** The tracker's own recording, watched: the library goes on quietly when the disk is full. */
#ifndef VOXLOC_APP_LIVE_RECORDING_FILE_H
#define VOXLOC_APP_LIVE_RECORDING_FILE_H

#include <cstdint>
#include <string>

#include <voxloc/voxloc.h>

class RecordingFile {
  public:
    /** Throws BadData when the file cannot be written. */
    RecordingFile(VoxlocTracker* tracker, std::string path);
    ~RecordingFile() { voxloc_stopRecording(tracker_); }
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    /** One more frame has gone in. False from when on the file has lost some of them. */
    bool grow();

    /** Ends the recording; whether all frames are in it. */
    bool finish();

    const std::string& path() const { return path_; }

  private:
    bool isComplete(std::uint64_t slack) const;

    VoxlocTracker* tracker_;
    std::string path_;
    std::uint64_t frameBytes_, frames_ = 0;
    bool isWhole_ = true;
};

#endif
