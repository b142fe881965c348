#include "injection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "kit/standardError.h"

namespace {

using faults::Fault;
using faults::Outcome;

/** A call writes half of what it should, or nothing, and reports no error. */
constexpr int Half = -1, Nothing = -2;

struct Kind {
    const char* name;
    std::vector<int> ways;  // errno, or Half, or Nothing

    /** Interruptions never last, and readers who stay slow have tests of their own. */
    static bool canLast(int way) { return way != EINTR && way != EAGAIN; }
};

enum Call { Memory, Clock, Open, Control, Status, Write, Cut, Seek, Poll, Close };
const std::array<Kind, 10> Kinds = {{
    {"malloc, calloc or posix_memalign", {ENOMEM}},
    {"clock_gettime", {EINVAL}},
    {"open", {EACCES, ENOSPC, EMFILE}},
    {"fcntl", {EMFILE}},
    {"fstat", {EIO}},
    {"writev", {ENOSPC, EIO, EINTR, EAGAIN, EPIPE, EFBIG, Half, Nothing}},
    {"ftruncate", {EIO}},
    {"lseek", {EIO}},
    {"ppoll", {EINTR, EINVAL}},
    {"close", {EIO}},
}};

/** What the process with the fault tells the one that waits for it. */
struct Report {
    int struck = -1;  // the Call
    bool hasFailed = false;
};
Report* report = nullptr;

Fault fault;
bool isWatched = false;
int calls = 0, open_ = 0, struckTotal = 0;
std::function<void()> inTheWorld = [] {};

/** 0 when the call goes to the system, else its way to fail. */
int strike(Call call) {
    if (!isWatched) return 0;
    ++calls;
    const bool isFirst = calls == fault.call;
    if (!isFirst && !(fault.lasts && calls > fault.call && report->struck == call)) return 0;
    if (fault.call == 0) return 0;
    const Kind& kind = Kinds[call];
    const auto way = static_cast<std::size_t>(fault.way);
    if (isFirst) {
        report->struck = call;
        report->hasFailed =
            way < kind.ways.size() && (!fault.lasts || kind.canLast(kind.ways[way]));
    }
    if (!report->hasFailed) return 0;
    const int error = kind.ways[way];
    if (error > 0) errno = error;
    return error;
}

void* counted(void* block) {
    if (isWatched && block != nullptr) ++open_;
    return block;
}

}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
int __real_posix_memalign(void** out, std::size_t alignment, std::size_t size);
void __real_free(void* block);
int __real_clock_gettime(clockid_t clock, timespec* now);
int __real_open64(const char* path, int how, ...);
int __real_fcntl64(int descriptor, int command, ...);
int __real_fstat64(int descriptor, struct stat* status);
ssize_t __real_writev(int descriptor, const iovec* pieces, int count);
int __real_ftruncate64(int descriptor, off_t length);
off_t __real_lseek64(int descriptor, off_t offset, int from);
int __real_ppoll(pollfd* polled, nfds_t count, const timespec* time, const sigset_t* mask);
int __real_close(int descriptor);

void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
int __wrap_posix_memalign(void** out, std::size_t alignment, std::size_t size);
void __wrap_free(void* block);
int __wrap_clock_gettime(clockid_t clock, timespec* now);
int __wrap_open64(const char* path, int how, ...);
int __wrap_fcntl64(int descriptor, int command, ...);
int __wrap_fstat64(int descriptor, struct stat* status);
ssize_t __wrap_writev(int descriptor, const iovec* pieces, int count);
int __wrap_ftruncate64(int descriptor, off_t length);
off_t __wrap_lseek64(int descriptor, off_t offset, int from);
int __wrap_ppoll(pollfd* polled, nfds_t count, const timespec* time, const sigset_t* mask);
int __wrap_close(int descriptor);

void* __wrap_malloc(std::size_t size) {
    return strike(Memory) != 0 ? nullptr : counted(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return strike(Memory) != 0 ? nullptr : counted(__real_calloc(count, size));
}

int __wrap_posix_memalign(void** out, std::size_t alignment, std::size_t size) {
    if (strike(Memory) != 0) return ENOMEM;
    const int error = __real_posix_memalign(out, alignment, size);
    counted(error == 0 ? *out : nullptr);
    return error;
}

void __wrap_free(void* block) {
    if (isWatched && block != nullptr) --open_;
    __real_free(block);
}

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
    return strike(Clock) != 0 ? -1 : __real_clock_gettime(clock, now);
}

