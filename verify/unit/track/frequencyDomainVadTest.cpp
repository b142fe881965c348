// The frequency-domain voice activity detector: edges, thresholds, counters, and a model in double.

#include "track/frequencyDomainVad.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "trackSupport.h"

using namespace trackSupport;
using namespace voxloc;

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

class FrequencyDomainVadTest : public testing::Test, protected FrequencyDomainVad {
  protected:
    FrequencyDomainVadTest() : FrequencyDomainVad{} {
        initializeFrequencyDomainActivityDetector(*this);
        setFrequencyDomainVadChannels(*this, 0, 1);
    }

    // One frame; returns the voice decision.
    int detect() {
        voice = sound = 0xee;
        const std::uint32_t result =
            detectFrequencyDomainActivity(*this, spectra.data(), noise.data(), &voice, &sound);
        EXPECT_EQ(result, voice);
        EXPECT_LE(voice, 1);
        EXPECT_LE(sound, 1);
        EXPECT_TRUE(spectra.floats().intact());
        EXPECT_TRUE(noise.intact());
        return voice;
    }

    // P of a bin: the same amplitude in both channels.
    void setAmplitude(int bin, float amplitude) {
        spectra.set(0, bin, amplitude);
        spectra.set(1, bin, 0, amplitude);
    }

    // A frame that qualifies as a speech burst, far from every threshold.
    void makeSpeech() {
        spectra.clear();
        setAmplitude(30, 10);
    }

    // Voice after seven frames of this kind since an initialise: whether T < 2·V, if the ratio is
    // high.
    bool isBurst() {
        initializeFrequencyDomainActivityDetector(*this);
        for (int frame = 0; frame < 6; frame++) EXPECT_EQ(detect(), 0);
        return detect() == 1;
    }

    bool isSound() {
        detect();
        return sound == 1;
    }

    // Noise power in the band, from one bin.
    void setNoise(float amplitude) {
        std::fill(noise.begin(), noise.end(), 0.0f);
        noise[200] = amplitude;
    }

    Spectra spectra{2};
    GuardedFloats noise{std::vector<float>(SpectrumBins)};
    std::uint8_t voice = 0xee, sound = 0xee;
};

TEST(FrequencyDomainVadStatics, AreThereBeforeTheFirstInitialise) {
    EXPECT_EQ(FrequencyDomainVad{}.FdVadChannel1, 1u);
    EXPECT_EQ(FrequencyDomainVad{}.FdVadChannel2, 2u);
}

TEST_F(FrequencyDomainVadTest, InitialiseClearsTheCountersAndKeepsTheChannels) {
    setFrequencyDomainVadChannels(*this, 6, 2);
    TemporalCount = 1;
    BurstCount = 2;
    HangCount = 3;
    initializeFrequencyDomainActivityDetector(*this);
    EXPECT_EQ(TemporalCount, 0);
    EXPECT_EQ(BurstCount, 0);
    EXPECT_EQ(HangCount, 0);
    EXPECT_EQ(FdVadChannel1, 6u);
    EXPECT_EQ(FdVadChannel2, 2u);
}

TEST_F(FrequencyDomainVadTest, WritesZeroesForSilence) {
    setNoise(1);
    EXPECT_EQ(detect(), 0);
    EXPECT_EQ(voice, 0);
    EXPECT_EQ(sound, 0);
}

// --- Ratio

TEST_F(FrequencyDomainVadTest, PowerIsTheMeanOfTheTwoChannels) {
    Spectra four(4);
    four.fill(1000);
    std::fill_n(four.channel(3), SpectrumFloats, 0.0f);
    std::fill_n(four.channel(1), SpectrumFloats, 0.0f);
    four.set(3, 30, 1, -4);  // 17
    four.set(1, 30, -2, 2);  // 8: together 12.5, above 1.3 times 9.6 and below 1.3 times 9.63
    setFrequencyDomainVadChannels(*this, 3, 1);
    for (const float noisePower : {9.60f, 9.63f}) {
        setNoise(std::sqrt(noisePower));
        detectFrequencyDomainActivity(*this, four.data(), noise.data(), &voice, &sound);
        EXPECT_EQ(sound, noisePower < 9.61f ? 1 : 0);
    }
}

TEST_F(FrequencyDomainVadTest, SoundIsARatioAbove1Point3) {
    // 13 over 10, and 2^-20 more or less; all exact.
    noise[200] = 1;
    noise[201] = 3;
    setAmplitude(30, 2);
    setAmplitude(31, 3);
    EXPECT_FALSE(isSound());
    setAmplitude(32, 0x1p-10f);
    EXPECT_TRUE(isSound());
    setAmplitude(31, previous(3));
    setAmplitude(32, 0);
    EXPECT_FALSE(isSound());
}

