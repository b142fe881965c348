#include "readers/file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "common/failure.h"

void File::Close::operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
}

File::File(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      file_(path == "-" ? stdin : std::fopen(path.c_str(), "rbe")) {
    if (file_ == nullptr) throw cannot("open", path);
    struct stat about = {};
    if (fstat(fileno(file_.get()), &about) == 0 && S_ISDIR(about.st_mode)) {
        throw BadData(name_ + " is a directory");
    }
}

std::size_t File::readAhead(void* to, std::size_t size) {
    const std::size_t taken = std::min(size, aheadEnd_ - aheadBegin_);
    std::memcpy(to, ahead_ + aheadBegin_, taken);
    aheadBegin_ += taken;
    return taken;
}

std::size_t File::read(void* to, std::size_t size) {
    std::size_t taken = readAhead(to, size);
    if (taken < size) {
        taken += std::fread(static_cast<char*>(to) + taken, 1, size - taken, file_.get());
        if (std::ferror(file_.get()) != 0) throw cannot("read", name_);
    }
    position_ += taken;
    return taken;
}

std::size_t File::peek(unsigned char* to, std::size_t size) {
    if (aheadBegin_ == aheadEnd_) {
        aheadBegin_ = 0;
        aheadEnd_ = std::fread(ahead_, 1, sizeof ahead_, file_.get());
        if (std::ferror(file_.get()) != 0) throw cannot("read", name_);
    }
    const std::size_t seen = std::min(size, aheadEnd_ - aheadBegin_);
    std::memcpy(to, ahead_ + aheadBegin_, seen);
    return seen;
}

std::optional<std::uint64_t> File::size() const {
    struct stat about = {};
    if (fstat(fileno(file_.get()), &about) != 0 || !S_ISREG(about.st_mode)) return {};
    return static_cast<std::uint64_t>(about.st_size);
}
