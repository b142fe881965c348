#include "writers/recordWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "appFiles.h"

namespace {

RunHeader header() {
    RunHeader header;
    header.array.name = "stick";
    header.array.array.channels = 2;
    header.array.array.azimuthPairs = 1;
    header.array.array.azimuthPair[0] = {0, 1};
    header.array.array.microphone[1] = {0.0f, 0.1f, 0.0f};
    header.array.array.minimumAzimuth = -0.905f;
    header.array.array.minimumElevation = -0.52f;
    header.array.array.angleInterval = 0.008f;
    header.input.name = "talk \"1\".wav";
    header.input.kind = "WAV";
    header.input.channels = 3;
    header.input.rate = 44100;
    header.options.channels = {2, 0};
    header.options.gain = 6.5;
    return header;
}

Record record() {
    Record record;
    record.frame = 24;
    record.sample = 49152;
    record.result = {12.5f, -3.25f, 2.7f, 0.1f, 0x85};  // voice, sound, valid
    record.hasEstimate = true;
    record.hasElevation = true;
    record.ultrasoundLevel = -71.066f;
    record.channels = 2;
    record.level = {-20.004f, -std::numeric_limits<float>::infinity()};
    return record;
}

std::string written(RecordForm form, const RunHeader& header, const Record& record) {
    const TemporaryFolder folder;
    Output output(folder.path("run"));
    RecordWriter writer(form, header, output);
    writer.write(record);
    Summary summary;
    summary.frames = 100;
    summary.voiceFrames = 25;
    summary.turns.push_back({10, 59, 12.5f, -3.25f, 2.7f, 0.8765f});
    writer.finish(summary);
    output.finish();
    return folder.read("run");
}

const char HeaderJson[] =
    R"({"type":"header","schema":1,"version":"2.0.0",)"
    R"("input":{"name":"talk \"1\".wav","kind":"WAV","channels":3,"rate":44100},)"
    R"("frame_samples":2048,"sample_rate":48000,"options":{"channels":[2,0],"gain":6.5},)"
    R"("array":{"voxloc_array":1,"name":"stick","microphones":[[0.0,0.0,0.0],[0.0,0.1,0.0]],)"
    R"("azimuth_pairs":[[0,1]],"elevation_pairs":[],"grid":{"lowest_azimuth_sine":-0.905,)"
    R"("lowest_elevation_sine":-0.52,"sine_step":0.008},"voice_channels":[0,0],)"
    R"("noise_channels":[0,0],"time_domain_voice_channel":0}})";
const char SummaryJson[] =
    R"({"type":"summary","frames":100,"seconds":4.267,"voice_share":0.25,"turns":[{"from":0.427,)"
    R"("to":2.56,"azimuth":12.5,"elevation":-3.25,"range":2.7,"quality":0.877}]})";

TEST(CsvRun, HasHeaderColumnsRowsAndSummary) {
    EXPECT_EQ(written(RecordForm::Csv, header(), record()),
              std::string("# ") + HeaderJson +
                  "\nframe,sample,time,azimuth,elevation,range,quality,estimate,voice,td_voice,"
                  "sound,far_end,noise_input,ultrasound,position_valid,ultrasound_level,level_0,"
                  "level_1\n"
                  "24,49152,1.024000,12.5,-3.25,2.7,0.1,1,1,0,1,0,0,0,1,-71.07,-20.00,-inf\n# " +
                  SummaryJson + "\n");
}

TEST(JsonLinesRun, HasHeaderFramesAndSummary) {
    EXPECT_EQ(written(RecordForm::JsonLines, header(), record()),
              std::string(HeaderJson) +
                  "\n"
                  R"({"type":"frame","frame":24,"sample":49152,"time":1.024000,"azimuth":12.5,)"
                  R"("elevation":-3.25,"range":2.7,"quality":0.1,"estimate":1,"flags":{"voice":1,)"
                  R"("td_voice":0,"sound":1,"far_end":0,"noise_input":0,"ultrasound":0,)"
                  R"("position_valid":1},"ultrasound_level":-71.07,"level":[-20.00,null]})"
                  "\n" +
                  SummaryJson + "\n");
}

TEST(TextRun, IsAlignedForPeople) {
    EXPECT_EQ(written(RecordForm::Text, header(), record()),
              "# voxloc 2.0.0, array stick, talk \"1\".wav\n"
              "#       time  azimuth elevation  range quality  flags: voice, time-domain voice, "
              "sound, far end, noise input, ultrasound, position valid\n"
              "       1.024     12.5      -3.2    2.7   0.100  v.s...p\n"
              "# 4.3 s in 100 frames, voice in 25 % of them, 1 turn\n"
              "# 0:00.4 to 0:02.6  azimuth 12.5  elevation -3.2  range 2.7  quality 0.88\n");
}

TEST(TextRun, ShowsNoPlaceThatRestsOnNothing) {
    Record nothing = record();
    nothing.hasEstimate = false;
    EXPECT_NE(written(RecordForm::Text, header(), nothing).find("1.024        -         -      -"),
              std::string::npos);
}

TEST(AnyRun, GivesWallTimesFromItsClockOn) {
    RunHeader withClock = header();
    withClock.clock = 1795255200.0;
    EXPECT_NE(written(RecordForm::Csv, withClock, record()).find(",2026-11-21T10:00:01.024Z,"),
              std::string::npos);
    EXPECT_NE(written(RecordForm::JsonLines, withClock, record())
                  .find("\"time\":\"2026-11-21T10:00:01.024Z\""),
              std::string::npos);
}

TEST(AnyRun, WritesAnglesThatAreNoneAsSuch) {
    Record none = record();
    none.result.azimuth = std::numeric_limits<float>::quiet_NaN();
    EXPECT_NE(written(RecordForm::Csv, header(), none).find(",nan,-3.25,"), std::string::npos);
    EXPECT_NE(written(RecordForm::JsonLines, header(), none).find("\"azimuth\":null"),
              std::string::npos);
}

}  // namespace
