/** Reads a run that was written as CSV or JSON lines. */
#ifndef VOXLOC_APP_READERS_RUN_READER_H
#define VOXLOC_APP_READERS_RUN_READER_H

#include <cstdint>
#include <memory>
#include <string>

#include "common/record.h"
#include "readers/file.h"

/** Lines of a file, with their numbers. */
class LineReader {
  public:
    /** "-" is standard input. Throws BadData. */
    explicit LineReader(const std::string& path) : file_(path) {}

    /** The next line without its end; false at the end of the file. Throws BadData. */
    bool read(std::string& line);

    /** Throws BadData "NAME: line N: TEXT", N that of the line read last. */
    [[noreturn]] void fail(const std::string& text) const;

    const std::string& name() const { return file_.name(); }

  private:
    bool fill();

    File file_;
    std::string ahead_;
    std::size_t begin_ = 0;  // of what is left of ahead_
    std::uint64_t number_ = 0;
};

/** One of the forms that a run is written in. */
class RunForm {
  public:
    RunForm() = default;
    virtual ~RunForm() = default;
    RunForm(const RunForm&) = delete;
    RunForm& operator=(const RunForm&) = delete;

    /** A frame's line into the record; false when it is the summary, which then stands alone. */
    virtual bool parse(const std::string& line, Record& record, std::string& summary) = 0;
};

class RunReader {
  public:
    /** Reads the header. Throws BadData, as read() does: "NAME: line N: what is wrong". */
    explicit RunReader(const std::string& path);
    ~RunReader();

    /** JSON. */
    const std::string& header() const { return header_; }

    /** The next frame; false behind the last one. A run without its summary was cut off. */
    bool read(Record& record);

    /** JSON; known when read() has given false. */
    const std::string& summary() const { return summary_; }

  private:
    void checkOrder(const Record& record);

    LineReader lines_;
    std::unique_ptr<RunForm> form_;
    std::string line_, header_, summary_;
    std::uint64_t frames_ = 0, lastFrame_ = 0;
};

/** The forms. Both say what is wrong through lines.fail(). */
std::unique_ptr<RunForm> csvRunForm(LineReader& lines);
std::unique_ptr<RunForm> jsonRunForm(LineReader& lines);

#endif
