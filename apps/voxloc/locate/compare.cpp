#include "locate/compare.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();

/** there - here; 0 when both are NaN or the same infinity, infinite when only one is a number. */
float difference(float here, float there) {
    if (std::isnan(here) && std::isnan(there)) return 0.0f;
    if (here == there) return 0.0f;
    const float result = there - here;
    if (std::isnan(result)) return Infinity;
    return result;
}

/** The same of two angles in degrees, the short way round. */
float turned(float here, float there) {
    const float straight = difference(here, there);
    return std::isinf(straight) ? straight : std::remainder(straight, 360.0f);
}

double magnitude(float value) {
    return static_cast<double>(std::fabs(value));
}

unsigned differingFlags(const Record& here, const Record& there) {
    unsigned flags = 0;
    for (std::size_t i = 0; i < FlagNames.size(); ++i) {
        if (has(here, FlagNames[i].bit) != has(there, FlagNames[i].bit)) flags |= 1u << i;
    }
    return flags;
}

bool isSame(const FrameDifference& difference) {
    return difference.degrees == 0.0 && difference.flags == 0 && !difference.estimate;
}

/** An estimate that one lacks, then the larger one, then differing flags, then the earlier. */
bool isWorse(const FrameDifference& a, const FrameDifference& b) {
    if (a.estimate != b.estimate) return a.estimate;
    if (a.degrees != b.degrees) return a.degrees > b.degrees;
    if ((a.flags != 0) != (b.flags != 0)) return a.flags != 0;
    return a.frame < b.frame;
}

void keepLarger(float& largest, float value) {
    largest = std::max(largest, std::fabs(value));
}

}  // namespace

FrameDifference differenceOf(const Record& here, const Record& there) {
    FrameDifference result;
    result.frame = here.frame;
    result.sample = here.sample;
    result.flags = differingFlags(here, there);
    result.estimate = here.hasEstimate != there.hasEstimate;
    result.quality = difference(here.result.quality, there.result.quality);
    if (here.hasEstimate && there.hasEstimate) {
        result.azimuth = turned(here.result.azimuth, there.result.azimuth);
        if (here.hasElevation) {
            result.elevation = turned(here.result.elevation, there.result.elevation);
        }
        result.range = difference(here.result.range, there.result.range);
    }
    result.degrees = std::max({magnitude(result.azimuth), magnitude(result.elevation),
                               magnitude(result.range) / RangePerDegree,
                               magnitude(result.quality) / QualityPerDegree});
    return result;
}

Comparer::Comparer(const std::string& path, double tolerance) : reader_(path) {
    result_.name = path == "-" ? "standard input" : path;
    result_.tolerance = tolerance;
    advance();
}

void Comparer::advance() {
    hasOther_ = hasOther_ && reader_.read(other_);
}

const Record* Comparer::add(const Record& record) {
    while (hasOther_ && other_.frame < record.frame) {
        ++result_.onlyThere;
        advance();
    }
    if (!hasOther_ || other_.frame > record.frame) {
        ++result_.onlyHere;
        return nullptr;
    }
    match_ = other_;
    advance();
    count(differenceOf(record, match_));
    return &match_;
}

void Comparer::count(const FrameDifference& difference) {
    ++result_.frames;
    if (isSame(difference)) return;
    ++result_.differing;
    if (difference.degrees > result_.tolerance || difference.flags != 0 || difference.estimate) {
        ++result_.beyond;
    }
    for (std::size_t i = 0; i < FlagNames.size(); ++i) {
        if ((difference.flags >> i & 1u) != 0) ++result_.flagChanges[i];
    }
    keepLarger(result_.azimuth, difference.azimuth);
    keepLarger(result_.elevation, difference.elevation);
    keepLarger(result_.range, difference.range);
    keepLarger(result_.quality, difference.quality);
    std::vector<FrameDifference>& worst = result_.worst;
    worst.insert(std::upper_bound(worst.begin(), worst.end(), difference, isWorse), difference);
    if (worst.size() > Listed) worst.pop_back();
}

const Comparison& Comparer::finish() {
    while (hasOther_) {
        ++result_.onlyThere;
        advance();
    }
    return result_;
}
