#include "locate/locate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "appFiles.h"
#include "common/failure.h"
#include "common/text.h"
#include "kit/talker.h"
#include "locate/locator.h"

namespace {

constexpr std::size_t Frames = 70;

/** Records a run of the module's tracker; `results` is what voxloc_calculate gave meanwhile. */
std::string record(const TemporaryFolder& folder, std::int32_t product,
                   std::vector<TrackerResult>& results) {
    const std::string path = folder.path("run.rec");
    voxloc_initialize(product);
    const kit::Scenario scenario = kit::mixedScenario(Frames);
    EXPECT_NE(voxloc_record_start(path.c_str()), 0);
    for (std::size_t f = 0; f < Frames; ++f) results.push_back(kit::processFrame(scenario, f));
    voxloc_record_stop();
    voxloc_destroy();
    return path;
}

/** Rows of a CSV without its comments and its heading. */
std::vector<std::vector<std::string>> rowsOf(const std::string& csv) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : split(csv, '\n')) {
        if (!line.empty() && line[0] >= '0' && line[0] <= '9') rows.push_back(split(line, ','));
    }
    return rows;
}

bool hasSameBits(const std::string& text, float value) {
    const auto read = static_cast<float>(numberFrom(text).value());
    return (read != read && value != value) || std::memcmp(&read, &value, sizeof read) == 0;
}

class LocateProduct : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(LocateProduct, GivesWhatTheModuleGaveWhileItRecorded) {
    const TemporaryFolder folder;
    const VoxlocProduct& product = *voxloc_getProduct(GetParam());
    std::vector<TrackerResult> expected;
    LocateJob job;
    job.input = record(folder, product.type, expected);
    job.output = folder.path("run.csv");
    job.form = RecordForm::Csv;
    ASSERT_EQ(locate(job), StatusSuccess);
    const auto rows = rowsOf(folder.read("run.csv"));
    ASSERT_EQ(rows.size(), Frames);
    for (std::size_t f = 0; f < Frames; ++f) {
        ASSERT_TRUE(hasSameBits(rows[f][3], expected[f].azimuth)) << f;
        ASSERT_TRUE(hasSameBits(rows[f][5], expected[f].range)) << f;
        // Without elevation pairs the module's elevation and a part of its quality are those that
        // an earlier product left.
        if (product.array.elevationPairs > 0) {
            ASSERT_TRUE(hasSameBits(rows[f][4], expected[f].elevation)) << f;
            ASSERT_TRUE(hasSameBits(rows[f][6], expected[f].quality)) << f;
        }
        for (std::size_t i = 0; i < FlagNames.size(); ++i) {
            ASSERT_EQ(rows[f][8 + i],
                      std::to_string(voxloc_getFlag(static_cast<std::uint32_t>(FlagNames[i].bit),
                                                    expected[f].flags)));
        }
    }
}

std::string productName(const ::testing::TestParamInfo<std::uint32_t>& info) {
    return voxloc_getProduct(info.param)->name;
}
INSTANTIATE_TEST_SUITE_P(Every, LocateProduct, ::testing::Range(0U, voxloc_getNumberOfProducts()),
                         productName);

// The library adds up one sample after the other: its rounding grows with the square root of 2048.
TEST(Locator, GivesTheLevelsThatTheLibrarysEnergiesMean) {
    const NamedArray array = findArray("gannet");
    Locator locator(array);
    InputFrame frame;
    frame.bits = 16;
    for (std::size_t c = 0; c < 8; ++c) {
        for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) {
            frame.samples.push_back(static_cast<float>(codeOf(c, n)));
        }
    }
    float energies[VOXLOC_MAX_CHANNELS];
    voxloc_calculateSignalEnergy(frame.samples.data(), 16, 8, energies);
    const Record record = locator.locate(frame);
    for (std::size_t c = 0; c < 8; ++c) {
        const double expected = 10.0 * std::log10(static_cast<double>(energies[c]) / 2048.0);
        EXPECT_NEAR(static_cast<double>(record.level[c]), expected, 1e-4);
    }
}

TEST(Locate, WritesTheSameBytesForTheSameInput) {
    const TemporaryFolder folder;
    std::vector<TrackerResult> results;
    LocateJob job;
    job.input = record(folder, PRODUCT_FOXGLOVE, results);
    for (const RecordForm form : {RecordForm::Csv, RecordForm::JsonLines, RecordForm::Text}) {
        job.form = form;
        job.output = folder.path("one");
        ASSERT_EQ(locate(job), StatusSuccess);
        job.output = folder.path("two");
        ASSERT_EQ(locate(job), StatusSuccess);
        EXPECT_EQ(folder.read("one"), folder.read("two"));
    }
}

TEST(Locate, KeepsWhatItComputedBeforeDamage) {
    const TemporaryFolder folder;
    std::vector<TrackerResult> results;
    const std::string whole = record(folder, PRODUCT_FOXGLOVE, results);
    const std::string bytes = folder.read("run.rec");
    LocateJob job;
    job.form = RecordForm::Csv;
    job.input = folder.write("torn.rec", bytes.substr(0, bytes.size() / 2));
    job.output = folder.path("torn.csv");
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(locate(job), StatusBadData);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "voxloc: " + job.input + ": damaged at byte " + std::to_string(bytes.size() / 2) +
                  ": the file ends inside frame 34\n");
    EXPECT_EQ(rowsOf(folder.read("torn.csv")).size(), 34U);
    EXPECT_NE(folder.read("torn.csv").find("\n# {\"type\":\"summary\",\"frames\":34,"),
              std::string::npos);
}

TEST(Locate, SetsTheFarEndFlagAtItsTimes) {
    const TemporaryFolder folder;
    std::vector<TrackerResult> results;
    LocateJob job;
    job.form = RecordForm::Csv;
    job.input = record(folder, PRODUCT_FOXGLOVE, results);
    job.output = folder.path("run.csv");
    job.farEnd = folder.write("far.csv", "0,0.2\n");
    ASSERT_EQ(locate(job), StatusSuccess);
    const auto rows = rowsOf(folder.read("run.csv"));
    EXPECT_EQ(rows[0][11], "1");
    EXPECT_EQ(rows[4][11], "1");
    EXPECT_EQ(rows[5][11], "0");
}

TEST(Locate, RefusesAnArrayOfOtherChannels) {
    const TemporaryFolder folder;
    std::vector<TrackerResult> results;
    LocateJob job;
    job.input = record(folder, PRODUCT_FOXGLOVE, results);
    job.output = folder.path("run.csv");
    job.array = "aster";
    EXPECT_EQ(refusalOf<BadData>([&] { locate(job); }),
              job.input +
                  ": has 4 channels, array aster has 6; choose and order them with "
                  "--channels");
    EXPECT_FALSE(folder.has("run.csv"));
}

TEST(Locate, NeedsAnArrayWhereTheInputNamesNone) {
    const TemporaryFolder folder;
    LocateJob job;
    job.input = folder.write("raw", std::string(4096, '\0'));
    job.read.rawFormat = "S16";
    job.read.rawChannels = 4;
    EXPECT_EQ(refusalOf<WrongUsage>([&] { locate(job); }),
              job.input + ": says nothing of its microphones; give its array with --array");
    job.array = "asta";
    EXPECT_EQ(refusalOf<BadData>([&] { locate(job); }),
              "no array is called 'asta': there are aster, bramble, cinder, elmwood, dovetail, "
              "foxglove, gannet, and files (NAME.json)");
}

}  // namespace
