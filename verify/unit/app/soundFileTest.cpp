#include "readers/soundFileSource.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>

#include "appFiles.h"
#include "common/failure.h"

namespace {

struct SoundForm {
    const char* name;
    int format;
    std::uint32_t bits;
};

constexpr int Channels = 3;
constexpr std::size_t Length = 3 * FRAME_SAMPLES + 100;

/** Codes of 16 bits in the high bits of a word: every whole-number form keeps them. */
std::string writeSound(const TemporaryFolder& folder, const SoundForm& form, int rate = 48000,
                       std::size_t length = Length) {
    std::vector<int> words;
    for (std::size_t n = 0; n < length; ++n) {
        for (std::size_t c = 0; c < Channels; ++c) words.push_back(codeOf(c, n) * 65536);
    }
    SF_INFO info = {};
    info.samplerate = rate;
    info.channels = Channels;
    info.format = form.format;
    const std::string path = folder.path("sound");
    SNDFILE* sound = sf_open(path.c_str(), SFM_WRITE, &info);
    EXPECT_NE(sound, nullptr) << sf_strerror(nullptr);
    // Words of full scale become floats of 1.
    sf_command(sound, SFC_SET_SCALE_INT_FLOAT_WRITE, nullptr, SF_TRUE);
    EXPECT_EQ(sf_writef_int(sound, words.data(), static_cast<sf_count_t>(length)),
              static_cast<sf_count_t>(length));
    EXPECT_EQ(sf_close(sound), 0);
    return path;
}

class SoundFile : public ::testing::TestWithParam<SoundForm> {};

TEST_P(SoundFile, GivesItsSamplesInItsOwnBits) {
    const TemporaryFolder folder;
    const auto reader = openReader(writeSound(folder, GetParam()), {});
    EXPECT_EQ(reader->format().channels, Channels);
    EXPECT_EQ(reader->format().frames, 3U);
    EXPECT_FALSE(reader->format().isRecording);
    const std::vector<InputFrame> frames = allFrames(*reader);
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(reader->leftOver(), 100U);
    const float unit = std::ldexp(1.0f, static_cast<int>(GetParam().bits) - 16);
    for (std::size_t c = 0; c < Channels; ++c) {
        for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) {
            ASSERT_EQ(frames[1].samples[c * FRAME_SAMPLES + n],
                      static_cast<float>(codeOf(c, FRAME_SAMPLES + n)) * unit);
        }
    }
    EXPECT_EQ(frames[1].bits, GetParam().bits);
}

INSTANTIATE_TEST_SUITE_P(
    EveryForm, SoundFile,
    ::testing::Values(SoundForm{"Wav16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16},
                      SoundForm{"Wav24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 24},
                      SoundForm{"Wav32", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 32},
                      SoundForm{"WavFloat", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 24},
                      SoundForm{"WavExtensible24", SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, 24},
                      SoundForm{"Rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_24, 24},
                      SoundForm{"W64", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 16},
                      SoundForm{"Flac16", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 16},
                      SoundForm{"Flac24", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 24}),
    [](const auto& form) { return form.param.name; });

constexpr SoundForm Wav{"Wav16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 16};

TEST(SoundFileDamage, OfAWavThatEndsEarlyIsToldAfterItsFrames) {
    const TemporaryFolder folder;
    std::string bytes;
    {
        const TemporaryFolder whole;
        writeSound(whole, Wav);
        bytes = whole.read("sound");
    }
    bytes.resize(bytes.size() - 7000);
    const std::string path = folder.write("short.wav", bytes);
    const auto reader = openReader(path, {});
    std::string damage;
    EXPECT_EQ(allFrames(*reader, &damage).size(), 2U);
    EXPECT_EQ(damage, path + ": damaged at byte " + std::to_string(bytes.size()) +
                          ": the file ends, 7000 bytes of sound are missing");
}

TEST(SoundFileDamage, OfAFlacThatEndsEarlyIsToldAfterItsFrames) {
    const TemporaryFolder folder;
    std::string bytes;
    {
        const TemporaryFolder whole;
        writeSound(whole, {"", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 16}, 48000, 20 * FRAME_SAMPLES);
        bytes = whole.read("sound");
    }
    bytes.resize(bytes.size() / 2);
    const auto reader = openReader(folder.write("short.flac", bytes), {});
    std::string damage;
    const std::size_t frames = allFrames(*reader, &damage).size();
    EXPECT_GT(frames, 2U);
    EXPECT_LT(frames, 18U);
    EXPECT_NE(damage.find(": damaged at byte "), std::string::npos) << damage;
}

// Programs that record into a pipe cannot know the length when they write the header.
TEST(SoundFileDamage, IsNotThePromiseOfAPipe) {
    const TemporaryFolder folder;
    std::string bytes;
    {
        const TemporaryFolder whole;
        writeSound(whole, Wav);
        bytes = whole.read("sound");
    }
    for (const std::size_t at : {std::size_t{4}, bytes.find("data") + 4}) {
        bytes[at] = bytes[at + 1] = bytes[at + 2] = '\xff';
        bytes[at + 3] = '\x7f';
    }
    const auto reader = openReader(folder.write("pipe.wav", bytes), {});
    EXPECT_EQ(allFrames(*reader).size(), 3U);
}

TEST(SoundFileRefusals, SayWhatIsWrong) {
    const TemporaryFolder folder;
    const auto refusal = [](const std::string& path, const ReadOptions& options = {}) {
        return refusalOf<BadData>([&] { openReader(path, options); });
    };
    EXPECT_EQ(refusal(folder.write("empty", "")), folder.path("empty") + ": is empty");
    EXPECT_EQ(refusal(folder.path(".")), folder.path(".") + " is a directory");
    EXPECT_EQ(refusal(folder.path("none")),
              "cannot open " + folder.path("none") + ": No such file or directory");
    EXPECT_EQ(refusal(folder.write("text", "no sound at all"))
                  .find(folder.path("text") + ": is neither a recording nor a sound file"),
              0U);
    ReadOptions strict;
    strict.strict = true;
    EXPECT_EQ(refusal(writeSound(folder, Wav, 44100), strict),
              folder.path("sound") + ": runs at 44100 Hz; --strict takes 48000 Hz alone");
    EXPECT_NE(refusal(writeSound(folder, Wav, 4000)), "");
}

}  // namespace
