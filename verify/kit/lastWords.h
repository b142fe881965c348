/** What a process that aborts may print: the patterns of the death tests. */
#ifndef VERIFY_KIT_LAST_WORDS_H
#define VERIFY_KIT_LAST_WORDS_H

#include <string>

/**
 * A regular expression for all of the standard error of a process that aborts after printing
 * exactly `pattern`. An emulator of user programs adds a line of its own, which is let pass.
 */
inline std::string lastWords(const std::string& pattern) {
    return "^" + pattern + "(qemu: uncaught target signal 6 \\(Aborted\\) - core dumped\n)?$";
}

/** The same for a failed assertion in `function` of the unit `path`. */
inline std::string assertionReport(const std::string& path, const std::string& function,
                                   const std::string& expression) {
    return lastWords("[^\n]*: " + path + ":[0-9]+: " + function + ": Assertion `" + expression +
                     "' failed\\.\n");
}

#endif
