// The frequency-domain voice activity detector: bands, thresholds, counters, and a model in double.

#include "track/frequencyDomainVad.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "gtest/gtest.h"
#include "kit/floatBits.h"
#include "kit/guardedFloats.h"
#include "kit/guardedSpectra.h"
#include "models/detectorModels.h"
#include "track/grids.h"

using namespace kit;
using namespace voxloc;

namespace {

class FrequencyDomainVadTest : public testing::Test, protected FrequencyDomainVad {
  protected:
    FrequencyDomainVadTest() : FrequencyDomainVad{} {
        setFrequencyDomainVadChannels(*this, 0, 1);
        setNoise(1);
    }

    // One frame; returns the voice decision.
    int detect() {
        voice = sound = 0xee;
        const std::uint32_t result =
            detectFrequencyDomainActivity(*this, spectra.data(), noise.data(), &voice, &sound);
        EXPECT_EQ(result, voice);
        EXPECT_LE(voice, 1);
        EXPECT_LE(sound, 1);
        EXPECT_TRUE(spectra.intact());
        EXPECT_TRUE(noise.intact());
        return voice;
    }

    int detect(int count) {
        int voiced = 0;
        for (int frame = 0; frame < count; frame++) voiced += detect();
        return voiced;
    }

    // The same amplitude in both channels.
    void setAmplitude(int bin, float amplitude) {
        spectra.set(0, bin, amplitude);
        spectra.set(1, bin, 0, amplitude);
    }

    // A frame that qualifies as a speech burst, far from every threshold.
    void makeSpeech() {
        spectra.clear();
        setAmplitude(30, 10);
    }

    // After a burst: with makeSpeech() the next frame goes on with it.
    void setCounters(std::int16_t temporal, std::int16_t burst, std::int16_t hang) {
        TemporalCount = temporal;
        BurstCount = burst;
        HangCount = hang;
    }

    void expectCounters(int temporal, int burst, int hang) {
        EXPECT_EQ(TemporalCount, temporal);
        EXPECT_EQ(BurstCount, burst);
        EXPECT_EQ(HangCount, hang);
    }

    // Voice in the seventh frame of this kind: whether T < 2·V, if the ratio is high.
    bool isBurst() {
        initializeFrequencyDomainActivityDetector(*this);
        EXPECT_EQ(detect(6), 0);
        return detect() == 1;
    }

    bool isSound() {
        detect();
        return sound == 1;
    }

    // Noise power in the band, from one bin.
    void setNoise(float amplitude) {
        std::fill_n(noise.data(), noise.size(), 0.0f);
        noise[200] = amplitude;
    }

