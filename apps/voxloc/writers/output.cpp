#include "writers/output.h"

#include <cerrno>

#include "common/failure.h"

namespace {

const std::string Unfinished = ".part";

}  // namespace

Output::Output(std::string path)
    : path_(std::move(path)),
      file_(path_ == "-" ? stdout : std::fopen((path_ + Unfinished).c_str(), "wbe")) {
    if (file_ == nullptr) throw cannot("write", path_);
}

Output::~Output() {
    if (file_ == nullptr || path_ == "-") return;
    std::fclose(file_);
    std::remove((path_ + Unfinished).c_str());
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
    if (std::fclose(file) != 0 || std::rename(part.c_str(), path_.c_str()) != 0) {
        const int reason = errno;
        std::remove(part.c_str());
        errno = reason;
        fail();
    }
}
