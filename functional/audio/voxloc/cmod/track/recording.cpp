// Recordings grow past 2 GiB where the system's own offsets have 32 bits.
#define _FILE_OFFSET_BITS 64

#include "recording.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "heldSignals.h"
#include "voxloc.h"

namespace voxloc {

namespace {

static_assert(sizeof(off_t) == 8, "a recording has no limit of its own");

constexpr unsigned char FileMark = 0xAC;
constexpr unsigned char FormatVersion = 1;
constexpr int LastStandardDescriptor = 2;
constexpr std::size_t LongestRecord = sizeof(Recording::header) + 2 * sizeof(std::uint32_t) +
                                      sizeof(float) * VOXLOC_MAX_CHANNELS * FRAME_SAMPLES;

/** That long may a pipe without room hold a frame up, all its waits together. */
constexpr std::int64_t PatienceInNanoseconds = 100000000;

std::int64_t nowInNanoseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

/** What surrounds all writes of a frame. */
struct Attempt {
    HeldSignals signals;
    std::int64_t end = nowInNanoseconds() + PatienceInNanoseconds;
};

/** A record's pieces of memory: header, bits, flags, samples. */
constexpr int MostPieces = 4;
struct Pieces {
    iovec piece[MostPieces];
    int count = 0;

    void add(const void* bytes, std::size_t size) {
        piece[count++] = {const_cast<void*>(bytes), size};  // only read
    }
    std::size_t size() const {
        std::size_t sum = 0;
        for (int i = 0; i < count; ++i) sum += piece[i].iov_len;
        return sum;
    }
    void drop(std::size_t bytes) {
        for (int i = 0; i < count; ++i) {
            const std::size_t part = std::min(bytes, piece[i].iov_len);
            piece[i].iov_base = static_cast<unsigned char*>(piece[i].iov_base) + part;
            piece[i].iov_len -= part;
            bytes -= part;
        }
    }
};

/** An own number above those of the standard streams, whatever is closed; negative: none left. */
int aboveStandardStreams(int descriptor) {
    if (descriptor < 0 || descriptor > LastStandardDescriptor) return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, LastStandardDescriptor + 1);
    close(descriptor);
    return moved;
}

/** Opening a pipe that nobody reads fails, and no write ever waits by itself. */
int openForWriting(const char* path) {
    constexpr int how = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    constexpr mode_t anyoneAsUmaskAllows = 0666;
    return aboveStandardStreams(open(path, how, anyoneAsUmaskAllows));
}

/** False when the time is up. Signals do not shorten the wait, nor do they prolong it. */
bool waitForRoom(int descriptor, std::int64_t end) {
    const std::int64_t left = end - nowInNanoseconds();
    if (left <= 0) return false;
    sigset_t all;
    sigfillset(&all);
    pollfd pipe = {descriptor, POLLOUT, 0};
    timespec time = {};
    time.tv_nsec = static_cast<decltype(time.tv_nsec)>(left);
    return ppoll(&pipe, 1, &time, &all) > 0;
}

/** Writes what can be written, and takes it from the pieces; errno says why not all was. */
void writePieces(Recording& recording, const Attempt& attempt, Pieces& pieces) {
    while (pieces.size() > 0) {
        const ssize_t written = writev(recording.descriptor, pieces.piece, pieces.count);
        if (written > 0) {
            pieces.drop(static_cast<std::size_t>(written));
        } else if (written == 0) {
            errno = ENOSPC;  // what a device that takes nothing may mean
            return;
        } else if (errno == EAGAIN && !recording.isStalled) {
            recording.isStalled = !waitForRoom(recording.descriptor, attempt.end);
        } else if (errno != EINTR) {
            break;
        }
    }
    const int error = pieces.size() > 0 ? errno : 0;
    recording.isAbandoned = error == EPIPE;
    if (error == EPIPE) attempt.signals.drop(SIGPIPE);
    if (error == EFBIG) attempt.signals.drop(SIGXFSZ);
    errno = error;
}

/** Cuts off what stands of a record that is not whole; false as long as that is impossible. */
bool cutTornRecord(Recording& recording) {
    if (!recording.isTorn) return true;
    const int error = errno;
    recording.isTorn = ftruncate(recording.descriptor, recording.length) != 0 ||
                       lseek(recording.descriptor, recording.length, SEEK_SET) != recording.length;
    if (!recording.isTorn) errno = error;
    return !recording.isTorn;
}

/** What a pipe has begun to take cannot be taken back: the rest of the record follows later. */
void keepRest(Recording& recording, const Pieces& pieces) {
    recording.restBegin = recording.restEnd = 0;
    for (int i = 0; i < pieces.count; ++i) {
        const iovec& piece = pieces.piece[i];
        if (piece.iov_len == 0) continue;
        std::memcpy(recording.rest + recording.restEnd, piece.iov_base, piece.iov_len);
        recording.restEnd += piece.iov_len;
    }
}

bool writeRest(Recording& recording, const Attempt& attempt) {
    if (recording.restBegin == recording.restEnd) return true;
    Pieces rest;
    rest.add(recording.rest + recording.restBegin, recording.restEnd - recording.restBegin);
    writePieces(recording, attempt, rest);
    recording.restBegin = recording.restEnd - rest.size();
    return rest.size() == 0;
}

/** Appends all pieces or none: true when they stand in the file, or will. */
bool append(Recording& recording, Pieces& pieces) {
    if (recording.isAbandoned) return false;
    const Attempt attempt;
    if (!cutTornRecord(recording) || !writeRest(recording, attempt)) return false;
    const std::size_t whole = pieces.size();
    writePieces(recording, attempt, pieces);
    const std::size_t left = pieces.size();
    if (left == 0) {
        recording.isStalled = false;
        recording.length += static_cast<std::int64_t>(whole);
        return true;
    }
    if (recording.isFile) {
        recording.isTorn = left < whole;
        cutTornRecord(recording);
        return false;
    }
    if (left == whole || recording.isAbandoned) return false;
    keepRest(recording, pieces);
    return true;
}

/** In a text of its own: the system's are not for several threads everywhere. */
const char* reason(int error) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
            return "there is no space left";
        case EFBIG:
            return "the file may not grow any more";
        case EPIPE:
            return "the reader has left";
        case EAGAIN:
            return "the reader is too slow";
        default:
            return "writing fails";
    }
}

