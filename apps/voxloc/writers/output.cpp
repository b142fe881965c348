#include "writers/output.h"

#include <sys/stat.h>

#include <cerrno>

#include "common/failure.h"

namespace {

const std::string Unfinished = ".part";

/** Standard output, devices and named pipes: nothing stands beside them or takes their name. */
bool isStream(const std::string& path) {
    struct stat status = {};
    return path == "-" || (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode));
}

std::FILE* open(const std::string& path, bool asItIs) {
    if (path == "-") return stdout;
    return std::fopen((asItIs ? path : path + Unfinished).c_str(), "wbe");
}

}  // namespace

Output::Output(std::string path)
    : path_(std::move(path)), isStream_(isStream(path_)), file_(open(path_, isStream_)) {
    if (file_ == nullptr) throw cannot("write", path_);
}

Output::~Output() {
    if (file_ == nullptr || path_ == "-") return;
    std::fclose(file_);
    if (!isStream_) std::remove((path_ + Unfinished).c_str());
}

void Output::fail() const {
    if (path_ == "-" && errno == EPIPE) throw ClosedPipe();
    throw cannot("write", path_ == "-" ? "standard output" : path_);
}

void Output::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) fail();
}

void Output::flush() {
    if (std::fflush(file_) != 0) fail();
}

void Output::finish() {
    flush();
    if (path_ == "-") return;
    std::FILE* const file = file_;
    file_ = nullptr;
    const std::string part = path_ + Unfinished;
    if (std::fclose(file) == 0 && (isStream_ || std::rename(part.c_str(), path_.c_str()) == 0)) {
        return;
    }
    const int reason = errno;
    if (!isStream_) std::remove(part.c_str());
    errno = reason;
    fail();
}
