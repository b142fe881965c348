#include "writers/output.h"

#include <gtest/gtest.h>

#include "appFiles.h"
#include "common/failure.h"

namespace {

TEST(Output, HasItsNameWhenItIsFinishedAndNotBefore) {
    const TemporaryFolder folder;
    Output output(folder.path("run.csv"));
    output.write("one\n");
    output.flush();
    EXPECT_FALSE(folder.has("run.csv"));
    EXPECT_TRUE(folder.has("run.csv.part"));
    output.write("two\n");
    output.finish();
    EXPECT_EQ(folder.read("run.csv"), "one\ntwo\n");
    EXPECT_FALSE(folder.has("run.csv.part"));
}

TEST(Output, LeavesNothingThatIsNotFinishedAndWhatWasThereBefore) {
    const TemporaryFolder folder;
    folder.write("run.csv", "before");
    {
        Output output(folder.path("run.csv"));
        output.write("half");
    }
    EXPECT_EQ(folder.read("run.csv"), "before");
    EXPECT_FALSE(folder.has("run.csv.part"));
}

TEST(Output, SaysWhereItCannotWrite) {
    const TemporaryFolder folder;
    const std::string path = folder.path("none/run.csv");
    EXPECT_EQ(refusalOf<BadData>([&path] { Output output(path); }),
              "cannot write " + path + ": No such file or directory");
}

}  // namespace
