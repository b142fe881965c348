// Recordings to what does not take them: the tracker goes on, only whole records stand in a file,
// and what is lost is counted and told.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "initializedModule.h"
#include "kit/fileSizeLimit.h"
#include "kit/temporaryFile.h"
#include "track/tracker.h"

namespace {

constexpr std::size_t RecordSize = 8 + 4 * 2048 * 4;  // of PRODUCT_FOXGLOVE

/** A frame and its record; all frames differ. */
struct Sent {
    std::vector<float> frame;
    std::string record;
};

Sent sentFrame(unsigned int number) {
    std::vector<float> frame = noiseFrame(4, number);
    return {frame, recordOf(24, number, frame)};
}

/** Hands frames first to last to the module, and gives their records. */
std::string sendFrames(unsigned int first, unsigned int last) {
    std::string records;
    for (unsigned int i = first; i <= last; ++i) {
        const Sent sent = sentFrame(i);
        TrackerResult result{};
        voxloc_calculate(sent.frame.data(), 24, i, &result);
        records += sent.record;
    }
    return records;
}

const std::string FoxgloveHeader = "\xAC\x01\x06\x04";

/** A pipe with a name, and a reader that comes, reads and leaves when it is told to. */
class NamedPipe {
  public:
    NamedPipe() {
        unlink(file_.path());
        EXPECT_EQ(mkfifo(file_.path(), 0600), 0);
    }
    ~NamedPipe() { leave(); }
    NamedPipe(const NamedPipe&) = delete;
    NamedPipe& operator=(const NamedPipe&) = delete;

    const char* path() const { return file_.path(); }
    void come() { reader_ = open(file_.path(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }
    void leave() {
        if (reader_ >= 0) close(reader_);
        reader_ = -1;
    }
    /** All that stands in the pipe. */
    std::string read() const {
        std::string content;
        std::vector<char> part(4096);
        ssize_t count = 0;
        while ((count = ::read(reader_, part.data(), part.size())) > 0) {
            content.append(part.data(), static_cast<std::size_t>(count));
        }
        return content;
    }

  private:
    TemporaryFile file_;
    int reader_ = -1;
};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// --- Files --------------------------------------------------------------------------------------

TEST(RecordingToAFullDisk, KeepsWholeRecordsAndGoesOnWhenThereIsSpaceAgain) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(file.path());
    std::string expected = FoxgloveHeader;
    {
        const FileSizeLimit limit(4 + 2 * RecordSize + 5000);  // the third ends within its samples
        expected += sendFrames(1, 2);
        EXPECT_EQ(voxloc_record_getLostFrames(), 0U);
        sendFrames(3, 5);
        EXPECT_EQ(voxloc_record_getLostFrames(), 3U);
        EXPECT_TRUE(file.content() == expected);  // before the end as well
    }
    expected += sendFrames(6, 7);
    voxloc_record_stop();
    EXPECT_TRUE(file.content() == expected);
    EXPECT_EQ(voxloc_record_getLostFrames(), 3U);  // can still be asked
}

TEST(RecordingToAFullDisk, PutsTheHeaderInFrontOfTheFirstRecordThatFits) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    {
        const FileSizeLimit limit(2);
        EXPECT_LT(voxloc_record_start(file.path()), 0);
        EXPECT_EQ(voxloc_record_isOpen(), 1);
        sendFrames(1, 1);
        EXPECT_EQ(file.content(), "");
    }
    const std::string records = sendFrames(2, 3);
    voxloc_record_stop();
    EXPECT_TRUE(file.content() == FoxgloveHeader + records);
    EXPECT_EQ(voxloc_record_getLostFrames(), 1U);
}

TEST(RecordingToAFullDisk, LeavesNoTornRecordWhenItEnds) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    const FileSizeLimit limit(4 + RecordSize + 1);
    voxloc_record_start(file.path());
    const std::string records = sendFrames(1, 1);
    sendFrames(2, 2);
    voxloc_record_stop();
    EXPECT_TRUE(file.content() == FoxgloveHeader + records);
}

TEST(RecordingToAFullDisk, CountsAnew) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    {
        const FileSizeLimit limit(4);
        voxloc_record_start(file.path());
        sendFrames(1, 2);
    }
    EXPECT_EQ(voxloc_record_getLostFrames(), 2U);
    voxloc_record_start(file.path());
    EXPECT_EQ(voxloc_record_getLostFrames(), 0U);
}

// Exits with 0 when the warning, which the log's file does not take either, ends nothing.
[[noreturn]] void loseFramesWithAFullLog(const char* path, const char* log) {
    const int file = open(log, O_WRONLY | O_APPEND);
    dup2(file, STDERR_FILENO);
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(path);
    const FileSizeLimit limit(4);
    static_cast<void>(!write(file, "full", 4));
    sendFrames(1, 2);
    std::_Exit(voxloc_record_getLostFrames() == 2 ? 0 : 1);
}

