// Broken preconditions of initialise and energy: what the process says before it aborts.

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

#include "initializedModule.h"
#include "kit/lastWords.h"
#include "track/tracker.h"

namespace {

std::string moduleReport(const std::string& function, const std::string& expression) {
    return assertionReport("functional/audio/voxloc/cmod/track/voxloc", function, expression);
}

#define EXPECT_ABORT(statement, report) \
    EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGABRT), report)

// The log says which number came before the assertion fails.
std::string noProductReport(std::int32_t type) {
    const std::string assertion = moduleReport("voxloc_initialize", "false");
    return "^No product has the type " + std::to_string(type) + "\n" + assertion.substr(1);
}

TEST(VoxlocInitializeDeathTest, RejectsWhatIsNoProduct) {
    const std::int32_t last = voxloc_getProduct(voxloc_getNumberOfProducts() - 1)->type;
    for (const std::int32_t type : {3, last + 1, -1, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(type);
        EXPECT_ABORT(voxloc_initialize(type), noProductReport(type));
    }
}

// The product is looked at before the state.
TEST(VoxlocInitializeDeathTest, RejectsASecondInitialize) {
    const InitializedModule module(PRODUCT_ASTER);
    EXPECT_ABORT(voxloc_initialize(PRODUCT_ASTER),
                 moduleReport("voxloc_initialize", "!IsTransducersInitialized"));
    EXPECT_ABORT(voxloc_initialize(3), noProductReport(3));
}

TEST(InitializeTransducerDataDeathTest, RejectsAProductWithoutPositions) {
    EXPECT_ABORT(voxloc::initializeTransducerData(voxloc::moduleTracker(), nullptr),
                 moduleReport("initializeTransducerData", "false"));
}

using voxloc::Tracker;

struct Check {
    const char* pattern;
    void (*breakIt)(Tracker& tracker);
};

#define BUFFER(name)                                             \
    {                                                            \
#name, [](Tracker & tracker) { tracker.name = nullptr; } \
    }

// In the order in which they are made.
const std::vector<Check>& checks() {
    static const std::vector<Check> list{
        {"NumberOfChannels > 0", [](Tracker& tracker) { tracker.NumberOfChannels = 0; }},
        {"NumberOfAzimuthPairs > 0", [](Tracker& tracker) { tracker.NumberOfAzimuthPairs = 0; }},
        {"MinimumElevation != 0\\.0f", [](Tracker& tracker) { tracker.MinimumElevation = 0.0f; }},
        {"MinimumAzimuth != 0\\.0f", [](Tracker& tracker) { tracker.MinimumAzimuth = 0.0f; }},
        {"AngleInterval > 0\\.0f", [](Tracker& tracker) { tracker.AngleInterval = 0.0f; }},
        BUFFER(InputAudio),
        BUFFER(RawAudioInput1),
        BUFFER(RawAudioInput2),
        BUFFER(FftResult),
        BUFFER(Numerator1),
        BUFFER(Numerator2),
        BUFFER(NoisePowerEstimate),
        BUFFER(FrequencyWeight),
        BUFFER(TimeoutCounter),
        BUFFER(AzimuthElevationLookupTable),
        BUFFER(AzimuthRangeLookupTable),
        BUFFER(Microphones),
        BUFFER(Loudspeaker),
        BUFFER(AzimuthPairs),
        BUFFER(AzimuthQuality),
        BUFFER(ElevationQuality),
        BUFFER(KeptCorrelations),
    };
    return list;
}

// With everything from one check on broken, or that alone, that check is the one that is reported.
TEST(CheckMemoryAllocationDeathTest, MakesEachCheckByItsNameInOrder) {
    voxloc_initialize(PRODUCT_ASTER);
    for (std::size_t first = 0; first < checks().size(); ++first) {
        SCOPED_TRACE(checks()[first].pattern);
        for (const std::size_t last : {first, checks().size() - 1}) {
            const auto breakSome = [first, last] {
                Tracker& tracker = voxloc::moduleTracker();
                for (std::size_t i = first; i <= last; ++i) checks()[i].breakIt(tracker);
                voxloc::checkMemoryAllocation(tracker);
            };
            EXPECT_ABORT(breakSome(),
                         moduleReport("checkMemoryAllocation", checks()[first].pattern));
        }
    }
    voxloc_destroy();
}

TEST(CheckMemoryAllocation, LooksNeitherAtTheElevationPairsNorAtTheirCount) {
    const InitializedModule module(PRODUCT_ASTER);
    Tracker& tracker = voxloc::moduleTracker();
    voxloc::MicrophonePair* const pairs = tracker.ElevationPairs;
    tracker.ElevationPairs = nullptr;
    tracker.NumberOfElevationPairs = 0;
    voxloc::checkMemoryAllocation(tracker);
    tracker.ElevationPairs = pairs;
}

TEST(CheckMemoryAllocationDeathTest, TakesNegativeNumbersForMissing) {
    const InitializedModule module(PRODUCT_ASTER);
    Tracker& tracker = voxloc::moduleTracker();
    tracker.AngleInterval = -0.008f;
    EXPECT_ABORT(voxloc::checkMemoryAllocation(tracker),
                 moduleReport("checkMemoryAllocation", "AngleInterval > 0\\.0f"));
    tracker.NumberOfChannels = -1;
    EXPECT_ABORT(voxloc::checkMemoryAllocation(tracker),
                 moduleReport("checkMemoryAllocation", "NumberOfChannels > 0"));
}

// Freed memory would be read, or none.
TEST(VoxlocCalculateDeathTest, NeedsAnInitialisedModule) {
    const std::vector<float> frame(8 * 2048);
    TrackerResult result{};
    for (const bool isDestroyed : {false, true}) {
        if (isDestroyed) const InitializedModule earlier(PRODUCT_ASTER);
        EXPECT_ABORT(voxloc_calculate(frame.data(), 24, 0, &result),
                     moduleReport("voxloc_calculate", "IsTransducersInitialized"));
        EXPECT_ABORT(voxloc_getMicrophoneCoordinates(0),
                     moduleReport("voxloc_getMicrophoneCoordinates", "IsTransducersInitialized"));
    }
}

TEST(VoxlocCalculateDeathTest, NeedsAFrameAndARoomForTheResult) {
    const InitializedModule module(PRODUCT_FOXGLOVE);
    const std::vector<float> frame(4 * 2048);
    TrackerResult result{};
    EXPECT_ABORT(voxloc_calculate(nullptr, 24, 0, &result),
                 moduleReport("voxloc_calculate", "frame != nullptr"));
    EXPECT_ABORT(voxloc_calculate(frame.data(), 24, 0, nullptr),
                 moduleReport("voxloc_calculate", "result != nullptr"));
}

TEST(Getters, TellTheLastProductWhenItIsDestroyed) {
    { const InitializedModule earlier(PRODUCT_FOXGLOVE); }
    EXPECT_EQ(voxloc_getNumberOfChannels(), 4U);
    EXPECT_EQ(voxloc_getUltraSoundLevel(), -100.0f);
}

}  // namespace
