/** Where results go: standard output, or a file that appears under its name only when finished. */
#ifndef VOXLOC_APP_WRITERS_OUTPUT_H
#define VOXLOC_APP_WRITERS_OUTPUT_H

#include <cstdio>
#include <string>
#include <string_view>

class Output {
  public:
    /**
     * "-" is standard output. A file is written as PATH.part first; a device or a named pipe as it
     * is. Throws BadData.
     */
    explicit Output(std::string path);
    /** Removes what was not finished. */
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /** Throws BadData when the disk is full, ClosedPipe when nobody reads. */
    void write(std::string_view text);
    void flush();

    /** Writes what is left and gives the file its name. What ended at damage is finished, too. */
    void finish();

  private:
    [[noreturn]] void fail() const;

    std::string path_;
    bool isStream_;
    std::FILE* file_;
};

#endif
