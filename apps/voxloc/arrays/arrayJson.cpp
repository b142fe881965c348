#include "arrays/arrayJson.h"

#include <cmath>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <limits>

#include "common/failure.h"
#include "common/text.h"

namespace {

constexpr int FormVersion = 1;

// A grid that suits most arrays: 227 azimuths up to 64.8 degrees to either side, 131 elevations up
// to 31.3 degrees up and down.
constexpr float DefaultAzimuth = -0.905f, DefaultElevation = -0.52f, DefaultStep = 0.008f;

/** Reads the fields of one JSON object; every complaint begins with the place and the field. */
class Fields {
  public:
    Fields(const Json& object, std::string where) : object_(object), where_(std::move(where)) {
        if (!object.is_object()) fail("", "must be an object in braces");
    }

    [[noreturn]] void fail(const std::string& field, const std::string& what) const {
        throw BadData(where_ + ": " + field + (field.empty() ? "" : ": ") + what);
    }

    void allow(std::initializer_list<const char*> names) const {
        for (const auto& entry : object_.items()) {
            bool isKnown = false;
            for (const char* name : names) isKnown = isKnown || entry.key() == name;
            if (!isKnown) fail(entry.key(), "is not a field of an array");
        }
    }

    const Json* find(const char* field) const {
        const auto found = object_.find(field);
        return found == object_.end() ? nullptr : &*found;
    }

    const Json& need(const char* field) const {
        const Json* value = find(field);
        if (value == nullptr) fail(field, "is missing");
        return *value;
    }

    float number(const Json& value, const std::string& field) const {
        if (!value.is_number()) fail(field, "must be a number");
        const double number = value.get<double>();
        if (!(std::fabs(number) <= static_cast<double>(std::numeric_limits<float>::max()))) {
            fail(field, "is beyond every sensible number");
        }
        return static_cast<float>(number);
    }

    std::int32_t integer(const Json& value, const std::string& field) const {
        if (!value.is_number_integer()) fail(field, "must be a whole number");
        // What does not fit becomes a channel that no array has.
        const auto number = value.is_number_unsigned() && value.get<std::uint64_t>() > 1000000
                                ? 1000000
                                : value.get<std::int64_t>();
        return static_cast<std::int32_t>(std::max<std::int64_t>(-1000000, number));
    }

    const Json& list(const Json& value, const std::string& field, std::size_t most) const {
        if (!value.is_array()) fail(field, "must be a list in brackets");
        if (value.size() > most) {
            fail(field, "has " + std::to_string(value.size()) + " entries, at most " +
                            std::to_string(most) + " are possible");
        }
        return value;
    }

    Position position(const Json& value, const std::string& field) const {
        if (!value.is_array() || value.size() != 3) {
            fail(field, "must be three numbers in metres: [x, y, z]");
        }
        return {number(value[0], field + "[0]"), number(value[1], field + "[1]"),
                number(value[2], field + "[2]")};
    }

    VoxlocPair pair(const Json& value, const std::string& field) const {
        if (!value.is_array() || value.size() != 2) fail(field, "must be two channels: [0, 1]");
        return {integer(value[0], field + "[0]"), integer(value[1], field + "[1]")};
    }

    std::int32_t pairs(const Json& value, const std::string& field, VoxlocPair* pairs) const {
        std::int32_t count = 0;
        for (const Json& entry : list(value, field, VOXLOC_MAX_PAIRS)) {
            pairs[count] = pair(entry, field + "[" + std::to_string(count) + "]");
            ++count;
        }
        return count;
    }

