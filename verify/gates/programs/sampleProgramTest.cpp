#include "goldenText.h"

namespace {

class SampleProgram : public GoldenText {
  protected:
    static std::string failures() {
        return running("test__sample__fails_twice") +
               red("\nFailed: sample/tests:6 in test__sample__fails_twice: 0 != 3\n") +
               red("\nFailed: sample/tests:7 in test__sample__fails_twice\n") + " [T ms]\n";
    }
};
INSTANTIATE_GOLDEN_TEXT(SampleProgram);

TEST_P(SampleProgram, ListsItsTestsInByteOrder) {
    expect({"--list"}, 0,
           "TEST__sample__upper_case\n"
           "test__sample__asserts_nothing\n"
           "test__sample__fails_twice\n"
           "test__sample__passes\n" +
               yellow("Found 4 tests.\n"));
    expect({"--list", "upper"}, 0, "TEST__sample__upper_case\n" + yellow("Found 1 test.\n"));
}

TEST_P(SampleProgram, RunsATestByName) {
    expect({"--run", "test__sample__passes"}, 0, success("test__sample__passes"));
    expect({"--run", "test__sample__fails_twice"}, 1, failures());
    expect({"--run", "TEST__SAMPLE__PASSES"}, 1,
           red("Could not find unit test 'TEST__SAMPLE__PASSES'\n"));
}

TEST_P(SampleProgram, RunsWhatMatchesOrEverything) {
    expect({"--runall", "ASS"}, 0,
           success("test__sample__asserts_nothing") + success("test__sample__passes") +
               framed(green("Test success: 2 tests with 1 assertion [T s].\n")));
    expect({"--runall"}, 1,
           success("TEST__sample__upper_case") + success("test__sample__asserts_nothing") +
               failures() + success("test__sample__passes") +
               framed(red("Test failure: 2 failed assertions in 4 tests with 4 assertions "
                          "[T s].\n")));
}

}  // namespace
