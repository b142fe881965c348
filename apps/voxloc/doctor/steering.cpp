#include "doctor/steering.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace {

constexpr double LagsPerMetre = LagRate / SpeedOfSound;
// Lags between neighbouring places: a quarter of the shortest wave that is looked at, and less as
// long as that makes no more than EnoughPlaces.
constexpr double MostStepLags = 6.0, LeastStepLags = 2.0, FinerStep = 0.8;
constexpr std::size_t EnoughPlaces = 8000;
constexpr int MostAzimuths = 300, MostElevations = 25, MostRanges = 16;
constexpr double NearestRange = 0.5, FarthestRange = 12.0;  // metres
constexpr float FloorOfSwaps = 0.7f;
constexpr std::size_t PlacesTried = 64;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

double extent(const VoxlocArray& array, float Position::*axis) {
    float least = array.microphone[0].*axis, most = least;
    for (int c = 1; c < array.channels; ++c) {
        least = std::min(least, array.microphone[c].*axis);
        most = std::max(most, array.microphone[c].*axis);
    }
    return static_cast<double>(most) - static_cast<double>(least);
}

/** Steps of about `step` lags over a way of so many lags; a single one in the middle of none. */
std::vector<double> steps(double from, double to, double lags, double step, int most) {
    const int count = std::clamp(static_cast<int>(std::ceil(lags / step)) + 1, 1, most);
    std::vector<double> values;
    values.reserve(at(count));
    for (int i = 0; i < count; ++i) {
        values.push_back(count == 1 ? 0.5 * (from + to) : from + (to - from) * i / (count - 1));
    }
    return values;
}

std::vector<Position> placesAt(const VoxlocArray& array, double step) {
    VoxlocGrid grid;
    voxloc_getGrid(&array, &grid);
    constexpr double Degree = M_PI / 180.0;
    const double width = std::max(extent(array, &Position::y), extent(array, &Position::x));
    const double height = extent(array, &Position::z);
    const auto sine = [](float degrees) { return std::sin(static_cast<double>(degrees) * Degree); };
    const double left = sine(grid.lowestAzimuth), right = sine(grid.highestAzimuth);
    const double low = sine(grid.lowestElevation), high = sine(grid.highestElevation);
    const auto azimuths =
        steps(left, right, (right - left) * width * LagsPerMetre, step, MostAzimuths);
    const auto elevations =
        steps(low, high, (high - low) * height * LagsPerMetre, step, MostElevations);
    const double half = 0.5 * width, bend = 0.5 * half * half * LagsPerMetre;  // lags at 1 m
    const auto nearnesses =
        steps(1.0 / FarthestRange, 1.0 / NearestRange,
              bend * (1.0 / NearestRange - 1.0 / FarthestRange), step, MostRanges);
    std::vector<Position> places;
    for (const double nearness : nearnesses) {
        for (const double elevation : elevations) {
            for (const double azimuth : azimuths) {
                const float spherical[3] = {
                    static_cast<float>(std::asin(std::clamp(azimuth, -1.0, 1.0))),
                    height > 0.0 ? static_cast<float>(std::asin(elevation)) : 0.0f,
                    static_cast<float>(1.0 / nearness)};
                Position place;
                voxloc_sphericalToCartesian(spherical, &place);
                places.push_back(place);
            }
        }
    }
    return places;
}

/** Gives the step, too. */
std::vector<Position> placesOf(const VoxlocArray& array, double& step) {
    step = MostStepLags;
    std::vector<Position> places = placesAt(array, step);
    while (step * FinerStep > LeastStepLags) {
        std::vector<Position> finer = placesAt(array, step * FinerStep);
        if (finer.size() > EnoughPlaces) break;
        places = std::move(finer);
        step *= FinerStep;
    }
    return places;
}

}  // namespace

Places::Places(const VoxlocArray& array) : channels_(array.channels) {
    const std::vector<Position> places = placesOf(array, step_);
    count_ = static_cast<int>(places.size());
    delays_.resize(at(channels_) * places.size());
    for (std::size_t p = 0; p < places.size(); ++p) {
        const double first =
            static_cast<double>(voxloc_calculateDistance(&places[p], &array.microphone[0]));
        for (int c = 0; c < channels_; ++c) {
            const double here =
                static_cast<double>(voxloc_calculateDistance(&places[p], &array.microphone[c]));
            delays_[at(c) * places.size() + p] =
                static_cast<std::int16_t>(std::lround((here - first) * LagsPerMetre));
        }
    }
    for (int a = 0; a < channels_; ++a) {
        for (int b = 0; b < a; ++b) {
            const double reach = static_cast<double>(voxloc_calculateDistance(
                                     &array.microphone[a], &array.microphone[b])) *
                                 LagsPerMetre;
            mostLag_ = std::max(mostLag_, static_cast<int>(std::ceil(reach)) + 1);
        }
    }
}

