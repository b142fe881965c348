#include "arrays/arrayReport.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "arrays/resolution.h"
#include "common/table.h"

namespace {

constexpr int AngleRows = 9;

std::string fromTo(double lowest, double highest, int digits) {
    return fixed(lowest, digits) + " to " + fixed(highest, digits);
}

std::string fieldOf(float lowest, float highest) {
    return fromTo(static_cast<double>(lowest), static_cast<double>(highest), 1);
}

std::string orNone(double value, int digits) {
    return std::isfinite(value) ? fixed(value, digits) : "-";
}

std::string extentText(const VoxlocArray& array) {
    const Position extent = extentOf(array);
    return fixed(static_cast<double>(extent.y), 3) + " x " +
           fixed(static_cast<double>(extent.z), 3) + " x " +
           fixed(static_cast<double>(extent.x), 3);
}

std::string searchText(const VoxlocGrid& grid) {
    return "search: azimuth " + fieldOf(grid.lowestAzimuth, grid.highestAzimuth) + " deg (" +
           std::to_string(grid.azimuths) + " points), elevation " +
           fieldOf(grid.lowestElevation, grid.highestElevation) + " deg (" +
           std::to_string(grid.elevations) + "), range " +
           fieldOf(grid.nearestRange, grid.farthestRange) + " m (" + std::to_string(grid.ranges) +
           ")\n";
}

void addPairs(Table& table, const std::vector<PairReach>& pairs, const char* purpose) {
    for (const PairReach& one : pairs) {
        table.add({std::to_string(one.pair.first) + "-" + std::to_string(one.pair.second), purpose,
                   fixed(one.spacing, 3), std::to_string(one.leastLag), std::to_string(one.mostLag),
                   std::to_string(one.mostLag - one.leastLag + 1), fixed(one.lowestFrequency, 0),
                   orNone(one.aliasFrequency, 0)});
    }
}

std::string pairTable(const Resolution& resolution) {
    Table table("llrrrrrr", {"pair", "for", "spacing m", "least lag", "most lag", "lags",
                             "used from Hz", "aliases from Hz"});
    addPairs(table, resolution.azimuthPairs(), "azimuth");
    addPairs(table, resolution.elevationPairs(), "elevation");
    return table.text();
}

/** A search is free of ghosts as long as one of its pairs is. */
std::string aliasText(const char* what, const std::vector<PairReach>& pairs) {
    double highest = 0.0;
    for (const PairReach& one : pairs) highest = std::max(highest, one.aliasFrequency);
    if (pairs.empty()) return std::string(what) + ": no pairs\n";
    return std::string(what) + ": every pair takes two directions for one from " +
           orNone(highest, 0) + " Hz on\n";
}

std::string azimuthTable(const Resolution& resolution) {
    Table table("rrrr", {"azimuth deg", "one lag deg", "grid step deg", "told apart deg"});
    for (const double azimuth : resolution.azimuths(AngleRows)) {
        const AngleResolution here = resolution.at(azimuth, 0.0);
        table.add({fixed(azimuth, 1), orNone(here.azimuthLag, 2), fixed(here.azimuthStep, 2),
                   orNone(here.azimuthOf(), 2)});
    }
    return table.text();
}

/** Elevations blur towards the sides; the middle, and as far out as the grid goes. */
std::string elevationTable(const Resolution& resolution) {
    const std::vector<double> azimuths = resolution.azimuths(3);
    Table table("rrrrr", {"elevation deg", "one lag deg", "grid step deg", "told apart deg",
                          "at azimuth " + fixed(azimuths.back(), 1)});
    for (const double elevation : resolution.elevations(AngleRows)) {
        const AngleResolution here = resolution.at(azimuths[1], elevation);
        const AngleResolution aside = resolution.at(azimuths.back(), elevation);
        table.add({fixed(elevation, 1), orNone(here.elevationLag, 2), fixed(here.elevationStep, 2),
                   orNone(here.elevationOf(), 2), orNone(aside.elevationOf(), 2)});
    }
    return table.text();
}

std::string rangeTable(const Resolution& resolution) {
    const std::vector<double> azimuths = resolution.azimuths(5);
    const std::vector<RangeResolution> ahead = resolution.ranges(azimuths[2]);
    const std::vector<RangeResolution> aside = resolution.ranges(azimuths[3]);
    const auto heading = [&](const char* what, std::size_t i) {
        return std::string(what) + " at " + fixed(azimuths[i], 1) + " deg";
    };
    Table table("rrrrr", {"range m", heading("lags beyond", 2), heading("m a lag", 2),
                          heading("lags beyond", 3), heading("m a lag", 3)});
    const std::size_t last = ahead.size() - 1;
    for (const std::size_t i : {std::size_t{0}, std::size_t{3}, std::size_t{8}, std::size_t{13},
                                std::size_t{18}, std::size_t{28}, std::size_t{38}, last}) {
        table.add({fixed(ahead[i].range, 1), fixed(ahead[i].lagsBeyond, 1),
                   orNone(ahead[i].metresPerLag, 2), fixed(aside[i].lagsBeyond, 1),
                   orNone(aside[i].metresPerLag, 2)});
    }
    return table.text();
}

}  // namespace

std::string listOfArrays() {
    Table table("lrrrr", {"name", "microphones", "width x height x depth m", "azimuth deg",
                          "elevation deg"});
    for (std::uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        const VoxlocProduct& product = *voxloc_getProduct(i);
        VoxlocGrid grid;
        voxloc_getGrid(&product.array, &grid);
        table.add({product.name, std::to_string(product.array.channels), extentText(product.array),
                   fieldOf(grid.lowestAzimuth, grid.highestAzimuth),
                   product.array.elevationPairs > 0
                       ? fieldOf(grid.lowestElevation, grid.highestElevation)
                       : "-"});
    }
    return table.text();
}

std::string reportOnArray(const NamedArray& named) {
    const Resolution resolution(named.array);
    std::string text = "array " + named.name + ": " + std::to_string(named.array.channels) +
                       " microphones, width x height x depth " + extentText(named.array) + " m\n";
    text += searchText(resolution.grid());
    text +=
        "told apart: what moves the lags by 1/192,000 s, or a step of the grid if that is more\n\n";
    text += pairTable(resolution) + "\n";
    text += aliasText("azimuth", resolution.azimuthPairs());
    text += aliasText("elevation", resolution.elevationPairs());
    text += "\n" + azimuthTable(resolution);
    if (named.array.elevationPairs > 0) text += "\n" + elevationTable(resolution);
    return text + "\n" + rangeTable(resolution);
}
