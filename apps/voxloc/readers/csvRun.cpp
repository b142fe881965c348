#include <algorithm>
#include <cmath>
#include <limits>

#include "common/failure.h"
#include "common/text.h"
#include "readers/runReader.h"

namespace {

constexpr double Largest = static_cast<double>(std::numeric_limits<float>::max());

/** A column's place in the lines, by the names in the line above them. */
class Columns {
  public:
    Columns(const LineReader& lines, std::vector<std::string> names)
        : lines_(lines), names_(std::move(names)) {}

    std::size_t size() const { return names_.size(); }
    const std::string& name(std::size_t column) const { return names_[column]; }

    std::size_t find(const std::string& name) const {
        const auto found = std::find(names_.begin(), names_.end(), name);
        return static_cast<std::size_t>(found - names_.begin());
    }

    std::size_t require(const std::string& name) const {
        const std::size_t column = find(name);
        if (column == size()) lines_.fail("column " + name + " is missing");
        return column;
    }

  private:
    const LineReader& lines_;
    std::vector<std::string> names_;
};

class CsvRun : public RunForm {
  public:
    explicit CsvRun(LineReader& lines) : lines_(lines), columns_(lines, names(lines)) {
        frame_ = columns_.require("frame");
        sample_ = columns_.require("sample");
        azimuth_ = columns_.require("azimuth");
        elevation_ = columns_.require("elevation");
        range_ = columns_.require("range");
        quality_ = columns_.require("quality");
        estimate_ = columns_.require("estimate");
        for (std::size_t i = 0; i < flags_.size(); ++i) {
            flags_[i] = columns_.require(FlagNames[i].name);
        }
        ultrasound_ = columns_.require("ultrasound_level");
        for (std::size_t c = 0; c < VOXLOC_MAX_CHANNELS; ++c) {
            const std::size_t column = columns_.find("level_" + std::to_string(c));
            if (column == columns_.size()) break;
            levels_.push_back(column);
        }
    }

    bool parse(const std::string& line, Record& record, std::string& summary) override {
        if (line.rfind("# {", 0) == 0) {
            summary = line.substr(2);
            return false;
        }
        cells_ = split(line, ',');
        if (cells_.size() != columns_.size()) {
            lines_.fail("has " + std::to_string(cells_.size()) + " columns instead of " +
                        std::to_string(columns_.size()));
        }
        take(record);
        return true;
    }

  private:
    static std::vector<std::string> names(LineReader& lines) {
        std::string line;
        if (!lines.read(line)) lines.fail("is the last one; the names of the columns are missing");
        return split(line, ',');
    }

    void take(Record& record) const {
        record.frame = count(frame_);
        record.sample = count(sample_);
        record.result.azimuth = number(azimuth_);
        record.result.elevation = number(elevation_);
        record.result.range = number(range_);
        record.result.quality = number(quality_);
        record.hasEstimate = bit(estimate_);
        for (std::size_t i = 0; i < flags_.size(); ++i) {
            if (bit(flags_[i])) record.result.flags |= 1u << FlagNames[i].bit;
        }
        record.ultrasoundLevel = number(ultrasound_);
        record.channels = static_cast<int>(levels_.size());
        for (std::size_t c = 0; c < levels_.size(); ++c) record.level[c] = number(levels_[c]);
    }

    [[noreturn]] void refuse(std::size_t column, const char* what) const {
        lines_.fail("column " + columns_.name(column) + " is " + inQuotes(cells_[column]) +
                    ", not " + what);
    }

    float number(std::size_t column) const {
        const auto value = numberFrom(cells_[column]);
        if (!value || (std::isfinite(*value) && std::fabs(*value) > Largest)) {
            refuse(column, "a number");
        }
        return static_cast<float>(*value);
    }

    std::uint64_t count(std::size_t column) const {
        const auto value = integerFrom(cells_[column]);
        if (!value || *value < 0) refuse(column, "a count");
        return static_cast<std::uint64_t>(*value);
    }

    bool bit(std::size_t column) const {
        const std::string& cell = cells_[column];
        if (cell != "0" && cell != "1") refuse(column, "0 or 1");
        return cell == "1";
    }

    LineReader& lines_;
    Columns columns_;
    std::size_t frame_, sample_, azimuth_, elevation_, range_, quality_, estimate_, ultrasound_;
    std::array<std::size_t, FlagNames.size()> flags_;
    std::vector<std::size_t> levels_;
    std::vector<std::string> cells_;
};

}  // namespace

std::unique_ptr<RunForm> csvRunForm(LineReader& lines) {
    return std::make_unique<CsvRun>(lines);
}
