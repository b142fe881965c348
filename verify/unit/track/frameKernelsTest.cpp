#include "track/frameKernels.h"

#include <gtest/gtest.h>

#include "kit/guardedFloats.h"
#include "kit/noise.h"

namespace {

using reference::GuardedFloats;
using reference::noise;

constexpr std::size_t Frame = 2048;

TEST(WindowAndAdvance, GivesTheBlockThroughTheWindow) {
    GuardedFloats block(noise(2 * Frame, 1)), windowed(2 * Frame);
    const GuardedFloats window(noise(2 * Frame, 2)), next(noise(Frame, 3)), before = block;
    voxloc::windowAndAdvance(block.data(), window.data(), next.data(), windowed.data());
    for (std::size_t i = 0; i < 2 * Frame; ++i) ASSERT_EQ(windowed[i], before[i] * window[i]) << i;
    EXPECT_TRUE(windowed.intact());
}

TEST(WindowAndAdvance, MovesTheSecondHalfUpAndTakesTheNextFrameIn) {
    GuardedFloats block(noise(2 * Frame, 4), 3), windowed(2 * Frame, 1);
    const GuardedFloats window(noise(2 * Frame, 5), 2), next(noise(Frame, 6), 5), before = block;
    voxloc::windowAndAdvance(block.data(), window.data(), next.data(), windowed.data());
    for (std::size_t i = 0; i < Frame; ++i) {
        ASSERT_EQ(block[i], before[Frame + i]) << i;
        ASSERT_EQ(block[Frame + i], next[i]) << i;
    }
    EXPECT_TRUE(block.intact());
}

}  // namespace
