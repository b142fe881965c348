/** A disk with only so much space, as far as one process can tell. */
#ifndef VERIFY_KIT_FILE_SIZE_LIMIT_H
#define VERIFY_KIT_FILE_SIZE_LIMIT_H

#include <sys/resource.h>

#include <cstddef>

/** A limit on the size of every file that the process writes, like a disk with so much space. */
class FileSizeLimit {
  public:
    explicit FileSizeLimit(std::size_t bytes) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit now = before_;
        now.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &now);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit before_{};
};

#endif
