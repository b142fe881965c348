// Recordings: as many frames as whole ones are there, each with bits that the tracker takes, and a
// line that names the byte where something is wrong.

#include <memory>
#include <string>

#include "common/failure.h"
#include "fuzz.h"
#include "memoryFile.h"
#include "readers/recordingReader.h"

namespace {

void readAll(const std::string& path, std::size_t size) {
    const std::unique_ptr<FrameReader> reader = openRecording(File(path));
    const auto channels = static_cast<std::size_t>(reader->format().channels);
    demand(channels >= 1 && channels <= VOXLOC_MAX_CHANNELS, "channels of a recording");
    const std::size_t whole = (size - 4) / (8 + channels * FRAME_SAMPLES * sizeof(float));
    demand(reader->format().frames == whole, "frames of a recording are foreseen");
    InputFrame frame;
    std::size_t count = 0;
    while (reader->read(frame)) {
        demand(frame.bits >= 1 && frame.bits <= 32, "bits of a frame");
        demand(frame.samples.size() == channels * FRAME_SAMPLES, "samples of a frame");
        ++count;
    }
    demand(count == whole, "every whole frame is read");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    try {
        readAll(file.path(), size);
    } catch (const BadData& refusal) {
        const std::string message = refusal.what();
        demand(message.find("byte ") != std::string::npos, "a refusal names the byte");
        demand(message.find('\n') == std::string::npos, "a refusal is one line");
    }
    return 0;
}
