#include "doctor/duplicates.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace {

constexpr double LeastLikeness = 0.9;
// Rooms and noise part what two microphones hear; where they hardly do, two that the sound reaches
// at the same time are alike without being copies.
constexpr double MostDryResponse = 0.75;
constexpr int LeastLagApart = 6;

double middleLikeness(const std::vector<SegmentTables>& segments, int a, int b) {
    std::vector<double> all;
    for (const SegmentTables& one : segments) {
        const auto pair = static_cast<std::size_t>(pairIndex(one.channels, a, b));
        all.push_back(static_cast<double>(one.likeness[pair]));
    }
    std::sort(all.begin(), all.end());
    return all[all.size() / 2];
}

/** Whether the others say that sound came to both at the same time, or are too few to say. */
bool mayBeAlike(const Places& places, const std::vector<SegmentTables>& segments, ChannelSet used,
                int a, int b) {
    const ChannelSet others = used & ~(1u << a | 1u << b);
    if ((others & (others - 1)) == 0) return true;
    double response = 0.0;
    int pairs = 0, most = 0;
    for (int i = 0; i < places.channels(); ++i) {
        for (int j = i + 1; j < places.channels(); ++j) {
            pairs += contains(others, i) && contains(others, j) ? 1 : 0;
        }
    }
    for (const SegmentTables& one : segments) {
        const Steering steering(places, one, others);
        response += steering.best() / pairs / static_cast<double>(segments.size());
        most = std::max(most, std::abs(places.lag(steering.bestPlace(), a, b)));
    }
    return response > MostDryResponse && most < LeastLagApart;
}

double responseOf(const Places& places, const std::vector<SegmentTables>& segments,
                  ChannelSet used) {
    double sum = 0.0;
    for (const SegmentTables& one : segments) sum += Steering(places, one, used).best();
    return sum;
}

}  // namespace

std::vector<Duplicate> findDuplicates(const Places& places,
                                      const std::vector<SegmentTables>& segments, ChannelSet used) {
    std::vector<Duplicate> found;
    if (segments.empty()) return found;
    ChannelSet copies = 0;
    for (int a = 0; a < places.channels(); ++a) {
        for (int b = a + 1; b < places.channels(); ++b) {
            if (!contains(used, a) || !contains(used, b)) continue;
            if (contains(copies, a) || contains(copies, b)) continue;
            const double likeness = middleLikeness(segments, a, b);
            if (likeness < LeastLikeness) continue;
            const bool isCertain = !mayBeAlike(places, segments, used, a, b);
            // The copy is the one without which the rest fits better.
            const bool isFirstCopy = responseOf(places, segments, used & ~(1u << a)) >
                                     responseOf(places, segments, used & ~(1u << b));
            found.push_back({isFirstCopy ? a : b, isFirstCopy ? b : a, likeness, isCertain});
            if (isCertain) copies |= 1u << found.back().copy;
        }
    }
    return found;
}