TEST_F(FrequencyDomainVadTest, CountsFramesWithARatioAbove1Point1) {
    // 11 over 10, and about 2^-19 more or less.
    noise[200] = 1;
    noise[201] = 3;
    setAmplitude(30, 1);
    setAmplitude(31, 1);
    setAmplitude(32, previous(3));
    detect();
    EXPECT_EQ(TemporalCount, 0);
    setAmplitude(32, next(next(3)));
    detect();
    EXPECT_EQ(TemporalCount, 1);
    EXPECT_EQ(sound, 0);
}

TEST_F(FrequencyDomainVadTest, SignalBandIsBins13To511) {
    setNoise(1);
    for (const int bin : {0, 7, 8, 12, 13, 14, 510, 511, 512, 1193, 2048}) {
        spectra.clear();
        setAmplitude(bin, 2);
        EXPECT_EQ(isSound(), bin >= 13 && bin <= 511) << bin;
    }
}

TEST_F(FrequencyDomainVadTest, NoiseBandIsBins13To511) {
    setAmplitude(30, 2);
    for (const int bin : {0, 12, 13, 14, 510, 511, 512, 2048}) {
        setNoise(1);
        noise[static_cast<std::size_t>(bin)] = 3;
        EXPECT_EQ(isSound(), bin < 13 || bin > 511) << bin;
    }
}

TEST_F(FrequencyDomainVadTest, NoiseIsAnAmplitude) {
    setAmplitude(30, 2);  // power 4: above 1.3 times 1.7², below 1.3 times 1.8²
    setNoise(1.7f);
    EXPECT_TRUE(isSound());
    setNoise(-1.8f);
    EXPECT_FALSE(isSound());
}

TEST_F(FrequencyDomainVadTest, InfiniteRatioIsAboveBothThresholds) {
    setAmplitude(30, 1e-3f);
    EXPECT_TRUE(isSound());
    EXPECT_EQ(TemporalCount, 1);
    for (int frame = 0; frame < 6; frame++) detect();
    EXPECT_EQ(voice, 1);
}

TEST_F(FrequencyDomainVadTest, UndefinedRatioIsBelowBothThresholds) {
    TemporalCount = 9;
    BurstCount = 9;
    EXPECT_FALSE(isSound());  // 0 over 0
    EXPECT_EQ(TemporalCount, 0);
    EXPECT_EQ(BurstCount, 0);
}

TEST_F(FrequencyDomainVadTest, NotANumberInTheBandEndsABurst) {
    for (const bool inNoise : {false, true}) {
        makeSpeech();
        setNoise(1);
        TemporalCount = 9;
        BurstCount = 9;
        HangCount = 2;
        if (inNoise) {
            noise[300] = NotANumber;
        } else {
            setAmplitude(300, NotANumber);
        }
        EXPECT_EQ(detect(), 1);
        EXPECT_EQ(sound, 0);
        EXPECT_EQ(TemporalCount, 0);
        EXPECT_EQ(BurstCount, 0);
        EXPECT_EQ(HangCount, 1);
    }
}

TEST_F(FrequencyDomainVadTest, InfinityInTheBandIsSoundButNoBurst) {
    setNoise(1);
    setAmplitude(30, Infinity);
    for (int frame = 0; frame < 10; frame++) EXPECT_EQ(detect(), 0);  // infinite is not < infinite
    EXPECT_EQ(sound, 1);
}

// --- Speech share. V is 2^20 in one bin unless a test says otherwise; T must stay below 2^21.

class SpeechShareTest : public FrequencyDomainVadTest {
  protected:
    SpeechShareTest() {
        setNoise(1);
        setAmplitude(30, 1024);
    }
};

TEST_F(SpeechShareTest, IsMoreThanHalfOfTheTotal) {
    setAmplitude(600, previous(1024));
    EXPECT_TRUE(isBurst());
    setAmplitude(600, 1024);
    EXPECT_FALSE(isBurst());
    setAmplitude(600, next(1024));
    EXPECT_FALSE(isBurst());
}

TEST_F(SpeechShareTest, SpeechBandIsBins18To54) {
    // Speech if the bin counts in V, too; else it outweighs V in T.
    for (const int bin : {8, 17, 18, 19, 53, 54, 55}) {
        spectra.clear();
        setAmplitude(30, 1024);
        setAmplitude(bin, 2000);
        EXPECT_EQ(isBurst(), bin >= 18 && bin <= 54) << bin;
    }
}

TEST_F(SpeechShareTest, TotalReachesUpToBin1193) {
    for (const int bin : {1192, 1193, 1194, 1195, 2048}) {
        spectra.clear();
        setAmplitude(30, 1024);
        setAmplitude(bin, 2000);
        EXPECT_EQ(isBurst(), bin > 1193) << bin;
    }
}