TEST(RecordingToAFullDiskDeathTest, SurvivesALogOnTheSameDisk) {
    const TemporaryFile file, log;
    EXPECT_EXIT(loseFramesWithAFullLog(file.path(), log.path()), ::testing::ExitedWithCode(0), "");
}

struct Texts {
    std::vector<std::string> texts;
    static void add(void* context, const char* text) {
        static_cast<Texts*>(context)->texts.emplace_back(text);
    }
};

TEST(RecordingToAFullDisk, WarnsOnceARecording) {
    const TemporaryFile file;
    VoxlocTracker* own = voxloc_createProductTracker(PRODUCT_FOXGLOVE, nullptr);
    ASSERT_NE(own, nullptr);
    Texts log;
    voxloc_setLog(own, Texts::add, &log);
    const std::vector<float> frame = noiseFrame(4, 1);
    TrackerResult result{};
    const FileSizeLimit limit(4);
    for (int recording = 0; recording < 2; ++recording) {
        EXPECT_EQ(voxloc_startRecording(own, file.path()), 1);
        for (int i = 0; i < 3; ++i) voxloc_track(own, frame.data(), 24, 0, &result);
        EXPECT_EQ(voxloc_getLostFrames(own), 3U);
    }
    voxloc_destroyTracker(own);
    const std::string warning =
        "Warning: The recording loses frames, the file may not grow any more (error " +
        std::to_string(EFBIG) + ")\n";
    EXPECT_EQ(log.texts, (std::vector<std::string>{warning, warning}));
}

TEST(RecordingToAFullDisk, IsRefusedByATrackerOfOnesOwn) {
    const TemporaryFile file;
    VoxlocTracker* own = voxloc_createProductTracker(PRODUCT_FOXGLOVE, nullptr);
    ASSERT_NE(own, nullptr);
    const FileSizeLimit limit(0);
    EXPECT_EQ(voxloc_startRecording(own, file.path()), 0);
    EXPECT_EQ(voxloc_isRecording(own), 0);
    voxloc_destroyTracker(own);
}

TEST(Recording, GrowsPastTwoGibibytes) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(file.path());
    voxloc::Recording& recording = voxloc::moduleTracker().recording;
    recording.length = (std::int64_t{1} << 31) - 100;
    ASSERT_EQ(lseek64(recording.descriptor, recording.length, SEEK_SET), recording.length);
    sendFrames(1, 2);
    voxloc_record_stop();
    struct stat64 status {};
    ASSERT_EQ(stat64(file.path(), &status), 0);
    EXPECT_EQ(status.st_size, (std::int64_t{1} << 31) - 100 + 2 * std::int64_t{RecordSize});
    EXPECT_EQ(voxloc_record_getLostFrames(), 0U);
}

TEST(Recording, OfAFileThatIsRemovedDoesNoHarm) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(file.path());
    unlink(file.path());
    sendFrames(1, 3);
    EXPECT_EQ(voxloc_record_getLostFrames(), 0U);
    voxloc_record_stop();
}

TEST(Recording, ToWhatIsNoFileIsRefused) {
    EXPECT_EQ(voxloc_record_start(::testing::TempDir().c_str()), 0);  // a folder
    EXPECT_EQ(voxloc_record_start(""), 0);
    EXPECT_EQ(voxloc_record_start(nullptr), 0);
    EXPECT_EQ(voxloc_record_isOpen(), 0);
}

// --- Pipes --------------------------------------------------------------------------------------

TEST(RecordingToAPipe, IsRefusedWithoutAReader) {
    const NamedPipe pipe;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    EXPECT_EQ(voxloc_record_start(pipe.path()), 0);
    EXPECT_EQ(voxloc_record_isOpen(), 0);
}

TEST(RecordingToAPipe, HandsEveryRecordToItsReader) {
    NamedPipe pipe;
    pipe.come();
    const InitializedModule module(PRODUCT_FOXGLOVE);
    EXPECT_EQ(voxloc_record_start(pipe.path()), 4);
    EXPECT_EQ(pipe.read(), FoxgloveHeader);
    for (unsigned int i = 1; i <= 3; ++i) {
        const std::string record = sendFrames(i, i);
        EXPECT_TRUE(pipe.read() == record) << i;
    }
    EXPECT_EQ(voxloc_record_getLostFrames(), 0U);
}

