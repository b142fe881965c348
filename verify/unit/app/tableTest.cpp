#include "common/table.h"

#include <gtest/gtest.h>

namespace {

TEST(Table, ColumnsAreAsWideAsTheirWidestCell) {
    Table table("lr", {"name", "n"});
    table.add({"a", "1000"});
    table.add({"longest", "1"});
    EXPECT_EQ(
        "name        n\n"
        "a        1000\n"
        "longest     1\n",
        table.text());
}

TEST(Table, NoLineEndsInBlanks) {
    Table table("ll", {"a", "b"});
    table.add({"cc", ""});
    EXPECT_EQ("a   b\ncc\n", table.text());
}

TEST(Table, LettersBeyondAsciiTakeOnePlace) {
    Table table("lr", {"\xc3\xa4", "1"});
    table.add({"b", "2"});
    EXPECT_EQ("\xc3\xa4  1\nb  2\n", table.text());
}

}  // namespace
