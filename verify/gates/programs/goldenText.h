/** A test that compares what a program prints, byte for byte, on a file and on a terminal. */
#ifndef VERIFY_GATES_PROGRAMS_GOLDEN_TEXT_H
#define VERIFY_GATES_PROGRAMS_GOLDEN_TEXT_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/program.h"

class GoldenText : public ::testing::TestWithParam<Output> {
  protected:
    void SetUp() override {
        if (GetParam() == Output::terminal) SKIP_WITHOUT_PSEUDO_TERMINAL();
    }

    static std::string red(const std::string& text) { return coloured("\033[31m", text); }
    static std::string green(const std::string& text) { return coloured("\033[32m", text); }
    static std::string yellow(const std::string& text) { return coloured("\033[33m", text); }

    static std::string running(const std::string& name) {
        return yellow("Running " + name + "...");
    }
    static std::string success(const std::string& name) {
        return running(name) + green(" Success") + " [T ms]\n";
    }
    static std::string framed(const std::string& summary) {
        const std::string dashes(32, '-');
        return dashes + "\n" + summary + dashes + "\n";
    }
    static std::string usage() {
        return "Usage: " + programPath() +
               " [--run name] | [--runall [search]] | [--list [search]] | [--help]\n";
    }

    static void expect(const std::vector<std::string>& arguments, int status,
                       const std::string& report) {
        const ProgramOutcome outcome = runProgram(arguments, GetParam());
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(withoutTimes(outcome.standardError),
                  GetParam() == Output::terminal ? asOnTerminal(report) : report);
        EXPECT_EQ(outcome.standardOutput, "");
    }

  private:
    static std::string coloured(const std::string& begin, const std::string& text) {
        return GetParam() == Output::terminal ? begin + text + "\033[00m" : text;
    }
};

#define INSTANTIATE_GOLDEN_TEXT(suite)                                                            \
    INSTANTIATE_TEST_SUITE_P(Output, suite, ::testing::Values(Output::file, Output::terminal),    \
                             [](const auto& output) {                                             \
                                 return output.param == Output::file ? "OnAFile" : "OnATerminal"; \
                             })

#endif
