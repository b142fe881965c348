#include "doctor/geometryFaults.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <optional>

namespace {

constexpr std::size_t MostFaults = 3;
// Places move the lags of three channels as freely as delays and exchanges do.
constexpr int LeastChannels = 4;
constexpr int CurveLength = 2 * MostOffset + 1;
constexpr double LeastOffset = 6.0;  // lags: less is a microphone 1 cm off its place
constexpr double MostSlope = 80.0;   // lags a second: 417 parts in a million
constexpr double SlopeStep = 1.0;    // lags a second
constexpr double LeastSlope = 3.0;   // lags a second: 16 parts in a million
// What the pairs concerned must gain. Over some hundred sound recordings in rooms, exchanges and
// turns lost; delays gained up to 0.1 on grids of 6 lags and 0.02 on finer ones.
constexpr double LeastInvertedGain = 0.3, LeastSwappedGain = 0.15, LateGainPerStep = 0.02,
                 LeastDriftGain = 0.15;
constexpr double SimpleAdvantage = 0.02;  // of the sum
constexpr double DoublingCost = 0.008;    // of the sum, each time that a delay is twice as long
constexpr double Doubt = 0.02;            // of the sum: what is that close cannot be told apart
// A channel's correlation with the others by that of the others with each other.
constexpr double LeastFit = 0.25, LeastFitWithFault = 0.35;
constexpr int LeastLagApart = 6;  // lags, between two channels that places tell apart

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

int countOf(ChannelSet set) {
    int count = 0;
    for (; set != 0; set &= set - 1) ++count;
    return count;
}

int firstOf(ChannelSet set) {
    int c = 0;
    while (!contains(set, c)) ++c;
    return c;
}

/** All segments under one set of used channels. */
class Hearing {
  public:
    Hearing(const Places& places, const std::vector<SegmentTables>& segments, ChannelSet used)
        : places_(places), segments_(segments), used_(used) {
        for (const SegmentTables& one : segments) {
            steering_.emplace_back(places, one, used);
            none_ += steering_.back().best();
        }
    }

    double none() const { return none_; }
    double perPair(double sum) const {
        return sum / static_cast<double>(segments_.size()) / pairsOf(countOf(used_));
    }

    std::vector<GeometryFault> candidates() const {
        std::vector<GeometryFault> all;
        const bool isEnough = countOf(used_) >= LeastChannels;
        for (int c = 0; c < places_.channels(); ++c) {
            if (!contains(used_, c)) continue;
            all.push_back(inverted(c));
            for (int b = c + 1; b < places_.channels() && isEnough; ++b) {
                if (contains(used_, b)) all.push_back(swapped(c, b));
            }
            if (isEnough) addLate(1u << c, all);
        }
        // Devices of several channels, one after the other.
        for (int c = 2; c < places_.channels() - 1 && isEnough; ++c) {
            addLate(used_ & ((1u << c) - 1), all);
        }
        return all;
    }

    /** Channels whose pairs respond much less than the pairs of the others do. */
    ChannelSet strangers(std::vector<double>& fits) const {
        ChannelSet set = 0;
        for (int c = 0; c < places_.channels(); ++c) {
            double own = 0.0, others = 0.0;
            for (const Steering& one : steering_) {
                own += one.partOf(c);
                others += one.best() - one.partOf(c);
            }
            const int n = countOf(used_);
            const double fit = contains(used_, c) && n > 2 && others > 0.0
                                   ? own / (n - 1) / (others / pairsOf(n - 1))
                                   : 1.0;
            fits.push_back(fit);
            if (fit < LeastFit) set |= 1u << c;
        }
        return set;
    }

    std::vector<std::pair<int, int>> untold() const {
        std::vector<std::pair<int, int>> pairs;
        for (int a = 0; a < places_.channels(); ++a) {
            for (int b = a + 1; b < places_.channels(); ++b) {
                if (!contains(used_, a) || !contains(used_, b)) continue;
                int most = 0;
                for (const Steering& one : steering_) {
                    most = std::max(most, std::abs(places_.lag(one.bestPlace(), a, b)));
                }
                if (most < LeastLagApart) pairs.emplace_back(a, b);
            }
        }
        return pairs;
    }