TEST_F(SpeechShareTest, RumbleBelowBin8CountsAHundredth) {
    for (int bin = 0; bin <= 8; bin++) {
        spectra.clear();
        setAmplitude(30, 1024);
        setAmplitude(bin, 10240 * (1 - 1e-6f));  // a hundred times the power, and a bit less
        EXPECT_EQ(isBurst(), bin < 8) << bin;
        setAmplitude(bin, 10240 * (1 + 1e-6f));
        EXPECT_FALSE(isBurst()) << bin;
    }
}

// --- Counters

TEST_F(FrequencyDomainVadTest, VoiceComesOnInTheSeventhFrame) {
    setNoise(1);
    makeSpeech();
    for (int frame = 1; frame <= 6; frame++) EXPECT_EQ(detect(), 0) << frame;
    EXPECT_EQ(TemporalCount, 6);
    EXPECT_EQ(BurstCount, 0);
    EXPECT_EQ(detect(), 1);
    EXPECT_EQ(TemporalCount, 7);
    EXPECT_EQ(BurstCount, 1);
    EXPECT_EQ(HangCount, 34);
}

TEST_F(FrequencyDomainVadTest, FirstSixFramesAreNeverVoice) {
    for (const float value : {1.0f, 1e15f, Infinity, NotANumber}) {
        initializeFrequencyDomainActivityDetector(*this);
        spectra.clear();
        setAmplitude(30, value);
        for (int frame = 1; frame <= 6; frame++) EXPECT_EQ(detect(), 0) << value;
    }
}

TEST_F(FrequencyDomainVadTest, VoiceHoldsForExactly34FramesAfterABurst) {
    setNoise(1);
    makeSpeech();
    for (int frame = 1; frame <= 9; frame++) detect();
    spectra.clear();
    for (int frame = 1; frame <= 34; frame++) {
        EXPECT_EQ(detect(), 1) << frame;
        EXPECT_EQ(HangCount, 34 - frame);
        EXPECT_EQ(TemporalCount, 0);
        EXPECT_EQ(BurstCount, 0);
    }
    EXPECT_EQ(detect(), 0);
    EXPECT_EQ(detect(), 0);
    EXPECT_EQ(HangCount, 0);
}

TEST_F(FrequencyDomainVadTest, NewBurstRestartsTheHangover) {
    setNoise(1);
    makeSpeech();
    for (int frame = 1; frame <= 7; frame++) detect();
    spectra.clear();
    for (int frame = 1; frame <= 20; frame++) detect();
    makeSpeech();
    for (int frame = 1; frame <= 6; frame++) EXPECT_EQ(detect(), 1);
    EXPECT_EQ(HangCount, 8);
    EXPECT_EQ(detect(), 1);
    EXPECT_EQ(HangCount, 34);
}

TEST_F(FrequencyDomainVadTest, LoudFramesThatAreNotSpeechEndTheBurstAndKeepCounting) {
    setNoise(1);
    makeSpeech();
    for (int frame = 1; frame <= 9; frame++) detect();
    EXPECT_EQ(BurstCount, 3);
    setAmplitude(600, 20);
    EXPECT_EQ(detect(), 1);
    EXPECT_EQ(TemporalCount, 10);
    EXPECT_EQ(BurstCount, 0);
    EXPECT_EQ(HangCount, 33);
    makeSpeech();
    EXPECT_EQ(detect(), 1);  // at once: the frames above 1.1 have not been interrupted
    EXPECT_EQ(BurstCount, 1);
    EXPECT_EQ(HangCount, 34);
}

TEST_F(FrequencyDomainVadTest, BurstCountIsClearedWhileFewerThanSevenFramesWereLoud) {
    setNoise(1);
    makeSpeech();
    BurstCount = 5;
    EXPECT_EQ(detect(), 0);
    EXPECT_EQ(BurstCount, 0);
}

TEST_F(FrequencyDomainVadTest, CounterOfLoudFramesWrapsAfter32767AndEndsTheBurst) {
    setNoise(1);
    makeSpeech();
    for (int frame = 1; frame <= 6; frame++) detect();
    int voiced = 0;
    for (int frame = 7; frame <= 32767; frame++) voiced += detect();
    EXPECT_EQ(voiced, 32761);
    EXPECT_EQ(TemporalCount, 32767);
    EXPECT_EQ(BurstCount, 32761);

    for (int frame = 1; frame <= 34; frame++) EXPECT_EQ(detect(), 1);  // hangover
    EXPECT_EQ(detect(), 0);
    EXPECT_EQ(TemporalCount, -32768 + 34);
    EXPECT_EQ(BurstCount, 0);

    spectra.clear();
    detect();
    makeSpeech();
    for (int frame = 1; frame <= 6; frame++) EXPECT_EQ(detect(), 0);
    EXPECT_EQ(detect(), 1);
}

