/** Runs for the suites of what reads, compares and shows them. */
#ifndef VERIFY_UNIT_APP_RUN_RECORDS_H
#define VERIFY_UNIT_APP_RUN_RECORDS_H

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "appFiles.h"
#include "common/record.h"
#include "writers/recordWriter.h"

inline RunHeader runHeader(int channels = 3) {
    RunHeader header;
    header.array.name = "stick";
    header.array.array.channels = channels;
    header.input.name = "talk </script>.wav";
    header.input.kind = "WAV";
    header.input.channels = channels;
    return header;
}

/** Frames that differ from each other in everything. */
inline Record runRecord(std::uint64_t frame, int channels = 3) {
    const auto place = static_cast<float>(frame);
    Record record;
    record.frame = frame;
    record.sample = frame * FRAME_SAMPLES;
    record.result = {-60.0f + 0.1f * place, 0.3f * std::sin(place), 1.0f + 0.01f * place,
                     0.5f + 0.001f * place, 0};
    record.result.flags = static_cast<std::uint32_t>(frame % 64 | (frame % 2) << 7);
    record.hasEstimate = frame % 5 != 0;
    record.hasElevation = true;
    record.ultrasoundLevel = -70.25f;
    record.channels = channels;
    for (std::size_t c = 0; c < static_cast<std::size_t>(channels); ++c) {
        record.level[c] = -20.5f - static_cast<float>(c) - static_cast<float>(frame % 7);
    }
    return record;
}

inline std::vector<Record> runRecords(std::uint64_t frames) {
    std::vector<Record> records;
    for (std::uint64_t frame = 0; frame < frames; ++frame) records.push_back(runRecord(frame));
    return records;
}

inline std::string writeRun(const TemporaryFolder& folder, const std::string& name,
                            const std::vector<Record>& records, RecordForm form = RecordForm::Csv) {
    Output output(folder.path(name));
    RecordWriter writer(form, runHeader(), output);
    Summary summary;
    for (const Record& record : records) {
        writer.write(record);
        ++summary.frames;
    }
    writer.finish(summary);
    output.finish();
    return folder.path(name);
}

#endif
