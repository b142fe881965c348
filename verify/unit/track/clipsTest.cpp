// The embedded clips: equal to their WAV files, and as long and as loud as they should be.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "voxloc/unittestGenerator.h"

namespace {

struct Wav {
    unsigned format = 0, channels = 0, rate = 0, bits = 0;
    std::vector<std::int32_t> samples;
};

std::uint32_t littleEndian(const std::vector<unsigned char>& bytes, std::size_t at,
                           std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; i++) {
        value |= static_cast<std::uint32_t>(bytes.at(at + i)) << (8 * i);
    }
    return value;
}

// A RIFF file, chunk after chunk.
Wav readWav(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(file), {}};
    Wav wav;
    const auto tag = [&](std::size_t at) { return std::string(&bytes[at], &bytes[at] + 4); };
    if (bytes.size() < 12 || tag(0) != "RIFF" || tag(8) != "WAVE") {
        ADD_FAILURE() << path << ": no WAV file";
        return wav;
    }
    EXPECT_EQ(littleEndian(bytes, 4, 4) + 8, bytes.size());
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const std::size_t size = littleEndian(bytes, at + 4, 4), content = at + 8;
        if (tag(at) == "fmt ") {
            wav.format = littleEndian(bytes, content, 2);
            wav.channels = littleEndian(bytes, content + 2, 2);
            wav.rate = littleEndian(bytes, content + 4, 4);
            wav.bits = littleEndian(bytes, content + 14, 2);
        } else if (tag(at) == "data") {
            for (std::size_t i = 0; i + 3 <= size; i += 3) {
                const std::uint32_t word = littleEndian(bytes, content + i, 3);
                const auto value = static_cast<std::int32_t>(word);
                wav.samples.push_back(word >= 0x800000 ? value - 0x1000000 : value);
            }
        }
        at = content + size + size % 2;
    }
    return wav;
}

struct Clip {
    const char* file;
    const float* samples;
    const ClipInfo* info;
    std::int32_t peak;
};

void PrintTo(const Clip& clip, std::ostream* stream) {
    *stream << clip.file;
}

class ClipsTest : public testing::TestWithParam<Clip> {};

TEST_P(ClipsTest, ArrayEqualsTheFileOfOneSecondOfMono24BitAudio) {
    const Wav wav = readWav(std::string(CLIP_FOLDER "/") + GetParam().file);
    EXPECT_EQ(wav.format, 1u);
    EXPECT_EQ(wav.channels, 1u);
    EXPECT_EQ(wav.rate, 48000u);
    EXPECT_EQ(wav.bits, 24u);
    EXPECT_EQ(CLIP_SAMPLES, 48000);
    EXPECT_EQ(GetParam().info->samples, GetParam().samples);
    EXPECT_EQ(GetParam().info->numSamples, 48000u);
    ASSERT_EQ(wav.samples.size(), 48000u);
    std::int32_t peak = 0;
    for (std::size_t i = 0; i < wav.samples.size(); i++) {
        ASSERT_EQ(GetParam().samples[i], static_cast<float>(wav.samples[i])) << "sample " << i;
        peak = std::max(peak, std::abs(wav.samples[i]));
    }
    EXPECT_EQ(peak, GetParam().peak);
}

INSTANTIATE_TEST_SUITE_P(Clips, ClipsTest,
                         testing::Values(Clip{"female_speech.wav", femaleSpeech, &femaleSpeechInfo,
                                              2400000},
                                         Clip{"room_noise.wav", roomNoise, &roomNoiseInfo, 800000}),
                         [](const testing::TestParamInfo<Clip>& clip) {
                             return std::string(clip.index == 0 ? "FemaleSpeech" : "RoomNoise");
                         });

}  // namespace
