#include "arrays/suggest.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

#include "common/failure.h"

namespace {

constexpr double SmallestSpacing = 0.0103, LargestSpacing = 14.8;  // metres
constexpr double NarrowPair = 0.20;    // metres: up to here the high bins point one way
constexpr double NarrowTarget = 0.15;  // metres
constexpr double WideEnough = 0.5;     // metres, of the horizontal pair among elevation pairs
constexpr double Straight = 0.9995;  // least share of a pair's length along its axis: 2 degrees off
constexpr double Slanting = 0.98;    // where nothing is straight: 11 degrees off
constexpr double Tall = 0.3;         // the same for pairs that must do for vertical ones
constexpr double FarOff = 1e-6;      // metres; places nearer than that are the same

/** Two microphones that might be a pair. */
struct Candidate {
    VoxlocPair pair;
    double length, dy, dz;  // metres; dy and dz without sign
    double place;           // metres along y from the middle of the array
};

double middleOf(const VoxlocArray& array) {
    float least = array.microphone[0].y, most = least;
    for (std::int32_t c = 1; c < array.channels; ++c) {
        least = std::min(least, array.microphone[c].y);
        most = std::max(most, array.microphone[c].y);
    }
    return 0.5 * (static_cast<double>(least) + static_cast<double>(most));
}

Candidate candidateOf(const VoxlocArray& array, std::int32_t i, std::int32_t k, double middle) {
    const Position& a = array.microphone[i];
    const Position& b = array.microphone[k];
    const double ay = static_cast<double>(a.y), by = static_cast<double>(b.y);
    return {{i, k},
            static_cast<double>(voxloc_calculateDistance(&a, &b)),
            std::fabs(ay - by),
            std::fabs(static_cast<double>(a.z) - static_cast<double>(b.z)),
            0.5 * (ay + by) - middle};
}

std::vector<Candidate> candidatesOf(const VoxlocArray& array) {
    std::vector<Candidate> all;
    const double middle = middleOf(array);
    for (std::int32_t i = 0; i < array.channels; ++i) {
        for (std::int32_t k = i + 1; k < array.channels; ++k) {
            const Candidate one = candidateOf(array, i, k, middle);
            if (one.length >= SmallestSpacing && one.length <= LargestSpacing) all.push_back(one);
        }
    }
    // Of pairs that serve as well the narrower one comes first: its high bins are surer.
    std::stable_sort(all.begin(), all.end(), [](const Candidate& a, const Candidate& b) {
        return std::lround(a.length * 1e6) < std::lround(b.length * 1e6);
    });
    return all;
}

template <typename Condition>
std::vector<Candidate> those(const std::vector<Candidate>& all, const Condition& condition) {
    std::vector<Candidate> chosen;
    std::copy_if(all.begin(), all.end(), std::back_inserter(chosen), condition);
    return chosen;
}

/** Azimuths are searched at the height of the array: a slanting pair would take height for side. */
std::vector<Candidate> alongY(const std::vector<Candidate>& all) {
    auto along = those(all, [](const Candidate& c) { return c.dy >= Straight * c.length; });
    if (!along.empty()) return along;
    return those(all, [](const Candidate& c) { return c.dy >= Slanting * c.length; });
}

/** Collects pairs, each once, as long as there is room. */
class Pairs {
  public:
    Pairs(VoxlocPair* pairs, std::int32_t& count) : pairs_(pairs), count_(count) { count_ = 0; }

    void add(const Candidate& one) {
        const auto isSame = [&](const VoxlocPair& pair) {
            return pair.first == one.pair.first && pair.second == one.pair.second;
        };
        if (count_ == VOXLOC_MAX_PAIRS || std::any_of(pairs_, pairs_ + count_, isSame)) return;
        pairs_[count_++] = one.pair;
        narrowest_ = std::min(narrowest_, one.length);
    }

    /** The one with the highest score, the first of equal ones; none when no score is above 0. */
    template <typename Score>
    void addBest(const std::vector<Candidate>& all, const Score& score) {
        const Candidate* best = nullptr;
        double highest = FarOff;
        for (const Candidate& one : all) {
            if (score(one) <= highest * (1.0 + 1e-6)) continue;
            best = &one;
            highest = score(one);
        }
        if (best != nullptr) add(*best);
    }

    std::int32_t count() const { return count_; }
    double narrowest() const { return narrowest_; }

