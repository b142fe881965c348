#include "common/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "writers/header.h"

namespace {

std::string textOf(float value) {
    std::string text;
    appendNumber(text, value);
    return text;
}

TEST(AppNumbers, AreTheShortestTextsThatReadBack) {
    EXPECT_EQ(textOf(0.1f), "0.1");
    EXPECT_EQ(textOf(-64.80555f), "-64.80555");
    EXPECT_EQ(textOf(1e-30f), "1e-30");
    EXPECT_EQ(textOf(2.5f), "2.5");
}

TEST(AppNumbers, KeepEveryBit) {
    std::uint32_t bits = 1;
    for (int i = 0; i < 100000; ++i) {
        bits = bits * 1664525U + 1013904223U;
        float value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        const auto back = numberFrom(textOf(value));
        ASSERT_TRUE(back.has_value());
        const auto read = static_cast<float>(*back);
        ASSERT_EQ(std::memcmp(&read, &value, sizeof read), 0) << textOf(value);
    }
}

TEST(AppNumbers, NameWhatIsNone) {
    EXPECT_EQ(textOf(std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(textOf(-std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(textOf(-std::numeric_limits<float>::infinity()), "-inf");
}

TEST(AppNumbers, AreReadAsAWhole) {
    EXPECT_FALSE(numberFrom("").has_value());
    EXPECT_FALSE(numberFrom("1.5x").has_value());
    EXPECT_FALSE(integerFrom("12 ").has_value());
    EXPECT_EQ(integerFrom("-12"), -12);
    EXPECT_TRUE(std::isinf(*numberFrom("-inf")));
}

TEST(AppText, IsSplitAtEverySeparator) {
    EXPECT_EQ(split("a,,b,", ','), (std::vector<std::string>{"a", "", "b", ""}));
    EXPECT_EQ(trimmed(" \ta b\r"), "a b");
    EXPECT_EQ(inQuotes("a\nb"), "'a?b'");
}

TEST(WallTime, IsWorldTimeWithMilliseconds) {
    EXPECT_EQ(wallTime(0.0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(wallTime(1795255200.0425), "2026-11-21T10:00:00.043Z");
    EXPECT_EQ(wallTime(59.9996), "1970-01-01T00:01:00.000Z");
    EXPECT_EQ(wallTime(-0.25), "1969-12-31T23:59:59.750Z");
}

}  // namespace
