// Linked into every suite of the build that counts what is reached: a process that ends by abort(),
// _exit() or _Exit() writes its counts before.

#include <csignal>

namespace faults {
// In the suite that makes calls to the system fail, which must not fail for the counts.
[[gnu::weak]] void watch(bool isWatched);
}  // namespace faults

extern "C" void __gcov_dump();
extern "C" [[noreturn]] void __real__exit(int status);

extern "C" [[noreturn]] void __wrap__exit(int status) {
    __gcov_dump();
    __real__exit(status);
}

extern "C" [[noreturn]] void __wrap__Exit(int status) {
    __wrap__exit(status);
}

namespace {

// Back from here, abort() ends the process as it would have without.
void writeCounts(int) {
    if (faults::watch != nullptr) faults::watch(false);
    __gcov_dump();
}

const auto before = std::signal(SIGABRT, writeCounts);

}  // namespace
