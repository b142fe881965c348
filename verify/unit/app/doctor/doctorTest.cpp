#include "doctor/doctor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <utility>

#include "talk.h"

namespace {

/** What is found, "late 3" and the like; "sound" or "cannot tell" without anything. */
std::string found(const Diagnosis& diagnosis) {
    if (diagnosis.findings.empty()) return nameOf(diagnosis.verdict);
    std::string text;
    for (const Finding& one : diagnosis.findings) {
        text += (text.empty() ? "" : ", ") + std::string(nameOf(one.fault));
        for (const int c : one.channels) text += " " + std::to_string(c);
    }
    return text;
}

double figure(const Diagnosis& diagnosis, const std::string& name) {
    for (const auto& [key, value] : diagnosis.findings.at(0).figures) {
        if (key == name) return value;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

class DoctorProduct : public ::testing::TestWithParam<std::uint32_t> {
  protected:
    NamedArray array_ = namedArray(voxloc_getProduct(GetParam())->name);
    Channels channels_ = talk(array_);
};

TEST_P(DoctorProduct, SaysSoundOfAnArrayWithoutFaults) {
    EXPECT_EQ(found(diagnosed(array_, channels_)), "sound");
}

TEST_P(DoctorProduct, FindsSwappedChannels) {
    std::swap(channels_[0], channels_[2]);
    EXPECT_EQ(found(diagnosed(array_, channels_)), "swapped 0 2");
}

INSTANTIATE_TEST_SUITE_P(All, DoctorProduct, ::testing::Range(0u, voxloc_getNumberOfProducts()),
                         [](const auto& row) { return voxloc_getProduct(row.param)->name; });

/** One product for what does not depend on it: eight microphones, and quick. */
class Doctors : public ::testing::Test {
  protected:
    NamedArray array_ = namedArray("gannet");
    Channels channels_ = talk(array_);
};

TEST_F(Doctors, FindsInvertedPolarity) {
    for (float& x : channels_[5]) x = -x;
    EXPECT_EQ(found(diagnosed(array_, channels_)), "inverted 5");
}

TEST_F(Doctors, FindsALateChannelAndByHowMuch) {
    channels_[4].insert(channels_[4].begin(), 4, 0.0f);
    const Diagnosis diagnosis = diagnosed(array_, channels_);
    EXPECT_EQ(found(diagnosis), "late 4");
    EXPECT_NEAR(figure(diagnosis, "samples"), 4.0, 0.5);
}

TEST_F(Doctors, FindsAnEarlyChannel) {
    channels_[1].erase(channels_[1].begin(), channels_[1].begin() + 20);
    for (std::size_t c = 0; c < channels_.size(); ++c) channels_[c].resize(channels_[1].size());
    const Diagnosis diagnosis = diagnosed(array_, channels_);
    EXPECT_EQ(found(diagnosis), "late 1");
    EXPECT_NEAR(figure(diagnosis, "samples"), -20.0, 0.5);
}

TEST_F(Doctors, FindsTwoFaultsInOneRecording) {
    std::swap(channels_[0], channels_[3]);
    for (float& x : channels_[6]) x = -x;
    EXPECT_EQ(diagnosed(array_, channels_).findings.size(), 2u);
}

TEST_F(Doctors, FindsADeadChannel) {
    std::fill(channels_[2].begin(), channels_[2].end(), 0.0f);
    EXPECT_EQ(found(diagnosed(array_, channels_)), "dead 2");
}

TEST_F(Doctors, TakesAChannelOfNoNumbersForADeadOne) {
    std::fill(channels_[2].begin(), channels_[2].end(), std::numeric_limits<float>::quiet_NaN());
    channels_[2][5000] = std::numeric_limits<float>::infinity();
    EXPECT_EQ(found(diagnosed(array_, channels_)), "dead 2");
}

TEST_F(Doctors, FindsADuplicate) {
    channels_[0] = channels_[3];
    EXPECT_EQ(found(diagnosed(array_, channels_)), "duplicate 0 3");
}

TEST_F(Doctors, FindsAQuietChannel) {
    for (float& x : channels_[7]) x *= 0.2f;
    const Diagnosis diagnosis = diagnosed(array_, channels_);
    EXPECT_EQ(found(diagnosis), "quiet 7");
    EXPECT_NEAR(figure(diagnosis, "deviation_db"), 20.0 * std::log10(0.2), 0.5);
}

TEST_F(Doctors, FindsClipping) {
    for (float& x : channels_[3]) x = std::min(std::max(x, -1e6f), 1e6f);
    EXPECT_EQ(found(diagnosed(array_, channels_)), "clipping 3");
}

TEST_F(Doctors, FindsAnOffset) {
    for (float& x : channels_[3]) x += 0.01f * 8388608.0f;
    const Diagnosis diagnosis = diagnosed(array_, channels_);
    EXPECT_EQ(found(diagnosis), "offset 3");
    EXPECT_NEAR(figure(diagnosis, "offset"), 0.01, 0.001);
}

TEST_F(Doctors, FindsHumAndItsMains) {
    for (const double mains : {50.0, 60.0}) {
        Channels channels = channels_;
        for (std::size_t n = 0; n < channels[1].size(); ++n) {
            channels[1][n] += static_cast<float>(
                1e5 * std::sin(2.0 * M_PI * mains * static_cast<double>(n) / 48000.0));
        }
        const Diagnosis diagnosis = diagnosed(array_, channels);
        EXPECT_EQ(found(diagnosis), "hum 1");
        EXPECT_EQ(figure(diagnosis, "mains_hz"), mains);
    }
}

TEST_F(Doctors, FindsAChannelOfNothingButNoise) {
    std::mt19937 random(1);
    for (float& x : channels_[2]) x = static_cast<float>(random()) * 1e-4f - 2e5f;
    EXPECT_EQ(found(diagnosed(array_, channels_)), "noise 2");
}

TEST_F(Doctors, FindsAChannelThatHearsSomethingElse) {
    std::rotate(channels_[2].begin(), channels_[2].begin() + 20000, channels_[2].end());
    EXPECT_EQ(found(diagnosed(array_, channels_)), "noise 2");
}

TEST_F(Doctors, FindsAClockThatRunsFast) {
    // A sample left out every half second: 42 parts in a million.
    Channels channels = channels_;
    channels[5].clear();
    for (std::size_t n = 0; n < channels_[5].size(); ++n) {
        if (n % 24000 == 23999) channels[5].push_back(channels_[5][n]);
        channels[5].push_back(channels_[5][n]);
    }
    const Diagnosis diagnosis = diagnosed(array_, channels);
    EXPECT_EQ(found(diagnosis), "drift 5");
    EXPECT_NEAR(figure(diagnosis, "per_million"), 42.0, 15.0);
}

TEST_F(Doctors, FindsUltrasound) {
    for (std::size_t n = 0; n < channels_[0].size(); ++n) {
        channels_[0][n] += static_cast<float>(
            2e6 * std::sin(2.0 * M_PI * 20900.0 * static_cast<double>(n) / 48000.0));
    }
    EXPECT_EQ(found(diagnosed(array_, channels_)), "ultrasound");
}

TEST(DoctorOfAster, FindsAPanelThatIsUpsideDown) {
    // It covers microphones 1 and 2, and with them all horizontal pairs.
    const NamedArray array = namedArray("aster");
    Channels channels = talk(array);
    const auto length = static_cast<std::ptrdiff_t>(channels[0].size());
    std::rotate(channels[1].begin(), channels[1].begin() + length / 5, channels[1].end());
    std::rotate(channels[2].begin(), channels[2].begin() + length / 3, channels[2].end());
    EXPECT_EQ(found(diagnosed(array, channels)), "noise 1, noise 2, upside_down");
}

TEST_F(Doctors, CannotTellFromNoise) {
    EXPECT_EQ(found(diagnosed(array_, talk(array_, 1))), "cannot tell");
}

TEST_F(Doctors, CannotTellFromASecondOfSpeech) {
    for (std::vector<float>& channel : channels_) channel.resize(24 * FRAME_SAMPLES);
    EXPECT_EQ(found(diagnosed(array_, channels_)), "cannot tell");
}

TEST_F(Doctors, CannotTellWhileTheLoudspeakerPlays) {
    const std::uint32_t farEnd = 1u << VOXLOC_INPUT_FAR_END;
    EXPECT_EQ(found(diagnosed(array_, channels_, farEnd)), "cannot tell");
}

TEST_F(Doctors, CannotTellWithoutAFrame) {
    EXPECT_EQ(diagnosed(array_, Channels(8, std::vector<float>(100))).verdict, Verdict::CannotTell);
}

}  // namespace
