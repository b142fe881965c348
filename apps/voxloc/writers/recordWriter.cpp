#include "writers/recordWriter.h"

#include <cmath>

#include "common/text.h"

namespace {

std::string dumped(const Json& json) {
    // Names of files may hold bytes that are no UTF-8.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void appendTime(std::string& line, const Record& record, const std::optional<double>& clock) {
    const double seconds = static_cast<double>(record.sample) / SampleRate;
    if (clock) {
        line += wallTime(*clock + seconds);
    } else {
        appendFixed(line, seconds, 6);
    }
}

/** Digits of levels: hundredths of a decibel. */
void appendLevel(std::string& line, float level) {
    appendFixed(line, static_cast<double>(level), 2);
}

void appendOrNull(std::string& line, float value, void (*append)(std::string&, float)) {
    if (std::isfinite(value)) {
        append(line, value);
    } else {
        line += "null";
    }
}

void appendAligned(std::string& line, double value, int digits, std::size_t width) {
    std::string text;
    appendFixed(text, value, digits);
    line.append(text.size() < width ? width - text.size() : 1, ' ');
    line += text;
}

constexpr const char* TextHeading =
    "#       time  azimuth elevation  range quality  flags: voice, time-domain voice, sound, far "
    "end, "
    "noise input, ultrasound, position valid\n";
constexpr const char FlagLetters[] = "vtsfnup";

}  // namespace

RecordWriter::RecordWriter(RecordForm form, const RunHeader& header, Output& output)
    : form_(form), clock_(header.clock), output_(output) {
    const std::string json = dumped(headerToJson(header));
    switch (form_) {
        case RecordForm::JsonLines:
            output_.write(json + "\n");
            break;
        case RecordForm::Csv: {
            line_ = "# " + json + "\nframe,sample,time,azimuth,elevation,range,quality,estimate";
            for (const FlagName& flag : FlagNames) line_.append(",").append(flag.name);
            line_ += ",ultrasound_level";
            for (int c = 0; c < header.array.array.channels; ++c) {
                line_ += ",level_" + std::to_string(c);
            }
            output_.write(line_ + "\n");
            break;
        }
        case RecordForm::Text:
            output_.write("# voxloc " + std::string(voxloc_getVersion()) + ", array " +
                          header.array.name + ", " + header.input.name + "\n" + TextHeading);
            break;
    }
}

void RecordWriter::write(const Record& record) {
    line_.clear();
    switch (form_) {
        case RecordForm::JsonLines:
            writeJson(record);
            break;
        case RecordForm::Csv:
            writeCsv(record);
            break;
        case RecordForm::Text:
            writeText(record);
            break;
    }
    output_.write(line_);
}

void RecordWriter::writeText(const Record& record) {
    const TrackerResult& found = record.result;
    if (clock_) {
        appendTime(line_, record, clock_);
    } else {
        appendAligned(line_, static_cast<double>(record.sample) / SampleRate, 3, 12);
    }
    if (record.hasEstimate) {
        appendAligned(line_, static_cast<double>(found.azimuth), 1, 9);
        if (record.hasElevation) {
            appendAligned(line_, static_cast<double>(found.elevation), 1, 10);
        } else {
            line_ += "         -";
        }
        appendAligned(line_, static_cast<double>(found.range), 1, 7);
    } else {
        line_ += "        -         -      -";
    }
    appendAligned(line_, static_cast<double>(found.quality), 3, 8);
    line_ += "  ";
    for (std::size_t i = 0; i < FlagNames.size(); ++i) {
        line_ += has(record, FlagNames[i].bit) ? FlagLetters[i] : '.';
    }
    line_ += "\n";
}

void RecordWriter::writeCsv(const Record& record) {
    const TrackerResult& found = record.result;
    line_ += std::to_string(record.frame) + "," + std::to_string(record.sample) + ",";
    appendTime(line_, record, clock_);
    for (const float value : {found.azimuth, found.elevation, found.range, found.quality}) {
        line_ += ",";
        appendNumber(line_, value);
    }
    line_ += record.hasEstimate ? ",1" : ",0";
    for (const FlagName& flag : FlagNames) line_ += has(record, flag.bit) ? ",1" : ",0";
    line_ += ",";
    appendLevel(line_, record.ultrasoundLevel);
    for (int c = 0; c < record.channels; ++c) {
        line_ += ",";
        appendLevel(line_, record.level[static_cast<std::size_t>(c)]);
    }
    line_ += "\n";
}

void RecordWriter::writeJson(const Record& record) {
    const TrackerResult& found = record.result;
    line_ += "{\"type\":\"frame\",\"frame\":" + std::to_string(record.frame) +
             ",\"sample\":" + std::to_string(record.sample) + ",\"time\":";
    if (clock_) line_ += '"';
    appendTime(line_, record, clock_);
    if (clock_) line_ += '"';
    const struct {
        const char* name;
        float value;
    } fields[] = {{"azimuth", found.azimuth},
                  {"elevation", found.elevation},
                  {"range", found.range},
                  {"quality", found.quality}};
    for (const auto& field : fields) {
        line_.append(",\"").append(field.name).append("\":");
        appendOrNull(line_, field.value, appendNumber);
    }
    line_.append(",\"estimate\":").append(record.hasEstimate ? "1" : "0").append(",\"flags\":{");
    for (std::size_t i = 0; i < FlagNames.size(); ++i) {
        line_.append(i == 0 ? "\"" : ",\"").append(FlagNames[i].name);
        line_.append(has(record, FlagNames[i].bit) ? "\":1" : "\":0");
    }
    line_ += "},\"ultrasound_level\":";
    appendOrNull(line_, record.ultrasoundLevel, appendLevel);
    line_ += ",\"level\":[";
    for (int c = 0; c < record.channels; ++c) {
        if (c > 0) line_ += ",";
        appendOrNull(line_, record.level[static_cast<std::size_t>(c)], appendLevel);
    }
    line_ += "]}\n";
}

void RecordWriter::finish(const Summary& summary) {
    switch (form_) {
        case RecordForm::JsonLines:
            output_.write(dumped(summaryToJson(summary)) + "\n");
            break;
        case RecordForm::Csv:
            output_.write("# " + dumped(summaryToJson(summary)) + "\n");
            break;
        case RecordForm::Text:
            output_.write(summaryToText(summary));
            break;
    }
}
