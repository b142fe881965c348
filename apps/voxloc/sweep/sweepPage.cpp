#include "sweep/sweepPage.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cmath>

#include "arrays/arrayDrawing.h"
#include "arrays/arrayJson.h"
#include "page/dataElement.h"
#include "page/reportPage.h"

namespace {

/** Four digits after the point are more than anybody reads off a map. */
Json rounded(double value) {
    return std::isfinite(value) ? Json(std::round(value * 1e4) / 1e4) : Json(nullptr);
}

Json axisToJson(const MapAxis& axis) {
    return {{"low", axis.low}, {"high", axis.high}, {"cells", axis.cells}, {"grid", axis.isGrid}};
}

Json angleToJson(const Spread& spread) {
    return {spread.count, rounded(spread.median), rounded(spread.ninety), rounded(spread.gross)};
}

Json errorsToJson(const ErrorFigures& errors) {
    return {{"azimuth", angleToJson(errors.azimuth)},
            {"elevation", angleToJson(errors.elevation)},
            {"range", angleToJson(errors.range)}};
}

Json cellToJson(const MapCell& cell) {
    const SweepFigures& figures = cell.figures;
    return {{"across", cell.across},
            {"up", cell.up},
            {"places", figures.places},
            {"told",
             {{"azimuth", rounded(figures.geometry.azimuthStep)},
              {"elevation", rounded(figures.geometry.elevationStep)},
              {"range", rounded(figures.geometry.rangeStep)}}},
            {"frame_voice", errorsToJson(figures.frameWithVoice)},
            {"frame_always", errorsToJson(figures.frameAlways)},
            {"half_second_voice", errorsToJson(figures.halfWithVoice)},
            {"half_second_always", errorsToJson(figures.halfAlways)}};
}

Json mapToJson(const ErrorMap& map) {
    Json cells = Json::array();
    for (const MapCell& cell : map.cells) cells.push_back(cellToJson(cell));
    return {{"across", axisToJson(map.across)}, {"up", axisToJson(map.up)}, {"cells", cells}};
}

Json dataToJson(const SweepPageData& data) {
    Json maps = Json::array();
    for (const ErrorMaps& one : data.maps) {
        maps.push_back({{"elevation", mapToJson(one.elevation)}, {"range", mapToJson(one.range)}});
    }
    return {{"version", voxloc_getVersion()},
            {"command", data.command},
            {"gross_degrees", GrossDegrees},
            {"sweeps", Json::parse(sweepJson(data.results))},
            {"maps", maps}};
}

/** As a shell takes it. */
std::string quoted(const std::string& word) {
    const bool isPlain =
        !word.empty() && word.find_first_not_of(
                             "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                             "-_.,/+=:@%") == std::string::npos;
    if (isPlain) return word;
    std::string text = "'";
    for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

bool changesNoFigure(const std::string& option) {
    constexpr std::array<const char*, 4> Names{"--csv", "--json", "--report", "--jobs"};
    return std::find(Names.begin(), Names.end(), option) != Names.end();
}

}  // namespace

void addSweepPageOption(CLI::App& command, std::string& file) {
    command.add_option("--report", file,
                       "Write a page with maps of the errors that opens without a network");
}

std::string sweepCommandLine(const CLI::App& command) {
    std::string text = "voxloc " + command.get_name();
    for (const CLI::Option* option : command.get_options()) {
        const std::string name = option->get_name();
        if (option->count() == 0 || changesNoFigure(name)) continue;
        if (option->get_expected_max() == 0) {
            text += " " + name;
            continue;
        }
        // A value that begins with a minus would look like another option.
        for (const std::string& value : option->results()) {
            text += " " + name + (value.rfind('-', 0) == 0 ? "=" : " ") + quoted(value);
        }
    }
    return text;
}

std::string sweepPageText(const SweepPageData& data) {
    constexpr std::string_view Place = "<!--sweep-->";
    const std::size_t place = SweepPage.find(Place);
    std::string text(SweepPage.substr(0, place));
    for (const NamedArray& array : data.arrays) {
        text += "<template class=\"views\">" + drawViews(array) + "</template>\n";
    }
    // What a name holds need not be UTF-8; the page shows a replacement there.
    text +=
        dataElement("sweep", dataToJson(data).dump(-1, ' ', false, Json::error_handler_t::replace));
    return text.append(SweepPage.substr(place + Place.size()));
}
