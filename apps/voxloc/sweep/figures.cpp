#include "sweep/figures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "arrays/resolution.h"

namespace {

// Of quality: finer where noise and echoes put it.
constexpr std::array<double, 14> BinEdges{0.0, 0.03, 0.06, 0.1, 0.15, 0.2, 0.3,
                                          0.4, 0.5,  0.6,  0.7, 0.8,  0.9, 1.0};
constexpr double FineStep = 0.01, FineEnd = 0.2, CoarseStep = 0.05, CoarseEnd = 1.2;

/** The value that a share of the sorted ones is no larger than. */
double atShare(const std::vector<double>& sorted, double share) {
    if (sorted.empty()) return NotKnown;
    const auto rank =
        static_cast<std::size_t>(std::ceil(share * static_cast<double>(sorted.size())));
    return sorted[std::max<std::size_t>(rank, 1) - 1];
}

double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return atShare(values, 0.5);
}

double shareOf(std::size_t count, std::size_t all) {
    return all == 0 ? NotKnown : static_cast<double>(count) / static_cast<double>(all);
}

/** Share of the sorted values that are no larger. */
double shareWithin(const std::vector<double>& sorted, double limit) {
    const auto end = std::upper_bound(sorted.begin(), sorted.end(), limit);
    return shareOf(static_cast<std::size_t>(end - sorted.begin()), sorted.size());
}

void sortErrors(std::vector<double>& errors) {
    for (double& error : errors) {
        error = std::isnan(error) ? std::numeric_limits<double>::infinity() : std::fabs(error);
    }
    std::sort(errors.begin(), errors.end());
}

struct Errors {
    std::vector<double> azimuth, elevation, range, toldRange;

    ErrorFigures figures() const {
        return {angleSpread(azimuth), angleSpread(elevation), rangeSpread(range),
                rangeSpread(toldRange)};
    }
};

/** A position, by a frame or by several. */
struct Found {
    double azimuth, elevation, range;
};

Found foundIn(const SweepFrame& frame) {
    return {static_cast<double>(frame.result.azimuth), static_cast<double>(frame.result.elevation),
            static_cast<double>(frame.result.range)};
}

Found mediansOf(const std::vector<Found>& all) {
    std::vector<double> azimuths, elevations, ranges;
    for (const Found& one : all) {
        // Not a number: beyond all others, and out of every field of view.
        azimuths.push_back(std::isnan(one.azimuth) ? 180.0 : one.azimuth);
        elevations.push_back(one.elevation);
        ranges.push_back(one.range);
    }
    return {medianOf(azimuths), medianOf(elevations), medianOf(ranges)};
}

bool hasVoice(const SweepFrame& frame) {
    return voxloc_getFlag(VOXLOC_FLAG_VOICE, frame.result.flags) != 0;
}

bool isSettledVoice(const SweepFrame& frame, int framesAtPlace) {
    return frame.place >= 0 && frame.since >= SettlingFrames && frame.since < framesAtPlace &&
           frame.hasEstimate && hasVoice(frame);
}

/** Goes over a run once. */
class Counter {
  public:
    Counter(const SweepRun& run, int framesAtPlace)
        : run_(run),
          framesAtPlace_(framesAtPlace),
          hasElevation_(run.array.array.elevationPairs > 0) {
        const Resolution resolution(run.array.array);
        for (const Direction& place : run.places)
            metresPerLag_.push_back(perLag(resolution, place));
    }

    void fill(SweepFigures& figures) {
        Errors withVoice, always;
        std::size_t none = 0, since = 0;
        for (const SweepFrame& frame : run_.frames) {
            countVoice(frame);
            if (frame.place < 0) continue;
            ++since;
            if (!frame.hasEstimate) ++none;
            if (frame.hasEstimate) add(always, frame.place, foundIn(frame));
            if (isSettledVoice(frame, framesAtPlace_)) add(withVoice, frame.place, foundIn(frame));
        }
        figures.frameWithVoice = withVoice.figures();
        figures.frameAlways = always.figures();
        figures.noEstimate = shareOf(none, since);
        figures.halfWithVoice = halfSeconds(true).figures();
        figures.halfAlways = halfSeconds(false).figures();
        fillVoice(figures);
        fillFound(figures);
        fillGeometry(figures.geometry);
    }

