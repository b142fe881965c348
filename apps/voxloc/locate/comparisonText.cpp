#include <cmath>

#include <nlohmann/json.hpp>

#include "common/text.h"
#include "locate/compare.h"

namespace {

using Json = nlohmann::ordered_json;

std::string aligned(double value, int digits, std::size_t width) {
    std::string text;
    if (std::isinf(value)) {
        text = "one has none";
    } else {
        appendFixed(text, value, digits);
    }
    return std::string(text.size() < width ? width - text.size() : 1, ' ') + text;
}

std::string aligned(float value, int digits, std::size_t width) {
    return aligned(static_cast<double>(value), digits, width);
}

std::string changesOf(const FrameDifference& difference) {
    std::string text = difference.estimate ? " estimate" : "";
    for (std::size_t i = 0; i < FlagNames.size(); ++i) {
        if ((difference.flags >> i & 1u) != 0) text.append(" ").append(FlagNames[i].name);
    }
    return text;
}

std::string countsOf(const Comparison& comparison) {
    std::string text = std::to_string(comparison.frames) + " frames compared, " +
                       std::to_string(comparison.differing) + " differ, " +
                       std::to_string(comparison.beyond) + " beyond the tolerance of ";
    std::string tolerance;
    appendNumber(tolerance, static_cast<float>(comparison.tolerance));
    text += tolerance + " degrees";
    if (comparison.onlyHere > 0) {
        text += ", " + std::to_string(comparison.onlyHere) + " in this run alone";
    }
    if (comparison.onlyThere > 0) {
        text += ", " + std::to_string(comparison.onlyThere) + " in the other alone";
    }
    return text + "\n";
}

std::string flagChangesOf(const Comparison& comparison) {
    std::string text;
    for (std::size_t i = 0; i < FlagNames.size(); ++i) {
        if (comparison.flagChanges[i] == 0) continue;
        text += text.empty() ? "frames whose flags differ: " : ", ";
        text += std::string(FlagNames[i].name) + " " + std::to_string(comparison.flagChanges[i]);
    }
    return text.empty() ? text : text + "\n";
}

// Infinity, which JSON lacks, becomes null.
Json rowOf(const FrameDifference& difference) {
    return {{"frame", difference.frame},         {"azimuth", difference.azimuth},
            {"elevation", difference.elevation}, {"range", difference.range},
            {"quality", difference.quality},     {"flags", difference.flags},
            {"estimate", difference.estimate}};
}

}  // namespace

std::string comparisonToText(const Comparison& comparison) {
    std::string text = "compared with " + comparison.name + ": " + countsOf(comparison);
    if (comparison.differing == 0) return text;
    text += "largest differences: azimuth" + aligned(comparison.azimuth, 2, 0) + ", elevation" +
            aligned(comparison.elevation, 2, 0) + ", range" + aligned(comparison.range, 2, 0) +
            ", quality" + aligned(comparison.quality, 4, 0) + "\n" + flagChangesOf(comparison) +
            "   frame      time   azimuth elevation   range  quality  changed\n";
    for (const FrameDifference& row : comparison.worst) {
        const std::string frame = std::to_string(row.frame);
        text += std::string(frame.size() < 8 ? 8 - frame.size() : 1, ' ') + frame +
                aligned(static_cast<double>(row.sample) / SampleRate, 3, 10) +
                aligned(row.azimuth, 2, 10) + aligned(row.elevation, 2, 10) +
                aligned(row.range, 2, 8) + aligned(row.quality, 4, 9) +
                (row.flags != 0 || row.estimate ? " " : "") + changesOf(row) + "\n";
    }
    return text;
}

std::string comparisonToJson(const Comparison& comparison) {
    Json json = {{"name", comparison.name},
                 {"tolerance", comparison.tolerance},
                 {"frames", comparison.frames},
                 {"differing", comparison.differing},
                 {"beyond", comparison.beyond},
                 {"only_here", comparison.onlyHere},
                 {"only_there", comparison.onlyThere},
                 {"azimuth", comparison.azimuth},
                 {"elevation", comparison.elevation},
                 {"range", comparison.range},
                 {"quality", comparison.quality},
                 {"flag_changes", Json::object()},
                 {"worst", Json::array()}};
    for (std::size_t i = 0; i < FlagNames.size(); ++i) {
        json["flag_changes"][FlagNames[i].name] = comparison.flagChanges[i];
    }
    for (const FrameDifference& row : comparison.worst) json["worst"].push_back(rowOf(row));
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}