int __wrap_open64(const char* path, int how, ...) {
    va_list args;
    va_start(args, how);
    const mode_t mode = (how & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
    va_end(args);
    return strike(Open) != 0 ? -1 : __real_open64(path, how, mode);
}

int __wrap_fcntl64(int descriptor, int command, ...) {
    va_list args;
    va_start(args, command);
    const int argument = va_arg(args, int);
    va_end(args);
    return strike(Control) != 0 ? -1 : __real_fcntl64(descriptor, command, argument);
}

int __wrap_fstat64(int descriptor, struct stat* status) {
    return strike(Status) != 0 ? -1 : __real_fstat64(descriptor, status);
}

ssize_t __wrap_writev(int descriptor, const iovec* pieces, int count) {
    const int way = strike(Write);
    if (way == 0) return __real_writev(descriptor, pieces, count);
    if (way == Nothing) return 0;
    if (way != Half) return -1;
    std::vector<iovec> some(pieces, pieces + count);
    some.back().iov_len /= 2;
    return __real_writev(descriptor, some.data(), count);
}

int __wrap_ftruncate64(int descriptor, off_t length) {
    return strike(Cut) != 0 ? -1 : __real_ftruncate64(descriptor, length);
}

off_t __wrap_lseek64(int descriptor, off_t offset, int from) {
    return strike(Seek) != 0 ? -1 : __real_lseek64(descriptor, offset, from);
}

int __wrap_ppoll(pollfd* polled, nfds_t count, const timespec* time, const sigset_t* mask) {
    if (strike(Poll) != 0) return -1;
    inTheWorld();
    return __real_ppoll(polled, count, time, mask);
}

// What was to be closed is closed all the same, as the system does it.
int __wrap_close(int descriptor) {
    const bool fails = strike(Close) != 0;
    const int result = __real_close(descriptor);
    return fails ? -1 : result;
}
}

namespace {

Outcome outcomeOf(const Fault& wanted, int status, const std::string& text) {
    Outcome outcome;
    outcome.fault = wanted;
    if (report->struck >= 0) {
        const Kind& kind = Kinds[static_cast<std::size_t>(report->struck)];
        outcome.call = kind.name;
        outcome.ways = static_cast<int>(kind.ways.size());
        if (report->hasFailed) outcome.error = kind.ways[static_cast<std::size_t>(wanted.way)];
    }
    outcome.hasFailed = report->hasFailed;
    outcome.status = status;
    outcome.text = text;
    if (outcome.hasFailed) ++struckTotal;
    return outcome;
}

void prepare(const Fault& wanted) {
    if (report == nullptr) {
        void* shared = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (shared == MAP_FAILED) std::abort();
        report = static_cast<Report*>(shared);
    }
    *report = Report{};
    fault = wanted;
    calls = open_ = 0;
}

Outcome runHere(const Fault& wanted, const std::function<bool()>& scenario) {
    prepare(wanted);
    const bool isGood = scenario();
    return outcomeOf(wanted, isGood ? 0 : 1, "");
}

}  // namespace

namespace faults {

std::string Outcome::describe() const {
    return "call " + std::to_string(fault.call) + " (" + call + ") in way " +
           std::to_string(fault.way) + (fault.lasts ? " for good" : " once") + ": status " +
           std::to_string(status) + ", " + text;
}

Outcome runWith(const Fault& wanted, const std::function<bool()>& scenario) {
    prepare(wanted);
    const UnnamedFile standardError;
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        dup2(standardError.descriptor(), STDERR_FILENO);
        const bool isGood = scenario();
        std::_Exit(isGood ? 0 : 1);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child) std::abort();
    return outcomeOf(wanted, WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
                     standardError.text());
}

void runWithEach(const std::function<bool()>& scenario,
                 const std::function<void(const Outcome&)>& check, Where where) {
    for (Fault next{1, 0, false};; ++next.call) {
        int ways = 1;
        for (const bool lasts : {false, true}) {
            next.lasts = lasts;
            for (next.way = 0; next.way < ways; ++next.way) {
                const Outcome outcome =
                    where == Where::Here ? runHere(next, scenario) : runWith(next, scenario);
                check(outcome);
                if (outcome.ways == 0) return;
                ways = outcome.ways;
            }
        }
    }
}

int count() {
    return struckTotal;
}

void countOne() {
    ++struckTotal;
}

void whileWaiting(const std::function<void()>& happens) {
    inTheWorld = happens;
}

void watch(bool watched) {
    isWatched = watched;
}

int openBlocks() {
    return open_;
}

}  // namespace faults