TEST_F(FrequencyDomainVadTest, WrappedBurstCountIsLeftAndDecidesNothing) {
    setNoise(1);
    makeSpeech();
    TemporalCount = 100;
    BurstCount = 32767;
    HangCount = 1;
    EXPECT_EQ(detect(), 1);  // hangover
    EXPECT_EQ(BurstCount, -32768);
    EXPECT_EQ(HangCount, 0);
    EXPECT_EQ(detect(), 0);
    EXPECT_EQ(BurstCount, -32767);
    EXPECT_EQ(TemporalCount, 102);
}

TEST_F(FrequencyDomainVadTest, NegativeBurstCountCountsUpToVoiceAgain) {
    setNoise(1);
    makeSpeech();
    TemporalCount = 100;
    BurstCount = -1;
    EXPECT_EQ(detect(), 0);
    EXPECT_EQ(BurstCount, 0);
    EXPECT_EQ(detect(), 1);
    EXPECT_EQ(BurstCount, 1);
}

// --- Against an independent model

struct Model {
    int temporal = 0, burst = 0, hang = 0;
    double margin = 1;  // smallest relative distance from a threshold so far
    bool voice = false, sound = false;

    bool isAbove(double value, double threshold) {
        margin = std::min(margin, std::fabs(value / threshold - 1));
        return value > threshold;
    }

    void step(const Spectra& spectra, const GuardedFloats& noise) {
        double total = 0, band = 0, noisePower = 0, speech = 0;
        for (int b = 0; b <= 1193; b++) {
            const double power = 0.5 * (spectra.power(0, b) + spectra.power(1, b));
            const double level = wide(noise[static_cast<std::size_t>(b)]);
            total += b < 8 ? power / 100 : power;
            if (b >= 13 && b <= 511) band += power;
            if (b >= 13 && b <= 511) noisePower += level * level;
            if (b >= 18 && b <= 54) speech += power;
        }
        const double ratio = band / noisePower;
        sound = isAbove(ratio, 1.3);
        const bool loud = isAbove(ratio, 1.1);
        temporal = loud ? temporal + 1 : 0;
        const bool share = isAbove(2 * speech, total);
        burst = loud && temporal > 6 && share ? burst + 1 : 0;
        if (burst > 0) {
            hang = 34;
            voice = true;
            return;
        }
        voice = hang > 0;
        hang = std::max(hang - 1, 0);
    }
};

TEST_F(FrequencyDomainVadTest, AgreesWithTheModelOverALongRun) {
    for (std::size_t b = 0; b < noise.size(); b++) noise[b] = 0.577f;  // the power of the noise
    int voiced = 0, sounding = 0, changes = 0;
    for (const unsigned seed : {1u, 3u, 4u}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> uniform(-1, 1);
        std::uniform_int_distribution<int> length(1, 60);
        initializeFrequencyDomainActivityDetector(*this);
        Model model;
        int left = 0;
        float level = 1, speechLevel = 0;
        for (int frame = 0; frame < 600; frame++) {
            SCOPED_TRACE(frame);
            if (left-- == 0) {
                left = length(random);
                level = 0.95f + 0.08f * uniform(random);
                speechLevel = 3 * uniform(random);
            }
            for (unsigned channel = 0; channel < 2; channel++) {
                for (int b = 0; b < SpectrumBins; b++) {
                    const bool isSpeech = b >= 18 && b <= 54;
                    const float scale = 0.7071f * (b < 8      ? 20
                                                   : b > 511  ? 0.05f
                                                   : isSpeech ? level + std::max(speechLevel, 0.0f)
                                                              : level);
                    spectra.set(channel, b, scale * uniform(random), scale * uniform(random));
                }
            }
            const bool before = model.voice;
            model.step(spectra, noise);
            // Sums of up to 1194 positive terms in order, the root of 1194 times half an epsilon
            // of rounding typically: a run three times as near to a threshold would prove nothing.
            ASSERT_GT(model.margin, 3 * 17.3 * Epsilon);
            ASSERT_EQ(detect(), model.voice ? 1 : 0);
            ASSERT_EQ(sound, model.sound ? 1 : 0);
            ASSERT_EQ(TemporalCount, model.temporal);
            ASSERT_EQ(BurstCount, model.burst);
            ASSERT_EQ(HangCount, model.hang);
            voiced += model.voice;
            sounding += model.sound;
            changes += model.voice != before;
        }
    }
    EXPECT_GT(voiced, 100);
    EXPECT_GT(sounding, 100);
    EXPECT_GT(changes, 5);
}

}  // namespace
