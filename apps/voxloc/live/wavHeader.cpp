#include "live/wavHeader.h"

#include <cstring>
#include <string>
#include <vector>

#include "common/failure.h"

namespace {

constexpr std::uint32_t MostChunkBytes = 1 << 20;     // that are skipped before the samples
constexpr std::uint32_t UnknownLength = 0x7fff0000u;  // and above: the writer did not know
constexpr std::uint32_t Pcm = 1, Float = 3, Extensible = 0xfffe;

std::uint32_t number(const unsigned char* bytes, int count) {
    std::uint32_t value = 0;
    for (int i = count; i-- > 0;) value = value << 8 | bytes[i];
    return value;
}

bool isNamed(const unsigned char* bytes, const char* name) {
    return std::memcmp(bytes, name, 4) == 0;
}

const char* formName(std::uint32_t tag, std::uint32_t bits, std::uint32_t sampleBytes) {
    if (tag == Float) return bits == 32 && sampleBytes == 4 ? "F32" : "";
    if (tag != Pcm) return "";
    if (sampleBytes == 2) return "S16";
    if (sampleBytes == 3) return "S24_3";
    if (sampleBytes == 4) return bits == 24 ? "S24" : "S32";
    return "";
}

WavHeader formatFrom(const std::vector<unsigned char>& chunk) {
    if (chunk.size() < 16) throw BadData("the WAV header on standard input is too short");
    std::uint32_t tag = number(&chunk[0], 2);
    const std::uint32_t channels = number(&chunk[2], 2), block = number(&chunk[12], 2);
    std::uint32_t bits = number(&chunk[14], 2);
    if (tag == Extensible && chunk.size() >= 26) {
        tag = number(&chunk[24], 2);
        // Samples lie at the upper end of their container there, however many bits count.
        if (channels > 0) bits = block / channels * 8;
    }
    WavHeader header;
    header.channels = static_cast<int>(channels);
    header.rate = static_cast<int>(number(&chunk[4], 4) & 0x7fffffffu);
    header.form = channels == 0 ? nullptr : findRawForm(formName(tag, bits, block / channels));
    if (header.form == nullptr) {
        throw BadData("the WAV samples on standard input are none of S16, S24, S32 and F32");
    }
    return header;
}

}  // namespace

WavHeader readWavHeader(const ReadExactly& read) {
    unsigned char start[12];
    read(start, sizeof start);
    if (!isNamed(start, "RIFF") || !isNamed(start + 8, "WAVE")) {
        throw BadData("standard input is no WAV file; give --raw for raw samples");
    }
    WavHeader header;
    while (true) {
        unsigned char head[8];
        read(head, sizeof head);
        const std::uint32_t size = number(head + 4, 4);
        if (isNamed(head, "data")) {
            if (header.form == nullptr) throw BadData("the WAV file has samples before its format");
            if (size != 0 && size < UnknownLength) header.bytes = size;
            return header;
        }
        if (size > MostChunkBytes) throw BadData("the WAV header on standard input is damaged");
        std::vector<unsigned char> chunk(size + size % 2);
        read(chunk.data(), chunk.size());
        if (isNamed(head, "fmt ")) header = formatFrom(chunk);
    }
}
