#include "sweep/errorMaps.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace {

constexpr int FewestAzimuths = 4, MostAzimuths = 24;  // cells for places drawn at random

MapAxis axisOf(const Span& span, int gridSteps, int cells) {
    const double width = span.high - span.low;
    if (gridSteps == 1) {
        const double middle = 0.5 * (span.low + span.high);
        return {middle, middle, 1, true};
    }
    if (!(width > 0.0)) return {span.low, span.high, 1, gridSteps > 0};
    if (gridSteps == 0 || gridSteps > MostMapCells) return {span.low, span.high, cells, false};
    const double step = width / (gridSteps - 1);
    return {span.low - 0.5 * step, span.high + 0.5 * step, gridSteps, true};
}

using Coordinate = double Direction::*;

/** Frames and places of one cell, as if nobody had talked elsewhere. */
class Cells {
  public:
    Cells(const SweepRun& run, const MapAxis& across, const MapAxis& up, Coordinate coordinate)
        : run_(run), cellOf_(run.places.size()), newIndex_(run.places.size()) {
        for (std::size_t i = 0; i < run.places.size(); ++i) {
            const Direction& place = run.places[i];
            cellOf_[i] = {up.cellOf(place.*coordinate), across.cellOf(place.azimuth)};
            SweepRun& part = partOf(i);
            newIndex_[i] = static_cast<std::int32_t>(part.places.size());
            part.places.push_back(place);
        }
        for (const SweepFrame& frame : run.frames) {
            if (frame.place < 0) continue;
            const auto i = static_cast<std::size_t>(frame.place);
            SweepRun& part = partOf(i);
            part.frames.push_back(frame);
            part.frames.back().place = newIndex_[i];
        }
    }

    std::vector<MapCell> figures(int framesAtPlace) const {
        std::vector<MapCell> cells;
        for (const auto& [at, part] : parts_) {
            cells.push_back({at.second, at.first, figuresOf(part, framesAtPlace)});
        }
        return cells;
    }

  private:
    using Key = std::pair<int, int>;  // up, across

    SweepRun& partOf(std::size_t place) {
        SweepRun& part = parts_[cellOf_[place]];
        if (part.places.empty()) part.array = run_.array;
        return part;
    }

    const SweepRun& run_;
    std::vector<Key> cellOf_;
    std::vector<std::int32_t> newIndex_;
    std::map<Key, SweepRun> parts_;
};

ErrorMap mapOf(const SweepRun& run, const MapAxis& across, const MapAxis& up, Coordinate coordinate,
               int framesAtPlace) {
    return {across, up, Cells(run, across, up, coordinate).figures(framesAtPlace)};
}

}  // namespace

int MapAxis::cellOf(double value) const {
    if (!(high > low)) return 0;
    const int cell = static_cast<int>(std::floor((value - low) / (high - low) * cells));
    return std::clamp(cell, 0, cells - 1);
}

ErrorMaps errorMapsOf(const SweepRun& run, const SweepJob& job) {
    const Field field = fieldOf(run.array.array, job.choice);
    const GridSteps steps = job.choice.grid.value_or(GridSteps{});
    const double places = static_cast<double>(run.places.size());
    const int cells =
        std::clamp(static_cast<int>(std::lround(std::sqrt(places))), FewestAzimuths, MostAzimuths);
    const MapAxis azimuths = axisOf(field.azimuth, steps.azimuths, cells);
    const MapAxis elevations = axisOf(field.elevation, steps.elevations, cells / 2);
    const MapAxis ranges = axisOf(field.range, steps.ranges, cells / 2);
    return {mapOf(run, azimuths, elevations, &Direction::elevation, job.framesAtPlace),
            mapOf(run, azimuths, ranges, &Direction::range, job.framesAtPlace)};
}