TEST(RecordingToAPipe, OutlivesItsReader) {
    NamedPipe pipe;
    pipe.come();
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(pipe.path());
    sendFrames(1, 1);
    pipe.leave();
    sendFrames(2, 4);  // the signal would end this program
    EXPECT_EQ(voxloc_record_getLostFrames(), 3U);
    pipe.come();
    sendFrames(5, 5);  // no reader begins in the middle
    EXPECT_EQ(voxloc_record_getLostFrames(), 4U);
    EXPECT_EQ(voxloc_record_isOpen(), 1);
}

TEST(RecordingToAPipe, WaitsForNobodyForLongAndStaysAligned) {
    NamedPipe pipe;
    pipe.come();
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(pipe.path());
    const auto start = std::chrono::steady_clock::now();
    const std::string sent = FoxgloveHeader + sendFrames(1, 20);
    const double seconds = secondsSince(start);
    EXPECT_GE(seconds, 0.1);
    EXPECT_LT(seconds, 1.5);  // one wait, not one a frame
    const std::uint32_t lost = voxloc_record_getLostFrames();
    EXPECT_GE(lost, 15U);
    std::string received = pipe.read();
    const std::string later = sendFrames(21, 21);  // with the rest of what was begun
    received += pipe.read();
    EXPECT_EQ(voxloc_record_getLostFrames(), lost);
    const std::size_t kept = 4 + (20 - lost) * RecordSize;
    EXPECT_TRUE(received == sent.substr(0, kept) + later);
}

TEST(RecordingToAPipe, CountsTheRecordThatItsEndCutsOff) {
    NamedPipe pipe;
    pipe.come();
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(pipe.path());
    sendFrames(1, 5);
    const std::uint32_t lost = voxloc_record_getLostFrames();
    voxloc_record_stop();
    EXPECT_EQ(voxloc_record_getLostFrames(), lost + 1);
    EXPECT_EQ((pipe.read().size() - 4) / RecordSize, 5 - lost - 1);
}

// --- What else belongs to the process -----------------------------------------------------------

TEST(Recording, IsClosedInProgramsThatAreStarted) {
    const TemporaryFile file;
    voxloc_record_start(file.path());
    const int flags = fcntl(voxloc::moduleTracker().recording.descriptor, F_GETFD);
    EXPECT_EQ(flags & FD_CLOEXEC, FD_CLOEXEC);
    voxloc_record_stop();
}

// Exits with 0 when the recording took a number above the standard streams', and is as it should.
[[noreturn]] void recordWithoutStandardStreams(const char* path) {
    for (int stream = 0; stream <= 2; ++stream) close(stream);
    voxloc_initialize(PRODUCT_FOXGLOVE);
    voxloc_record_start(path);
    const int descriptor = voxloc::moduleTracker().recording.descriptor;
    const bool isClosedOnExec = (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
    static_cast<void>(std::fputs("a text of the log\n", stderr));
    sendFrames(1, 1);
    voxloc_destroy();
    std::_Exit(descriptor > 2 && isClosedOnExec ? 0 : 1);
}

TEST(RecordingDeathTest, NeverTakesAStandardStreamsNumber) {
    const TemporaryFile file;
    EXPECT_EXIT(recordWithoutStandardStreams(file.path()), ::testing::ExitedWithCode(0), "");
    EXPECT_TRUE(file.content() == FoxgloveHeader + sentFrame(1).record);
}

TEST(Recording, IsNotWrittenAgainByAForkedChild) {
    const TemporaryFile file;
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(file.path());
    std::string expected = FoxgloveHeader + sendFrames(1, 1);
    const pid_t child = fork();
    if (child == 0) {
        voxloc_record_stop();
        std::_Exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    expected += sendFrames(2, 2);
    voxloc_record_stop();
    EXPECT_TRUE(file.content() == expected);
}

sigset_t signalMask() {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return mask;
}

bool isPending(int signal) {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, signal) == 1;
}

TEST(Recording, LeavesTheProgramsSignalsAlone) {
    NamedPipe pipe;
    pipe.come();
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(pipe.path());
    pipe.leave();
    sendFrames(1, 2);
    const sigset_t mask = signalMask();
    EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
    EXPECT_EQ(sigismember(&mask, SIGXFSZ), 0);
    EXPECT_FALSE(isPending(SIGPIPE));
}

TEST(Recording, KeepsASignalThatWaitsForTheProgram) {
    sigset_t one, before;
    sigemptyset(&one);
    sigaddset(&one, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &one, &before);
    raise(SIGPIPE);
    NamedPipe pipe;
    pipe.come();
    const InitializedModule module(PRODUCT_FOXGLOVE);
    voxloc_record_start(pipe.path());
    pipe.leave();
    sendFrames(1, 2);
    EXPECT_TRUE(isPending(SIGPIPE));
    const timespec noTime{};
    EXPECT_EQ(sigtimedwait(&one, nullptr, &noTime), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace
