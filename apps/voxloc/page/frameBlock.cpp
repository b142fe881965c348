#include "page/frameBlock.h"

#include <cstring>
#include <limits>

#include "page/base64.h"

namespace {

constexpr std::size_t Fixed = 5;  // azimuth, elevation, range, quality, ultrasound level
constexpr std::size_t OfOther = 4;

std::uint8_t marksOf(const Record& record) {
    unsigned marks = record.hasEstimate ? 1u << FlagNames.size() : 0u;
    for (std::size_t i = 0; i < FlagNames.size(); i++) {
        if (has(record, FlagNames[i].bit)) marks |= 1u << i;
    }
    return static_cast<std::uint8_t>(marks);
}

void appendFloat(std::string& bytes, float value) {
    std::uint32_t word;
    std::memcpy(&word, &value, sizeof word);
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift & 255u);
}

}  // namespace

FrameBlock::FrameBlock(int channels, bool hasOther)
    : columns_(Fixed + static_cast<std::size_t>(channels) + (hasOther ? OfOther : 0)),
      channels_(channels),
      hasOther_(hasOther) {}

bool FrameBlock::takes(const Record& record) const {
    if (size() == 0) return true;
    return size() < MostFrames && record.channels == channels_ &&
           record.frame == firstFrame_ + size() &&
           record.sample == firstSample_ + size() * FRAME_SAMPLES;
}

void FrameBlock::add(const Record& record, const Record* other) {
    if (size() == 0) {
        firstFrame_ = record.frame;
        firstSample_ = record.sample;
    }
    const TrackerResult& result = record.result;
    std::size_t column = 0;
    for (const float value :
         {result.azimuth, result.elevation, result.range, result.quality, record.ultrasoundLevel}) {
        columns_[column++].push_back(value);
    }
    for (std::size_t c = 0; c < static_cast<std::size_t>(channels_); c++) {
        columns_[column++].push_back(record.level[c]);
    }
    marks_.push_back(marksOf(record));
    if (!hasOther_) return;
    constexpr float Nothing = std::numeric_limits<float>::quiet_NaN();
    const TrackerResult there =
        other != nullptr ? other->result : TrackerResult{Nothing, Nothing, Nothing, Nothing, 0};
    for (const float value : {there.azimuth, there.elevation, there.range, there.quality}) {
        columns_[column++].push_back(value);
    }
    otherMarks_.push_back(other != nullptr ? marksOf(*other) : std::uint8_t{0});
}

void FrameBlock::appendColumns(std::string& bytes) const {
    for (const std::vector<float>& column : columns_) {
        for (const float value : column) appendFloat(bytes, value);
    }
    bytes.append(marks_.begin(), marks_.end());
    bytes.append(otherMarks_.begin(), otherMarks_.end());
}

void FrameBlock::flush(std::string& page) {
    if (size() == 0) return;
    std::string bytes;
    appendColumns(bytes);
    page += "<script type=\"application/octet-stream\" class=\"frames\" data-first=\"" +
            std::to_string(firstFrame_) + "\" data-sample=\"" + std::to_string(firstSample_) +
            "\" data-count=\"" + std::to_string(size()) + "\">";
    appendBase64(page, bytes.data(), bytes.size());
    page += "</script>\n";
    for (std::vector<float>& column : columns_) column.clear();
    marks_.clear();
    otherMarks_.clear();
}
