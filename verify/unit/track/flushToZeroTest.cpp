#include "track/flushToZero.h"

#include <gtest/gtest.h>

namespace {

/** Read and written through memory, so that the compiler cannot compute ahead. */
volatile float Tiny = 1e-38f;

float tenthOfTiny() {
    Tiny = 1e-38f;
    const float tenth = Tiny * 0.1f;
    Tiny = tenth;
    return Tiny;
}

TEST(FlushToZero, TakesTooSmallResultsForZeroWhileItLivesAndPutsTheModeBack) {
    EXPECT_GT(tenthOfTiny(), 0.0f);
    {
        const voxloc::FlushToZero flush;
        EXPECT_EQ(tenthOfTiny(), 0.0f);
        {
            const voxloc::FlushToZero nested;
            EXPECT_EQ(tenthOfTiny(), 0.0f);
        }
        EXPECT_EQ(tenthOfTiny(), 0.0f);
    }
    EXPECT_GT(tenthOfTiny(), 0.0f);
}

/** A factor below the normal format, brought back into it. */
float tinyOperandMadeLarge() {
    Tiny = 1e-40f;
    return Tiny * 1e10f;
}

TEST(FlushToZero, TakesTooSmallOperandsForZeroToo) {
    EXPECT_GT(tinyOperandMadeLarge(), 0.0f);
    const voxloc::FlushToZero flush;
    EXPECT_EQ(tinyOperandMadeLarge(), 0.0f);
}

}  // namespace
