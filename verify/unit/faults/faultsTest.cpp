// Every allocation and every call to the system fails in turn, wherever the libraries make one: the
// process ends by the promised assertion or goes on unharmed, and never by a bad pointer.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "audunittest/audunittest.h"
#include "console/audtime.h"
#include "console/eventlog.h"
#include "injection.h"
#include "kit/capturedConsole.h"
#include "kit/lastWords.h"
#include "kit/products.h"
#include "kit/temporaryFile.h"
#include "voxloc/unittestGenerator.h"
#include "voxloc/voxloc.h"

namespace {

using faults::Outcome;

/** Says at the end of all tests how many faults there were. */
class Count : public ::testing::Environment {
  public:
    void TearDown() override {
        const bool isPassed = ::testing::UnitTest::GetInstance()->Passed();
        std::printf("\nnote: faults: %d injected, %s\n", faults::count(),
                    isPassed ? "each met as promised" : "not all met as promised");
    }
};
::testing::Environment* const CountAtTheEnd = ::testing::AddGlobalTestEnvironment(new Count);

void expectClean(const Outcome& outcome) {
    EXPECT_EQ(outcome.status, 0) << outcome.describe();
}

/** All that the process has printed is the report of that assertion, a regular expression. */
void expectAssertion(const Outcome& outcome, const std::string& report) {
    EXPECT_EQ(outcome.status, -SIGABRT) << outcome.describe();
    EXPECT_TRUE(::testing::internal::RE::FullMatch(outcome.text, report)) << outcome.describe();
}

void expectWordlessEnd(const Outcome& outcome) {
    expectAssertion(outcome, lastWords(""));
}

/** Where a process costs ten times as much, two products stand for all and one recording. */
#if defined(__SANITIZE_ADDRESS__) || defined(__arm__) || defined(__aarch64__)
constexpr bool SlowMachine = true;
#else
constexpr bool SlowMachine = false;
#endif

std::vector<VoxlocProduct> products() {
    if (!SlowMachine) return kit::products();
    return {*voxloc_findProduct(PRODUCT_BRAMBLE), *voxloc_findProduct(PRODUCT_FOXGLOVE)};
}

/** What a scenario comes to with a fault; without one it is clean. */
template <class Expect>
auto ifFailed(Expect expect) {
    return [expect](const Outcome& outcome) {
        outcome.hasFailed ? expect(outcome) : expectClean(outcome);
    };
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
            faults::watch(true);
            voxloc_initialize(product.type);
            voxloc_destroy();
            return faults::openBlocks() == 0;
        };
        std::size_t allocations = 0;
        faults::runWithEach(initialise, [&](const Outcome& outcome) {
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
        faults::watch(true);
        VoxlocTracker* tracker = create(reason);
        const bool isSaid = std::strcmp(reason, tracker == nullptr ? "out of memory" : "") == 0;
        voxloc_destroyTracker(tracker);
        faults::watch(false);
        return isSaid && faults::openBlocks() == 0;
    };
    int failures = 0;
    faults::runWithEach(
        createAndDestroy,
        [&](const Outcome& outcome) {
            expectClean(outcome);
            failures += outcome.hasFailed ? 1 : 0;
        },
        faults::Where::Here);
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
        faults::watch(true);
        destroyAudioGenerator(
            createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 0));
        return faults::openBlocks() == 0;
    };
    faults::runWithEach(
        generate, ifFailed([](const Outcome& outcome) {
            const bool isFirst = outcome.fault.call == 1;
            expectAssertion(
                outcome,
                assertionReport(Track + "unittestGenerator", "createAudioGenerator",
                                isFirst ? "generator != nullptr" : "generator->frame != nullptr"));
        }));
}

void pass() {
    audunittest_succeed_test("file", 1);
}
void fail() {
    audunittest_fail_test("file", 2);
}

void registerThree() {
    audunittest_register_test(pass, "b");
    audunittest_register_test(fail, "c_fails");
    audunittest_register_test(pass, "a");
}

TEST(MemoryOfRegistration, ThatIsMissingEndsTheProgramWithoutAWord) {
    const auto registerTests = [] {
        faults::watch(true);
        registerThree();
        return true;
    };
    faults::runWithEach(registerTests, ifFailed(expectWordlessEnd));
}

// ---- clocks ------------------------------------------------------------------------------------

