#include <gtest/gtest.h>

#include <csignal>

#include "kit/lastWords.h"
#include "voxloc/voxloc.h"

namespace {

std::uint32_t withFlag(std::uint32_t word, std::uint32_t bit, std::int32_t value) {
    voxloc_setFlag(bit, value, &word);
    return word;
}

TEST(GetFlag, GivesOneOrZeroForEveryBit) {
    for (std::uint32_t bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(voxloc_getFlag(bit, 1U << bit), 1) << bit;
        EXPECT_EQ(voxloc_getFlag(bit, ~(1U << bit)), 0) << bit;
    }
}

TEST(SetFlag, ClearsABitAndLeavesTheOthers) {
    for (std::uint32_t bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(withFlag(0xffffffffU, bit, 0), ~(1U << bit)) << bit;
    }
}

TEST(SetFlag, SetsABitAndLeavesTheOthers) {
    for (std::uint32_t bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(withFlag(0, bit, 1), 1U << bit) << bit;
        EXPECT_EQ(withFlag(1U << bit, bit, 1), 1U << bit) << bit;
    }
}

// The value is shifted as it is.
TEST(SetFlag, SetsTheNextBitUpForAValueOfTwo) {
    EXPECT_EQ(withFlag(0, 4, 2), 0x20U);
    EXPECT_EQ(withFlag(0x10, 4, 2), 0x20U);
    EXPECT_EQ(withFlag(0x20, 4, 0), 0x20U);  // only the bit itself is cleared
    EXPECT_EQ(withFlag(0, 4, 3), 0x30U);
    EXPECT_EQ(withFlag(0, 31, 2), 0U);  // shifted out
    EXPECT_EQ(withFlag(0, 28, -1), 0xf0000000U);
}

TEST(FlagBits, HaveTheirPublicNumbers) {
    EXPECT_EQ(VOXLOC_INPUT_FAR_END, 0);
    EXPECT_EQ(VOXLOC_INPUT_NOISE_FLAG, 1);
    EXPECT_EQ(VOXLOC_FLAG_VOICE, 0);
    EXPECT_EQ(VOXLOC_FLAG_TD_VOICE, 1);
    EXPECT_EQ(VOXLOC_FLAG_SOUND, 2);
    EXPECT_EQ(VOXLOC_FLAG_FAR_END, 3);
    EXPECT_EQ(VOXLOC_FLAG_NOISE_INPUT, 4);
    EXPECT_EQ(VOXLOC_FLAG_ULTRASOUND, 5);
    EXPECT_EQ(VOXLOC_FLAG_POSITION_VALID, 7);
}

std::string noSuchBit(const std::string& function) {
    return assertionReport("functional/audio/voxloc/cmod/track/voxloc", function, "bit < 32");
}

TEST(FlagBitsDeathTest, EndWithTheThirtySecond) {
    std::uint32_t word = 0;
    for (const std::uint32_t bit : {32U, 33U, 64U, UINT32_MAX}) {
        EXPECT_EXIT(voxloc_setFlag(bit, 1, &word), ::testing::KilledBySignal(SIGABRT),
                    noSuchBit("voxloc_setFlag"));
        EXPECT_EXIT(voxloc_getFlag(bit, 1), ::testing::KilledBySignal(SIGABRT),
                    noSuchBit("voxloc_getFlag"));
    }
}

}  // namespace
