#include "harnessFixture.h"
#include "kit/standardError.h"

namespace {

const std::string Usage =
    "Usage: program [--run name] | [--runall [search]] | [--list [search]] | [--help]\n";

class CommandLine : public HarnessTest {
  protected:
    void SetUp() override {
        HarnessTest::SetUp();
        audunittest_register_test(body::passOnce, "test__one");
        audunittest_register_test(body::failTwice, "test__two");
        audunittest_register_test(body::passOnce, "test__Three");
    }

    void expect(std::vector<const char*> arguments, unsigned int status,
                const std::string& report) {
        std::string called;
        for (const char* argument : arguments) called += std::string(" ") + argument;
        arguments.insert(arguments.begin(), "program");
        const int count = static_cast<int>(arguments.size());
        arguments.push_back(nullptr);
        EXPECT_EQ(audunittest_commandline(count, arguments.data()), status) << called;
        EXPECT_EQ(output(), report) << called;
    }
};

TEST_F(CommandLine, PrintsTheUsageWithoutArgumentsAndOnRequest) {
    expect({}, 0, Usage);
    expect({"--help"}, 0, Usage);
    expect({"-h"}, 0, Usage);
}

TEST_F(CommandLine, WithoutEvenTheProgramsNameIsTheUsage) {
    const char* const none[] = {nullptr};
    EXPECT_EQ(audunittest_commandline(0, none), 0u);
    EXPECT_EQ(output(), Usage.substr(0, 7) + Usage.substr(14));
}

TEST_F(CommandLine, RunsATestByName) {
    for (const char* option : {"--run", "--rununittest"}) {
        expect({option, "test__one"}, 0, success("test__one"));
        expect({option, "test__two"}, 1, twoFailures("test__two"));
        expect({option}, 1, "Missing test name\n");
        expect({option, "TEST__ONE"}, 1, "Could not find unit test 'TEST__ONE'\n");
        expect({option, "one"}, 1, "Could not find unit test 'one'\n");
    }
}

TEST_F(CommandLine, RunsWhatMatchesInAnyCaseOrEverything) {
    for (const char* option : {"--runall", "--runallunittests"}) {
        expect({option, "ONE"}, 0,
               success("test__one") + summary("Test success: 1 test with 1 assertion [0.000 s]."));
        expect({option, "four"}, 0, summary("Test success: 0 tests with 0 assertions [0.000 s]."));
        expect({option}, 1,
               success("test__Three") + success("test__one") + twoFailures("test__two") +
                   summary("Test failure: 2 failed assertions in 3 tests with 4 assertions "
                           "[0.000 s]."));
    }
}

TEST_F(CommandLine, ListsWhatMatchesInAnyCaseOrEverythingInOrder) {
    for (const char* option : {"--list", "--listunittest"}) {
        expect({option}, 0, "test__Three\ntest__one\ntest__two\nFound 3 tests.\n");
        expect({option, "__T"}, 0, "test__Three\ntest__two\nFound 2 tests.\n");
        expect({option, "tHREE"}, 0, "test__Three\nFound 1 test.\n");
        expect({option, "four"}, 0, "Found 0 tests.\n");
    }
}

TEST_F(CommandLine, ListOfAnEmptyListIsZeroTests) {
    auto* const registered = std::exchange(audunittest::tests, nullptr);
    expect({"--list"}, 0, "Found 0 tests.\n");
    audunittest::tests = registered;
}

TEST_F(CommandLine, RefusesUnknownOptionsWithTheUsage) {
    for (const char* option : {"--RUN", "--Help", "-H", "--runal", "--runall ", "run", "-l", ""}) {
        expect({option, "test__one"}, 1,
               std::string("Unknown argument '") + option + "'\n" + Usage);
    }
}

TEST_F(CommandLine, IgnoresFurtherArguments) {
    expect({"--run", "test__one", "--help"}, 0, success("test__one"));
    expect({"--list", "one", "two"}, 0, "test__one\nFound 1 test.\n");
    expect({"--help", "--runall"}, 0, Usage);
}

TEST_F(CommandLine, DoesNotLookBeyondTheArgumentCount) {
    const char* const arguments[] = {"program", "--run", "test__one"};
    EXPECT_EQ(audunittest_commandline(2, arguments), 1u);
    EXPECT_EQ(audunittest_commandline(1, arguments), 0u);
    EXPECT_EQ(output(), "Missing test name\n" + Usage);
}

// ---- on a console of the caller's --------------------------------------------------------------

TEST_F(CommandLine, PrintsOnTheConsoleGivenWithoutColourAndPutsThePreviousBack) {
    SKIP_WITHOUT_PSEUDO_TERMINAL();
    const char* const arguments[] = {"program", "--run"};
    CapturedConsole other;
    RedirectedStandardError standardError(Output::terminal);
    for (con* const previous : {&console_.operations, static_cast<con*>(nullptr)}) {
        current_console = previous;
        EXPECT_EQ(audunittest_commandline_with_console(2, arguments, &other.operations), 1u);
        EXPECT_EQ(current_console, previous);
        EXPECT_EQ(std::exchange(other.text, ""), "Missing test name\n");
    }
    EXPECT_EQ(output(), "");
    EXPECT_EQ(standardError.text(), "");
}

TEST_F(CommandLine, PrintsOnStandardErrorWhereTheConsoleGivenIsNull) {
    const char* const arguments[] = {"program", "--list", "one"};
    RedirectedStandardError standardError(Output::file);
    EXPECT_EQ(audunittest_commandline_with_console(3, arguments, nullptr), 0u);
    EXPECT_EQ(standardError.text(), "test__one\nFound 1 test.\n");
    EXPECT_EQ(output(), "");
    EXPECT_EQ(current_console, &console_.operations);
}

}  // namespace
