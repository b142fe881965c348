#include "program.h"

#include <regex.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <stdexcept>

#include "programUnderTest.h"  // generated: the emulator, if there is one, and the path

namespace {

class TemporaryFile {
  public:
    TemporaryFile() : file_(std::tmpfile()) {
        if (file_ == nullptr) throw std::runtime_error("tmpfile failed");
    }
    ~TemporaryFile() { std::fclose(file_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int descriptor() const { return fileno(file_); }

    std::string text() const {
        std::rewind(file_);
        std::string result;
        for (int c = std::fgetc(file_); c != EOF; c = std::fgetc(file_)) {
            result += static_cast<char>(c);
        }
        return result;
    }

  private:
    std::FILE* file_;
};

pid_t start(const std::vector<std::string>& arguments, int standardOutput, int standardError) {
    std::vector<char*> argv;
    for (const char* word : ProgramUnderTest) argv.push_back(const_cast<char*>(word));
    for (const std::string& word : arguments) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);

    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork failed");
    if (child == 0) {
        dup2(standardOutput, STDOUT_FILENO);
        dup2(standardError, STDERR_FILENO);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    return child;
}

int waitFor(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child) throw std::runtime_error("waitpid failed");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// Until the last writer is gone, which a terminal reports as an error.
std::string readToEnd(int terminal) {
    std::string text;
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    while ((count = read(terminal, buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), static_cast<size_t>(count));
    }
    return text;
}

}  // namespace

std::string programPath() {
    return *std::prev(std::end(ProgramUnderTest));
}

ProgramOutcome runProgram(const std::vector<std::string>& arguments, Output standardError) {
    const TemporaryFile output;
    if (standardError == Output::file) {
        const TemporaryFile error;
        const int status = waitFor(start(arguments, output.descriptor(), error.descriptor()));
        return {status, output.text(), error.text()};
    }
    const PseudoTerminal terminal = openPseudoTerminal();
    const pid_t child = start(arguments, output.descriptor(), terminal.slave);
    close(terminal.slave);
    const std::string text = readToEnd(terminal.master);
    close(terminal.master);
    return {waitFor(child), output.text(), text};
}

std::string withoutTimes(const std::string& text) {
    regex_t duration;
    if (regcomp(&duration, "\\[[0-9]+\\.[0-9]{3} (ms|s)\\]", REG_EXTENDED) != 0) {
        throw std::runtime_error("regcomp failed");
    }
    std::string result;
    const char* rest = text.c_str();
    std::array<regmatch_t, 2> match{};  // the whole and the unit
    while (regexec(&duration, rest, match.size(), match.data(), 0) == 0) {
        result.append(rest, rest + match[0].rm_so);
        result += "[T " + std::string(rest + match[1].rm_so, rest + match[1].rm_eo) + "]";
        rest += match[0].rm_eo;
    }
    regfree(&duration);
    return result + rest;
}