/** The log may be a full file or a pipe that was left, too. */
void warn(const Log& log, int error) {
    const HeldSignals signals;
    logText(log, "Warning: The recording loses frames, %s (error %d)\n", reason(error), error);
    signals.drop(SIGPIPE);
    signals.drop(SIGXFSZ);
}

void loseFrame(Recording& recording, const Log& log, int error) {
    if (recording.lostFrames == 0) warn(log, error);
    if (recording.lostFrames < UINT32_MAX) ++recording.lostFrames;
}

/**
 * Finds out whether it is a file; if not, it needs memory. False when either is not to be had: what
 * is not known to be a file could not be kept whole.
 */
bool prepare(Recording& recording, int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) != 0) return false;
    recording.isFile = S_ISREG(status.st_mode);
    if (recording.isFile) return true;
    recording.rest = static_cast<unsigned char*>(std::malloc(LongestRecord));
    return recording.rest != nullptr;
}

}  // namespace

int startRecording(Recording& recording, const char* path, std::int32_t product,
                   std::int32_t channels) {
    stopRecording(recording);
    recording = {};
    const int descriptor = path != nullptr ? openForWriting(path) : -1;
    if (descriptor < 0) return 0;
    if (!prepare(recording, descriptor)) {
        close(descriptor);
        return 0;
    }
    recording.descriptor = descriptor;
    const unsigned char header[] = {FileMark, FormatVersion, static_cast<unsigned char>(product),
                                    static_cast<unsigned char>(channels)};
    std::memcpy(recording.header, header, sizeof header);
    Pieces pieces;
    pieces.add(recording.header, sizeof recording.header);
    recording.isHeaderOwed = !append(recording, pieces);
    return recording.isHeaderOwed ? EOF : recording.header[3];
}

void recordFrame(Recording& recording, const Log& log, const float* frame, int samples,
                 std::uint32_t bits, std::uint32_t flags) {
    if (!isOpen(recording)) return;
    Pieces record;
    if (recording.isHeaderOwed) record.add(recording.header, sizeof recording.header);
    record.add(&bits, sizeof bits);
    record.add(&flags, sizeof flags);
    record.add(frame, sizeof(float) * static_cast<std::size_t>(samples));
    const int errorBefore = errno;
    errno = EPIPE;  // of a recording that is abandoned
    if (append(recording, record)) {
        recording.isHeaderOwed = false;
        recording.isRestOfFrame = true;
    } else {
        loseFrame(recording, log, errno);
    }
    errno = errorBefore;
}

void stopRecording(Recording& recording) {
    if (!isOpen(recording)) return;
    if (!recording.isAbandoned) {
        const Attempt attempt;
        cutTornRecord(recording);
        // The reader sees the last record's start alone and knows that it is not whole.
        const bool isWhole = writeRest(recording, attempt);
        if (!isWhole && recording.isRestOfFrame) ++recording.lostFrames;
    }
    close(recording.descriptor);
    std::free(recording.rest);
    recording.rest = nullptr;
    recording.descriptor = 0;
}

}  // namespace voxloc
