/** Standard error of this very process, redirected for the length of a scope and read back. */
#ifndef VERIFY_SUPPORT_STANDARD_ERROR_H
#define VERIFY_SUPPORT_STANDARD_ERROR_H

#include <string>

enum class Output { file, terminal };

/** A new pseudo-terminal in its default mode: what is written to `slave` is read from `master`. */
struct PseudoTerminal {
    int master;
    int slave;
};
PseudoTerminal openPseudoTerminal();

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
    int kept_;      // the standard error outside
    int readable_;  // the file, or the terminal's master side
    bool isFile_;
    std::string terminalText_;
};

#endif
