#include "writers/summary.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/text.h"

namespace {

constexpr float NearDegrees = 15.0f;         // of the turn's recent azimuths: the same talker
constexpr std::size_t RecentFrames = 5;      // one stray among them does not count
constexpr std::size_t ElsewhereFrames = 12;  // half a second elsewhere: another talker
constexpr std::uint64_t SilentFrames = 12;   // half a second without voice ends a turn
constexpr std::uint64_t ShortestFrames = 6;  // a quarter of a second: shorter ones are no turns
constexpr std::size_t MostPlaces = 4096;     // kept of a turn

float median(std::vector<float> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double secondsOf(std::uint64_t frame) {
    return static_cast<double>(frame) * SecondsPerFrame;
}

double rounded(double value, double unit) {
    return std::round(value / unit) * unit;
}

/** A number of the summary: short, and without the noise of a rounding. */
double shortened(double value) {
    std::string text;
    appendFixed(text, rounded(value, 0.001), 3);
    return numberFrom(text).value_or(value);
}

void appendTime(std::string& text, double seconds) {
    const auto minutes = static_cast<long>(seconds / 60.0);
    text += std::to_string(minutes) + ":";
    const double rest = seconds - 60.0 * static_cast<double>(minutes);
    if (rest < 9.95) text += "0";
    appendFixed(text, rest, 1);
}

}  // namespace

void Summarizer::Stay::add(const Place& place) {
    if (places.empty()) first = place.frame;
    last = place.frame;
    if (places.size() == MostPlaces) {
        for (std::size_t i = 0; i < MostPlaces / 2; ++i) places[i] = places[2 * i];
        places.resize(MostPlaces / 2);
        step *= 2;
    }
    if ((place.frame - first) % step == 0) places.push_back(place);
}

Turn Summarizer::Stay::turn() const {
    const auto medianOf = [this](float Place::*member) {
        std::vector<float> values;
        for (const Place& place : places) values.push_back(place.*member);
        return median(std::move(values));
    };
    return {first,
            last,
            medianOf(&Place::azimuth),
            medianOf(&Place::elevation),
            medianOf(&Place::range),
            medianOf(&Place::quality)};
}

bool Summarizer::isNear(const Place& place) const {
    return std::fabs(place.azimuth - median(recent_)) <= NearDegrees;
}

void Summarizer::addPlace(const Place& place) {
    open_.add(place);
    if (recent_.size() == RecentFrames) recent_.erase(recent_.begin());
    recent_.push_back(place.azimuth);
}

void Summarizer::close() {
    if (!open_.places.empty() && open_.last - open_.first + 1 >= ShortestFrames) {
        if (closed_.turns.size() == mostTurns_) closed_.turns.erase(closed_.turns.begin());
        closed_.turns.push_back(open_.turn());
    }
    open_ = {};
    recent_.clear();
}

void Summarizer::add(const Record& record) {
    ++closed_.frames;
    const bool hasVoice = has(record, VOXLOC_FLAG_VOICE);
    if (hasVoice) ++closed_.voiceFrames;
    const TrackerResult& found = record.result;
    if (!hasVoice || !record.hasEstimate || std::isnan(found.azimuth)) {
        if (!open_.places.empty() && record.frame - open_.last > SilentFrames) {
            elsewhere_.clear();
            close();
        }
        return;
    }
    const float elevation =
        record.hasElevation ? found.elevation : std::numeric_limits<float>::quiet_NaN();
    const Place place{record.frame, found.azimuth, elevation, found.range, found.quality};
    if (!open_.places.empty() && !isNear(place)) {
        elsewhere_.push_back(place);
        if (elsewhere_.size() < ElsewhereFrames) return;
        close();
        for (const Place& other : elsewhere_) addPlace(other);
    } else {
        addPlace(place);
    }
    elsewhere_.clear();
}

Summary Summarizer::summary() const {
    Summarizer copy = *this;
    copy.close();
    return copy.closed_;
}

Json summaryToJson(const Summary& summary) {
    Json turns = Json::array();
    for (const Turn& turn : summary.turns) {
        turns.push_back({{"from", shortened(secondsOf(turn.firstFrame))},
                         {"to", shortened(secondsOf(turn.lastFrame + 1))},
                         {"azimuth", shortened(static_cast<double>(turn.azimuth))},
                         {"elevation", std::isnan(turn.elevation)
                                           ? Json()
                                           : Json(shortened(static_cast<double>(turn.elevation)))},
                         {"range", shortened(static_cast<double>(turn.range))},
                         {"quality", shortened(static_cast<double>(turn.quality))}});
    }
    const double share = summary.frames == 0 ? 0.0
                                             : static_cast<double>(summary.voiceFrames) /
                                                   static_cast<double>(summary.frames);
    return {{"type", "summary"},
            {"frames", summary.frames},
            {"seconds", shortened(secondsOf(summary.frames))},
            {"voice_share", shortened(share)},
            {"turns", std::move(turns)}};
}

std::string summaryToText(const Summary& summary) {
    std::string text = "# ";
    appendFixed(text, secondsOf(summary.frames), 1);
    text += " s in " + std::to_string(summary.frames) + " frames, voice in ";
    appendFixed(text,
                summary.frames == 0 ? 0.0
                                    : 100.0 * static_cast<double>(summary.voiceFrames) /
                                          static_cast<double>(summary.frames),
                0);
    text += " % of them, " + std::to_string(summary.turns.size()) +
            (summary.turns.size() == 1 ? " turn\n" : " turns\n");
    for (const Turn& turn : summary.turns) {
        text += "# ";
        appendTime(text, secondsOf(turn.firstFrame));
        text += " to ";
        appendTime(text, secondsOf(turn.lastFrame + 1));
        text += "  azimuth ";
        appendFixed(text, static_cast<double>(turn.azimuth), 1);
        if (!std::isnan(turn.elevation)) {
            text += "  elevation ";
            appendFixed(text, static_cast<double>(turn.elevation), 1);
        }
        text += "  range ";
        appendFixed(text, static_cast<double>(turn.range), 1);
        text += "  quality ";
        appendFixed(text, static_cast<double>(turn.quality), 2);
        text += "\n";
    }
    return text;
}
