// Every allocation and every reading of a clock fails in turn: the process ends by the promised
// assertion, and never by a bad pointer.

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "console/audtime.h"
#include "faultsTesting.h"
#include "kit/capturedConsole.h"
#include "kit/products.h"
#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

namespace {

using namespace faults;

std::vector<VoxlocProduct> products() {
    if (!SlowMachine) return kit::products();
    return {*voxloc_findProduct(PRODUCT_BRAMBLE), *voxloc_findProduct(PRODUCT_FOXGLOVE)};
}

// ---- memory ------------------------------------------------------------------------------------

const std::string Track = "functional/audio/voxloc/cmod/track/";

std::string ofModule(const std::string& function, const std::string& expression) {
    return assertionReport(Track + "voxloc", function, expression);
}

std::string ofUltrasound(const std::string& line, const std::string& expression) {
    return lastWords("[^\n]*: " + Track + "UltraSoundDistortionDetection:" + line +
                     ": initializeUltraSoundDistortionDetector: Assertion `" + expression +
                     "' failed\\.\n");
}

constexpr std::size_t ElevationPairRecords = 14;  // their place among the allocations

/** Who reports that each of the module's allocations has failed, in their order. */
std::vector<std::string> reportsOfTheModule() {
    std::vector<std::string> list;
    for (const char* buffer :
         {"InputAudio", "RawAudioInput1", "RawAudioInput2", "FftResult", "Numerator1", "Numerator2",
          "NoisePowerEstimate", "FrequencyWeight", "TimeoutCounter", "AzimuthElevationLookupTable",
          "AzimuthRangeLookupTable", "Microphones", "Loudspeaker", "AzimuthPairs"}) {
        list.push_back(ofModule("checkMemoryAllocation", buffer));
    }
    // The elevation pairs are not among the checked buffers, so that the last check reports them.
    list.push_back(ofModule("voxloc_initialize", "IsTransducersInitialized"));
    list.push_back(ofModule("checkMemoryAllocation", "AzimuthQuality"));
    list.push_back(ofModule("checkMemoryAllocation", "ElevationQuality"));
    list.push_back(ofModule("checkMemoryAllocation", "KeptCorrelations"));
    list.push_back(ofUltrasound("38", "UltraSoundLevel"));
    list.push_back(ofUltrasound("39", "NeighborBandLevel"));
    return list;
}

// Out of memory for good: the ultrasound detector's check is the first to be made.
TEST(MemoryOfTheModule, ThatIsMissingIsReportedByTheFirstCheckForEveryProduct) {
    const std::vector<std::string> reports = reportsOfTheModule();
    for (const VoxlocProduct& product : products()) {
        SCOPED_TRACE(product.name);
        const auto initialise = [&] {
            watch(true);
            voxloc_initialize(product.type);
            voxloc_destroy();
            return openBlocks() == 0;
        };
        std::size_t allocations = 0;
        runWithEach(initialise, [&](const Outcome& outcome) {
            if (!outcome.hasFailed) return expectClean(outcome);
            const auto at = static_cast<std::size_t>(outcome.fault.call) - 1;
            allocations = at + 1;
            ASSERT_LT(at, reports.size());
            const bool isMissed = at != ElevationPairRecords || product.array.elevationPairs > 0;
            if (outcome.fault.lasts) {
                expectAssertion(outcome, reports[std::max(at, reports.size() - 2)]);
            } else {
                isMissed ? expectAssertion(outcome, reports[at]) : expectClean(outcome);
            }
        });
        EXPECT_EQ(allocations, reports.size());
    }
}

void runWithoutMemory(const std::function<VoxlocTracker*(char* reason)>& create) {
    const auto createAndDestroy = [&] {
        char reason[VOXLOC_REASON_SIZE] = "none";
        watch(true);
        VoxlocTracker* tracker = create(reason);
        const bool isSaid = std::strcmp(reason, tracker == nullptr ? "out of memory" : "") == 0;
        voxloc_destroyTracker(tracker);
        watch(false);
        return isSaid && openBlocks() == 0;
    };
    int failures = 0;
    runWithEach(
        createAndDestroy,
        [&](const Outcome& outcome) {
            expectClean(outcome);
            failures += outcome.hasFailed ? 1 : 0;
        },
        Where::Here);
    EXPECT_EQ(failures, 2 * (1 + 18 + 2));  // the tracker, its buffers, the ultrasound levels
}

TEST(MemoryOfOwnTrackers, ThatIsMissingIsSaidAndNothingLeaks) {
    for (const VoxlocProduct& product : products()) {
        SCOPED_TRACE(product.name);
        runWithoutMemory(
            [&](char* reason) { return voxloc_createProductTracker(product.type, reason); });
    }
    const VoxlocArray array = kit::products().front().array;
    runWithoutMemory([&](char* reason) { return voxloc_createTracker(&array, reason); });
}

TEST(MemoryOfTheGenerator, ThatIsMissingIsAnAssertion) {
    const auto generate = [] {
        watch(true);
        destroyAudioGenerator(
            createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 0));
        return openBlocks() == 0;
    };
    runWithEach(
        generate, ifFailed([](const Outcome& outcome) {
            const bool isFirst = outcome.fault.call == 1;
            expectAssertion(
                outcome,
                assertionReport(Track + "unittestGenerator", "createAudioGenerator",
                                isFirst ? "generator != nullptr" : "generator->frame != nullptr"));
        }));
}

TEST(MemoryOfRegistration, ThatIsMissingEndsTheProgramWithoutAWord) {
    const auto registerTests = [] {
        watch(true);
        registerThree();
        return true;
    };
    runWithEach(registerTests, ifFailed(expectWordlessEnd));
}

// ---- clocks ------------------------------------------------------------------------------------

TEST(ClocksOfARun, ThatFailEndTheProgram) {
    const auto runAll = [] {
        registerThree();
        CapturedConsole console;
        current_console = &console.operations;
        watch(true);
        return commandLine({"--runall"}) == 1;
    };
    runWithEach(runAll, ifFailed(expectWordlessEnd));
}

TEST(ClocksOfTheTimeServices, ThatFailEndTheProgramWithTheReason) {
    const auto readAll = [] {
        watch(true);
        NYRA_time now;
        NYRA_currentTime(&now);
        return NYRA_now64() > 0 && audtime_getTicks() != 1;
    };
    runWithEach(readAll, ifFailed([](const Outcome& outcome) {
                    expectAssertion(outcome, lastWords("NYRA_currentTime: Invalid argument\n"));
                }));
}

}  // namespace
