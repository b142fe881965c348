#include "live/recordingFile.h"

#include <cerrno>
#include <utility>

#include "common/failure.h"

RecordingFile::RecordingFile(VoxlocTracker* tracker, std::string path)
    : tracker_(tracker), path_(std::move(path)) {
    errno = 0;
    if (voxloc_startRecording(tracker_, path_.c_str()) == 0) throw cannot("write", path_);
}
