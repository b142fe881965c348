/** An input as a file. */
#ifndef VERIFY_FUZZ_MEMORY_FILE_H
#define VERIFY_FUZZ_MEMORY_FILE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "fuzz.h"

/** A file in memory alone. */
class MemoryFile {
  public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor_(memfd_create("input", 0)) {
        demand(write(descriptor_, data, size) == static_cast<ssize_t>(size), "memory for a file");
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    int descriptor_;
};

#endif
