/** A file of a test's own, and what a recording holds. */
#ifndef VERIFY_KIT_TEMPORARY_FILE_H
#define VERIFY_KIT_TEMPORARY_FILE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/** A file name of a test's own, gone at its end. */
class TemporaryFile {
  public:
    TemporaryFile() : path_(::testing::TempDir() + "voxlocRecordingXXXXXX") {
        close(mkstemp(path_.data()));
    }
    ~TemporaryFile() { unlink(path_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* path() const { return path_.c_str(); }
    std::string content() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

  private:
    std::string path_;
};

inline std::string bytesOf(const void* data, std::size_t size) {
    return {static_cast<const char*>(data), size};
}

/** What one frame adds to a recording. */
inline std::string recordOf(std::uint32_t bits, std::uint32_t flags,
                            const std::vector<float>& frame) {
    return bytesOf(&bits, 4) + bytesOf(&flags, 4) + bytesOf(frame.data(), frame.size() * 4);
}

#endif
