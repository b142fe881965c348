#include "standardError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

int checked(int result, const char* call) {
    if (result < 0) throw std::runtime_error(std::string(call) + " failed");
    return result;
}

int openUnnamedFile() {
    std::FILE* const file = std::tmpfile();
    if (file == nullptr) throw std::runtime_error("tmpfile failed");
    const int descriptor = checked(dup(fileno(file)), "dup");
    std::fclose(file);
    return descriptor;
}

std::string readFile(int file) {
    struct stat status {};
    checked(fstat(file, &status), "fstat");
    std::string text(static_cast<size_t>(status.st_size), '\0');
    const ssize_t count = pread(file, text.data(), text.size(), 0);
    checked(static_cast<int>(count), "pread");
    text.resize(static_cast<size_t>(count));
    return text;
}

}  // namespace

PseudoTerminal openPseudoTerminal() {
    const int master = checked(posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
    checked(grantpt(master), "grantpt");
    checked(unlockpt(master), "unlockpt");
    std::array<char, 64> name{};
    if (ptsname_r(master, name.data(), name.size()) != 0) {
        throw std::runtime_error("ptsname_r failed");
    }
    return {master, checked(open(name.data(), O_RDWR | O_NOCTTY), "open of a terminal")};
}

std::string asOnTerminal(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') result += '\r';
        result += c;
    }
    return result;
}

RedirectedStandardError::RedirectedStandardError(Output output)
    : kept_(checked(dup(STDERR_FILENO), "dup")), readable_(-1), isFile_(output == Output::file) {
    std::fflush(stderr);
    if (isFile_) {
        readable_ = openUnnamedFile();
        checked(dup2(readable_, STDERR_FILENO), "dup2");
    } else {
        const PseudoTerminal terminal = openPseudoTerminal();
        readable_ = terminal.master;
        checked(dup2(terminal.slave, STDERR_FILENO), "dup2");
        close(terminal.slave);
        checked(fcntl(readable_, F_SETFL, O_NONBLOCK), "fcntl");
    }
}

RedirectedStandardError::~RedirectedStandardError() {
    std::fflush(stderr);
    dup2(kept_, STDERR_FILENO);
    close(kept_);
    close(readable_);
}

std::string RedirectedStandardError::text() {
    if (isFile_) return readFile(readable_);
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    while ((count = read(readable_, buffer.data(), buffer.size())) > 0) {
        terminalText_.append(buffer.data(), static_cast<size_t>(count));
    }
    return terminalText_;
}
