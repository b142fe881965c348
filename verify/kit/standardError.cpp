#include "standardError.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace {

int checked(int result, const char* call) {
    if (result < 0) throw std::runtime_error(std::string(call) + " failed");
    return result;
}

}  // namespace

UnnamedFile::UnnamedFile() : file_(std::tmpfile()) {
    if (file_ == nullptr) throw std::runtime_error("tmpfile failed");
}

std::string UnnamedFile::text() const {
    std::string result;
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    while ((count = pread(descriptor(), buffer.data(), buffer.size(),
                          static_cast<off_t>(result.size()))) > 0) {
        result.append(buffer.data(), static_cast<std::size_t>(count));
    }
    checked(static_cast<int>(count), "pread");
    return result;
}

PseudoTerminal openPseudoTerminal() {
    const int master = checked(posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
    checked(grantpt(master), "grantpt");
    checked(unlockpt(master), "unlockpt");
    std::array<char, 64> name{};
    checked(-ptsname_r(master, name.data(), name.size()), "ptsname_r");
    return {master, checked(open(name.data(), O_RDWR | O_NOCTTY), "open of a terminal")};
}

bool hasPseudoTerminals() {
    try {
        const PseudoTerminal terminal = openPseudoTerminal();
        close(terminal.slave);
        close(terminal.master);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

std::string readTerminal(int master) {
    std::string text;
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    // A terminal whose last writer is gone reports an error.
    while ((count = read(master, buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
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
    : kept_(checked(dup(STDERR_FILENO), "dup")) {
    std::fflush(stderr);
    if (output == Output::file) {
        checked(dup2(file_.descriptor(), STDERR_FILENO), "dup2");
        return;
    }
    const PseudoTerminal terminal = openPseudoTerminal();
    master_ = terminal.master;
    checked(dup2(terminal.slave, STDERR_FILENO), "dup2");
    close(terminal.slave);
    checked(fcntl(master_, F_SETFL, O_NONBLOCK), "fcntl");
}

RedirectedStandardError::~RedirectedStandardError() {
    std::fflush(stderr);
    dup2(kept_, STDERR_FILENO);
    close(kept_);
    if (master_ >= 0) close(master_);
}

std::string RedirectedStandardError::text() {
    if (master_ < 0) return file_.text();
    return terminalText_ += readTerminal(master_);
}
