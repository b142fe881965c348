#include "arrays/arrayJson.h"

#include <filesystem>
#include <set>
#include <vector>

#include "arrays/jsonFields.h"
#include "common/failure.h"
#include "common/text.h"
#include "readers/file.h"

namespace {

constexpr std::size_t LongestFile = 1 << 20;  // bytes; an array takes about a thousand
constexpr int DeepestNesting = 16;            // an array takes three

// A grid that suits most arrays: 227 azimuths up to 64.8 degrees to either side, 131 elevations up
// to 31.3 degrees up and down.
constexpr float DefaultAzimuth = -0.905f, DefaultElevation = -0.52f, DefaultStep = 0.008f;

/** What an array is called that says nothing of its name. */
std::string nameOfFile(const std::string& path) {
    const std::string stem = std::filesystem::path(path).stem().string();
    return isArrayName(stem) ? stem : "array";
}

void readGrid(const JsonFields& fields, const std::string& where, VoxlocArray& array) {
    array.minimumAzimuth = DefaultAzimuth;
    array.minimumElevation = DefaultElevation;
    array.angleInterval = DefaultStep;
    const Json* value = fields.find("grid");
    if (value == nullptr) return;
    const JsonFields grid(*value, where + ": grid");
    grid.allow({"lowest_azimuth_sine", "lowest_elevation_sine", "sine_step"});
    const auto read = [&grid](const char* field, float& to) {
        if (grid.find(field) != nullptr) to = grid.number(*grid.find(field), field);
    };
    read("lowest_azimuth_sine", array.minimumAzimuth);
    read("lowest_elevation_sine", array.minimumElevation);
    read("sine_step", array.angleInterval);
}

/** Reads a field if it is there; returns whether it was. */
template <typename To, typename Read>
bool readIfThere(const JsonFields& fields, const char* field, To& to, const Read& read) {
    const Json* value = fields.find(field);
    if (value != nullptr) to = read(*value, field);
    return value != nullptr;
}

void readChannels(const JsonFields& fields, ArrayDraft& draft) {
    VoxlocArray& array = draft.named.array;
    const auto pair = [&](const Json& value, const char* field) {
        return fields.pair(value, field);
    };
    const auto channel = [&](const Json& value, const char* field) {
        return fields.integer(value, field);
    };
    array.voiceChannels = {0, array.channels > 1 ? 1 : 0};
    draft.hasVoiceChannels = readIfThere(fields, "voice_channels", array.voiceChannels, pair);
    array.noiseChannels = array.voiceChannels;
    draft.hasNoiseChannels = readIfThere(fields, "noise_channels", array.noiseChannels, pair);
    array.timeDomainVoiceChannel = array.voiceChannels.first;
    draft.hasTimeDomainVoiceChannel =
        readIfThere(fields, "time_domain_voice_channel", array.timeDomainVoiceChannel, channel);
}

void readMicrophones(const JsonFields& fields, VoxlocArray& array) {
    for (const Json& entry :
         fields.list(fields.need("microphones"), "microphones", VOXLOC_MAX_CHANNELS)) {
        array.microphone[array.channels] =
            fields.position(entry, "microphones[" + std::to_string(array.channels) + "]");
        ++array.channels;
    }
}

void readPairs(const JsonFields& fields, ArrayDraft& draft) {
    VoxlocArray& array = draft.named.array;
    draft.hasAzimuthPairs = readIfThere(fields, "azimuth_pairs", array.azimuthPairs,
                                        [&](const Json& value, const char* field) {
                                            return fields.pairs(value, field, array.azimuthPair);
                                        });
    draft.hasElevationPairs = readIfThere(
        fields, "elevation_pairs", array.elevationPairs, [&](const Json& value, const char* field) {
            return fields.pairs(value, field, array.elevationPair);
        });
}

void readLoudspeaker(const JsonFields& fields, VoxlocArray& array) {
    const Json* position = fields.find("loudspeaker");
    const Json* attenuate = fields.find("attenuate_loudspeaker");
    if (position != nullptr) {
        array.loudspeaker = fields.position(*position, "loudspeaker");
        array.attenuateLoudspeaker = 1;
    }
    if (attenuate == nullptr) return;
    const bool isOn = fields.truth(*attenuate, "attenuate_loudspeaker");
    if (isOn && position == nullptr) {
        fields.fail("attenuate_loudspeaker", "needs the field loudspeaker");
    }
    array.attenuateLoudspeaker = isOn ? 1 : 0;
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

bool areSame(const VoxlocArray& one, const VoxlocArray& other) {
    return arrayToJson({"", one, {}}) == arrayToJson({"", other, {}});
}

/** A built-in array keeps what belongs to it alone: its grid, its upside-down check. */
void readProduct(const JsonFields& fields, NamedArray& named) {
    const Json* value = fields.find("product");
    if (value == nullptr) return;
    const std::string name = fields.line(*value, "product");
    const VoxlocProduct* product = voxloc_findProductByName(name.c_str());
    if (product == nullptr) fields.fail("product", "no built-in array is called " + inQuotes(name));
    if (!areSame(product->array, named.array)) {
        fields.fail("product", "this is not the built-in array " + name +
                                   " any more: leave the field out of an array of your own");
    }
    named.product = product->type;
}

/** Refuses what the parser would pass over: fields that are there twice, bottomless nesting. */
class ParserGuard {
  public:
    explicit ParserGuard(const std::string& where) : where_(where) {}

    bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
        if (depth > DeepestNesting) throw BadData(where_ + ": is nested too deeply");
        if (event == Json::parse_event_t::object_start) seen_.emplace_back();
        if (event == Json::parse_event_t::object_end) seen_.pop_back();
        if (event == Json::parse_event_t::key) {
            const std::string key = parsed.get<std::string>();
            if (!seen_.back().insert(key).second) {
                throw BadData(where_ + ": " + inQuotes(key) + ": is there twice");
            }
        }
        return true;
    }

  private:
    const std::string& where_;
    std::vector<std::set<std::string>> seen_;
};

Json parsed(std::string_view text, const std::string& where) {
    ParserGuard guard(where);
    try {
        return Json::parse(text, [&guard](int depth, Json::parse_event_t event, Json& value) {
            return guard(depth, event, value);
        });
    } catch (const Json::parse_error& error) {
        throw BadData(where + ": is not JSON from byte " + std::to_string(error.byte) + " on");
    } catch (const Json::out_of_range&) {
        throw BadData(where + ": holds a number beyond every sensible one");
    }
}

}  // namespace

