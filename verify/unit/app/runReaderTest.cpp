#include "readers/runReader.h"

#include <gtest/gtest.h>

#include "common/failure.h"
#include "kit/floatBits.h"
#include "runRecords.h"

namespace {

constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinity = std::numeric_limits<float>::infinity();

class RunReaderInBothForms : public ::testing::TestWithParam<RecordForm> {
  protected:
    std::vector<Record> readBack(const std::vector<Record>& records) {
        RunReader reader(writeRun(folder_, "run", records, GetParam()));
        header_ = reader.header();
        std::vector<Record> result;
        Record record;
        while (reader.read(record)) result.push_back(record);
        summary_ = reader.summary();
        return result;
    }

    TemporaryFolder folder_;
    std::string header_, summary_;
};

void expectSame(const Record& expected, const Record& got) {
    EXPECT_EQ(expected.frame, got.frame);
    EXPECT_EQ(expected.sample, got.sample);
    EXPECT_EQ(kit::bitsOf(expected.result.azimuth), kit::bitsOf(got.result.azimuth));
    EXPECT_EQ(kit::bitsOf(expected.result.elevation), kit::bitsOf(got.result.elevation));
    EXPECT_EQ(kit::bitsOf(expected.result.range), kit::bitsOf(got.result.range));
    EXPECT_EQ(kit::bitsOf(expected.result.quality), kit::bitsOf(got.result.quality));
    EXPECT_EQ(expected.result.flags, got.result.flags);
    EXPECT_EQ(expected.hasEstimate, got.hasEstimate);
    EXPECT_EQ(expected.channels, got.channels);
    EXPECT_FLOAT_EQ(expected.ultrasoundLevel, got.ultrasoundLevel);
    for (std::size_t c = 0; c < VOXLOC_MAX_CHANNELS; ++c) {
        EXPECT_FLOAT_EQ(expected.level[c], got.level[c]) << "microphone " << c;
    }
}

TEST_P(RunReaderInBothForms, GivesEachRecordAsItWasWritten) {
    const std::vector<Record> records = runRecords(300);
    const std::vector<Record> got = readBack(records);
    ASSERT_EQ(got.size(), records.size());
    for (std::size_t i = 0; i < records.size(); ++i) expectSame(records[i], got[i]);
}

TEST_P(RunReaderInBothForms, GivesHeaderAndSummaryAsJson) {
    readBack(runRecords(3));
    EXPECT_EQ(Json::parse(header_)["array"]["name"], "stick");
    EXPECT_EQ(Json::parse(summary_)["frames"], 3);
}

TEST_P(RunReaderInBothForms, GivesWhatIsNoNumber) {
    Record record = runRecord(0);
    record.result.azimuth = Nan;
    record.ultrasoundLevel = -Infinity;
    record.level[1] = -Infinity;
    const std::vector<Record> got = readBack({record});
    ASSERT_EQ(got.size(), 1u);
    EXPECT_TRUE(std::isnan(got[0].result.azimuth));
    EXPECT_EQ(got[0].ultrasoundLevel, -Infinity);
    EXPECT_EQ(got[0].level[1], -Infinity);
}

TEST_P(RunReaderInBothForms, ReadsARunWithoutFrames) {
    EXPECT_TRUE(readBack({}).empty());
    EXPECT_EQ(Json::parse(summary_)["frames"], 0);
}

INSTANTIATE_TEST_SUITE_P(Forms, RunReaderInBothForms,
                         ::testing::Values(RecordForm::Csv, RecordForm::JsonLines),
                         [](const auto& form) {
                             return form.param == RecordForm::Csv ? "Csv" : "JsonLines";
                         });

/** What reading it to the end says; without the folder's name. */
std::string damageOf(const std::string& text) {
    const TemporaryFolder folder;
    const std::string path = folder.write("run", text);
    std::string said = refusalOf<BadData>([&path] {
        RunReader reader(path);
        Record record;
        while (reader.read(record)) {
        }
    });
    const std::size_t place = said.find(path);
    return place == std::string::npos ? said : said.replace(place, path.size(), "run");
}

std::string textOf(RecordForm form, std::uint64_t frames = 2) {
    const TemporaryFolder folder;
    writeRun(folder, "run", runRecords(frames), form);
    return folder.read("run");
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

TEST(RunReader, RefusesWhatIsNoRun) {
    EXPECT_EQ(damageOf(""), "run: is empty, not a run");
    const std::string said =
        "run: line 1: is not the header of a run; voxloc locate writes one as CSV or JSON lines";
    EXPECT_EQ(damageOf("frame,sample\n"), said);
    EXPECT_EQ(damageOf("{\"type\":\"frame\"}\n"), said);
    EXPECT_EQ(damageOf("# {\"type\":\n"), said);
    EXPECT_EQ(damageOf(textOf(RecordForm::Text)), said);
}

TEST(RunReader, RefusesAnotherSchema) {
    EXPECT_EQ(damageOf("# {\"type\":\"header\",\"schema\":99}\n"),
              "run: line 1: the run has schema 99, this program reads 1");
}

TEST(RunReader, SaysThatARunWasCutOff) {
    for (const RecordForm form : {RecordForm::Csv, RecordForm::JsonLines}) {
        std::string text = textOf(form);
        text.erase(text.rfind('\n', text.size() - 2) + 1);
        EXPECT_EQ(damageOf(text), "run: line " + std::string(form == RecordForm::Csv ? "4" : "3") +
                                      ": is the last one; the run was cut off before its summary");
    }
    EXPECT_EQ(damageOf("# {\"type\":\"header\",\"schema\":1}\n"),
              "run: line 1: is the last one; the names of the columns are missing");
}

TEST(RunReader, NamesTheColumnThatIsDamaged) {
    const std::string text = textOf(RecordForm::Csv);
    EXPECT_EQ(damageOf(replaced(text, "-60,", "-6o,")),
              "run: line 3: column azimuth is '-6o', not a number");
    EXPECT_EQ(damageOf(replaced(text, "-60,", "-6e300,")),
              "run: line 3: column azimuth is '-6e300', not a number");
    EXPECT_EQ(damageOf(replaced(text, "\n1,", "\n-1,")),
              "run: line 4: column frame is '-1', not a count");
    EXPECT_EQ(damageOf(replaced(text, "0.5,0,0", "0.5,2,0")),
              "run: line 3: column estimate is '2', not 0 or 1");
    EXPECT_EQ(damageOf(replaced(text, "-60,", "-60,,")),
              "run: line 3: has 20 columns instead of 19");
    EXPECT_EQ(damageOf(replaced(text, ",quality,", ",quantity,")),
              "run: line 2: column quality is missing");
}

TEST(RunReader, NamesTheFieldThatIsDamaged) {
    const std::string text = textOf(RecordForm::JsonLines);
    EXPECT_EQ(damageOf(replaced(text, "\"azimuth\":-60", "\"azimuth\":\"-60\"")),
              "run: line 2: azimuth is \"-60\", not a number");
    EXPECT_EQ(damageOf(replaced(text, "\"azimuth\":-60", "\"azimuth\":-6e300")),
              "run: line 2: azimuth is -6e+300, not a number");
    EXPECT_EQ(damageOf(replaced(text, "\"range\":", "\"angle\":")),
              "run: line 2: range is missing");
    EXPECT_EQ(damageOf(replaced(text, "\"voice\":0", "\"voice\":true")),
              "run: line 2: voice is true, not 0 or 1");
    EXPECT_EQ(damageOf(replaced(text, "\"frame\":1", "\"frame\":-1")),
              "run: line 3: frame is -1, not a count");
    EXPECT_EQ(damageOf(replaced(text, "\"level\":[", "\"level\":[[],")),
              "run: line 2: level is [], not a number");
    EXPECT_EQ(damageOf(replaced(text, "\"flags\":{", "\"flags\":[], \"was\":{")),
              "run: line 2: flags is [], not an object");
    EXPECT_EQ(damageOf(replaced(text, "{\"type\":\"frame\"", "{{\"type\":\"frame\"")),
              "run: line 2: is not a JSON object");
}

TEST(RunReader, RefusesFramesOutOfOrder) {
    EXPECT_EQ(damageOf(replaced(textOf(RecordForm::Csv), "\n1,", "\n0,")),
              "run: line 4: frame 0 comes after frame 0");
}

TEST(RunReader, RefusesWhatFollowsTheSummary) {
    EXPECT_EQ(damageOf(textOf(RecordForm::Csv) + "more\n"), "run: line 6: comes after the summary");
}

TEST(RunReader, ReadsLinesThatEndAsOnOtherSystems) {
    std::string text;
    for (const char c : textOf(RecordForm::Csv)) text += c == '\n' ? "\r\n" : std::string(1, c);
    EXPECT_EQ(damageOf(text), "");
}

}  // namespace
