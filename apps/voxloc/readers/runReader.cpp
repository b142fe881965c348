#include "readers/runReader.h"

#include <nlohmann/json.hpp>

#include "common/failure.h"
#include "writers/header.h"

namespace {

constexpr std::size_t ReadSize = 1 << 16;
constexpr std::size_t LongestLine = 1 << 24;  // a summary of a hundred thousand turns

void checkHeader(const LineReader& lines, const std::string& text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object() || json.value("type", nlohmann::json()) != "header") {
        lines.fail("is not the header of a run; voxloc locate writes one as CSV or JSON lines");
    }
    const auto schema = json.value("schema", nlohmann::json());
    if (schema != SchemaVersion) {
        lines.fail("the run has schema " + schema.dump() + ", this program reads " +
                   std::to_string(SchemaVersion));
    }
}

}  // namespace

bool LineReader::fill() {
    ahead_.erase(0, begin_);
    begin_ = 0;
    const std::size_t kept = ahead_.size();
    ahead_.resize(kept + ReadSize);
    ahead_.resize(kept + file_.read(&ahead_[kept], ReadSize));
    return ahead_.size() > kept;
}

bool LineReader::read(std::string& line) {
    std::size_t searched = 0;  // what has no line's end in it
    std::size_t end;
    while ((end = ahead_.find('\n', begin_ + searched)) == std::string::npos) {
        searched = ahead_.size() - begin_;
        if (searched > LongestLine) {
            ++number_;
            fail("is longer than 16 MiB");
        }
        if (!fill()) break;
    }
    if (end == std::string::npos && begin_ == ahead_.size()) return false;
    ++number_;
    line.assign(ahead_, begin_, end == std::string::npos ? end : end - begin_);
    begin_ = end == std::string::npos ? ahead_.size() : end + 1;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

void LineReader::fail(const std::string& text) const {
    throw BadData(file_.name() + ": line " + std::to_string(number_) + ": " + text);
}

RunReader::RunReader(const std::string& path) : lines_(path) {
    if (!lines_.read(line_)) throw BadData(lines_.name() + ": is empty, not a run");
    const bool isCsv = line_.rfind("# {", 0) == 0;
    header_ = isCsv ? line_.substr(2) : line_;
    checkHeader(lines_, header_);
    form_ = isCsv ? csvRunForm(lines_) : jsonRunForm(lines_);
}

RunReader::~RunReader() = default;

bool RunReader::read(Record& record) {
    if (!summary_.empty()) return false;
    if (!lines_.read(line_)) lines_.fail("is the last one; the run was cut off before its summary");
    record = {};
    if (form_->parse(line_, record, summary_)) {
        checkOrder(record);
        return true;
    }
    if (lines_.read(line_)) lines_.fail("comes after the summary");
    return false;
}

void RunReader::checkOrder(const Record& record) {
    if (frames_ > 0 && record.frame <= lastFrame_) {
        lines_.fail("frame " + std::to_string(record.frame) + " comes after frame " +
                    std::to_string(lastFrame_));
    }
    lastFrame_ = record.frame;
    ++frames_;
}
