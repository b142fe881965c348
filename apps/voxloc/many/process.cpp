#include "many/process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "common/failure.h"

namespace {

constexpr const char* Self = "/proc/self/exe";
constexpr int CannotStart = 127;

/** Between fork and exec: nothing here allocates. */
[[noreturn]] void becomeChild(char* const* arguments, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(CannotStart);
    const int nothing = open("/dev/null", O_RDWR);
    if (nothing >= 0) {
        dup2(nothing, STDIN_FILENO);
        dup2(nothing, STDOUT_FILENO);
    }
    execv(Self, arguments);
    _exit(CannotStart);
}

}  // namespace

pid_t startSelf(const std::vector<std::string>& arguments) {
    std::vector<std::string> words{"voxloc"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) throw cannot("start", "a process");
    if (child == 0) becomeChild(pointers.data(), parent);
    return child;
}

Ended findEnded() {
    int status = 0;
    const pid_t process = waitpid(-1, &status, WNOHANG);
    if (process <= 0) return {};
    return {process, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
}
