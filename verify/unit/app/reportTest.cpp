#include "page/report.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <chrono>
#include <cstring>

#include "common/failure.h"
#include "page/base64.h"
#include "runRecords.h"

namespace {

std::string decoded(const std::string& text) {
    static const std::string Digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0, count = 0;
    for (const char c : text) {
        if (c == '=') break;
        bits = bits << 6 | static_cast<unsigned>(Digits.find(c));
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 255u);
    }
    return bytes;
}

/** The text between two others, from `place` on; `place` moves behind it. */
std::string between(const std::string& text, const std::string& from, const std::string& to,
                    std::size_t& place) {
    const std::size_t begin = text.find(from, place);
    if (begin == std::string::npos) return "";
    const std::size_t end = text.find(to, begin + from.size());
    place = end;
    return text.substr(begin + from.size(), end - begin - from.size());
}

std::string between(const std::string& text, const std::string& from, const std::string& to) {
    std::size_t place = 0;
    return between(text, from, to, place);
}

float floatAt(const std::string& bytes, std::size_t place) {
    float value;
    std::memcpy(&value, bytes.data() + place, sizeof value);
    return value;
}

class Report : public ::testing::Test {
  protected:
    std::string written(const std::vector<Record>& records,
                        const std::vector<Record>* others = nullptr, ReportAudio* audio = nullptr) {
        Output output(folder_.path("page.html"));
        ReportHead head;
        head.header = headerToJson(runHeader()).dump();
        if (others != nullptr) head.otherHeader = head.header;
        head.channels = 3;
        ReportWriter writer(head, output);
        Summary summary;
        summary.turns.push_back(
            {10, 20, 1.5f, std::numeric_limits<float>::quiet_NaN(), 2.0f, 0.75f});
        for (std::size_t i = 0; i < records.size(); ++i) {
            writer.add(records[i], others == nullptr ? nullptr : &(*others)[i]);
            ++summary.frames;
        }
        writer.finish(summary, nullptr, audio);
        output.finish();
        return folder_.read("page.html");
    }

    TemporaryFolder folder_;
};

TEST_F(Report, HoldsEachColumnOfABlock) {
    const std::vector<Record> records = runRecords(100);
    const std::string page = written(records);
    const std::string bytes = decoded(between(page, "data-count=\"100\">", "</script>"));
    ASSERT_EQ(bytes.size(), 100u * (8 * 4 + 1));
    for (std::size_t i = 0; i < 100; ++i) {
        const auto column = [&](std::size_t k) { return floatAt(bytes, 4 * (100 * k + i)); };
        EXPECT_EQ(column(0), records[i].result.azimuth);
        EXPECT_EQ(column(1), records[i].result.elevation);
        EXPECT_EQ(column(2), records[i].result.range);
        EXPECT_EQ(column(3), records[i].result.quality);
        EXPECT_EQ(column(4), records[i].ultrasoundLevel);
        for (std::size_t c = 0; c < 3; ++c) EXPECT_EQ(column(5 + c), records[i].level[c]);
        const auto marks = static_cast<unsigned char>(bytes[3200 + i]);
        for (std::size_t k = 0; k < FlagNames.size(); ++k) {
            EXPECT_EQ((marks >> k & 1) != 0, has(records[i], FlagNames[k].bit));
        }
        EXPECT_EQ((marks & 128) != 0, records[i].hasEstimate);
    }
}

TEST_F(Report, HoldsTheOtherRunBehindIt) {
    const std::vector<Record> records = runRecords(10);
    std::vector<Record> others = records;
    for (Record& other : others) other.result.azimuth += 3.0f;
    const std::string page = written(records, &others);
    const std::string bytes = decoded(between(page, "data-count=\"10\">", "</script>"));
    ASSERT_EQ(bytes.size(), 10u * (12 * 4 + 2));
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(floatAt(bytes, 4 * (80 + i)), others[i].result.azimuth);
    }
}

TEST_F(Report, BeginsABlockWhereFramesAreMissing) {
    std::vector<Record> records = runRecords(30);
    records.erase(records.begin() + 10, records.begin() + 15);
    const std::string page = written(records);
    std::size_t place = 0;
    EXPECT_EQ(between(page, "data-first=\"", "\"", place), "0");
    EXPECT_EQ(between(page, "data-count=\"", "\"", place), "10");
    EXPECT_EQ(between(page, "data-first=\"", "\"", place), "15");
    EXPECT_EQ(between(page, "data-sample=\"", "\"", place), "30720");
    EXPECT_EQ(between(page, "data-count=\"", "\"", place), "15");
}

TEST_F(Report, NoNameEndsItsElement) {
    const std::string page = written(runRecords(1));
    const std::string head = between(page, "id=\"run-head\">", "</script>");
    EXPECT_EQ(Json::parse(head)["header"]["input"]["name"], "talk </script>.wav");
}

