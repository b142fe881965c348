// The registration of the eighteen tests with the harness, and what their wrappers report.

#include <algorithm>
#include <string>
#include <vector>

#include "audio/audtest/audunittest_internal.h"
#include "audunittest/audunittest.h"
#include "gtest/gtest.h"
#include "stubTests.h"
#include "unit/track/trackSupport.h"

namespace {

using stubTests::Stub;
using stubTests::stubs;

class RegistrationTest : public testing::Test {
  protected:
    RegistrationTest() { clear(); }
    ~RegistrationTest() override { clear(); }

    static void clear() {
        stubTests::called.clear();
        for (Stub& stub : stubs) stub.errors = 0;
    }

    // The report of a run of the program with these arguments, without its times.
    std::string reportOf(const std::vector<const char*>& arguments) {
        std::vector<const char*> argv = {"program"};
        argv.insert(argv.end(), arguments.begin(), arguments.end());
        testing::internal::CaptureStderr();
        status = audunittest_commandline(static_cast<int>(argv.size()), argv.data());
        return trackSupport::withoutDecimals(testing::internal::GetCapturedStderr());
    }

    unsigned status = 99;
};

TEST_F(RegistrationTest, EighteenNamesAreRegisteredInByteOrder) {
    std::vector<std::string> expected, names;
    for (const Stub& stub : stubs) expected.push_back(stub.name);
    std::sort(expected.begin(), expected.end());
    for (const auto* test = audunittest::tests; test != nullptr; test = test->next) {
        names.emplace_back(test->name);
    }
    EXPECT_EQ(names.size(), 18u);
    EXPECT_EQ(names, expected);
}

TEST_F(RegistrationTest, PassingTestIsOnePassedAssertion) {
    for (const Stub& stub : stubs) {
        stubTests::called.clear();
        EXPECT_EQ(reportOf({"--run", stub.name.c_str()}),
                  "Running " + stub.name + "... Success [N ms]\n");
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(audunittest_num_assertions(), 1u);
        EXPECT_EQ(audunittest_num_failed(), 0u);
        EXPECT_EQ(stubTests::called, std::vector<std::string>{stub.function});
    }
}

TEST_F(RegistrationTest, FailingTestIsOneFailedAssertionAndReportsItsErrors) {
    for (Stub& stub : stubs) {
        stub.errors = 3;
        EXPECT_EQ(reportOf({"--run", stub.name.c_str()}),
                  "Running " + stub.name +
                      "...\nFailed: functional/audio/voxloc/cmod/track/test/tests:" +
                      std::to_string(stub.line) + " in " + stub.name + ": 0 != 3\n [N ms]\n");
        EXPECT_EQ(status, 1u);
        EXPECT_EQ(audunittest_num_assertions(), 1u);
        EXPECT_EQ(audunittest_num_failed(), 1u);
    }
}

TEST_F(RegistrationTest, RunOfAllCountsOneAssertionATest) {
    stubs[7].errors = 38;
    const std::string report = reportOf({"--runall"});
    EXPECT_EQ(stubTests::called.size(), 18u);
    const std::string summary =
        "--------------------------------\n"
        "Test failure: 1 failed assertion in 18 tests with 18 assertions [N s].\n"
        "--------------------------------\n";
    ASSERT_GE(report.size(), summary.size());
    EXPECT_EQ(report.substr(report.size() - summary.size()), summary);
    EXPECT_EQ(status, 1u);
}

}  // namespace
