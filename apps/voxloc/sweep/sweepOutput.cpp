#include "sweep/sweepOutput.h"

#include <array>
#include <cmath>

#include "arrays/arrayJson.h"
#include "common/table.h"

namespace {

struct Kind {
    const char* text;  // for people
    const char* name;  // for programs
    ErrorFigures SweepFigures::*figures;
};

constexpr std::array<Kind, 4> Kinds{{
    {"single frames, voice on", "frame_voice", &SweepFigures::frameWithVoice},
    {"single frames, at all times", "frame_always", &SweepFigures::frameAlways},
    {"half-second medians, voice on", "half_second_voice", &SweepFigures::halfWithVoice},
    {"half-second medians, at all times", "half_second_always", &SweepFigures::halfAlways},
}};

std::string number(double value, int digits) {
    if (std::isnan(value)) return "-";
    return std::isinf(value) ? "inf" : fixed(value, digits);
}

std::string percent(double share) {
    return std::isnan(share) ? "-" : fixed(100 * share, 1) + " %";
}

void addAngleRow(Table& table, const char* kind, const char* what, const Spread& spread) {
    table.add({kind, what, std::to_string(spread.count), number(spread.median, 2),
               number(spread.ninety, 2), percent(spread.gross), percent(spread.closer),
               percent(spread.close), "-"});
}

void addRangeRow(Table& table, const char* kind, const char* what, const Spread& spread) {
    table.add({kind, what, std::to_string(spread.count), number(spread.median, 2),
               number(spread.ninety, 2), "-", "-", "-", percent(spread.close)});
}

std::string errorTable(const SweepFigures& figures) {
    Table table("llrrrrrrr", {"estimates", "error of", "count", "median", "90 %", "> 15 deg",
                              "<= 0.5 deg", "<= 1 deg", "<= 0.5 m"});
    for (const Kind& kind : Kinds) {
        const ErrorFigures& errors = figures.*kind.figures;
        addAngleRow(table, kind.text, "azimuth deg", errors.azimuth);
        if (figures.geometry.hasElevation)
            addAngleRow(table, "", "elevation deg", errors.elevation);
        addRangeRow(table, "", "range m", errors.range);
        if (errors.toldRange.count < errors.range.count && errors.toldRange.count > 0) {
            addRangeRow(table, "", "range m, near", errors.toldRange);
        }
    }
    return table.text();
}

std::string geometryText(const GeometryFigures& geometry) {
    std::string text =
        "geometry: tells apart " + number(geometry.azimuthStep, 2) + " deg of azimuth";
    text += geometry.hasElevation ? ", " + number(geometry.elevationStep, 2) + " deg of elevation"
                                  : "; no pairs tell the elevation, which means nothing";
    text += "; " + number(geometry.rangeStep, 2) + " m of range (medians of the places)\n";
    if (geometry.toldTo == 0.0) {
        return text + "geometry: a metre of range is less than a lag everywhere: no range\n";
    }
    return text + "geometry: straight ahead a metre of range is a lag or more up to " +
           number(geometry.toldTo, 1) + " m, at " + percent(geometry.toldShare) +
           " of these places (near)\n";
}

Json numberJson(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json angleJson(const Spread& spread) {
    return {{"count", spread.count},
            {"median", numberJson(spread.median)},
            {"p90", numberJson(spread.ninety)},
            {"gross", numberJson(spread.gross)},
            {"within_0.5", numberJson(spread.closer)},
            {"within_1", numberJson(spread.close)}};
}

Json rangeJson(const Spread& spread) {
    return {{"count", spread.count},
            {"median", numberJson(spread.median)},
            {"p90", numberJson(spread.ninety)},
            {"within_0.5", numberJson(spread.close)}};
}

Json errorsJson(const ErrorFigures& errors) {
    return {{"azimuth", angleJson(errors.azimuth)},
            {"elevation", angleJson(errors.elevation)},
            {"range", rangeJson(errors.range)},
            {"range_near", rangeJson(errors.toldRange)}};
}

Json geometryJson(const GeometryFigures& geometry) {
    return {{"has_elevation", geometry.hasElevation},
            {"azimuth_step", numberJson(geometry.azimuthStep)},
            {"elevation_step", numberJson(geometry.elevationStep)},
            {"metres_per_lag", numberJson(geometry.rangeStep)},
            {"range_told_to", geometry.toldTo},
            {"range_told_share", numberJson(geometry.toldShare)}};
}

Json qualityJson(const std::vector<QualityRow>& rows) {
    Json all = Json::array();
    for (const QualityRow& row : rows) {
        Json one = {{"quality", std::round(row.quality * 100) / 100},
                    {"share", numberJson(row.share)}};
        one.update(angleJson(row.azimuth));
        all.push_back(one);
    }
    return all;
}

Json resultJson(const SweepResult& result) {
    const SweepFigures& figures = result.figures;
    Json json = {{"array", result.array},
                 {"sound", result.sound},
                 {"places", figures.places},
                 {"frames", figures.frames},
                 {"geometry", geometryJson(figures.geometry)}};
    for (const Kind& kind : Kinds) json[kind.name] = errorsJson(figures.*kind.figures);
    json["no_estimate"] = numberJson(figures.noEstimate);
    json["found_after"] = {{"median", numberJson(figures.foundMedian)},
                           {"p90", numberJson(figures.foundNinety)},
                           {"never", numberJson(figures.neverFound)}};
    json["voice"] = {{"hits", numberJson(figures.voiceHits)},
                     {"false_alarms", numberJson(figures.falseVoice)}};
    json["td_voice"] = {{"hits", numberJson(figures.timeVoiceHits)},
                        {"false_alarms", numberJson(figures.falseTimeVoice)}};
    json["quality_bins"] = qualityJson(figures.bins);
    json["quality_thresholds"] = qualityJson(figures.thresholds);
    return json;
}

void addCell(std::string& line, double value) {
    line += ",";
    if (!std::isnan(value)) line += number(value, 4);
}

std::string csvRow(const SweepResult& result, const Kind& kind) {
    const SweepFigures& figures = result.figures;
    const ErrorFigures& errors = figures.*kind.figures;
    std::string line = result.array + "," + kind.name + "," + std::to_string(errors.azimuth.count);
    for (const Spread* spread : {&errors.azimuth, &errors.elevation}) {
        for (const double value :
             {spread->median, spread->ninety, spread->gross, spread->closer, spread->close}) {
            addCell(line, value);
        }
    }
    for (const double value :
         {errors.range.median, errors.range.ninety, errors.range.close, figures.foundMedian,
          figures.foundNinety, figures.neverFound, figures.voiceHits, figures.falseVoice,
          figures.timeVoiceHits, figures.falseTimeVoice}) {
        addCell(line, value);
    }
    return line + "\n";
}

}  // namespace

std::string sweepText(const SweepResult& result) {
    const SweepFigures& figures = result.figures;
    std::string text = "array " + result.array + ", " + result.sound + ": " +
                       std::to_string(figures.places) + " places, " +
                       std::to_string(figures.frames) + " frames\n\n";
    text += errorTable(figures) + "\n" + geometryText(figures.geometry);
    text += "found after a jump: " + number(figures.foundMedian, 0) +
            " frames (90 %: " + number(figures.foundNinety, 0) + "), never " +
            percent(figures.neverFound) + "\n";
    text +=
        "no estimate: " + percent(figures.noEstimate) + " of the frames since the first place\n";
    text += "voice flag: on in " + percent(figures.voiceHits) +
            " of the frames with a talker, in " + percent(figures.falseVoice) +
            " of those long after; time-domain flag " + percent(figures.timeVoiceHits) + " and " +
            percent(figures.falseTimeVoice) + "\n";
    return text;
}

std::string sweepOverview(const std::vector<SweepResult>& results) {
    Table table("lrrrrrrrr",
                {"array", "azimuth median deg", "90 %", "> 15 deg", "elevation median deg", "90 %",
                 "range median m", "found after", "voice"});
    for (const SweepResult& result : results) {
        const SweepFigures& figures = result.figures;
        const ErrorFigures& errors = figures.frameWithVoice;
        table.add({result.array, number(errors.azimuth.median, 2), number(errors.azimuth.ninety, 2),
                   percent(errors.azimuth.gross), number(errors.elevation.median, 2),
                   number(errors.elevation.ninety, 2), number(errors.range.median, 2),
                   number(figures.foundMedian, 0), percent(figures.voiceHits)});
    }
    return table.text();
}

std::string sweepCsv(const std::vector<SweepResult>& results) {
    std::string text =
        "array,estimates,count,azimuth_median,azimuth_p90,azimuth_gross,azimuth_within_0.5,"
        "azimuth_within_1,elevation_median,elevation_p90,elevation_gross,elevation_within_0.5,"
        "elevation_within_1,range_median,range_p90,range_within_0.5,found_median,found_p90,"
        "never_found,voice_hits,voice_false_alarms,td_voice_hits,td_voice_false_alarms\n";
    for (const SweepResult& result : results) {
        for (const Kind& kind : Kinds) text += csvRow(result, kind);
    }
    return text;
}

std::string sweepJson(const std::vector<SweepResult>& results) {
    Json all = Json::array();
    for (const SweepResult& result : results) all.push_back(resultJson(result));
    // What a file's name holds need not be UTF-8; a replacement stands there.
    return all.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}