unsigned int commandLine(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "program");
    return audunittest_commandline(static_cast<int>(arguments.size()), arguments.data());
}

TEST(ClocksOfARun, ThatFailEndTheProgram) {
    const auto runAll = [] {
        registerThree();
        CapturedConsole console;
        current_console = &console.operations;
        faults::watch(true);
        return commandLine({"--runall"}) == 1;
    };
    faults::runWithEach(runAll, ifFailed(expectWordlessEnd));
}

TEST(ClocksOfTheTimeServices, ThatFailEndTheProgramWithTheReason) {
    const auto readAll = [] {
        faults::watch(true);
        NYRA_time now;
        NYRA_currentTime(&now);
        return NYRA_now64() > 0 && audtime_getTicks() != 1;
    };
    faults::runWithEach(readAll, ifFailed([](const Outcome& outcome) {
                            expectAssertion(outcome,
                                            lastWords("NYRA_currentTime: Invalid argument\n"));
                        }));
}

// ---- recordings --------------------------------------------------------------------------------

constexpr std::size_t Frames = 3, RecordSize = 8 + 4 * 2048 * 4;  // of PRODUCT_FOXGLOVE

/** What the module makes of some frames, while it records to the path or to none. */
struct Session {
    std::vector<TrackerResult> results;
    std::size_t lost = 0;
    bool isOpen = false;
};

std::vector<float> frameNumber(std::size_t number) {
    std::vector<float> frame(4 * FRAME_SAMPLES);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        frame[i] = static_cast<float>((i * i * (number + 3)) % 20011) - 10000.0f;
    }
    return frame;
}

/** The module records from here to the end of a test, in its processes, too. */
class RecordingModule : public ::testing::Test {
  protected:
    void SetUp() override {
        voxloc_initialize(PRODUCT_FOXGLOVE);
        for (std::size_t i = 0; i < Frames; ++i) frames_.push_back(frameNumber(i));
        const Outcome outcome = faults::runWith({}, [&] {
            expected_ = trackFrames(nullptr).results;
            return std::fwrite(expected_.data(), sizeof(TrackerResult), Frames, stderr) == Frames;
        });
        ASSERT_EQ(outcome.text.size(), Frames * sizeof(TrackerResult));
        expected_.resize(Frames);
        std::memcpy(expected_.data(), outcome.text.data(), outcome.text.size());
    }
    void TearDown() override { voxloc_destroy(); }

    Session trackFrames(const char* path) const {
        Session session;
        session.results.resize(Frames);
        faults::watch(true);
        if (path != nullptr) voxloc_record_start(path);
        session.isOpen = voxloc_record_isOpen() == 1;
        for (std::size_t i = 0; i < Frames; ++i) {
            voxloc_calculate(frames_[i].data(), 24, 0, &session.results[i]);
        }
        voxloc_record_stop();
        faults::watch(false);
        session.lost = voxloc_record_getLostFrames();
        return session;
    }

    /** The results are those of a module that does not record. */
    bool isUnharmed(const Session& session) const {
        return std::memcmp(session.results.data(), expected_.data(),
                           Frames * sizeof(TrackerResult)) == 0;
    }

  private:
    std::vector<std::vector<float>> frames_;
    std::vector<TrackerResult> expected_;
};

/** Where a file's records stand: 0 when it is empty. */
std::size_t wholeRecords(const std::string& content) {
    return content.size() < 4 ? 0 : (content.size() - 4) / RecordSize;
}

bool holdsWholeRecords(const std::string& content) {
    return content.empty() || (content.size() - 4) % RecordSize == 0;
}

using Recording = RecordingModule;
using RecordingToAFullDisk = RecordingModule;
using RecordingToAPipe = RecordingModule;

TEST_F(Recording, OutlivesEveryFailingCallAndCountsWhatItLost) {
    if (SlowMachine) return;
    const TemporaryFile file;
    const auto record = [&] {
        const Session session = trackFrames(file.path());
        const std::string content = file.content();
        return isUnharmed(session) && holdsWholeRecords(content) &&
               (!session.isOpen || wholeRecords(content) + session.lost == Frames);
    };
    faults::runWithEach(record, expectClean);
}

