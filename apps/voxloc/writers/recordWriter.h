/** Records as text for people, CSV or JSON lines. */
#ifndef VOXLOC_APP_WRITERS_RECORD_WRITER_H
#define VOXLOC_APP_WRITERS_RECORD_WRITER_H

#include <memory>
#include <string>

#include "common/record.h"
#include "writers/header.h"
#include "writers/output.h"
#include "writers/summary.h"

enum class RecordForm { Text, Csv, JsonLines };

class RecordWriter {
  public:
    /** Writes the header. */
    RecordWriter(RecordForm form, const RunHeader& header, Output& output);
    void write(const Record& record);
    /** The last record. */
    void finish(const Summary& summary);

  private:
    void writeText(const Record& record);
    void writeCsv(const Record& record);
    void writeJson(const Record& record);

    RecordForm form_;
    std::optional<double> clock_;
    Output& output_;
    std::string line_;
};

#endif
