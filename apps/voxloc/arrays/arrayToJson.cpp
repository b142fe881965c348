#include "arrays/arrayJson.h"
#include "common/text.h"

namespace {

/** The double whose shortest text is the float's. */
double asWritten(float value) {
    std::string text;
    appendNumber(text, value);
    return numberFrom(text).value_or(static_cast<double>(value));
}

Json positionToJson(const Position& position) {
    return Json{asWritten(position.x), asWritten(position.y), asWritten(position.z)};
}

Json pairsToJson(const VoxlocPair* pairs, std::int32_t count) {
    Json list = Json::array();
    for (std::int32_t i = 0; i < count; ++i) list.push_back({pairs[i].first, pairs[i].second});
    return list;
}

}  // namespace

Json arrayToJson(const NamedArray& named) {
    const VoxlocArray& array = named.array;
    Json json{{"voxloc_array", ArrayFormVersion}, {"name", named.name}};
    if (named.product) json["product"] = voxloc_findProduct(*named.product)->name;
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
    const Position& loudspeaker = array.loudspeaker;
    const bool isOn = array.attenuateLoudspeaker != 0;
    if (isOn || loudspeaker.x != 0.0f || loudspeaker.y != 0.0f || loudspeaker.z != 0.0f) {
        json["loudspeaker"] = positionToJson(loudspeaker);
        json["attenuate_loudspeaker"] = isOn;
    }
    return json;
}

std::string arrayToText(const NamedArray& named) {
    std::string text = "{\n";
    const Json json = arrayToJson(named);
    for (const auto& entry : json.items()) {
        text += "  " + Json(entry.key()).dump() + ": ";
        if (entry.key() == "microphones") {
            text += "[";
            for (std::size_t i = 0; i < entry.value().size(); ++i) {
                text += (i == 0 ? "\n    " : ",\n    ") + entry.value()[i].dump();
            }
            text += "\n  ]";
        } else {
            text += entry.value().dump();
        }
        text += ",\n";
    }
    text.erase(text.size() - 2, 1);  // the last comma
    return text + "}\n";
}