  private:
    GeometryFault judged(GeometryFault fault, double sum, int touched) const {
        const double response = perPair(sum);
        const double more = (sum - none_) / static_cast<double>(segments_.size()) / touched;
        fault.gain = response > 0.0 ? more / response : 0.0;
        fault.sum = sum;
        const bool isOfOne = (fault.channels & (fault.channels - 1)) == 0;
        fault.fit = isOfOne && pairsOf(countOf(used_) - 1) > 0 ? fitWith(fault) : 1.0;
        return fault;
    }

    /** How far the channels' pairs would respond as those of the others do. */
    double fitWith(const GeometryFault& fault) const {
        double own = fault.sum - none_, others = 0.0;
        for (const Steering& one : steering_) {
            const double part = one.partOf(firstOf(fault.channels));
            own += part;
            others += one.best() - part;
        }
        const int n = countOf(used_);
        return others > 0.0 ? own / (n - 1) / (others / pairsOf(n - 1)) : 1.0;
    }

    GeometryFault inverted(int c) const {
        double sum = 0.0;
        for (const Steering& one : steering_) sum += one.bestInverted(c);
        return judged({GeometryKind::Inverted, 1u << c}, sum, countOf(used_) - 1);
    }

    GeometryFault swapped(int a, int b) const {
        double sum = 0.0;
        for (const Steering& one : steering_) sum += one.bestSwapped(a, b);
        return judged({GeometryKind::Swapped, 1u << a | 1u << b}, sum, 2 * countOf(used_) - 3);
    }

    void addLate(ChannelSet late, std::vector<GeometryFault>& all) const {
        const int touched = countOf(late & used_) * countOf(used_ & ~late);
        if (touched == 0) return;
        std::vector<std::vector<float>> curves;
        for (const Steering& one : steering_) curves.push_back(one.offsetCurve(late));
        all.push_back(lateBy(late, curves, touched));
        all.push_back(drifting(late, curves, touched));
    }

    GeometryFault lateBy(ChannelSet late, const std::vector<std::vector<float>>& curves,
                         int touched) const {
        GeometryFault best{GeometryKind::Late, late};
        double most = -1e9;
        for (int n = 0; n < CurveLength; ++n) {
            if (std::abs(n - MostOffset) < LeastOffset) continue;
            double sum = 0.0;
            for (const auto& curve : curves) sum += static_cast<double>(curve[at(n)]);
            if (sum > most) {
                most = sum;
                best.offset = n - MostOffset;
            }
        }
        return judged(best, most, touched);
    }

    GeometryFault drifting(ChannelSet late, const std::vector<std::vector<float>>& curves,
                           int touched) const {
        GeometryFault best{GeometryKind::Drift, late};
        double most = -1e9;
        std::vector<float> sum(CurveLength);
        for (double slope = -MostSlope; slope <= MostSlope; slope += SlopeStep) {
            if (std::fabs(slope) < LeastSlope) continue;
            std::fill(sum.begin(), sum.end(), 0.0f);
            for (std::size_t s = 0; s < curves.size(); ++s) {
                const int shift = static_cast<int>(std::lround(slope * segments_[s].seconds));
                const int from = std::max(0, -shift),
                          to = std::min(CurveLength, CurveLength - shift);
                for (int n = from; n < to; ++n) sum[at(n)] += curves[s][at(n + shift)];
            }
            const auto peak = std::max_element(sum.begin(), sum.end());
            if (static_cast<double>(*peak) > most) {
                most = static_cast<double>(*peak);
                best.offset = static_cast<double>(peak - sum.begin()) - MostOffset;
                best.slope = slope;
            }
        }
        return judged(best, most, touched);
    }

