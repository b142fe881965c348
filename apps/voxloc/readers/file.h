/** A file or standard input that is read from front to back. */
#ifndef VOXLOC_APP_READERS_FILE_H
#define VOXLOC_APP_READERS_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

class File {
  public:
    /** "-" is standard input. Throws BadData: no such file, a directory ... */
    explicit File(const std::string& path);

    /** Up to `size` bytes; fewer at the end alone. Throws BadData when reading fails. */
    std::size_t read(void* to, std::size_t size);

    /** The next bytes without taking them, up to 16; fewer when the file ends before. */
    std::size_t peek(unsigned char* to, std::size_t size);

    const std::string& name() const { return name_; }
    std::uint64_t position() const { return position_; }
    /** Bytes in all, where that can be known. */
    std::optional<std::uint64_t> size() const;

  private:
    struct Close {
        void operator()(std::FILE* file) const;
    };
    std::size_t readAhead(void* to, std::size_t size);

    std::string name_;  // "standard input" for "-"
    std::unique_ptr<std::FILE, Close> file_;
    unsigned char ahead_[16] = {};
    std::size_t aheadBegin_ = 0, aheadEnd_ = 0;
    std::uint64_t position_ = 0;
};

#endif
