// The entry that runs every test once, on stubs: order, wording, sum, and the state it leaves.

#include <numeric>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kit/log.h"
#include "stubTests.h"
#include "track/test/testSupport.h"
#include "track/tracker.h"

namespace {

TEST(RunAllUnitTests, CallsEachTestOnceInOrderAddsItsErrorsUpAndLogsItsProgress) {
    stubTests::effect = voxloc_tests::tearDown;  // as every test does
    for (const unsigned first : {0u, 1u}) {
        stubTests::reset();
        std::string expected;
        for (std::size_t i = 0; i < EighteenTests.size(); i++) {
            stubTests::errors[i] = first << i;
            expected += EighteenTests[i].progress();
        }
        const unsigned errors = first * 0x3ffff;
        expected += "\n\nTest summary: " + std::to_string(errors) + " error(s)\n\n";

        EXPECT_EQ(kit::logOf([&] { EXPECT_EQ(voxloc_tests::runAllUnitTests(), errors); }),
                  expected);
        std::vector<std::size_t> inOrder(EighteenTests.size());
        std::iota(inOrder.begin(), inOrder.end(), std::size_t{0});
        EXPECT_EQ(stubTests::called, inOrder);

        // The module is left initialised for the first product.
        EXPECT_TRUE(voxloc_tests::IsInitialized);
        EXPECT_TRUE(voxloc::moduleTracker().IsTransducersInitialized);
        EXPECT_EQ(voxloc::moduleTracker().ProductType, PRODUCT_ASTER);
        EXPECT_NE(voxloc_tests::AudioData, nullptr);
    }
    voxloc_tests::tearDown();
}

}  // namespace
