#include "live/recordingFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "common/failure.h"

namespace {

constexpr std::uint64_t HeaderBytes = 4, FrameHeaderBytes = 8;
constexpr std::uint64_t BufferBytes = 1 << 16;    // that the C library may hold back
constexpr std::uint64_t FramesBetweenLooks = 47;  // two seconds

}  // namespace

RecordingFile::RecordingFile(VoxlocTracker* tracker, std::string path)
    : tracker_(tracker), path_(std::move(path)) {
    const auto channels = static_cast<std::uint64_t>(voxloc_getArray(tracker_)->channels);
    frameBytes_ = FrameHeaderBytes + channels * FRAME_SAMPLES * sizeof(float);
    errno = 0;
    if (voxloc_startRecording(tracker_, path_.c_str()) == 0) throw cannot("write", path_);
}

bool RecordingFile::isComplete(std::uint64_t slack) const {
    struct stat about = {};
    if (stat(path_.c_str(), &about) != 0) return false;
    // What cannot be measured (a pipe, a device) is taken to be whole.
    if (!S_ISREG(about.st_mode)) return true;
    return static_cast<std::uint64_t>(about.st_size) + slack >= HeaderBytes + frames_ * frameBytes_;
}

bool RecordingFile::grow() {
    ++frames_;
    if (isWhole_ && frames_ % FramesBetweenLooks == 0) isWhole_ = isComplete(BufferBytes);
    return isWhole_;
}

bool RecordingFile::finish() {
    voxloc_stopRecording(tracker_);
    return isWhole_ && isComplete(0);
}
