// Linked into every suite of the build that counts what is reached: a process that ends by abort(),
// _exit() or _Exit() writes its counts before.

#include <sys/resource.h>

#include <csignal>

namespace faults {
// In the suite that makes calls to the system fail, which must not fail for the counts.
[[gnu::weak]] void watch(bool isWatched);
}  // namespace faults

extern "C" void __gcov_dump();
extern "C" [[noreturn]] void __real__exit(int status);

namespace {

void writeCounts() {
    if (faults::watch != nullptr) faults::watch(false);
    rlimit size = {};  // a test may have set a low one for files
    getrlimit(RLIMIT_FSIZE, &size);
    size.rlim_cur = size.rlim_max;
    setrlimit(RLIMIT_FSIZE, &size);
    __gcov_dump();
}

// Back from here, abort() ends the process as it would have without.
const auto before = std::signal(SIGABRT, [](int) { writeCounts(); });

}  // namespace

extern "C" [[noreturn]] void __wrap__exit(int status) {
    writeCounts();
    __real__exit(status);
}

extern "C" [[noreturn]] void __wrap__Exit(int status) {
    __wrap__exit(status);
}
