/** Standard error of this very process, redirected for the length of a scope and read back. */
#ifndef VERIFY_KIT_STANDARD_ERROR_H
#define VERIFY_KIT_STANDARD_ERROR_H

#include <cstdio>
#include <string>

enum class Output { file, terminal };

/** A file without a name, gone with this object. */
class UnnamedFile {
  public:
    UnnamedFile();
    ~UnnamedFile() { std::fclose(file_); }
    UnnamedFile(const UnnamedFile&) = delete;
    UnnamedFile& operator=(const UnnamedFile&) = delete;

    int descriptor() const { return fileno(file_); }

    /** All that has been written to it so far, by whomever. */
    std::string text() const;

  private:
    std::FILE* file_;
};

/** A new pseudo-terminal in its default mode: what is written to `slave` is read from `master`. */
struct PseudoTerminal {
    int master;
    int slave;
};
PseudoTerminal openPseudoTerminal();

/** Whether this machine has pseudo-terminals; a container may lack them. */
bool hasPseudoTerminals();

/** First line of a test that needs one. */
#define SKIP_WITHOUT_PSEUDO_TERMINAL() \
    if (!hasPseudoTerminals()) GTEST_SKIP() << "no pseudo-terminal can be opened (/dev/pts)"

/** What arrives at a terminal until its last writer is gone, or has arrived if it does not block.
 */
std::string readTerminal(int master);

/** What text looks like behind a terminal in its default mode: each "\n" has become "\r\n". */
std::string asOnTerminal(const std::string& text);

class RedirectedStandardError {
  public:
    explicit RedirectedStandardError(Output output);
    ~RedirectedStandardError();
    RedirectedStandardError(const RedirectedStandardError&) = delete;
    RedirectedStandardError& operator=(const RedirectedStandardError&) = delete;

    /** All that has arrived so far. A terminal holds about 4000 bytes. */
    std::string text();

  private:
    int kept_;  // the standard error outside
    UnnamedFile file_;
    int master_ = -1;  // of the terminal, if that is where it goes
    std::string terminalText_;
};

#endif