ArrayDraft draftFromJson(std::string_view text, const std::string& where) {
    const Json json = parsed(text, where);
    const JsonFields fields(json, where);
    fields.allow({"voxloc_array", "name", "comment", "product", "microphones", "azimuth_pairs",
                  "elevation_pairs", "grid", "voice_channels", "noise_channels",
                  "time_domain_voice_channel", "loudspeaker", "attenuate_loudspeaker"});
    if (fields.integer(fields.need("voxloc_array"), "voxloc_array") != ArrayFormVersion) {
        fields.fail("voxloc_array", "must be " + std::to_string(ArrayFormVersion));
    }
    ArrayDraft draft;
    draft.named.name = nameOfFile(where);
    readIfThere(fields, "name", draft.named.name,
                [&](const Json& value, const char* field) { return fields.line(value, field); });
    readMicrophones(fields, draft.named.array);
    readPairs(fields, draft);
    readGrid(fields, where, draft.named.array);
    readChannels(fields, draft);
    readLoudspeaker(fields, draft.named.array);
    readProduct(fields, draft.named);
    return draft;
}

void checkArray(const NamedArray& named, const std::string& where) {
    if (named.product) return;
    char reason[VOXLOC_REASON_SIZE] = "";
    if (voxloc_checkArray(&named.array, reason) == 0) {
        throw BadData(where + ": " + inFileTerms(reason));
    }
}

NamedArray arrayFromJson(std::string_view text, const std::string& where) {
    const ArrayDraft draft = draftFromJson(text, where);
    if (!draft.hasAzimuthPairs) {
        throw BadData(where + ": azimuth_pairs: is missing; voxloc arrays suggest chooses pairs");
    }
    checkArray(draft.named, where);
    return draft.named;
}

std::string readArrayText(const std::string& path) {
    File file(path);
    std::string text(LongestFile + 1, '\0');
    text.resize(file.read(text.data(), text.size()));
    if (text.size() > LongestFile) {
        throw BadData(file.name() + ": is no array: longer than a megabyte");
    }
    return text;
}

NamedArray readArrayFile(const std::string& path) {
    return arrayFromJson(readArrayText(path), path == "-" ? "standard input" : path);
}