TEST_F(Report, EndsWithTheSummary) {
    const std::string page = written(runRecords(7));
    const Json end = Json::parse(between(page, "id=\"run-end\">", "</script>"));
    EXPECT_EQ(end["frames"], 7);
    EXPECT_EQ(end["turns"][0]["first"], 10);
    EXPECT_EQ(end["turns"][0]["azimuth"], 1.5);
    EXPECT_TRUE(end["turns"][0]["elevation"].is_null());
    EXPECT_TRUE(end["comparison"].is_null());
}

TEST_F(Report, AllowsItsOwnScriptAlone) {
    const std::string page = written(runRecords(1));
    const std::string policy = between(page, "Content-Security-Policy\" content=\"", "\"");
    EXPECT_EQ(policy.rfind("default-src 'none'; script-src 'sha256-", 0), 0u) << policy;
    EXPECT_EQ(policy.find("unsafe"), std::string::npos) << policy;
}

TEST_F(Report, SameInputGivesTheSameBytes) {
    EXPECT_EQ(written(runRecords(5000)), written(runRecords(5000)));
}

TEST_F(Report, WritesAnHourInTwoSeconds) {
    const std::vector<Record> records = runRecords(84375);
    const auto began = std::chrono::steady_clock::now();
    const std::string page = written(records);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    EXPECT_LT(took.count(), 2.0);
    EXPECT_LT(page.size(), 6u << 20);
}

std::vector<float> tone(std::uint64_t frame, double amplitude) {
    std::vector<float> samples;
    for (int i = 0; i < FRAME_SAMPLES; ++i) {
        const double n = static_cast<double>(frame) * FRAME_SAMPLES + i;
        samples.push_back(static_cast<float>(amplitude * std::sin(2 * 3.14159265358979 * n / 96)));
    }
    return samples;
}

std::string soundOf(ReportAudio& audio, const TemporaryFolder& folder) {
    Output output(folder.path("element"));
    audio.write(output);
    output.finish();
    return decoded(between(folder.read("element"), "id=\"sound\">", "</script>"));
}

TEST(ReportAudio, HoldsTheSoundAtItsLengthAndLevel) {
    const TemporaryFolder folder;
    ReportAudio audio;
    for (std::uint64_t frame = 0; frame < 100; ++frame) {
        audio.add(tone(frame, 4194304.0).data(), 24, (frame + 50) * FRAME_SAMPLES);
    }
    EXPECT_EQ(audio.firstSample(), 50u * FRAME_SAMPLES);
    const std::string path = folder.write("sound.ogg", soundOf(audio, folder));
    SF_INFO format = {};
    SNDFILE* const sound = sf_open(path.c_str(), SFM_READ, &format);
    ASSERT_NE(sound, nullptr) << sf_strerror(nullptr);
    EXPECT_EQ(format.samplerate, 48000);
    EXPECT_EQ(format.channels, 1);
    EXPECT_EQ(format.frames, 100 * FRAME_SAMPLES);
    std::vector<float> samples(100 * FRAME_SAMPLES);
    EXPECT_EQ(sf_readf_float(sound, samples.data(), 100 * FRAME_SAMPLES), 100 * FRAME_SAMPLES);
    double energy = 0.0;
    for (const float sample : samples) energy += std::pow(static_cast<double>(sample), 2);
    EXPECT_NEAR(energy / static_cast<double>(samples.size()), 0.125, 0.01);  // of half full scale
    sf_close(sound);
}

TEST(ReportAudio, SameSoundGivesTheSameBytes) {
    const auto sound = [] {
        const TemporaryFolder folder;
        ReportAudio audio;
        for (std::uint64_t frame = 0; frame < 50; ++frame) {
            audio.add(tone(frame, 4194304.0).data(), 24, frame * FRAME_SAMPLES);
        }
        return soundOf(audio, folder);
    };
    EXPECT_EQ(sound(), sound());
}

TEST(ReportAudio, GoesOnAfterWhatIsNoNumber) {
    const TemporaryFolder folder;
    ReportAudio audio;
    std::vector<float> samples(FRAME_SAMPLES, std::numeric_limits<float>::quiet_NaN());
    audio.add(samples.data(), 24, 0);
    samples.assign(FRAME_SAMPLES, 1e30f);
    audio.add(samples.data(), 24, FRAME_SAMPLES);
    EXPECT_GT(soundOf(audio, folder).size(), 100u);
}

TEST(Base64, PadsToWholeFours) {
    const auto encoded = [](const std::string& bytes) {
        std::string text;
        appendBase64(text, bytes.data(), bytes.size());
        return text;
    };
    EXPECT_EQ(encoded(""), "");
    EXPECT_EQ(encoded("f"), "Zg==");
    EXPECT_EQ(encoded("fo"), "Zm8=");
    EXPECT_EQ(encoded("foo"), "Zm9v");
    EXPECT_EQ(encoded("\xff\xfe\xfd\xfc"), "//79/A==");
}

}  // namespace