/** Room for the header, a record and a half: what stands of the second has to be cut off. */
TEST_F(RecordingToAFullDisk, OutlivesEveryFailingCall) {
    const TemporaryFile file;
    const auto record = [&] {
        const rlimit room = {4 + RecordSize * 3 / 2, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &room);
        const Session session = trackFrames(file.path());
        const std::string content = file.content();
        // What cannot be cut off for good stays, behind the whole records.
        return isUnharmed(session) &&
               (!session.isOpen || wholeRecords(content) + session.lost == Frames);
    };
    faults::runWithEach(record, [&](const Outcome& outcome) {
        expectClean(outcome);
        if (outcome.call != "ftruncate" && outcome.call != "lseek") {
            EXPECT_TRUE(holdsWholeRecords(file.content())) << outcome.describe();
        }
    });
}

TEST_F(RecordingToAPipe, OutlivesEveryFailingCall) {
    if (SlowMachine) return;
    const TemporaryFile file;
    unlink(file.path());
    ASSERT_EQ(mkfifo(file.path(), 0600), 0);
    const auto record = [&] {
        const int reader = open(file.path(), O_RDONLY | O_NONBLOCK);
        fcntl(reader, F_SETPIPE_SZ, 1 << 20);  // all records fit
        const Session session = trackFrames(file.path());
        std::string content(5 * RecordSize, '\0');
        const ssize_t count = read(reader, content.data(), content.size());
        content.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return isUnharmed(session) && wholeRecords(content) + session.lost <= Frames;
    };
    faults::runWithEach(record, expectClean);
}

TEST_F(Recording, ToWhereItMayNotWriteIsRefused) {
    const TemporaryFile file;
    chmod(file.path(), 0400);
    const std::string folder = ::testing::TempDir();
    for (const std::string& path :
         {std::string(file.path()), folder, folder + "/no/such/folder", std::string()}) {
        const Outcome outcome = faults::runWith({}, [&] {
            constexpr uid_t nobody = 65534;
            if (geteuid() == 0 && seteuid(nobody) != 0) return false;  // root may write anywhere
            const Session session = trackFrames(path.c_str());
            return isUnharmed(session) && !session.isOpen && session.lost == 0;
        });
        faults::countOne();
        expectClean(outcome);
    }
}

// ---- standard error ----------------------------------------------------------------------------

/** Closed, full, or a file that may not grow. */
enum class Broken { Closed, Full };

void breakStandardError(Broken how) {
    if (how == Broken::Closed) {
        close(STDERR_FILENO);
    } else {
        dup2(open("/dev/full", O_WRONLY), STDERR_FILENO);
    }
}

void expectWithBroken(const std::function<bool()>& scenario, int status) {
    for (const Broken how : {Broken::Closed, Broken::Full}) {
        const Outcome outcome = faults::runWith({}, [&] {
            breakStandardError(how);
            return scenario();
        });
        faults::countOne();
        EXPECT_EQ(outcome.status, status) << (how == Broken::Closed ? "closed" : "full");
        EXPECT_EQ(outcome.text, "");
    }
}

TEST(BrokenStandardError, ChangesNoStatusOfARun) {
    const auto run = [] {
        registerThree();
        return commandLine({"--runall"}) == 1 && commandLine({"--run", "a"}) == 0 &&
               commandLine({"--run", "c_fails"}) == 1 && commandLine({"--list"}) == 0 &&
               commandLine({"--none"}) == 1 && commandLine({}) == 0;
    };
    expectWithBroken(run, 0);
}

TEST(BrokenStandardError, IsToldByTheLog) {
    expectWithBroken(
        [] {
            return eventlog("%d", 1) == EOF && eventlogputs("text") == EOF &&
                   eventlogwrite("text", 4) == EOF;
        },
        0);
}

using RecordingWithBrokenStandardError = RecordingModule;

TEST_F(RecordingWithBrokenStandardError, ChangesNoResult) {
    const auto losingFrames = [&] {
        return isUnharmed(trackFrames("/dev/full"));  // warns of it
    };
    expectWithBroken(losingFrames, 0);
}

TEST(BrokenStandardError, LeavesAssertionsAndAbortsAsTheyAre) {
    const auto wrongProduct = [] {
        voxloc_initialize(3);
        return true;
    };
    expectWithBroken(wrongProduct, -SIGABRT);
    const auto die = []() -> bool { eventlog_die("%s\n", "a text"); };
    expectWithBroken(die, -SIGABRT);
}

}  // namespace
