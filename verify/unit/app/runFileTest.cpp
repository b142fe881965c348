// Where runs of many files go, and what a finished one says of itself.

#include "many/runFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "common/failure.h"
#include "kit/temporaryFile.h"

namespace {

const std::string Header = R"({"type":"header","input":{"name":"a.wav"}})";
const std::string Summary = R"({"type":"summary","frames":2})";

TEST(RunPath, MirrorsTheFilesPath) {
    EXPECT_EQ("runs/a.wav.jsonl", runPath("runs", "a.wav", RecordForm::JsonLines));
    EXPECT_EQ("runs/day1/a.wav.csv", runPath("runs", "day1/a.wav", RecordForm::Csv));
    EXPECT_EQ("runs/data/a.wav.txt", runPath("runs", "/data/a.wav", RecordForm::Text));
}

TEST(RunPath, IsTheSameForOneFileInSeveralSpellings) {
    EXPECT_EQ("runs/day1/a.wav.csv", runPath("runs", "./day1//b/../a.wav", RecordForm::Csv));
}

TEST(RunPath, StaysBelowTheFolder) {
    const std::string above =
        std::filesystem::absolute("../a.wav").lexically_normal().relative_path().string();
    EXPECT_EQ("runs/" + above + ".csv", runPath("runs", "../a.wav", RecordForm::Csv));
}

/** The ends of a run with that content, or what is said of it without its name. */
std::string endsOf(const std::string& content, RunEnds* ends = nullptr) {
    const TemporaryFile file;
    std::ofstream(file.path(), std::ios::binary) << content;
    try {
        const RunEnds found = readRunEnds(file.path());
        if (ends != nullptr) *ends = found;
        return found.input;
    } catch (const BadData& bad) {
        return std::string(bad.what()).substr(std::string(file.path()).size());
    }
}

TEST(RunEnds, OfJsonLinesAreItsInputAndItsSummary) {
    RunEnds ends;
    EXPECT_EQ("a.wav", endsOf(Header + "\n{}\n" + Summary + "\n", &ends));
    EXPECT_FALSE(ends.isCsv);
    EXPECT_EQ(2, ends.summary["frames"]);
}

TEST(RunEnds, OfCsvAreItsColumnsToo) {
    RunEnds ends;
    EXPECT_EQ("a.wav", endsOf("# " + Header + "\nframe,time\n0,0\n# " + Summary + "\n", &ends));
    EXPECT_TRUE(ends.isCsv);
    EXPECT_EQ("frame,time", ends.columns);
}

TEST(RunEnds, AreFoundBehindALineOfAnyLength) {
    const std::string turns(100000, ' ');
    EXPECT_EQ("a.wav", endsOf(Header + "\n" + turns + "\n{" + turns + Summary.substr(1) + "\n"));
}

TEST(RunEnds, WithoutThemNothingIsAFinishedRun) {
    const std::string noRun = ": is no run in CSV or JSON lines";
    EXPECT_EQ(noRun, endsOf(""));
    EXPECT_EQ(noRun, endsOf(Header));
    EXPECT_EQ(noRun, endsOf("[]\n" + Summary + "\n"));
    EXPECT_EQ(noRun, endsOf("{\"type\":\"header\",\"input\":{\"name\":7}}\n" + Summary + "\n"));
    const std::string unfinished = ": is not finished: its last line is no summary";
    EXPECT_EQ(unfinished, endsOf(Header + "\n"));
    EXPECT_EQ(unfinished, endsOf(Header + "\n{}\n"));
    EXPECT_EQ(unfinished, endsOf(Header + "\n" + Summary));
    EXPECT_EQ(unfinished, endsOf(Header + "\n" + Summary.substr(0, 9) + "\n"));
}

TEST(RunEnds, OfWhatIsNotThereAreABadFile) {
    try {
        readRunEnds("/nowhere/a.csv");
        FAIL();
    } catch (const BadData& bad) {
        EXPECT_STREQ("cannot read /nowhere/a.csv: No such file or directory", bad.what());
    }
}

}  // namespace