Steering::Steering(const Places& places, const SegmentTables& tables, ChannelSet used)
    : places_(places),
      tables_(tables),
      used_(used),
      sum_(at(places.count())),
      touched_(at(places.count()) * at(places.channels())) {
    const int count = places.count();
    for (int i = 0; i < places.channels(); ++i) {
        for (int j = i + 1; j < places.channels(); ++j) {
            if (!contains(used, i) || !contains(used, j)) continue;
            const float* table = tables.pair(i, j) + tables.lags;
            const std::int16_t *first = places.delay(i), *second = places.delay(j);
            float* touchedByFirst = touched_.data() + at(i) * at(count);
            float* touchedBySecond = touched_.data() + at(j) * at(count);
            for (int p = 0; p < count; ++p) {
                const float value = table[first[p] - second[p]];
                sum_[at(p)] += value;
                touchedByFirst[p] += value;
                touchedBySecond[p] += value;
            }
        }
    }
    const auto best = std::max_element(sum_.begin(), sum_.end());
    best_ = static_cast<double>(*best);
    bestPlace_ = static_cast<int>(best - sum_.begin());
}

double Steering::bestInverted(int channel) const {
    const float* touched = touched_.data() + at(channel) * sum_.size();
    float best = -1e9f;
    for (std::size_t p = 0; p < sum_.size(); ++p) {
        best = std::max(best, sum_[p] - 2.0f * touched[p]);
    }
    return static_cast<double>(best);
}

double Steering::bestSwapped(int a, int b) const {
    struct Exchanged {
        const float *withA, *withB;  // the middle of the pairs' tables
        int signA, signB;            // -1 where the pair is stored the other way round
        const std::int16_t* delay;
    };
    const auto middle = [&](int i, int j) {
        return tables_.pair(std::min(i, j), std::max(i, j)) + tables_.lags;
    };
    const auto most = [&](int i, int j) {
        const float* table = tables_.pair(std::min(i, j), std::max(i, j));
        return *std::max_element(table, table + 2 * tables_.lags + 1);
    };
    std::vector<Exchanged> others;
    float room = most(a, b);  // the most that the exchanged pairs can add
    for (int j = 0; j < places_.channels(); ++j) {
        if (j == a || j == b || !contains(used_, j)) continue;
        others.push_back(
            {middle(a, j), middle(b, j), a < j ? 1 : -1, b < j ? 1 : -1, places_.delay(j)});
        room += most(a, j) + most(b, j);
    }
    const float* between = middle(a, b);
    const std::int16_t *toA = places_.delay(a), *toB = places_.delay(b);
    const float *touchedByA = touched_.data() + at(a) * sum_.size(),
                *touchedByB = touched_.data() + at(b) * sum_.size();
    float best = FloorOfSwaps * static_cast<float>(best_);
    for (int p = 0; p < places_.count(); ++p) {
        const int lag = a < b ? toA[p] - toB[p] : toB[p] - toA[p];
        float sum = sum_[at(p)] - touchedByA[p] - touchedByB[p] + between[lag];
        if (sum + room <= best) continue;
        sum += between[-lag];
        for (const Exchanged& one : others) {
            sum += one.withA[one.signA * (toB[p] - one.delay[p])] +
                   one.withB[one.signB * (toA[p] - one.delay[p])];
        }
        best = std::max(best, sum);
    }
    return static_cast<double>(best);
}

std::vector<float> Steering::rests(ChannelSet late) const {
    std::vector<float> rests = sum_;
    if ((late & (late - 1)) == 0) {  // a single channel
        int c = 0;
        while (!contains(late, c)) ++c;
        const float* touched = touched_.data() + at(c) * sum_.size();
        for (std::size_t p = 0; p < rests.size(); ++p) rests[p] -= touched[p];
        return rests;
    }
    for (int i = 0; i < places_.channels(); ++i) {
        for (int j = i + 1; j < places_.channels(); ++j) {
            if (!contains(used_, i) || !contains(used_, j)) continue;
            if (contains(late, i) == contains(late, j)) continue;
            const float* table = tables_.pair(i, j) + tables_.lags;
            const std::int16_t *first = places_.delay(i), *second = places_.delay(j);
            for (std::size_t p = 0; p < rests.size(); ++p) {
                rests[p] -= table[first[p] - second[p]];
            }
        }
    }
    return rests;
}

std::vector<float> Steering::offsetCurve(ChannelSet late) const {
    const std::vector<float> rests = this->rests(late);
    std::vector<int> order(sum_.size());
    std::iota(order.begin(), order.end(), 0);
    const std::size_t tried = std::min(PlacesTried, order.size());
    std::nth_element(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(tried - 1),
                     order.end(), [&](int a, int b) { return rests[at(a)] > rests[at(b)]; });
    constexpr int Count = 2 * MostOffset + 1;
    std::vector<float> curve(Count, -1e9f), sum(Count);
    // Tables with the late channel first, so that later is to the right.
    for (std::size_t k = 0; k < tried; ++k) {
        const int p = order[k];
        std::fill(sum.begin(), sum.end(), rests[at(p)]);
        for (int i = 0; i < places_.channels(); ++i) {
            if (!contains(late & used_, i)) continue;
            for (int j = 0; j < places_.channels(); ++j) {
                if (contains(late, j) || !contains(used_, j)) continue;
                const int lag = places_.lag(p, i, j);
                if (i < j) {
                    const float* from = tables_.pair(i, j) + tables_.lags + lag - MostOffset;
                    for (int n = 0; n < Count; ++n) sum[at(n)] += from[n];
                } else {
                    const float* from = tables_.pair(j, i) + tables_.lags - lag + MostOffset;
                    for (int n = 0; n < Count; ++n) sum[at(n)] += from[-n];
                }
            }
        }
        for (int n = 0; n < Count; ++n) curve[at(n)] = std::max(curve[at(n)], sum[at(n)]);
    }
    return curve;
}
