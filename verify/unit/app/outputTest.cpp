#include "writers/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(Output, WritesIntoANamedPipeAndDoesNotTakeItsName) {
    const TemporaryFolder folder;
    const std::string path = folder.path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    Output output(path);
    output.write("one");
    output.finish();
    char text[8] = {};
    EXPECT_EQ(read(reader, text, sizeof text), 3);
    EXPECT_STREQ(text, "one");
    EXPECT_TRUE(std::filesystem::is_fifo(path));
    close(reader);
}

}  // namespace
