// The entry that runs every test once, on stubs: order, wording, sum, and the state it leaves.

#include <string>
#include <vector>

#include "stubTests.h"
#include "track/test/testSupport.h"
#include "track/test/tests.h"
#include "track/tracker.h"
#include "unit/track/trackSupport.h"

namespace {

using stubTests::Stub;
using stubTests::stubs;

std::string expectedLog(unsigned errors) {
    std::string log;
    for (const Stub& stub : stubs) {
        log += "Running " + stub.runText + "\nFinished " + stub.endText + "\n";
    }
    return log + "\n\nTest summary: " + std::to_string(errors) + " error(s)\n\n";
}

class RunAllUnitTestsTest : public testing::Test {
  protected:
    RunAllUnitTestsTest() {
        stubTests::called.clear();
        for (Stub& stub : stubs) stub.errors = 0;
        stubTests::effect = voxloc_tests::tearDown;  // as every test does
    }
    ~RunAllUnitTestsTest() override { voxloc_tests::tearDown(); }

    std::string run() {
        return trackSupport::logOf([this] { errors = voxloc_tests::runAllUnitTests(); });
    }

    unsigned errors = 99;
};

TEST_F(RunAllUnitTestsTest, CallsEachTestOnceInTheOrderOfRegistration) {
    run();
    std::vector<std::string> expected;
    for (const Stub& stub : stubs) expected.push_back(stub.function);
    EXPECT_EQ(stubTests::called, expected);
}

TEST_F(RunAllUnitTestsTest, LogsItsProgressWordForWord) {
    EXPECT_EQ(run(), expectedLog(0));
    EXPECT_EQ(errors, 0u);
}

TEST_F(RunAllUnitTestsTest, AddsUpTheErrorsOfEveryTest) {
    unsigned expected = 0, count = 1;
    for (Stub& stub : stubs) {
        stub.errors = count;
        expected += count;
        count *= 2;
    }
    EXPECT_EQ(run(), expectedLog(expected));
    EXPECT_EQ(errors, expected);
}

TEST_F(RunAllUnitTestsTest, LeavesTheModuleInitialisedForTheFirstProduct) {
    run();
    EXPECT_TRUE(voxloc_tests::IsInitialized);
    EXPECT_TRUE(voxloc::moduleTracker().IsTransducersInitialized);
    EXPECT_EQ(voxloc::moduleTracker().ProductType, PRODUCT_ASTER);
    EXPECT_NE(voxloc_tests::AudioData, nullptr);
}

}  // namespace