    GuardedSpectra spectra{2};
    reference::GuardedFloats noise{SpectrumBins};
    std::uint8_t voice = 0xee, sound = 0xee;
};

TEST_F(FrequencyDomainVadTest, ListensToChannels1And2UntilItIsTold) {
    EXPECT_EQ(FrequencyDomainVad{}.FdVadChannel1, 1u);
    EXPECT_EQ(FrequencyDomainVad{}.FdVadChannel2, 2u);
}

TEST_F(FrequencyDomainVadTest, InitialiseClearsTheCountersAndKeepsTheChannels) {
    setFrequencyDomainVadChannels(*this, 6, 2);
    setCounters(1, 2, 3);
    initializeFrequencyDomainActivityDetector(*this);
    expectCounters(0, 0, 0);
    EXPECT_EQ(FdVadChannel1, 6u);
    EXPECT_EQ(FdVadChannel2, 2u);
}

// --- Ratio

TEST_F(FrequencyDomainVadTest, PowerIsTheMeanOfItsTwoChannelsAndNoiseAnAmplitude) {
    GuardedSpectra four(4);
    four.fill(1000);
    four.fill(3, 0);
    four.fill(1, 0);
    four.set(3, 30, 1, -4);  // 17
    four.set(1, 30, -2, 2);  // 8: together 12.5, above 1.3 times 9.6 and below 1.3 times 9.63
    setFrequencyDomainVadChannels(*this, 3, 1);
    for (const float noisePower : {9.60f, 9.63f}) {
        setNoise(-std::sqrt(noisePower));
        detectFrequencyDomainActivity(*this, four.data(), noise.data(), &voice, &sound);
        EXPECT_EQ(sound, noisePower < 9.61f ? 1 : 0);
    }
}

TEST_F(FrequencyDomainVadTest, SoundIsARatioAbove1Point3AndLoudOneAbove1Point1) {
    // The band power is what the three amplitudes' squares add up to, over a noise power of 10: the
    // threshold, some 2^-20 more, and as much less.
    const struct {
        float amplitudes[3];
        int sound, temporal;
    } rows[] = {{{2, 3, 0}, 0, 1},           {{2, 3, 0x1p-10f}, 1, 1},
                {{2, previous(3), 0}, 0, 1}, {{1, 1, previous(3)}, 0, 0},
                {{1, 1, 3}, 0, 0},           {{1, 1, next(next(3))}, 0, 1}};
    setNoise(1);
    noise[201] = 3;
    for (const auto& row : rows) {
        TemporalCount = 0;
        for (int i = 0; i < 3; i++) setAmplitude(30 + i, row.amplitudes[i]);
        detect();
        EXPECT_EQ(sound, row.sound) << row.amplitudes[2];
        EXPECT_EQ(TemporalCount, row.temporal) << row.amplitudes[2];
    }
}

TEST_F(FrequencyDomainVadTest, SignalAndNoiseBandAreBins13To511) {
    for (const int bin : {0, 12, 13, 511, 512, 2048}) {
        const bool inBand = bin >= 13 && bin <= 511;
        setNoise(1);
        spectra.clear();
        setAmplitude(bin, 2);
        EXPECT_EQ(isSound(), inBand) << bin;

        makeSpeech();
        noise[static_cast<std::size_t>(bin)] = 10;
        EXPECT_EQ(isSound(), !inBand) << bin;
    }
}

TEST_F(FrequencyDomainVadTest, OddValuesInTheBand) {
    const struct {
        const char* what;
        float signal, noise;
        int sound, loud;
    } rows[] = {{"infinite ratio", 1e-3f, 0, 1, 1},
                {"0 over 0", 0, 0, 0, 0},
                {"silence", 0, 1, 0, 0},
                {"NaN in the signal", NotANumber, 1, 0, 0},
                {"NaN in the noise", 1, NotANumber, 0, 0},
                {"infinite signal", Infinity, 1, 1, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        initializeFrequencyDomainActivityDetector(*this);
        setNoise(row.noise);
        spectra.clear();
        setAmplitude(30, row.signal);
        // The first six frames are never voice, nor is later an infinite T, not below infinite V.
        EXPECT_EQ(detect(6), 0);
        EXPECT_EQ(detect(), row.signal == 1e-3f ? 1 : 0);
        EXPECT_EQ(sound, row.sound);

        setCounters(9, 9, 2);
        detect();
        EXPECT_EQ(TemporalCount, row.loud == 1 ? 10 : 0);
        EXPECT_EQ(BurstCount, row.signal == 1e-3f ? 10 : 0);
    }
}

// --- Speech share: 2·V is 2^21 from one bin, and T is that bin and another one.

TEST_F(FrequencyDomainVadTest, SpeechIsMoreThanHalfOfTheTotal) {
    setAmplitude(30, 1024);
    for (const float other : {previous(1024), 1024.0f, next(1024)}) {
        setAmplitude(600, other);
        EXPECT_EQ(isBurst(), other < 1024) << other;
    }
}

TEST_F(FrequencyDomainVadTest, BinsCountTowardsSpeechTowardsTheTotalOrAHundredth) {
    const struct {
        int bin;
        float amplitude;  // at which it outweighs the speech, if at all
    } rows[] = {{0, 10240}, {7, 10240}, {8, 1024},    {17, 1024},   {18, 1e5f},
                {54, 1e5f}, {55, 1024}, {1193, 1024}, {1194, 1e5f}, {2048, 1e5f}};
    for (const auto& [bin, amplitude] : rows) {
        makeSpeech();
        setAmplitude(30, 1024);
        setAmplitude(bin, amplitude * (1 - 1e-6f));
        EXPECT_TRUE(isBurst()) << bin;
        setAmplitude(bin, amplitude * (1 + 1e-6f));
        EXPECT_EQ(isBurst(), amplitude == 1e5f) << bin;
    }
}

// --- Counters

TEST_F(FrequencyDomainVadTest, VoiceComesOnInTheSeventhFrameAndHoldsFor34AfterTheBurst) {
    makeSpeech();
    EXPECT_EQ(detect(6), 0);
    expectCounters(6, 0, 0);
    EXPECT_EQ(detect(3), 3);
    expectCounters(9, 3, 34);
    spectra.clear();
    for (int frame = 1; frame <= 34; frame++) {
        EXPECT_EQ(detect(), 1) << frame;
        expectCounters(0, 0, 34 - frame);
    }
    EXPECT_EQ(detect(2), 0);
    expectCounters(0, 0, 0);
}

TEST_F(FrequencyDomainVadTest, NewBurstRestartsTheHangover) {
    makeSpeech();
    setCounters(0, 0, 14);
    EXPECT_EQ(detect(6), 6);
    EXPECT_EQ(HangCount, 8);
    EXPECT_EQ(detect(), 1);
    EXPECT_EQ(HangCount, 34);
}

TEST_F(FrequencyDomainVadTest, OneFrameMovesTheCounters) {
    const struct {
        const char* what;
        float outside;  // amplitude of a bin outside the speech band; speech has 10
        std::int16_t before[3];
        int voice, after[3];
    } rows[] = {
        {"burst goes on", 0, {9, 3, 20}, 1, {10, 4, 34}},
        {"loud but not speech ends it, and keeps counting", 20, {9, 3, 34}, 1, {10, 0, 33}},
        {"speech again is a burst at once", 0, {10, 0, 33}, 1, {11, 1, 34}},
        {"too early for a burst", 0, {5, 5, 0}, 0, {6, 0, 0}},
        {"loud frames wrap and end the burst", 0, {32767, 9, 34}, 1, {-32768, 0, 33}},
        {"and do so without a hangover", 0, {-32768, 0, 0}, 0, {-32767, 0, 0}},
        {"burst wraps, is left and decides nothing", 0, {100, 32767, 1}, 1, {101, -32768, 0}},
        {"wrapped burst", 0, {101, -32768, 0}, 0, {102, -32767, 0}},
        {"burst of 0", 0, {100, -1, 0}, 0, {101, 0, 0}},
        {"positive burst again", 0, {101, 0, 0}, 1, {102, 1, 34}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        makeSpeech();
        setAmplitude(600, row.outside);
        setCounters(row.before[0], row.before[1], row.before[2]);
        EXPECT_EQ(detect(), row.voice);
        expectCounters(row.after[0], row.after[1], row.after[2]);
    }
}

// Speech without any pause, through both ends of the 16 bits: 23 minutes of voice, the hangover,
// nothing for 23 minutes, and voice again. A pause anywhere between ends the drought.
TEST_F(FrequencyDomainVadTest, SpeechWithoutAPauseDropsOutWhileItsCounterIsNegative) {
    makeSpeech();
    setCounters(32760, 32754, 34);
    EXPECT_EQ(detect(7), 7);
    expectCounters(32767, 32761, 34);
    EXPECT_EQ(detect(34), 34);
    expectCounters(-32735, 0, 0);
    EXPECT_EQ(detect(2), 0);
    setCounters(-3, 0, 0);
    EXPECT_EQ(detect(9), 0);
    expectCounters(6, 0, 0);
    EXPECT_EQ(detect(), 1);
    setCounters(-20000, 0, 0);
    spectra.clear();
    EXPECT_EQ(detect(), 0);
    makeSpeech();
    EXPECT_EQ(detect(6), 0);
    EXPECT_EQ(detect(), 1);
}

// --- Against the model

TEST_F(FrequencyDomainVadTest, AgreesWithTheModelOverALongRun) {
    std::fill_n(noise.data(), noise.size(), 0.577f);  // the power of the noise
    const std::vector<double> level(noise.data(), noise.data() + noise.size());
    int voiced = 0, sounding = 0, changes = 0;
    for (const unsigned seed : {1u, 3u, 4u}) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> uniform(-1, 1);
        std::uniform_int_distribution<int> length(1, 60);
        initializeFrequencyDomainActivityDetector(*this);
        reference::FrequencyVoiceModel model;
        int left = 0;
        float room = 1, talker = 0;
        bool before = false;
        for (int frame = 0; frame < 600; frame++) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << " frame " << frame);
            if (left-- == 0) {
                left = length(random);
                room = 0.95f + 0.08f * uniform(random);
                talker = std::max(3 * uniform(random), 0.0f);
            }
            for (std::size_t channel = 0; channel < 2; channel++) {
                for (int b = 0; b < SpectrumBins; b++) {
                    const bool isSpeech = b >= 18 && b <= 54;
                    const float scale = 0.7071f * (b < 8      ? 20
                                                   : b > 511  ? 0.05f
                                                   : isSpeech ? room + talker
                                                              : room);
                    const float real = scale * uniform(random);
                    spectra.set(channel, b, real, scale * uniform(random));
                }
            }
            const auto expected = model.update(spectra.channel(0), spectra.channel(1), level);
            // Sums of up to 1194 positive terms in order, the root of 1194 times half an epsilon
            // of rounding typically: a run three times as near to a threshold would prove nothing.
            ASSERT_GT(model.clearance.smallest(), 3 * 17.3 * Epsilon);
            ASSERT_EQ(detect(), expected.voice ? 1 : 0);
            ASSERT_EQ(sound, expected.sound ? 1 : 0);
            expectCounters(model.temporal, model.burst, model.hang);
            voiced += expected.voice;
            sounding += expected.sound;
            changes += expected.voice != before;
            before = expected.voice;
        }
    }
    EXPECT_GT(voiced, 100);
    EXPECT_GT(sounding, 100);
    EXPECT_GT(changes, 5);
}

}  // namespace
