#include "compare.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <set>

#include "fingerprint.h"
#include "scenario.h"

namespace {

constexpr const char* Denormals = "denormal numbers flushed to zero";
constexpr const char* Fused = "fused multiply-add";
constexpr const char* Arcsine = "last bit of the mathematics library's asinf";
constexpr const char* Carried = "carried on from an earlier frame";

using Key = std::pair<int, int>;

std::string nameOfFrame(const Key& key, const FrameDump& frame) {
    return "product " + std::to_string(key.first) + " frame " + std::to_string(key.second) + " (" +
           nameOf(static_cast<Content>(frame.content)) + ")";
}

bool sameBits(const Print& a, const Print& b) {
    return a.exact == b.exact;
}

bool isMadeFromAngles(const std::string& name) {
    return name == "AzimuthAngles" || name == "ElevationAngles" ||
           name == "AzimuthElevationLookupTable" || name == "AzimuthRangeLookupTable";
}

bool readsLookupTables(const std::string& name) {
    return name == "AzimuthElevationResult" || name == "AzimuthRangeResult";
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

class Comparer {
  public:
    Comparer(const MachineDump& a, const MachineDump& b) : a_(a), b_(b) {
        result_.first = a.machine;
        result_.second = b.machine;
    }

    Comparison run() {
        compareTables();
        compareFrames();
        compareVectors();
        return result_;
    }

  private:
    void fail(const std::string& what) { result_.failures.push_back(what); }

    void compareTables() {
        if (a_.tables.size() != b_.tables.size()) fail("the dumps hold other products");
        for (const auto& [product, tables] : a_.tables) {
            const auto other = b_.tables.find(product);
            if (other == b_.tables.end() || other->second.size() != tables.size()) {
                fail("product " + std::to_string(product) + ": tables are missing");
                continue;
            }
            for (std::size_t i = 0; i < tables.size(); ++i) {
                compareTable(product, tables[i], other->second[i]);
            }
        }
    }

    void compareTable(int product, const Print& a, const Print& b) {
        if (a.name == b.name && sameBits(a, b)) return;
        if (a.name == b.name && isMadeFromAngles(a.name)) {
            ++result_.causes[std::string(Arcsine) + " (tables)"];
            otherAngles_.insert(product);
        } else {
            fail("product " + std::to_string(product) + ": " + a.name + " differs");
        }
    }

    void compareFrames() {
        if (a_.frames.empty() || a_.frames.size() != b_.frames.size()) fail("frames are missing");
        for (const auto& [key, frame] : a_.frames) {
            const auto other = b_.frames.find(key);
            if (other == b_.frames.end()) {
                fail(nameOfFrame(key, frame) + " is missing");
            } else {
                compareFrame(key, frame, other->second);
            }
        }
        result_.frames = static_cast<int>(a_.frames.size());
        if (result_.framesOnATie > TieShareBound * result_.frames) fail("too many frames on a tie");
    }

    void compareFrame(const Key& key, const FrameDump& a, const FrameDump& b) {
        const bool otherStages = findCause(key, a, b);
        if (otherStages) ++result_.framesWithOtherStages;
        if (!sameResult(a, b)) ++result_.framesWithOtherResults;

        const std::string name = nameOfFrame(key, a);
        if (a.flags != b.flags) fail(name + ": other flags");
        const double difference =
            std::fabs(static_cast<double>(a.quality) - static_cast<double>(b.quality));
        result_.largestQualityDifference = std::max(result_.largestQualityDifference, difference);
        if (!(difference <= static_cast<double>(QualityBound))) fail(name + ": other quality");
        comparePosition(key, name, a, b);
    }

    void comparePosition(const Key& key, const std::string& name, const FrameDump& a,
                         const FrameDump& b) {
        const int azimuthSteps = std::abs(a.azimuthIndex - b.azimuthIndex);
        const int elevationSteps = std::abs(a.elevationIndex - b.elevationIndex);
        if (azimuthSteps == 0 && elevationSteps == 0 && a.range == b.range) {
            compareAngles(key, name, a, b);
            return;
        }
        // The sums of two machines differ by no more than the quality may.
        const auto isTie = [](float marginA, float marginB) {
            return std::min(marginA, marginB) <= 2.0f * QualityBound;
        };
        const bool azimuthOk =
            azimuthSteps == 0 || (azimuthSteps == 1 && isTie(a.azimuthMargin, b.azimuthMargin));
        const bool elevationOk =
            elevationSteps == 0 ||
            (elevationSteps == 1 && isTie(a.elevationMargin, b.elevationMargin));
        const bool rangeOk =
            a.range == b.range ||
            (std::fabs(a.range - b.range) <= 1.001f * GridStepOfRange &&
             (isTie(a.azimuthMargin, b.azimuthMargin) || isTie(a.rangeMargin, b.rangeMargin)));
        if (azimuthOk && elevationOk && rangeOk) {
            ++result_.framesOnATie;
            result_.notes.push_back(name + ": on a tie");
        } else {
            fail(name + ": other position");
        }
    }

    /** The same grid points were chosen. */
    void compareAngles(const Key& key, const std::string& name, const FrameDump& a,
                       const FrameDump& b) {
        if (sameValue(a.azimuth, b.azimuth) && sameValue(a.elevation, b.elevation)) return;
        const bool explained = otherAngles_.count(key.first) != 0 &&
                               isSameAngle(a.azimuth, b.azimuth) &&
                               isSameAngle(a.elevation, b.elevation);
        if (explained) {
            ++result_.causes[std::string(Arcsine) + " (angle of a grid point)"];
        } else {
            fail(name + ": other angles of the same grid points");
        }
    }

    /** Counts why the first array that differs does; false when none does. */
    bool findCause(const Key& key, const FrameDump& a, const FrameDump& b) {
        const std::string name = nameOfFrame(key, a);
        if (a.stages.empty() || a.stages.size() != b.stages.size()) {
            fail(name + ": arrays are missing");
            return false;
        }
        for (std::size_t i = 0; i < a.stages.size(); ++i) {
            const Print& stage = a.stages[i];
            if (stage.name == b.stages[i].name && sameBits(stage, b.stages[i])) continue;
            if (i == 0) fail(name + ": other input");
            const char* cause = causeOf(key, stage, b.stages[i]);
            if (cause == nullptr) {
                fail(name + ": " + stage.name + " differs for no known cause");
            } else {
                ++result_.causes[std::string(cause) + ", first seen in " + stage.name];
            }
            differs_.insert(key.first);
            return true;
        }
        return false;
    }

    const char* causeOf(const Key& key, const Print& a, const Print& b) const {
        if (a.withoutTiny == b.withoutTiny) return Denormals;
        if (a_.fused != b_.fused) return Fused;
        if (readsLookupTables(a.name) && otherAngles_.count(key.first) != 0) return Arcsine;
        if (differs_.count(key.first) != 0) return Carried;
        return nullptr;
    }

    void compareVectors() {
        if (a_.vectors.empty() || a_.vectors.size() != b_.vectors.size()) {
            fail("outputs are missing");
        }
        for (const auto& [name, values] : a_.vectors) {
            const auto other = b_.vectors.find(name);
            ++result_.vectors;
            if (other == b_.vectors.end() || other->second.size() != values.size()) {
                fail("output " + name + " is missing");
            } else if (other->second != values) {
                ++result_.vectorsThatDiffer;
                explainVector(name, values, other->second);
            }
        }
    }

    void explainVector(const std::string& name, const std::vector<std::uint32_t>& a,
                       const std::vector<std::uint32_t>& b) {
        if (isTiny(name) && differByFlushingOnly(a, b)) {
            ++result_.causes[std::string(Denormals) + " (FFT and FIR outputs)"];
        } else if (a_.fused != b_.fused) {
            ++result_.causes[std::string(Fused) + " (FFT and FIR outputs)"];
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
