/** The side file of a recording: labels that somebody set while it was made. */
#ifndef VOXLOC_APP_LIVE_MARK_FILE_H
#define VOXLOC_APP_LIVE_MARK_FILE_H

#include <cstdint>
#include <mutex>
#include <string>

/** RECORDING.marks.jsonl: {"type":"mark","frame","time","wall","label"} a line. */
class MarkFile {
  public:
    /** Makes the file anew. Throws BadData. */
    explicit MarkFile(const std::string& recording);
    ~MarkFile();
    MarkFile(const MarkFile&) = delete;
    MarkFile& operator=(const MarkFile&) = delete;

    /** From any thread. Says so and returns false when it cannot be written. */
    bool write(const std::string& label, std::uint64_t frame);

  private:
    std::string path_;
    int descriptor_;
    std::mutex mutex_;
};

#endif