  private:
    static double perLag(const Resolution& resolution, const Direction& place) {
        const std::vector<RangeResolution> ranges = resolution.ranges(place.azimuth);
        const auto next = std::find_if(ranges.begin(), ranges.end(), [&](const RangeResolution& r) {
            return r.range >= place.range;
        });
        return next == ranges.end() ? ranges.back().metresPerLag : next->metresPerLag;
    }

    void add(Errors& errors, std::int32_t place, const Found& found) const {
        const auto index = static_cast<std::size_t>(place);
        const Direction& truth = run_.places[index];
        errors.azimuth.push_back(angleBetween(found.azimuth, truth.azimuth));
        if (hasElevation_) {
            errors.elevation.push_back(angleBetween(found.elevation, truth.elevation));
        }
        errors.range.push_back(found.range - truth.range);
        if (metresPerLag_[index] <= 1.0) errors.toldRange.push_back(found.range - truth.range);
    }

    /** Stretches that end with a place and begin anew with the next. */
    Errors halfSeconds(bool onlyWithVoice) const {
        Errors errors;
        std::vector<Found> found;
        for (std::size_t i = 0; i < run_.frames.size(); ++i) {
            const SweepFrame& frame = run_.frames[i];
            if (frame.place < 0) continue;
            const bool counts =
                onlyWithVoice ? isSettledVoice(frame, framesAtPlace_) : frame.hasEstimate;
            if (counts) found.push_back(foundIn(frame));
            const bool isLast =
                i + 1 == run_.frames.size() || run_.frames[i + 1].place != frame.place;
            if ((frame.since + 1) % HalfSecond != 0 && !isLast) continue;
            if (!found.empty()) add(errors, frame.place, mediansOf(found));
            found.clear();
        }
        return errors;
    }

    void countVoice(const SweepFrame& frame) {
        const bool isTime = voxloc_getFlag(VOXLOC_FLAG_TD_VOICE, frame.result.flags) != 0;
        Voices& voices = frame.isTalking ? talking_ : silent_;
        if (!frame.isTalking && !frame.isLongSilent) return;
        ++voices.frames;
        if (hasVoice(frame)) ++voices.found;
        if (isTime) ++voices.foundInTime;
    }

    void fillVoice(SweepFigures& figures) const {
        figures.talking = talking_.frames;
        figures.voiceHits = shareOf(talking_.found, talking_.frames);
        figures.timeVoiceHits = shareOf(talking_.foundInTime, talking_.frames);
        figures.falseVoice = shareOf(silent_.found, silent_.frames);
        figures.falseTimeVoice = shareOf(silent_.foundInTime, silent_.frames);
    }

    void fillFound(SweepFigures& figures) const {
        std::vector<double> after;
        std::size_t jumps = 0;
        int inARow = 0;
        bool isFound = true;
        for (const SweepFrame& frame : run_.frames) {
            if (frame.place < 0 || frame.since >= framesAtPlace_) continue;
            if (frame.since == 0) {
                isFound = frame.place % PlacesInARow == 0;  // no jump: the first of its row
                if (!isFound) ++jumps;
                inARow = 0;
            }
            const double truth = run_.places[static_cast<std::size_t>(frame.place)].azimuth;
            const double error = angleBetween(static_cast<double>(frame.result.azimuth), truth);
            inARow = frame.hasEstimate && error <= FoundDegrees ? inARow + 1 : 0;
            if (isFound || inARow < FoundFrames) continue;
            isFound = true;
            after.push_back(frame.since - FoundFrames + 1);
        }
        std::sort(after.begin(), after.end());
        figures.foundMedian = atShare(after, 0.5);
        figures.foundNinety = atShare(after, 0.9);
        figures.neverFound = shareOf(jumps - after.size(), jumps);
    }

