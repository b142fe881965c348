// Broken preconditions of initialise and energy: what the process says before it aborts.

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

#include "kit/lastWords.h"
#include "track/voxlocState.h"

namespace {

std::string moduleReport(const std::string& function, const std::string& expression) {
    return assertionReport("functional/audio/voxloc/cmod/track/voxloc", function, expression);
}

#define EXPECT_ABORT(statement, report) \
    EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGABRT), report)

TEST(VoxlocInitializeDeathTest, RejectsWhatIsNoProduct) {
    for (const std::int32_t type : {3, 8, -1, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(type);
        EXPECT_ABORT(voxloc_initialize(type), moduleReport("voxloc_initialize", "false"));
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
    EXPECT_ABORT(voxloc_initialize(3), moduleReport("voxloc_initialize", "false"));
    voxloc_destroy();
}

TEST(InitializeTransducerDataDeathTest, RejectsAProductWithoutPositions) {
    voxloc_initialize(PRODUCT_ASTER);
    const auto placeUnknown = [] {
        voxloc::ProductType = 3;
        voxloc::initializeTransducerData();
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
        {"NumberOfChannels > 0", [] { voxloc::NumberOfChannels = 0; }},
        {"NumberOfAzimuthPairs > 0", [] { voxloc::NumberOfAzimuthPairs = 0; }},
        {"MinimumElevation != 0\\.0f", [] { voxloc::MinimumElevation = 0.0f; }},
        {"MinimumAzimuth != 0\\.0f", [] { voxloc::MinimumAzimuth = 0.0f; }},
        {"AngleInterval > 0\\.0f", [] { voxloc::AngleInterval = 0.0f; }},
        {"InputAudio", [] { voxloc::InputAudio = nullptr; }},
        {"RawAudioInput1", [] { voxloc::RawAudioInput1 = nullptr; }},
        {"RawAudioInput2", [] { voxloc::RawAudioInput2 = nullptr; }},
        {"FftResult", [] { voxloc::FftResult = nullptr; }},
        {"Numerator1", [] { voxloc::Numerator1 = nullptr; }},
        {"Numerator2", [] { voxloc::Numerator2 = nullptr; }},
        {"NoisePowerEstimate", [] { voxloc::NoisePowerEstimate = nullptr; }},
        {"FrequencyWeight", [] { voxloc::FrequencyWeight = nullptr; }},
        {"TimeoutCounter", [] { voxloc::TimeoutCounter = nullptr; }},
        {"AzimuthElevationLookupTable", [] { voxloc::AzimuthElevationLookupTable = nullptr; }},
        {"AzimuthRangeLookupTable", [] { voxloc::AzimuthRangeLookupTable = nullptr; }},
        {"Microphones", [] { voxloc::Microphones = nullptr; }},
        {"Loudspeaker", [] { voxloc::Loudspeaker = nullptr; }},
        {"AzimuthPairs", [] { voxloc::AzimuthPairs = nullptr; }},
        {"AzimuthQuality", [] { voxloc::AzimuthQuality = nullptr; }},
        {"ElevationQuality", [] { voxloc::ElevationQuality = nullptr; }},
    };
    return list;
}

TEST(CheckMemoryAllocationDeathTest, MakesEachCheckByItsName) {
    voxloc_initialize(PRODUCT_ASTER);
    for (const Check& check : checks()) {
        SCOPED_TRACE(check.pattern);
        const auto breakOne = [&check] {
            check.breakIt();
            voxloc::checkMemoryAllocation();
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
            voxloc::checkMemoryAllocation();
        };
        EXPECT_ABORT(breakTheRest(),
                     moduleReport("checkMemoryAllocation", checks()[first].pattern));
    }
    voxloc_destroy();
}

TEST(CheckMemoryAllocation, LooksNeitherAtTheElevationPairsNorAtTheirCount) {
    voxloc_initialize(PRODUCT_ASTER);
    voxloc::MicrophonePair* const pairs = voxloc::ElevationPairs;
    voxloc::ElevationPairs = nullptr;
    voxloc::NumberOfElevationPairs = 0;
    voxloc::checkMemoryAllocation();
    voxloc::ElevationPairs = pairs;
    voxloc::NumberOfElevationPairs = 3;
    voxloc_destroy();
}

TEST(CheckMemoryAllocationDeathTest, TakesNegativeNumbersForMissing) {
    voxloc_initialize(PRODUCT_ASTER);
    const auto negativeChannels = [] {
        voxloc::NumberOfChannels = -1;
        voxloc::checkMemoryAllocation();
    };
    const auto negativeInterval = [] {
        voxloc::AngleInterval = -0.008f;
        voxloc::checkMemoryAllocation();
    };
    EXPECT_ABORT(negativeChannels(), moduleReport("checkMemoryAllocation", "NumberOfChannels > 0"));
    EXPECT_ABORT(negativeInterval(),
                 moduleReport("checkMemoryAllocation", "AngleInterval > 0\\.0f"));
    voxloc_destroy();
}

}  // namespace
