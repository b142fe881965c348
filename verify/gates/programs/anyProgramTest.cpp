// What every program on the harness does, whatever its tests are.
#include "goldenText.h"

namespace {

class AnyProgram : public GoldenText {};
INSTANTIATE_GOLDEN_TEXT(AnyProgram);

TEST_P(AnyProgram, PrintsItsUsageWithoutArgumentsAndOnRequest) {
    expect({}, 0, usage());
    expect({"--help"}, 0, usage());
}

TEST_P(AnyProgram, RefusesWhatItDoesNotKnow) {
    expect({"--RUN"}, 1, red("Unknown argument '--RUN'\n") + usage());
    expect({"--run"}, 1, red("Missing test name\n"));
    expect({"--run", "no such test"}, 1, red("Could not find unit test 'no such test'\n"));
}

TEST_P(AnyProgram, SucceedsWhereNothingMatches) {
    expect({"--list", "no such test"}, 0, yellow("Found 0 tests.\n"));
    expect({"--runall", "no such test"}, 0,
           framed(green("Test success: 0 tests with 0 assertions [T s].\n")));
}

}  // namespace