    void fillGeometry(GeometryFigures& geometry) const {
        const Resolution resolution(run_.array.array);
        std::vector<double> azimuths, elevations;
        std::size_t told = 0;
        for (std::size_t i = 0; i < run_.places.size(); ++i) {
            const AngleResolution at =
                resolution.at(run_.places[i].azimuth, run_.places[i].elevation);
            azimuths.push_back(at.azimuthOf());
            elevations.push_back(at.elevationOf());
            if (metresPerLag_[i] <= 1.0) ++told;
        }
        geometry.hasElevation = hasElevation_;
        geometry.azimuthStep = medianOf(azimuths);
        if (hasElevation_) geometry.elevationStep = medianOf(elevations);
        geometry.rangeStep = medianOf(metresPerLag_);
        geometry.toldShare = shareOf(told, run_.places.size());
        for (const RangeResolution& range : resolution.ranges(0.0)) {
            if (range.metresPerLag > 1.0) break;
            geometry.toldTo = range.range;
        }
    }

    struct Voices {
        std::size_t frames = 0, found = 0, foundInTime = 0;
    };

    const SweepRun& run_;
    int framesAtPlace_;
    bool hasElevation_;
    std::vector<double> metresPerLag_;
    Voices talking_, silent_;
};

struct Judged {
    double quality, error;
};

/** Settled frames with a voice: what a user of the result would look at. */
std::vector<Judged> judgedFrames(const SweepRun& run, int framesAtPlace) {
    std::vector<Judged> judged;
    for (const SweepFrame& frame : run.frames) {
        if (!isSettledVoice(frame, framesAtPlace)) continue;
        const double truth = run.places[static_cast<std::size_t>(frame.place)].azimuth;
        judged.push_back({static_cast<double>(frame.result.quality),
                          angleBetween(static_cast<double>(frame.result.azimuth), truth)});
    }
    return judged;
}

std::vector<double> thresholdsTried() {
    std::vector<double> thresholds;
    for (int i = 0; i * FineStep < FineEnd - 1e-9; ++i) thresholds.push_back(i * FineStep);
    for (int i = 0; FineEnd + i * CoarseStep <= CoarseEnd + 1e-9; ++i) {
        thresholds.push_back(FineEnd + i * CoarseStep);
    }
    return thresholds;
}

QualityRow rowOf(const std::vector<Judged>& judged, double from, double to) {
    std::vector<double> errors;
    for (const Judged& one : judged) {
        if (one.quality >= from && one.quality < to) errors.push_back(one.error);
    }
    return {from, shareOf(errors.size(), judged.size()), angleSpread(errors)};
}

}  // namespace

double angleBetween(double a, double b) {
    return std::fabs(std::remainder(a - b, 360.0));
}

Spread angleSpread(std::vector<double> errors) {
    sortErrors(errors);
    const double within = shareWithin(errors, GrossDegrees);
    return {errors.size(),
            atShare(errors, 0.5),
            atShare(errors, 0.9),
            1.0 - within,
            shareWithin(errors, CloseDegrees),
            shareWithin(errors, CloserDegrees)};
}

Spread rangeSpread(std::vector<double> errors) {
    sortErrors(errors);
    return {errors.size(),
            atShare(errors, 0.5),
            atShare(errors, 0.9),
            NotKnown,
            shareWithin(errors, CloseMetres),
            NotKnown};
}

SweepFigures figuresOf(const SweepRun& run, int framesAtPlace) {
    SweepFigures figures;
    figures.places = run.places.size();
    figures.frames = run.frames.size();
    Counter(run, framesAtPlace).fill(figures);
    const std::vector<Judged> judged = judgedFrames(run, framesAtPlace);
    const double infinite = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < BinEdges.size(); ++i) {
        const double to = i + 1 < BinEdges.size() ? BinEdges[i + 1] : infinite;
        figures.bins.push_back(rowOf(judged, BinEdges[i], to));
    }
    for (const double from : thresholdsTried()) {
        figures.thresholds.push_back(rowOf(judged, from, infinite));
    }
    return figures;
}
