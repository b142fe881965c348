#include "readers/reader.h"

#include <cstring>

#include "common/failure.h"
#include "common/record.h"
#include "readers/channelMap.h"
#include "readers/file.h"
#include "readers/frames.h"
#include "readers/rawSource.h"
#include "readers/recordingReader.h"
#include "readers/resampler.h"
#include "readers/soundFileSource.h"

namespace {

std::unique_ptr<FrameReader> openSamples(std::unique_ptr<SampleSource> source,
                                         const std::string& name, const ReadOptions& options) {
    const int rate = source->format().rate;
    if (options.strict && rate != SampleRate) {
        throw BadData(name + ": runs at " + std::to_string(rate) +
                      " Hz; --strict takes 48000 Hz alone");
    }
    return framesOf(resampled(std::move(source)), name, rate);
}

std::unique_ptr<FrameReader> openUnmapped(const std::string& path, const ReadOptions& options) {
    File file(path);
    const std::string name = file.name();
    if (!options.rawFormat.empty()) {
        return openSamples(
            openRaw(std::move(file), options.rawFormat, options.rawChannels, options.rawRate), name,
            options);
    }
    unsigned char magic[sizeof RecordingMagic] = {};
    const std::size_t seen = file.peek(magic, sizeof magic);
    if (seen == 0) throw BadData(name + ": is empty");
    if (std::memcmp(magic, RecordingMagic, sizeof magic) == 0) {
        return openRecording(std::move(file));
    }
    if (path == "-") {
        throw BadData(
            "standard input: byte 0: this is not a recording (for raw samples give --raw)");
    }
    return openSamples(openSoundFile(path), name, options);
}

}  // namespace

std::unique_ptr<FrameReader> openReader(const std::string& path, const ReadOptions& options) {
    return mapped(openUnmapped(path, options), options);
}
