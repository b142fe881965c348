// What every program on the harness does, whatever its tests are.
#include "goldenText.h"

namespace {

class AnyProgram : public GoldenText {};
INSTANTIATE_GOLDEN_TEXT(AnyProgram);

TEST_P(AnyProgram, PrintsItsUsageWithoutArguments) {
    expect({}, 0, usage());
}

TEST_P(AnyProgram, PrintsItsUsageOnRequest) {
    expect({"--help"}, 0, usage());
    expect({"-h"}, 0, usage());
}

TEST_P(AnyProgram, MissesATestName) {
    expect({"--run"}, 1, red("Missing test name\n"));
    expect({"--rununittest"}, 1, red("Missing test name\n"));
}

TEST_P(AnyProgram, DoesNotFindAnUnknownTest) {
    expect({"--run", "no such test"}, 1, red("Could not find unit test 'no such test'\n"));
}

TEST_P(AnyProgram, RefusesAnUnknownOption) {
    expect({"--RUN"}, 1, red("Unknown argument '--RUN'\n") + usage());
    expect({"vad"}, 1, red("Unknown argument 'vad'\n") + usage());
}

TEST_P(AnyProgram, RunsNothingThatMatchesNothing) {
    expect({"--runall", "no such test"}, 0,
           framed(green("Test success: 0 tests with 0 assertions [T s].\n")));
}

TEST_P(AnyProgram, ListsNothingThatMatchesNothing) {
    expect({"--list", "no such test"}, 0, yellow("Found 0 tests.\n"));
}

}  // namespace
