// Runs in both forms: frames in ascending order and then the summary, or a line that names the
// line.

#include <string>

#include "common/failure.h"
#include "fuzz.h"
#include "memoryFile.h"
#include "readers/runReader.h"

namespace {

void readAll(const std::string& path) {
    RunReader reader(path);
    demand(!reader.header().empty(), "a run has a header");
    Record record;
    std::uint64_t count = 0, last = 0;
    while (reader.read(record)) {
        demand(count == 0 || record.frame > last, "frames are in ascending order");
        demand(record.channels >= 0 && record.channels <= VOXLOC_MAX_CHANNELS, "microphones");
        last = record.frame;
        ++count;
    }
    demand(!reader.summary().empty(), "a run that is read to its end has a summary");
    demand(!reader.read(record), "nothing comes behind the end");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    try {
        readAll(file.path());
    } catch (const BadData& refusal) {
        const std::string message = refusal.what();
        demand(message.find(": line ") != std::string::npos ||
                   message.find("is empty") != std::string::npos,
               "a refusal names the line");
        demand(message.find('\n') == std::string::npos, "a refusal is one line");
    }
    return 0;
}
