// Arrays that a program has at run time: a built-in one with any values written over any of its
// fields is refused with a line that says why, or tracks.

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz.h"
#include "voxloc/voxloc.h"

namespace {

constexpr int MostChanges = 24, Frames = 3;
constexpr std::size_t DrawnFloats = 64;

struct DestroyTracker {
    void operator()(VoxlocTracker* tracker) const { voxloc_destroyTracker(tracker); }
};

static_assert(sizeof(VoxlocArray) % 4 == 0, "every field has four bytes");

/** A place of the table of microphones, in steps of a centimetre. */
float coordinate(InputReader& input) {
    return static_cast<float>(input.take<std::int16_t>()) * 0.01f;
}

void change(InputReader& input, VoxlocArray& array) {
    switch (input.below(4)) {
        case 0:
            array.microphone[input.below(VOXLOC_MAX_CHANNELS)] = {
                coordinate(input), coordinate(input), coordinate(input)};
            break;
        case 1: {
            VoxlocPair& pair = input.below(2) == 0 ? array.azimuthPair[input.below(8)]
                                                   : array.elevationPair[input.below(8)];
            pair = {input.below(8), input.below(8)};
            break;
        }
        case 2:
            array.channels = input.below(9);
            array.azimuthPairs = input.below(9);
            array.elevationPairs = input.below(9);
            break;
        default: {
            const auto field = input.take<std::uint16_t>() % (sizeof(VoxlocArray) / 4) * 4;
            const auto value = input.take<std::uint32_t>();
            std::memcpy(reinterpret_cast<char*>(&array) + field, &value, sizeof value);
        }
    }
}

VoxlocArray anyArray(InputReader& input) {
    const auto index = input.take<std::uint8_t>() % voxloc_getNumberOfProducts();
    VoxlocArray array = voxloc_getProduct(index)->array;
    const int changes = input.below(MostChanges);
    for (int i = 0; i < changes && !input.isEmpty(); ++i) change(input, array);
    return array;
}

void checkReason(const char* reason, bool isRefused) {
    const void* end = std::memchr(reason, '\0', VOXLOC_REASON_SIZE);
    demand(end != nullptr, "a reason fits");
    demand((reason[0] != '\0') == isRefused, "a refusal has a reason, and nothing else has");
    demand(std::strchr(reason, '\n') == nullptr, "a reason is one line");
}

void track(VoxlocTracker* tracker, const VoxlocArray& array, InputReader& input) {
    VoxlocGrid grid;
    voxloc_getGrid(&array, &grid);
    for (int i = 0; i < Frames; ++i) {
        std::vector<float> frame =
            input.floats(static_cast<std::size_t>(array.channels) * FRAME_SAMPLES, DrawnFloats);
        for (float& sample : frame) sample = std::abs(sample) <= 8388608.0f ? sample : 1.0f;
        TrackerResult result{};
        demand(voxloc_track(tracker, frame.data(), 24, 0, &result) == nullptr, "a frame is taken");
        const float rounding = 0.01f;  // degrees, of an arc sine near 90
        demand(result.azimuth >= grid.lowestAzimuth - rounding &&
                   result.azimuth <= grid.highestAzimuth + rounding &&
                   result.elevation >= grid.lowestElevation - rounding &&
                   result.elevation <= grid.highestElevation + rounding,
               "a direction on the grid");
        demand(result.range >= grid.nearestRange - rounding &&
                   result.range <= grid.farthestRange + rounding,
               "a range on the grid");
        demand(std::isfinite(result.quality), "a quality");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const VoxlocArray array = anyArray(input);
    char reason[VOXLOC_REASON_SIZE], again[VOXLOC_REASON_SIZE];
    const bool isGood = voxloc_checkArray(&array, reason) == 1;
    checkReason(reason, !isGood);
    const std::unique_ptr<VoxlocTracker, DestroyTracker> tracker(
        voxloc_createTracker(&array, again));
    demand(std::strcmp(reason, again) == 0, "both give one reason");
    demand((tracker != nullptr) == isGood, "what is accepted can be tracked with");
    if (tracker == nullptr) return 0;
    demand(std::memcmp(voxloc_getArray(tracker.get()), &array, sizeof array) == 0, "a copy");
    track(tracker.get(), array, input);
    return 0;
}
