/**
 * Writes the microphone signals of a talker to standard output, raw and interleaved, S24_3 in
 * little endian, 48 kHz:
 *
 *     verify_talkerStream ARRAY SECONDS AZIMUTH [AZIMUTH ...]
 *
 * He talks for so many seconds from each place, two metres away; azimuths are in degrees.
 */
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <voxloc/unittestGenerator.h>
#include <voxloc/voxloc.h>

namespace {

constexpr float Range = 2.0f;  // m
constexpr double Pi = 3.14159265358979323846;

void write(const float* frame, std::size_t channels) {
    std::vector<unsigned char> bytes;
    bytes.reserve(channels * FRAME_SAMPLES * 3);
    for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) {
        for (std::size_t c = 0; c < channels; ++c) {
            const long sample = std::lround(frame[c * FRAME_SAMPLES + n]);
            for (int shift = 0; shift < 24; shift += 8) {
                bytes.push_back(static_cast<unsigned char>((sample >> shift) & 0xff));
            }
        }
    }
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const VoxlocProduct* product = argc < 4 ? nullptr : voxloc_findProductByName(argv[1]);
    if (product == nullptr) return 2;
    voxloc_initialize(product->type);
    AudioGenerator* const generator =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 0);
    const int frames = static_cast<int>(std::atof(argv[2]) * 48000.0 / FRAME_SAMPLES);
    for (int place = 3; place < argc; ++place) {
        const std::array<float, 3> position = {
            static_cast<float>(std::atof(argv[place]) * Pi / 180.0), 0.0f, Range};
        for (int n = 0; n < frames; ++n) {
            write(getNextFrame(position.data(), 0, generator), voxloc_getNumberOfChannels());
        }
    }
    destroyAudioGenerator(generator);
    voxloc_destroy();
    return 0;
}
