// The registration of the eighteen tests with the harness, and what their wrappers report.

#include <algorithm>
#include <string>
#include <vector>

#include "audio/audtest/audunittest_internal.h"
#include "audunittest/audunittest.h"
#include "gtest/gtest.h"
#include "kit/log.h"
#include "stubTests.h"

namespace {

class RegistrationTest : public testing::Test {
  protected:
    RegistrationTest() { stubTests::reset(); }

    // The report of a run of the program with these arguments, without its times.
    std::string reportOf(std::vector<const char*> arguments) {
        arguments.insert(arguments.begin(), "program");
        return kit::withoutDecimals(kit::logOf([&] {
            status = audunittest_commandline(static_cast<int>(arguments.size()), arguments.data());
        }));
    }

    // After a run of one test.
    void expectOutcome(bool failed) {
        EXPECT_EQ(status, failed ? 1u : 0u);
        EXPECT_EQ(audunittest_num_assertions(), 1u);
        EXPECT_EQ(audunittest_num_failed(), status);
    }

    unsigned status = 99;
};

TEST_F(RegistrationTest, EighteenNamesAreRegisteredInByteOrder) {
    std::vector<std::string> expected, names;
    for (const EighteenTest& test : EighteenTests) expected.push_back(test.name);
    std::sort(expected.begin(), expected.end());
    for (const auto* test = audunittest::tests; test != nullptr; test = test->next) {
        names.emplace_back(test->name);
    }
    EXPECT_EQ(names.size(), 18u);
    EXPECT_EQ(names, expected);
}

TEST_F(RegistrationTest, TestIsOneAssertionThatReportsItsErrors) {
    for (std::size_t i = 0; i < EighteenTests.size(); i++) {
        const EighteenTest& test = EighteenTests[i];
        stubTests::reset();
        EXPECT_EQ(reportOf({"--run", test.name.c_str()}),
                  "Running " + test.name + "... Success [N ms]\n");
        expectOutcome(false);
        EXPECT_EQ(stubTests::called, std::vector<std::size_t>{i});

        stubTests::errors[i] = 3;
        EXPECT_EQ(reportOf({"--run", test.name.c_str()}),
                  "Running " + test.name +
                      "...\nFailed: functional/audio/voxloc/cmod/track/test/tests:" +
                      std::to_string(test.line) + " in " + test.name + ": 0 != 3\n [N ms]\n");
        expectOutcome(true);
    }
}

TEST_F(RegistrationTest, RunOfAllCountsOneAssertionATest) {
    stubTests::errors[7] = 38;
    const std::string report = reportOf({"--runall"});
    EXPECT_EQ(stubTests::called.size(), 18u);
    EXPECT_EQ(report.substr(report.find("-----")),
              "--------------------------------\n"
              "Test failure: 1 failed assertion in 18 tests with 18 assertions [N s].\n"
              "--------------------------------\n");
    EXPECT_EQ(status, 1u);
}

}  // namespace