    const Places& places_;
    const std::vector<SegmentTables>& segments_;
    ChannelSet used_;
    std::vector<Steering> steering_;
    double none_ = 0.0;
};

/** A coarse grid lets delays make up for its steps of so many lags. */
double leastGain(GeometryKind kind, double step) {
    switch (kind) {
        case GeometryKind::Inverted:
            return LeastInvertedGain;
        case GeometryKind::Swapped:
            return LeastSwappedGain;
        case GeometryKind::Late:
            return LateGainPerStep * step;
        case GeometryKind::Drift:
            return LeastDriftGain;
    }
    return 1.0;
}

bool isSimple(const GeometryFault& fault) {
    return fault.kind != GeometryKind::Drift &&
           (fault.kind != GeometryKind::Late || countOf(fault.channels) == 1);
}

/** A fault's sum; what drifts or moves several channels fits a little better by its freedom alone.
 */
double creditOf(const GeometryFault& fault) {
    return isSimple(fault) ? fault.sum : fault.sum * (1.0 - SimpleAdvantage);
}

/** Of delays that explain each other the shorter are likelier. */
double creditAmongDelays(const GeometryFault& fault) {
    return fault.sum * (1.0 - DoublingCost * std::log2(std::fabs(fault.offset) / LeastOffset));
}

using Credit = double (*)(const GeometryFault&);

const GeometryFault* mostCredible(const std::vector<const GeometryFault*>& faults, Credit credit) {
    const auto best = std::max_element(
        faults.begin(), faults.end(),
        [&](const GeometryFault* a, const GeometryFault* b) { return credit(*a) < credit(*b); });
    return best == faults.end() ? nullptr : *best;
}

/** The fault that makes the most fit, if any makes enough of it fit, and what may be it instead. */
std::optional<GeometryFault> bestOf(const std::vector<GeometryFault>& candidates, double step) {
    std::vector<const GeometryFault*> enough;
    for (const GeometryFault& one : candidates) {
        if (one.gain >= leastGain(one.kind, step) && one.fit >= LeastFitWithFault) {
            enough.push_back(&one);
        }
    }
    const GeometryFault* best = mostCredible(enough, creditOf);
    if (best == nullptr) return std::nullopt;
    std::vector<const GeometryFault*> alike;
    for (const GeometryFault& one : candidates) {
        const bool fits = one.fit >= LeastFitWithFault && one.gain > 0.0;
        if (fits && one.kind == best->kind && isSimple(one) == isSimple(*best)) {
            alike.push_back(&one);
        }
    }
    const Credit credit =
        best->kind == GeometryKind::Late && isSimple(*best) ? creditAmongDelays : creditOf;
    best = mostCredible(alike, credit);
    GeometryFault fault = *best;
    for (const GeometryFault* one : alike) {
        if (one != best && one->sum > best->sum * (1.0 - Doubt)) {
            fault.instead.push_back({one->channels, one->offset});
        }
    }
    return fault;
}

/** The tables as they would be without the fault. */
void undo(const GeometryFault& fault, SegmentTables& tables) {
    const SegmentTables before = tables;
    const int n = tables.channels;
    const bool isSwap = fault.kind == GeometryKind::Swapped;
    const int a = firstOf(fault.channels), b = isSwap ? firstOf(fault.channels & ~(1u << a)) : a;
    const auto source = [&](int c) { return c == a ? b : c == b ? a : c; };
    const int offset = static_cast<int>(std::lround(fault.offset + fault.slope * tables.seconds));
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            const int first = source(i), second = source(j);
            const bool isTurned = first > second;
            const float* from =
                before.pair(std::min(first, second), std::max(first, second)) + tables.lags;
            const bool isOne = contains(fault.channels, i) != contains(fault.channels, j);
            const float sign = isOne && fault.kind == GeometryKind::Inverted ? -1.0f : 1.0f;
            const int shift = isOne ? (contains(fault.channels, i) ? offset : -offset) : 0;
            float* to = tables.pair(i, j) + tables.lags;
            for (int lag = -tables.lags; lag <= tables.lags; ++lag) {
                const int at = (isTurned ? -lag : lag) + shift;
                to[lag] = std::abs(at) <= tables.lags ? sign * from[at] : 0.0f;
            }
        }
    }
}

}  // namespace

GeometryFindings findGeometryFaults(const Places& places, std::vector<SegmentTables>& segments,
                                    ChannelSet used) {
    GeometryFindings findings;
    for (;;) {
        const Hearing hearing(places, segments, used);
        findings.response = hearing.perPair(hearing.none());
        if (findings.faults.size() < MostFaults) {
            const std::vector<GeometryFault> candidates = hearing.candidates();
            const std::optional<GeometryFault> best = bestOf(candidates, places.step());
            if (best) {
                findings.faults.push_back(*best);
                for (SegmentTables& one : segments) undo(*best, one);
                continue;
            }
        }
        findings.strangers = hearing.strangers(findings.fits);
        findings.untold = hearing.untold();
        return findings;
    }
}
