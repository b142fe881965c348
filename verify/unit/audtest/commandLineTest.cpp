#include "harnessFixture.h"
#include "kit/standardError.h"

namespace {

const std::string Dashes(32, '-');
const std::string Usage =
    "Usage: program [--run name] | [--runall [search]] | [--list [search]] | [--help]\n";
const std::string ReportOfOne = "Running test__one... Success [0.000 ms]\n" + Dashes +
                                "\nTest success: 1 test with 1 assertion [0.000 s].\n" + Dashes +
                                "\n";

class CommandLine : public HarnessTest {
  protected:
    void SetUp() override {
        HarnessTest::SetUp();
        stopTheClock();
    }

    static void registerThree() {
        audunittest_register_test(body::passOnce, "test__one");
        audunittest_register_test(body::failTwice, "test__two");
        audunittest_register_test(body::passOnce, "test__Three");
    }

    void expect(std::vector<const char*> arguments, unsigned int status,
                const std::string& report) {
        console_.text.clear();
        arguments.insert(arguments.begin(), "program");
        const int count = static_cast<int>(arguments.size());
        arguments.push_back(nullptr);
        const std::string called = arguments[1] != nullptr ? arguments[1] : "(nothing)";
        EXPECT_EQ(audunittest_commandline(count, arguments.data()), status) << called;
        EXPECT_EQ(output(), report) << called;
    }
};

TEST_F(CommandLine, WithoutArgumentsPrintsTheUsage) {
    expect({}, 0, Usage);
}

TEST_F(CommandLine, HelpPrintsTheUsage) {
    expect({"--help"}, 0, Usage);
    expect({"-h"}, 0, Usage);
}

TEST_F(CommandLine, RunRunsATestByName) {
    registerThree();
    expect({"--run", "test__one"}, 0, "Running test__one... Success [0.000 ms]\n");
    expect({"--rununittest", "test__one"}, 0, "Running test__one... Success [0.000 ms]\n");
    expect({"--run", "test__two"}, 1,
           "Running test__two...\nFailed: file:6 in test__two: 0 != 3\n"
           "\nFailed: file:7 in test__two\n [0.000 ms]\n");
}

TEST_F(CommandLine, RunNeedsAName) {
    registerThree();
    expect({"--run"}, 1, "Missing test name\n");
    expect({"--rununittest"}, 1, "Missing test name\n");
}

TEST_F(CommandLine, RunNeedsAKnownName) {
    registerThree();
    expect({"--run", "TEST__ONE"}, 1, "Could not find unit test 'TEST__ONE'\n");
    expect({"--run", "one"}, 1, "Could not find unit test 'one'\n");
}

TEST_F(CommandLine, RunallRunsWhatMatchesInAnyCase) {
    registerThree();
    expect({"--runall", "ONE"}, 0, ReportOfOne);
    expect({"--runallunittests", "ONE"}, 0, ReportOfOne);
}

TEST_F(CommandLine, RunallRunsEverythingByDefault) {
    registerThree();
    expect({"--runall"}, 1,
           "Running test__Three... Success [0.000 ms]\n"
           "Running test__one... Success [0.000 ms]\n"
           "Running test__two...\nFailed: file:6 in test__two: 0 != 3\n"
           "\nFailed: file:7 in test__two\n [0.000 ms]\n" +
               Dashes +
               "\nTest failure: 2 failed assertions in 3 tests with 4 assertions [0.000 s].\n" +
               Dashes + "\n");
}

TEST_F(CommandLine, RunallOfNothingSucceeds) {
    registerThree();
    expect({"--runall", "four"}, 0,
           Dashes + "\nTest success: 0 tests with 0 assertions [0.000 s].\n" + Dashes + "\n");
}

TEST_F(CommandLine, ListNamesEveryTestInOrder) {
    registerThree();
    expect({"--list"}, 0, "test__Three\ntest__one\ntest__two\nFound 3 tests.\n");
    expect({"--listunittest"}, 0, "test__Three\ntest__one\ntest__two\nFound 3 tests.\n");
}

TEST_F(CommandLine, ListNamesWhatMatchesInAnyCase) {
    registerThree();
    expect({"--list", "__T"}, 0, "test__Three\ntest__two\nFound 2 tests.\n");
    expect({"--listunittest", "tHREE"}, 0, "test__Three\nFound 1 test.\n");
    expect({"--list", "four"}, 0, "Found 0 tests.\n");
}

TEST_F(CommandLine, ListOfAnEmptyListIsZeroTests) {
    expect({"--list"}, 0, "Found 0 tests.\n");
}

TEST_F(CommandLine, UnknownOptionsPrintTheUsageAndFail) {
    registerThree();
    for (const char* option : {"--RUN", "--Help", "-H", "--runal", "--runall ", "run", "-l", ""}) {
        expect({option, "test__one"}, 1,
               std::string("Unknown argument '") + option + "'\n" + Usage);
    }
}

TEST_F(CommandLine, IgnoresFurtherArguments) {
    registerThree();
    expect({"--run", "test__one", "--help"}, 0, "Running test__one... Success [0.000 ms]\n");
    expect({"--list", "one", "two"}, 0, "test__one\nFound 1 test.\n");
    expect({"--help", "--runall"}, 0, Usage);
}

TEST_F(CommandLine, DoesNotLookBeyondTheArgumentCount) {
    registerThree();
    const char* const arguments[] = {"program", "--run", "test__one"};
    EXPECT_EQ(audunittest_commandline(2, arguments), 1u);
    EXPECT_EQ(audunittest_commandline(1, arguments), 0u);
    EXPECT_EQ(output(), "Missing test name\n" + Usage);
}

TEST_F(CommandLine, WithAConsolePrintsThereWithoutColourAndPutsThePreviousBack) {
    registerThree();
    CapturedConsole other;
    const char* const arguments[] = {"program", "--list", "one"};
    RedirectedStandardError standardError(Output::terminal);

    EXPECT_EQ(audunittest_commandline_with_console(3, arguments, &other.operations), 0u);

    EXPECT_EQ(other.text, "test__one\nFound 1 test.\n");
    EXPECT_EQ(output(), "");
    EXPECT_EQ(standardError.text(), "");
    EXPECT_EQ(current_console, &console_.operations);
}

TEST_F(CommandLine, WithANullConsolePrintsOnStandardError) {
    registerThree();
    const char* const arguments[] = {"program", "--list", "one"};
    RedirectedStandardError standardError(Output::file);

    EXPECT_EQ(audunittest_commandline_with_console(3, arguments, nullptr), 0u);

    EXPECT_EQ(standardError.text(), "test__one\nFound 1 test.\n");
    EXPECT_EQ(output(), "");
    EXPECT_EQ(current_console, &console_.operations);
}

TEST_F(CommandLine, WithAConsoleReturnsTheStatusOfTheCommand) {
    const char* const arguments[] = {"program", "--run"};
    CapturedConsole other;
    current_console = nullptr;
    EXPECT_EQ(audunittest_commandline_with_console(2, arguments, &other.operations), 1u);
    EXPECT_EQ(current_console, nullptr);
    EXPECT_EQ(other.text, "Missing test name\n");
}

}  // namespace
