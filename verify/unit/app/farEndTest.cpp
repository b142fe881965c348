#include "readers/farEnd.h"

#include <gtest/gtest.h>

#include "appFiles.h"
#include "common/failure.h"

namespace {

std::vector<int> playingFrames(const FarEnd& farEnd) {
    std::vector<int> frames;
    for (int f = 0; f < 100; ++f) {
        if (farEnd.isPlaying(static_cast<std::uint64_t>(f) * 2048)) frames.push_back(f);
    }
    return frames;
}

TEST(FarEnd, PlaysInEveryFrameThatATimeTouches) {
    // Frame 10 is 0.42667 to 0.46933 s.
    EXPECT_EQ(playingFrames(FarEnd("0.43,0.44", "f")), (std::vector<int>{10}));
    EXPECT_EQ(playingFrames(FarEnd("0.46,0.47", "f")), (std::vector<int>{10, 11}));
    EXPECT_EQ(playingFrames(FarEnd("4.2,9.0", "f")), (std::vector<int>{98, 99}));
    EXPECT_TRUE(playingFrames(FarEnd("", "f")).empty());
}

TEST(FarEnd, TakesTimesInAnyOrderAndOverlapping) {
    EXPECT_EQ(playingFrames(FarEnd("from,to\n1.0,1.01\r\n# note\n\n 0.0 , 0.5 \n0.1,0.2\n", "f")),
              (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 23}));
}

TEST(FarEnd, NamesTheLineThatItCannotRead) {
    const auto refusal = [](const char* text) {
        return refusalOf<BadData>([&] { FarEnd(text, "times.csv"); });
    };
    EXPECT_EQ(refusal("0,1\n2,1\n"),
              "times.csv: line 2: must be two times in seconds, from,to, not '2,1'");
    for (const char* text : {"0,1\nx,y", "1", "1,2,3", "-1,2", "0,nan", "0,inf", "from,to,what"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(FarEnd, IsReadFromAFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(playingFrames(FarEnd::fromFile(folder.write("far.csv", "0.43,0.44\n"))),
              (std::vector<int>{10}));
    EXPECT_EQ(refusalOf<BadData>([&] { FarEnd::fromFile(folder.path("none")); }),
              "cannot open " + folder.path("none") + ": No such file or directory");
    EXPECT_EQ(refusalOf<BadData>([&] { FarEnd::fromFile(folder.path(".")); }),
              folder.path(".") + " is a directory");
}

}  // namespace
