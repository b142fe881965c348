// Broken preconditions of initialise and energy: what the process says before it aborts.

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

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
    for (const std::int32_t type : {3, 8, -1, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(type);
        EXPECT_ABORT(voxloc_initialize(type), noProductReport(type));
    }
}

TEST(VoxlocInitializeDeathTest, RejectsASecondInitialize) {
    voxloc_initialize(PRODUCT_ASTER);
    EXPECT_ABORT(voxloc_initialize(PRODUCT_ASTER),
                 moduleReport("voxloc_initialize", "!IsTransducersInitialized"));
    voxloc_destroy();
}

// The product is looked at before the state.
TEST(VoxlocInitializeDeathTest, RejectsWhatIsNoProductFirst) {
    voxloc_initialize(PRODUCT_ASTER);
    EXPECT_ABORT(voxloc_initialize(3), noProductReport(3));
    voxloc_destroy();
}

TEST(InitializeTransducerDataDeathTest, RejectsAProductWithoutPositions) {
    voxloc_initialize(PRODUCT_ASTER);
    const auto placeUnknown = [] {
        voxloc::initializeTransducerData(voxloc::moduleTracker(), nullptr);
    };
    EXPECT_ABORT(placeUnknown(), moduleReport("initializeTransducerData", "false"));
    voxloc_destroy();
}

struct Check {
    const char* pattern;
    void (*breakIt)();
};

// In the order in which they are made.
const std::vector<Check>& checks() {
    static const std::vector<Check> list{
        {"NumberOfChannels > 0", [] { voxloc::moduleTracker().NumberOfChannels = 0; }},
        {"NumberOfAzimuthPairs > 0", [] { voxloc::moduleTracker().NumberOfAzimuthPairs = 0; }},
        {"MinimumElevation != 0\\.0f", [] { voxloc::moduleTracker().MinimumElevation = 0.0f; }},
        {"MinimumAzimuth != 0\\.0f", [] { voxloc::moduleTracker().MinimumAzimuth = 0.0f; }},
        {"AngleInterval > 0\\.0f", [] { voxloc::moduleTracker().AngleInterval = 0.0f; }},
        {"InputAudio", [] { voxloc::moduleTracker().InputAudio = nullptr; }},
        {"RawAudioInput1", [] { voxloc::moduleTracker().RawAudioInput1 = nullptr; }},
        {"RawAudioInput2", [] { voxloc::moduleTracker().RawAudioInput2 = nullptr; }},
        {"FftResult", [] { voxloc::moduleTracker().FftResult = nullptr; }},
        {"Numerator1", [] { voxloc::moduleTracker().Numerator1 = nullptr; }},
        {"Numerator2", [] { voxloc::moduleTracker().Numerator2 = nullptr; }},
        {"NoisePowerEstimate", [] { voxloc::moduleTracker().NoisePowerEstimate = nullptr; }},
        {"FrequencyWeight", [] { voxloc::moduleTracker().FrequencyWeight = nullptr; }},
        {"TimeoutCounter", [] { voxloc::moduleTracker().TimeoutCounter = nullptr; }},
        {"AzimuthElevationLookupTable",
         [] { voxloc::moduleTracker().AzimuthElevationLookupTable = nullptr; }},
        {"AzimuthRangeLookupTable",
         [] { voxloc::moduleTracker().AzimuthRangeLookupTable = nullptr; }},
        {"Microphones", [] { voxloc::moduleTracker().Microphones = nullptr; }},
        {"Loudspeaker", [] { voxloc::moduleTracker().Loudspeaker = nullptr; }},
        {"AzimuthPairs", [] { voxloc::moduleTracker().AzimuthPairs = nullptr; }},
        {"AzimuthQuality", [] { voxloc::moduleTracker().AzimuthQuality = nullptr; }},
        {"ElevationQuality", [] { voxloc::moduleTracker().ElevationQuality = nullptr; }},
        {"KeptCorrelations", [] { voxloc::moduleTracker().KeptCorrelations = nullptr; }},
    };
    return list;
}

TEST(CheckMemoryAllocationDeathTest, MakesEachCheckByItsName) {
    voxloc_initialize(PRODUCT_ASTER);
    for (const Check& check : checks()) {
        SCOPED_TRACE(check.pattern);
        const auto breakOne = [&check] {
            check.breakIt();
            voxloc::checkMemoryAllocation(voxloc::moduleTracker());
        };
        EXPECT_ABORT(breakOne(), moduleReport("checkMemoryAllocation", check.pattern));
    }
    voxloc_destroy();
}

// With everything from one check on broken, that check is the one that is reported.
TEST(CheckMemoryAllocationDeathTest, MakesTheChecksInOrder) {
    voxloc_initialize(PRODUCT_ASTER);
    for (std::size_t first = 0; first < checks().size(); ++first) {
        SCOPED_TRACE(checks()[first].pattern);
        const auto breakTheRest = [first] {
            for (std::size_t i = first; i < checks().size(); ++i) checks()[i].breakIt();
            voxloc::checkMemoryAllocation(voxloc::moduleTracker());
        };
        EXPECT_ABORT(breakTheRest(),
                     moduleReport("checkMemoryAllocation", checks()[first].pattern));
    }
    voxloc_destroy();
}

TEST(CheckMemoryAllocation, LooksNeitherAtTheElevationPairsNorAtTheirCount) {
    voxloc_initialize(PRODUCT_ASTER);
    voxloc::MicrophonePair* const pairs = voxloc::moduleTracker().ElevationPairs;
    voxloc::moduleTracker().ElevationPairs = nullptr;
    voxloc::moduleTracker().NumberOfElevationPairs = 0;
    voxloc::checkMemoryAllocation(voxloc::moduleTracker());
    voxloc::moduleTracker().ElevationPairs = pairs;
    voxloc::moduleTracker().NumberOfElevationPairs = 3;
    voxloc_destroy();
}

TEST(CheckMemoryAllocationDeathTest, TakesNegativeNumbersForMissing) {
    voxloc_initialize(PRODUCT_ASTER);
    const auto negativeChannels = [] {
        voxloc::moduleTracker().NumberOfChannels = -1;
        voxloc::checkMemoryAllocation(voxloc::moduleTracker());
    };
    const auto negativeInterval = [] {
        voxloc::moduleTracker().AngleInterval = -0.008f;
        voxloc::checkMemoryAllocation(voxloc::moduleTracker());
    };
    EXPECT_ABORT(negativeChannels(), moduleReport("checkMemoryAllocation", "NumberOfChannels > 0"));
    EXPECT_ABORT(negativeInterval(),
                 moduleReport("checkMemoryAllocation", "AngleInterval > 0\\.0f"));
    voxloc_destroy();
}

}  // namespace
