#include "compare.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <set>

#include "fingerprint.h"
#include "scenario.h"

namespace {

constexpr const char* Denormals = "denormal numbers flushed to zero";
constexpr const char* Fused = "fused multiply-add";
constexpr const char* Arcsine = "last bit of the mathematics library's asinf";
constexpr const char* Carried = "carried on from an earlier frame";

std::string nameOfFrame(const FrameKey& key, const FrameDump& frame) {
    return "product " + std::to_string(key.first) + " frame " + std::to_string(key.second) + " (" +
           nameOf(static_cast<Content>(frame.content)) + ")";
}

bool isOneOf(const std::string& name, std::initializer_list<const char*> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isMadeFromAngles(const std::string& name) {
    return isOneOf(name, {"AzimuthAngles", "ElevationAngles", "AzimuthElevationLookupTable",
                          "AzimuthRangeLookupTable"});
}

bool readsLookupTables(const std::string& name) {
    return isOneOf(name, {"AzimuthElevationResult", "AzimuthRangeResult"});
}

bool sameArray(const Print& a, const Print& b) {
    return a.name == b.name && a.exact == b.exact;
}

/** Equal; two that are not a number, as the angles outside a product's reach are, count as equal.
 */
bool sameValue(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

/**
 * Equal up to two units in the last place: libraries' arcsines differ by one, and the conversion to
 * degrees may make two of it.
 */
bool isSameAngle(float a, float b) {
    return sameValue(a, b) || std::nextafter(std::nextafter(a, b), b) == b;
}

/** Outputs of inputs so small that products and sums on the way are denormal. */
bool isTiny(const std::string& name) {
    return name.rfind("tiny-", 0) == 0;
}

/** No more apart than a flushed operand or result for each of the few hundred operations makes. */
bool differByFlushingOnly(const std::vector<std::uint32_t>& a,
                          const std::vector<std::uint32_t>& b) {
    constexpr float bound = 512.0f * FLT_MIN;
    return std::equal(a.begin(), a.end(), b.begin(), [](std::uint32_t x, std::uint32_t y) {
        return std::fabs(floatOf(x) - floatOf(y)) <= bound;
    });
}

bool sameResult(const FrameDump& a, const FrameDump& b) {
    return sameValue(a.azimuth, b.azimuth) && sameValue(a.elevation, b.elevation) &&
           a.range == b.range && a.quality == b.quality && a.flags == b.flags;
}

/** Did a machine nearly choose otherwise? The sums of two differ by no more than the quality may.
 */
bool isTie(float marginA, float marginB) {
    return std::min(marginA, marginB) <= 2.0f * QualityBound;
}

class Comparer {
  public:
    Comparer(const MachineDump& a, const MachineDump& b) : a_(a), b_(b) {
        result_.first = a.machine;
        result_.second = b.machine;
    }

    Comparison run() {
        compareEach("tables", a_.tables, b_.tables, &Comparer::compareTables);
        compareEach("frames", a_.frames, b_.frames, &Comparer::compareFrame);
        compareEach("outputs", a_.vectors, b_.vectors, &Comparer::compareVector);
        result_.frames = static_cast<int>(a_.frames.size());
        result_.vectors = static_cast<int>(a_.vectors.size());
        if (result_.framesOnATie > TieShareBound * result_.frames) fail("too many frames on a tie");
        return result_;
    }

  private:
    void fail(const std::string& what) { result_.failures.push_back(what); }
    void explain(const std::string& cause) { ++result_.causes[cause]; }

    /** Hands what both machines have under a key to a member; what one of them lacks fails. */
    template <class Key, class Value>
    void compareEach(const char* what, const std::map<Key, Value>& a, const std::map<Key, Value>& b,
                     void (Comparer::*compare)(const Key&, const Value&, const Value&)) {
        bool complete = !a.empty() && a.size() == b.size();
        for (const auto& [key, value] : a) {
            const auto other = b.find(key);
            if (other == b.end()) {
                complete = false;
            } else {
                (this->*compare)(key, value, other->second);
            }
        }
        if (!complete) fail(std::string(what) + " are missing");
    }

    void compareTables(const int& product, const std::vector<Print>& a,
                       const std::vector<Print>& b) {
        const std::string prefix = "product " + std::to_string(product) + ": ";
        if (a.size() != b.size()) return fail(prefix + "tables are missing");
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (sameArray(a[i], b[i])) continue;
            if (a[i].name == b[i].name && isMadeFromAngles(a[i].name)) {
                explain(std::string(Arcsine) + " (tables)");
                otherAngles_.insert(product);
            } else {
                fail(prefix + a[i].name + " differs");
            }
        }
    }

    void compareFrame(const FrameKey& key, const FrameDump& a, const FrameDump& b) {
        const std::string name = nameOfFrame(key, a);
        compareStages(key, name, a, b);
        if (!sameResult(a, b)) ++result_.framesWithOtherResults;
        if (a.flags != b.flags) fail(name + ": other flags");
        const double difference =
            std::fabs(static_cast<double>(a.quality) - static_cast<double>(b.quality));
        result_.largestQualityDifference = std::max(result_.largestQualityDifference, difference);
        if (!(difference <= static_cast<double>(QualityBound))) fail(name + ": other quality");
        comparePosition(key.first, name, a, b);
    }

    /** The first array that differs must have a known cause; what follows differs by it. */
    void compareStages(const FrameKey& key, const std::string& name, const FrameDump& a,
                       const FrameDump& b) {
        if (a.stages.empty() || a.stages.size() != b.stages.size()) {
            return fail(name + ": arrays are missing");
        }
        const auto [first, other] =
            std::mismatch(a.stages.begin(), a.stages.end(), b.stages.begin(), sameArray);
        if (first == a.stages.end()) return;
        ++result_.framesWithOtherStages;
        if (first == a.stages.begin()) fail(name + ": other input");
        const char* cause = causeOf(key.first, *first, *other);
        if (cause == nullptr) {
            fail(name + ": " + first->name + " differs for no known cause");
        } else {
            explain(std::string(cause) + ", first seen in " + first->name);
        }
        differs_.insert(key.first);
    }

    const char* causeOf(int product, const Print& a, const Print& b) const {
        if (a.withoutTiny == b.withoutTiny) return Denormals;
        if (a_.fused != b_.fused) return Fused;
        if (readsLookupTables(a.name) && otherAngles_.count(product) != 0) return Arcsine;
        if (differs_.count(product) != 0) return Carried;
        return nullptr;
    }

    void comparePosition(int product, const std::string& name, const FrameDump& a,
                         const FrameDump& b) {
        const int azimuth = std::abs(a.azimuthIndex - b.azimuthIndex);
        const int elevation = std::abs(a.elevationIndex - b.elevationIndex);
        if (azimuth == 0 && elevation == 0 && a.range == b.range) {
            return compareAngles(product, name, a, b);
        }
        const bool azimuthTie = isTie(a.azimuthMargin, b.azimuthMargin);
        const bool elevationTie = isTie(a.elevationMargin, b.elevationMargin);
        const bool rangeTie = azimuthTie || isTie(a.rangeMargin, b.rangeMargin);
        const bool nearRange = std::fabs(a.range - b.range) <= 1.001f * GridStepOfRange;
        const auto isFine = [](int steps, bool tie) { return steps == 0 || (steps == 1 && tie); };
        if (isFine(azimuth, azimuthTie) && isFine(elevation, elevationTie) &&
            (a.range == b.range || (nearRange && rangeTie))) {
            ++result_.framesOnATie;
            result_.notes.push_back(name + ": on a tie");
        } else {
            fail(name + ": other position");
        }
    }

    /** The same grid points were chosen. */
    void compareAngles(int product, const std::string& name, const FrameDump& a,
                       const FrameDump& b) {
        if (sameValue(a.azimuth, b.azimuth) && sameValue(a.elevation, b.elevation)) return;
        if (otherAngles_.count(product) != 0 && isSameAngle(a.azimuth, b.azimuth) &&
            isSameAngle(a.elevation, b.elevation)) {
            explain(std::string(Arcsine) + " (angle of a grid point)");
        } else {
            fail(name + ": other angles of the same grid points");
        }
    }

    void compareVector(const std::string& name, const std::vector<std::uint32_t>& a,
                       const std::vector<std::uint32_t>& b) {
        if (a == b) return;
        ++result_.vectorsThatDiffer;
        const bool sameSize = a.size() == b.size();
        if (sameSize && isTiny(name) && differByFlushingOnly(a, b)) {
            explain(std::string(Denormals) + " (FFT and FIR outputs)");
        } else if (sameSize && a_.fused != b_.fused) {
            explain(std::string(Fused) + " (FFT and FIR outputs)");
        } else {
            fail("output " + name + " differs");
        }
    }

    const MachineDump& a_;
    const MachineDump& b_;
    Comparison result_;
    std::set<int> otherAngles_;  // products whose angle or lag tables differ
    std::set<int> differs_;      // products that have differed before
};

}  // namespace

Comparison compare(const MachineDump& first, const MachineDump& second) {
    return Comparer(first, second).run();
}