  private:
    VoxlocPair* pairs_;
    std::int32_t& count_;
    double narrowest_ = LargestSpacing;
};

/**
 * The widest pair tells azimuths apart. What a range changes in a pair's lags grows with its width
 * times its distance from the middle, so the best pair on either side tells the range. A narrow one
 * keeps the high bins from pointing two ways.
 */
void chooseAzimuthPairs(VoxlocArray& array, const std::vector<Candidate>& all) {
    const std::vector<Candidate> along = alongY(all);
    Pairs pairs(array.azimuthPair, array.azimuthPairs);
    pairs.addBest(along, [](const Candidate& c) { return c.length; });
    pairs.addBest(along, [](const Candidate& c) { return -c.place * c.length; });
    pairs.addBest(along, [](const Candidate& c) { return c.place * c.length; });
    if (pairs.narrowest() <= NarrowPair) return;
    const auto narrow =
        those(along, [&](const Candidate& c) { return c.length < 0.7 * pairs.narrowest(); });
    pairs.addBest(narrow, [](const Candidate& c) {
        return 1.0 / (1.0 + std::fabs(std::log(c.length / NarrowTarget)));
    });
}

/** The tallest vertical pair on either side; where nothing is vertical, the tallest slanting ones.
 */
void chooseTallPairs(const std::vector<Candidate>& all, Pairs& pairs) {
    auto tall = those(all, [](const Candidate& c) { return c.dz >= Straight * c.length; });
    if (tall.empty()) tall = those(all, [](const Candidate& c) { return c.dz >= Tall * c.length; });
    const auto reach = [](const Candidate& c, double side) {
        return side * c.place > -FarOff ? c.dz + 1e-3 * std::fabs(c.place) : 0.0;
    };
    pairs.addBest(tall, [&](const Candidate& c) { return reach(c, -1.0); });
    pairs.addBest(tall, [&](const Candidate& c) { return reach(c, 1.0); });
    pairs.addBest(tall, [](const Candidate& c) { return c.dz; });
}

/** Vertical pairs alone would take any azimuth for the talker's: a horizontal one goes with them.
 */
void chooseElevationPairs(VoxlocArray& array, const std::vector<Candidate>& all) {
    Pairs pairs(array.elevationPair, array.elevationPairs);
    chooseTallPairs(all, pairs);
    if (pairs.count() == 0) return;
    pairs.addBest(alongY(all), [](const Candidate& c) {
        return std::min(c.length, WideEnough) / (1.0 + 4.0 * std::fabs(c.place));
    });
}

/** Channels by how little they hear the loudspeaker, or how near the middle they are. */
std::vector<std::int32_t> listenersOf(const VoxlocArray& array) {
    const double middle = middleOf(array);
    // In whole micrometres: microphones that rounding alone tells apart keep their order.
    const auto badness = [&](std::int32_t c) {
        const Position& p = array.microphone[c];
        const double metres =
            array.attenuateLoudspeaker != 0
                ? -static_cast<double>(voxloc_calculateDistance(&p, &array.loudspeaker))
                : std::fabs(static_cast<double>(p.y) - middle);
        return std::lround(metres * 1e6);
    };
    std::vector<std::int32_t> channels(static_cast<std::size_t>(array.channels));
    std::iota(channels.begin(), channels.end(), 0);
    std::stable_sort(channels.begin(), channels.end(),
                     [&](std::int32_t a, std::int32_t b) { return badness(a) < badness(b); });
    return channels;
}

void chooseListeners(const ArrayDraft& draft, VoxlocArray& array) {
    const std::vector<std::int32_t> channels = listenersOf(array);
    if (!draft.hasVoiceChannels) {
        array.voiceChannels = {channels[0], channels[channels.size() > 1 ? 1 : 0]};
    }
    if (!draft.hasNoiseChannels) array.noiseChannels = array.voiceChannels;
    if (!draft.hasTimeDomainVoiceChannel) {
        array.timeDomainVoiceChannel = array.voiceChannels.first;
    }
}

}  // namespace

Suggestion suggestPairs(const ArrayDraft& draft, const std::string& where) {
    Suggestion suggestion{draft.named, {}};
    VoxlocArray& array = suggestion.named.array;
    if (array.channels < 2) {
        throw BadData(where + ": microphones: a pair takes two, there are " +
                      std::to_string(array.channels));
    }
    const std::vector<Candidate> all = candidatesOf(array);
    if (!draft.hasAzimuthPairs) chooseAzimuthPairs(array, all);
    if (array.azimuthPairs == 0) {
        throw BadData(where + ": microphones: no two of them lie along y, 1.03 cm to 14.8 m apart");
    }
    if (!draft.hasElevationPairs) chooseElevationPairs(array, all);
    chooseListeners(draft, array);
    if (array.elevationPairs == 0) {
        suggestion.notes.emplace_back(
            "no two microphones differ in height: elevations mean nothing");
    }
    if (array.azimuthPairs < 2) {
        suggestion.notes.emplace_back("one azimuth pair alone cannot tell ranges apart");
    }
    checkArray(suggestion.named, where);
    return suggestion;
}
