// Headers of WAV files from a pipe: refused with a line, or read up to the first sample and no
// further.

#include <cstring>
#include <string>

#include "common/failure.h"
#include "fuzz.h"
#include "live/wavHeader.h"

namespace {

/** What a pipe has. */
struct Input {
    const std::uint8_t* data;
    std::size_t size, taken;
};

WavHeader readFrom(Input& input) {
    return readWavHeader([&input](unsigned char* bytes, std::size_t count) {
        if (count > input.size - input.taken) throw BadData("the pipe ends");
        if (count > 0) std::memcpy(bytes, input.data + input.taken, count);
        input.taken += count;
    });
}

std::uint64_t lengthAt(const std::uint8_t* bytes) {
    std::uint64_t length = 0;
    for (int i = 4; i-- > 0;) length = length << 8 | bytes[i];
    return length;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input{data, size, 0};
    try {
        const WavHeader header = readFrom(input);
        demand(header.form != nullptr && findRawForm(header.form->name) == header.form, "a form");
        demand(header.channels >= 1 && header.channels <= 65535, "channels");
        demand(header.rate >= 0, "a rate");
        demand(input.taken >= 20 && std::memcmp(data + input.taken - 8, "data", 4) == 0,
               "the samples are next");
        demand(!header.bytes || *header.bytes == lengthAt(data + input.taken - 4),
               "the length of the samples");
    } catch (const BadData& refusal) {
        const std::string message = refusal.what();
        demand(!message.empty() && message.find('\n') == std::string::npos, "one line");
    }
    return 0;
}
