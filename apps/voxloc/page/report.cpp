#include "page/report.h"

#include <string_view>

#include <nlohmann/json.hpp>

#include "page/dataElement.h"
#include "page/reportPage.h"

namespace {

using Json = nlohmann::ordered_json;

/** The page up to where a run's data goes, and from there on. */
struct Page {
    std::string_view head, tail;
};

Page page() {
    constexpr std::string_view Place = "<!--run-->";
    const std::size_t place = ReportPage.find(Place);
    return {ReportPage.substr(0, place), ReportPage.substr(place + Place.size())};
}

Json headToJson(const ReportHead& head) {
    Json flags = Json::array();
    for (const FlagName& flag : FlagNames) flags.push_back(flag.name);
    Json json = {{"rate", SampleRate}, {"frame_samples", FRAME_SAMPLES}, {"flags", flags}};
    json["channels"] = head.channels;
    json["header"] = Json::parse(head.header);
    json["other"] = head.otherHeader.empty() ? Json() : Json::parse(head.otherHeader);
    return json;
}

// A number that JSON lacks becomes null.
Json turnToJson(const Turn& turn) {
    return {{"first", turn.firstFrame},    {"last", turn.lastFrame}, {"azimuth", turn.azimuth},
            {"elevation", turn.elevation}, {"range", turn.range},    {"quality", turn.quality}};
}

Json endToJson(const Summary& summary, const Comparison* comparison, const ReportAudio* audio) {
    Json json = {{"frames", summary.frames}, {"voice_frames", summary.voiceFrames}};
    json["turns"] = Json::array();
    for (const Turn& turn : summary.turns) json["turns"].push_back(turnToJson(turn));
    json["comparison"] =
        comparison != nullptr ? Json::parse(comparisonToJson(*comparison)) : Json();
    json["audio_start"] =
        audio != nullptr ? Json(static_cast<double>(audio->firstSample()) / SampleRate) : Json();
    return json;
}

}  // namespace

ReportWriter::ReportWriter(const ReportHead& head, Output& output)
    : output_(output), block_(head.channels, !head.otherHeader.empty()) {
    output_.write(page().head);
    // What a name holds need not be UTF-8; the page shows a replacement there.
    output_.write(dataElement(
        "run-head", headToJson(head).dump(-1, ' ', false, Json::error_handler_t::replace)));
}

void ReportWriter::add(const Record& record, const Record* other) {
    if (!block_.takes(record)) flush();
    block_.add(record, other);
}

void ReportWriter::flush() {
    text_.clear();
    block_.flush(text_);
    output_.write(text_);
}

void ReportWriter::finish(const Summary& summary, const Comparison* comparison,
                          ReportAudio* audio) {
    flush();
    output_.write(dataElement("run-end", endToJson(summary, comparison, audio).dump()));
    if (audio != nullptr) audio->write(output_);
    output_.write(page().tail);
}
