#include "program.h"

#include <regex.h>  // <regex> warns under the sanitisers of g++ 12
#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <stdexcept>

#include "programUnderTest.h"  // generated: the emulator, if there is one, and the path

namespace {

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

}  // namespace

std::string programPath() {
    return *std::prev(std::end(ProgramUnderTest));
}

ProgramOutcome runProgram(const std::vector<std::string>& arguments, Output standardError) {
    const UnnamedFile output;
    if (standardError == Output::file) {
        const UnnamedFile error;
        const int status = waitFor(start(arguments, output.descriptor(), error.descriptor()));
        return {status, output.text(), error.text()};
    }
    const PseudoTerminal terminal = openPseudoTerminal();
    const pid_t child = start(arguments, output.descriptor(), terminal.slave);
    close(terminal.slave);
    const std::string text = readTerminal(terminal.master);
    close(terminal.master);
    return {waitFor(child), output.text(), text};
}

std::string withoutTimes(const std::string& text) {
    regex_t time;
    if (regcomp(&time, "\\[[0-9]+\\.[0-9]{3} (ms|s)\\]", REG_EXTENDED) != 0) {
        throw std::runtime_error("regcomp failed");
    }
    std::string without;
    const char* rest = text.c_str();
    regmatch_t match[2];
    while (regexec(&time, rest, 2, match, 0) == 0) {
        const std::string unit(rest + match[1].rm_so, rest + match[1].rm_eo);
        without.append(rest, rest + match[0].rm_so).append("[T " + unit + "]");
        rest += match[0].rm_eo;
    }
    regfree(&time);
    return without + rest;
}
