#include "doctor/diagnosis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "doctor/channelStatistics.h"

namespace {

Diagnosis lateDiagnosis() {
    Diagnosis diagnosis;
    diagnosis.verdict = Verdict::Faults;
    diagnosis.seconds = 10.0;
    diagnosis.speechSeconds = 5.5;
    diagnosis.findings.push_back(
        {Fault::Late, {3}, {{"samples", 4.0}}, "channel 3 is 4.0 samples late"});
    diagnosis.notes.push_back("a note");
    return diagnosis;
}

TEST(DiagnosisText, SaysTheVerdictThenEachFindingAndNote) {
    EXPECT_EQ(diagnosisText("a.wav", "aster", lateDiagnosis()),
              "a.wav: faults (array aster, 5.5 s of speech in 10.0 s)\n"
              "  late: channel 3 is 4.0 samples late\n"
              "  note: a note\n");
}

TEST(DiagnosisJson, HoldsTheFiguresInOneLine) {
    const std::string text = diagnosisJson("a\xff.wav", "aster", lateDiagnosis());
    EXPECT_EQ(text.find('\n'), text.size() - 1);
    const auto json = nlohmann::json::parse(text);
    EXPECT_EQ(json["verdict"], "faults");
    EXPECT_EQ(json["findings"][0]["fault"], "late");
    EXPECT_EQ(json["findings"][0]["channels"][0], 3);
    EXPECT_EQ(json["findings"][0]["figures"]["samples"], 4.0);
}

TEST(ChannelsText, ReadsAsASentence) {
    EXPECT_EQ(channelsText({2}), "channel 2");
    EXPECT_EQ(channelsText({2, 5}), "channels 2 and 5");
    EXPECT_EQ(channelsText({0, 2, 5}), "channels 0, 2 and 5");
}

TEST(PlateauCounter, CountsRunsOfThreeAtThePeak) {
    PlateauCounter counter;
    const std::vector<float> samples{0.1f,  0.5f, 0.5f, 0.2f, -0.5f, -0.5f,
                                     -0.5f, 0.0f, 0.5f, 0.5f, 0.5f,  0.5f};
    counter.add(samples.data(), static_cast<int>(samples.size()));
    EXPECT_EQ(counter.runs(), 2u);
    EXPECT_EQ(counter.samples(), 7u);
}

TEST(PlateauCounter, ForgetsPlateausBelowAHigherPeak) {
    PlateauCounter counter;
    const std::vector<float> samples{0.5f, 0.5f, 0.5f, 0.1f, 0.6f, 0.1f};
    counter.add(samples.data(), static_cast<int>(samples.size()));
    EXPECT_EQ(counter.runs(), 0u);
}

Hum humOf(double frequency) {
    HumMeter meter;
    std::vector<float> samples(4 * 48000);
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double turns = frequency * static_cast<double>(n) / 48000.0;
        samples[n] = static_cast<float>(0.01 * std::sin(2.0 * M_PI * turns));
    }
    meter.add(samples.data(), static_cast<int>(samples.size()));
    return meter.hum();
}

TEST(HumMeter, MeasuresTheLevelOfALine) {
    const Hum hum = humOf(100.0);
    EXPECT_EQ(hum.frequency, 50.0);
    EXPECT_EQ(hum.line, 100.0);
    EXPECT_NEAR(hum.level, 20.0 * std::log10(0.01) - 3.01, 0.2);
}

TEST(HumMeter, TakesAVoiceAtAHarmonicForNoHum) {
    EXPECT_EQ(humOf(180.0).frequency, 0.0);
}

TEST(HumMeter, IsNotFooledByUltrasound) {
    EXPECT_EQ(humOf(20900.0).frequency, 0.0);  // 100 Hz beside seven times the rate it thins to
}

TEST(HumMeter, HearsNoneInSilence) {
    HumMeter meter;
    const std::vector<float> samples(4 * 48000);
    meter.add(samples.data(), static_cast<int>(samples.size()));
    EXPECT_EQ(meter.hum().frequency, 0.0);
}

TEST(Quantile, IsTheValueBelowWhichTheShareLies) {
    EXPECT_EQ(quantile({4.0f, 1.0f, 3.0f, 2.0f, 5.0f}, 0.5), 3.0);
    EXPECT_EQ(quantile({4.0f, 1.0f, 3.0f, 2.0f, 5.0f}, 1.0), 5.0);
}

}  // namespace
