#include "sweep/voiceFile.h"

#include <cmath>

#include "common/failure.h"
#include "readers/soundFileSource.h"

namespace {

constexpr std::size_t MostSamples = std::size_t{48000} * 600;
constexpr std::size_t ReadAtOnce = 65536;
constexpr int VoiceBits = 24;

}  // namespace

Voice readVoice(const std::string& path) {
    const std::unique_ptr<SampleSource> source = openSoundFile(path);
    if (source->format().channels != 1 || source->format().rate != 48000) {
        throw BadData(path + ": a voice has one channel at 48 kHz");
    }
    const float scale = std::ldexp(1.0f, VoiceBits - static_cast<int>(source->format().bits));
    std::vector<float> samples, some(ReadAtOnce);
    for (std::size_t count = ReadAtOnce; count == ReadAtOnce;) {
        count = source->read(some.data(), ReadAtOnce);
        for (std::size_t n = 0; n < count; ++n) samples.push_back(some[n] * scale);
        if (samples.size() > MostSamples) throw BadData(path + ": more than ten minutes of voice");
    }
    if (samples.empty()) throw BadData(path + ": no samples");
    return std::make_shared<const std::vector<float>>(std::move(samples));
}
