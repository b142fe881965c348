#include "live/pageJson.h"

#include <cmath>

#include "arrays/arrayJson.h"
#include "common/text.h"

namespace {

void appendShort(std::string& text, float value, int digits) {
    if (std::isfinite(value)) {
        appendFixed(text, static_cast<double>(value), digits);
    } else {
        text += "null";
    }
}

const char* nameOf(LiveState state) {
    switch (state) {
        case LiveState::Waiting:
            return "waiting";
        case LiveState::Ended:
            return "ended";
        default:
            return "running";
    }
}

std::string dumped(const Json& json) {
    // Names of devices and files may hold bytes that are no UTF-8.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string helloJson(const LiveAbout& about) {
    Json microphones = Json::array();
    const VoxlocArray& array = about.array.array;
    for (int c = 0; c < array.channels; ++c) {
        const Position& place = array.microphone[c];
        microphones.push_back({place.x, place.y, place.z});
    }
    Json flags = Json::array();
    for (const FlagName& flag : FlagNames) flags.push_back({flag.bit, flag.name});
    return dumped({{"version", voxloc_getVersion()},
                   {"array", about.array.name},
                   {"input", about.input},
                   {"recording", about.recording},
                   {"hasElevation", array.elevationPairs > 0},
                   {"microphones", std::move(microphones)},
                   {"flags", std::move(flags)},
                   {"framesPerSecond", static_cast<double>(SampleRate) / FRAME_SAMPLES},
                   {"historyFrames", about.historyFrames}});
}

void appendRecordJson(std::string& text, const Record& record) {
    const TrackerResult& found = record.result;
    text += "[" + std::to_string(record.frame) + ",";
    appendFixed(text, static_cast<double>(record.sample) / SampleRate, 3);
    const struct {
        float value;
        int digits;
    } fields[] = {{found.azimuth, 1}, {found.elevation, 1}, {found.range, 1}, {found.quality, 3}};
    for (const auto& field : fields) {
        text += ",";
        appendShort(text, field.value, field.digits);
    }
    text += "," + std::to_string(found.flags) + (record.hasEstimate ? ",1," : ",0,");
    appendShort(text, record.ultrasoundLevel, 1);
    for (int c = 0; c < record.channels; ++c) {
        text += ",";
        appendShort(text, record.level[static_cast<std::size_t>(c)], 1);
    }
    text += "]";
}

std::string recordsJson(const std::vector<Record>& records) {
    std::string text = "[";
    for (const Record& record : records) {
        if (text.size() > 1) text += ",";
        appendRecordJson(text, record);
    }
    return text + "]";
}

std::string statusJson(const LiveStatus& status, int channels) {
    Json microphones = Json::array();
    for (int c = 0; c < channels; ++c) {
        microphones.push_back(nameOf(status.microphones[static_cast<std::size_t>(c)]));
    }
    return dumped({{"state", nameOf(status.state)},
                   {"reason", status.reason},
                   {"overruns", status.overruns},
                   {"reopened", status.reopened},
                   {"unrecorded", status.unrecordedFrames},
                   {"microphones", std::move(microphones)}});
}

std::string markJson(const Mark& mark) {
    return dumped({{"frame", mark.frame}, {"label", mark.label}});
}
