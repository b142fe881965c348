#include "live/markFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>

#include "arrays/arrayJson.h"
#include "common/failure.h"
#include "common/record.h"
#include "writers/header.h"

namespace {

double secondsSince1970() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace

MarkFile::MarkFile(const std::string& recording)
    : path_(recording + ".marks.jsonl"),
      descriptor_(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666)) {
    if (descriptor_ < 0) throw cannot("write", path_);
}

MarkFile::~MarkFile() {
    close(descriptor_);
}

bool MarkFile::write(const std::string& label, std::uint64_t frame) {
    const Json mark = {{"type", "mark"},
                       {"frame", frame},
                       {"time", static_cast<double>(frame) * FRAME_SAMPLES / SampleRate},
                       {"wall", wallTime(secondsSince1970())},
                       {"label", label}};
    const std::string line = mark.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    const std::lock_guard<std::mutex> lock(mutex_);
    if (::write(descriptor_, line.data(), line.size()) == static_cast<ssize_t>(line.size())) {
        return true;
    }
    say(cannot("write", path_).what());
    return false;
}
