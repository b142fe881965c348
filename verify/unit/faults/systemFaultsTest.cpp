// Every call that a recording makes fails in turn, and standard error is closed or full: the
// tracker goes on unharmed, and what was lost is counted.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "console/eventlog.h"
#include "faultsTesting.h"
#include "kit/fileSizeLimit.h"
#include "kit/temporaryFile.h"
#include "voxloc/voxloc.h"

namespace {

using namespace faults;

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
        const Outcome outcome = runWith({}, [&] {
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
        watch(true);
        if (path != nullptr) voxloc_record_start(path);
        session.isOpen = voxloc_record_isOpen() == 1;
        for (std::size_t i = 0; i < Frames; ++i) {
            voxloc_calculate(frames_[i].data(), 24, 0, &session.results[i]);
        }
        voxloc_record_stop();
        watch(false);
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
    if (SlowMachine) GTEST_SKIP() << "a full disk stands for all";
    const TemporaryFile file;
    const auto record = [&] {
        const Session session = trackFrames(file.path());
        const std::string content = file.content();
        return isUnharmed(session) && holdsWholeRecords(content) &&
               (!session.isOpen || wholeRecords(content) + session.lost == Frames);
    };
    runWithEach(record, [&](const Outcome& outcome) {
        expectClean(outcome);
        // A device that fails once costs one frame. What nobody reads any more costs all.
        if (outcome.call == "writev" && !outcome.fault.lasts && outcome.error != EPIPE) {
            EXPECT_GE(wholeRecords(file.content()), Frames - 1) << outcome.describe();
        }
    });
}

TEST_F(RecordingToAFullDisk, CutsNothingOffWhereNothingStands) {
    const TemporaryFile file;
    const auto record = [&] {
        const FileSizeLimit room(4 + RecordSize);
        return trackFrames(file.path()).lost == Frames - 1;
    };
    expectClean(runWith({}, record));
    runWithEach([&] { return record() || true; },
                [](const Outcome& outcome) { EXPECT_NE(outcome.call, "ftruncate"); });
}

/** Room for the header, a record and a half: what stands of the second has to be cut off. */
TEST_F(RecordingToAFullDisk, OutlivesEveryFailingCall) {
    const TemporaryFile file;
    const auto record = [&] {
        const FileSizeLimit room(4 + RecordSize * 3 / 2);
        const Session session = trackFrames(file.path());
        const std::string content = file.content();
        // What cannot be cut off for good stays, behind the whole records.
        return isUnharmed(session) &&
               (!session.isOpen || wholeRecords(content) + session.lost == Frames);
    };
    runWithEach(record, [&](const Outcome& outcome) {
        expectClean(outcome);
        if (outcome.call != "ftruncate" && outcome.call != "lseek") {
            EXPECT_TRUE(holdsWholeRecords(file.content())) << outcome.describe();
        }
    });
}

TEST_F(RecordingToAPipe, OutlivesEveryFailingCall) {
    if (SlowMachine) GTEST_SKIP() << "a full disk stands for all";
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
    runWithEach(record, expectClean);
}

TEST_F(RecordingToAPipe, WaitsForRoomAsOftenAsItsReaderMakesSome) {
    const TemporaryFile file;
    unlink(file.path());
    ASSERT_EQ(mkfifo(file.path(), 0600), 0);
    expectClean(runWith({}, [&] {
        const int reader = open(file.path(), O_RDONLY | O_NONBLOCK);
        fcntl(reader, F_SETPIPE_SZ, 4096);  // an eighth of a record
        std::size_t received = 0;
        const auto readSome = [&] {
            char some[4096];
            const ssize_t count = read(reader, some, sizeof some);
            if (count > 0) received += static_cast<std::size_t>(count);
            return count > 0;
        };
        whileWaiting([&] { readSome(); });
        const Session session = trackFrames(file.path());
        while (readSome()) {
        }
        return isUnharmed(session) && session.lost == 0 && received == 4 + Frames * RecordSize;
    }));
}

TEST_F(Recording, ToWhereItMayNotWriteIsRefused) {
    const TemporaryFile file;
    chmod(file.path(), 0400);
    const std::string folder = ::testing::TempDir();
    for (const std::string& path :
         {std::string(file.path()), folder, folder + "/no/such/folder", std::string()}) {
        const Outcome outcome = runWith({}, [&] {
            constexpr uid_t nobody = 65534;
            if (geteuid() == 0 && seteuid(nobody) != 0) return false;  // root may write anywhere
            const Session session = trackFrames(path.c_str());
            return isUnharmed(session) && !session.isOpen && session.lost == 0;
        });
        countOne();
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
        const Outcome outcome = runWith({}, [&] {
            breakStandardError(how);
            return scenario();
        });
        countOne();
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
