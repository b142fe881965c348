#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>

#include "common/failure.h"
#include "common/text.h"
#include "readers/runReader.h"

namespace {

using nlohmann::json;

class JsonRun : public RunForm {
  public:
    explicit JsonRun(LineReader& lines) : lines_(lines) {}

    bool parse(const std::string& line, Record& record, std::string& summary) override {
        const json object = json::parse(line, nullptr, false);
        if (!object.is_object()) lines_.fail("is not a JSON object");
        const json type = object.value("type", json());
        if (type == "summary") {
            summary = line;
            return false;
        }
        if (type != "frame") lines_.fail("has type " + type.dump() + ", not frame or summary");
        take(object, record);
        return true;
    }

  private:
    void take(const json& object, Record& record) const {
        record.frame = count(object, "frame");
        record.sample = count(object, "sample");
        record.result.azimuth = number(field(object, "azimuth"), "azimuth");
        record.result.elevation = number(field(object, "elevation"), "elevation");
        record.result.range = number(field(object, "range"), "range");
        record.result.quality = number(field(object, "quality"), "quality");
        record.hasEstimate = bit(object, "estimate");
        const json& flags = field(object, "flags");
        if (!flags.is_object()) refuse("flags", flags, "an object");
        for (const FlagName& flag : FlagNames) {
            if (bit(flags, flag.name)) record.result.flags |= 1u << flag.bit;
        }
        record.ultrasoundLevel =
            number(field(object, "ultrasound_level"), "ultrasound_level", -Infinity);
        takeLevels(field(object, "level"), record);
    }

    void takeLevels(const json& levels, Record& record) const {
        if (!levels.is_array() || levels.size() > VOXLOC_MAX_CHANNELS) {
            refuse("level", levels, "a list of up to eight numbers");
        }
        record.channels = static_cast<int>(levels.size());
        for (std::size_t c = 0; c < levels.size(); ++c) {
            record.level[c] = number(levels[c], "level", -Infinity);
        }
    }

    [[noreturn]] void refuse(const char* name, const json& value, const char* what) const {
        lines_.fail(std::string(name) + " is " + value.dump(-1, ' ', true) + ", not " + what);
    }

    const json& field(const json& object, const char* name) const {
        const auto found = object.find(name);
        if (found == object.end()) lines_.fail(std::string(name) + " is missing");
        return *found;
    }

    static constexpr double Largest = static_cast<double>(std::numeric_limits<float>::max());
    // JSON has no word for what is not finite; of a level it is as a rule digital silence.
    static constexpr float Infinity = std::numeric_limits<float>::infinity();
    float number(const json& value, const char* name,
                 float null = std::numeric_limits<float>::quiet_NaN()) const {
        if (value.is_null()) return null;
        if (!value.is_number() || std::fabs(value.get<double>()) > Largest) {
            refuse(name, value, "a number");
        }
        return static_cast<float>(value.get<double>());
    }

    std::uint64_t count(const json& object, const char* name) const {
        const json& value = field(object, name);
        if (!value.is_number_unsigned()) refuse(name, value, "a count");
        return value.get<std::uint64_t>();
    }

    bool bit(const json& object, const char* name) const {
        const json& value = field(object, name);
        const std::uint64_t bit = value.is_number_unsigned() ? value.get<std::uint64_t>() : 2;
        if (bit > 1) refuse(name, value, "0 or 1");
        return bit == 1;
    }

    LineReader& lines_;
};

}  // namespace

std::unique_ptr<RunForm> jsonRunForm(LineReader& lines) {
    return std::make_unique<JsonRun>(lines);
}