  private:
    const Json& object_;
    std::string where_;
};

void readGrid(const Fields& fields, const std::string& where, VoxlocArray& array) {
    array.minimumAzimuth = DefaultAzimuth;
    array.minimumElevation = DefaultElevation;
    array.angleInterval = DefaultStep;
    const Json* value = fields.find("grid");
    if (value == nullptr) return;
    const Fields grid(*value, where + ": grid");
    grid.allow({"lowest_azimuth_sine", "lowest_elevation_sine", "sine_step"});
    const auto read = [&grid](const char* field, float& to) {
        if (grid.find(field) != nullptr) to = grid.number(*grid.find(field), field);
    };
    read("lowest_azimuth_sine", array.minimumAzimuth);
    read("lowest_elevation_sine", array.minimumElevation);
    read("sine_step", array.angleInterval);
}

void readChannels(const Fields& fields, VoxlocArray& array) {
    array.voiceChannels = {0, array.channels > 1 ? 1 : 0};
    if (const Json* value = fields.find("voice_channels")) {
        array.voiceChannels = fields.pair(*value, "voice_channels");
    }
    array.noiseChannels = array.voiceChannels;
    if (const Json* value = fields.find("noise_channels")) {
        array.noiseChannels = fields.pair(*value, "noise_channels");
    }
    array.timeDomainVoiceChannel = array.voiceChannels.first;
    if (const Json* value = fields.find("time_domain_voice_channel")) {
        array.timeDomainVoiceChannel = fields.integer(*value, "time_domain_voice_channel");
    }
}

/** The library names its own fields; users know those of the file. */
std::string inFileTerms(std::string reason) {
    constexpr const char* Terms[][2] = {
        {"azimuthPairs", "azimuth_pairs"},
        {"elevationPairs", "elevation_pairs"},
        {"azimuthPair[", "azimuth_pairs["},
        {"elevationPair[", "elevation_pairs["},
        {"voiceChannels", "voice_channels"},
        {"noiseChannels", "noise_channels"},
        {"timeDomainVoiceChannel", "time_domain_voice_channel"},
        {"microphone[", "microphones["},
        {"channels:", "microphones:"},
        {"minimumAzimuth", "grid: lowest_azimuth_sine"},
        {"minimumElevation", "grid: lowest_elevation_sine"},
        {"angleInterval", "grid: sine_step"},
        {".first", "[0]"},
        {".second", "[1]"},
    };
    for (const auto& term : Terms) {
        const std::string from = term[0];
        for (std::size_t at = reason.find(from); at != std::string::npos;
             at = reason.find(from, at + 1)) {
            reason.replace(at, from.size(), term[1]);
        }
    }
    return reason;
}

/** The double whose shortest text is the float's. */
double asWritten(float value) {
    std::string text;
    appendNumber(text, value);
    return numberFrom(text).value_or(static_cast<double>(value));
}

Json positionToJson(const Position& position) {
    return {asWritten(position.x), asWritten(position.y), asWritten(position.z)};
}

Json pairsToJson(const VoxlocPair* pairs, std::int32_t count) {
    Json list = Json::array();
    for (std::int32_t i = 0; i < count; ++i) list.push_back({pairs[i].first, pairs[i].second});
    return list;
}

}  // namespace

NamedArray arrayFromJson(std::string_view text, const std::string& where) {
    const Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded()) throw BadData(where + ": is not JSON");
    const Fields fields(json, where);
    fields.allow({"voxloc_array", "name", "comment", "microphones", "azimuth_pairs",
                  "elevation_pairs", "grid", "voice_channels", "noise_channels",
                  "time_domain_voice_channel", "loudspeaker"});
    if (fields.integer(fields.need("voxloc_array"), "voxloc_array") != FormVersion) {
        fields.fail("voxloc_array", "must be " + std::to_string(FormVersion));
    }
    NamedArray result;
    result.name = where;
    if (const Json* name = fields.find("name")) {
        if (!name->is_string()) fields.fail("name", "must be a text");
        result.name = name->get<std::string>();
    }
    VoxlocArray& array = result.array;
    for (const Json& entry :
         fields.list(fields.need("microphones"), "microphones", VOXLOC_MAX_CHANNELS)) {
        array.microphone[array.channels] =
            fields.position(entry, "microphones[" + std::to_string(array.channels) + "]");
        ++array.channels;
    }
    array.azimuthPairs =
        fields.pairs(fields.need("azimuth_pairs"), "azimuth_pairs", array.azimuthPair);
    if (const Json* value = fields.find("elevation_pairs")) {
        array.elevationPairs = fields.pairs(*value, "elevation_pairs", array.elevationPair);
    }
    readGrid(fields, where, array);
    readChannels(fields, array);
    if (const Json* value = fields.find("loudspeaker")) {
        array.loudspeaker = fields.position(*value, "loudspeaker");
        array.attenuateLoudspeaker = 1;
    }
    char reason[VOXLOC_REASON_SIZE] = "";
    if (voxloc_checkArray(&array, reason) == 0) throw BadData(where + ": " + inFileTerms(reason));
    return result;
}

NamedArray readArrayFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) throw cannot("read the array", path);
    return arrayFromJson(text, path);
}

Json arrayToJson(const NamedArray& named) {
    const VoxlocArray& array = named.array;
    Json json{{"voxloc_array", FormVersion}, {"name", named.name}};
    Json microphones = Json::array();
    for (std::int32_t c = 0; c < array.channels; ++c) {
        microphones.push_back(positionToJson(array.microphone[c]));
    }
    json["microphones"] = std::move(microphones);
    json["azimuth_pairs"] = pairsToJson(array.azimuthPair, array.azimuthPairs);
    json["elevation_pairs"] = pairsToJson(array.elevationPair, array.elevationPairs);
    json["grid"] = {{"lowest_azimuth_sine", asWritten(array.minimumAzimuth)},
                    {"lowest_elevation_sine", asWritten(array.minimumElevation)},
                    {"sine_step", asWritten(array.angleInterval)}};
    json["voice_channels"] = {array.voiceChannels.first, array.voiceChannels.second};
    json["noise_channels"] = {array.noiseChannels.first, array.noiseChannels.second};
    json["time_domain_voice_channel"] = array.timeDomainVoiceChannel;
    if (array.attenuateLoudspeaker != 0) json["loudspeaker"] = positionToJson(array.loudspeaker);
    return json;
}
