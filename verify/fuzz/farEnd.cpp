// Files of the loudspeaker's times: refused with the line, or asked about any sample.

#include <string>

#include "common/failure.h"
#include "fuzz.h"
#include "readers/farEnd.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const FarEnd farEnd(asText(data, size), "fuzz");
        for (int shift = 0; shift < 63; ++shift) {
            farEnd.isPlaying(std::uint64_t{1} << shift);
        }
        farEnd.isPlaying(0);
    } catch (const BadData& refusal) {
        const std::string message = refusal.what();
        demand(message.rfind("fuzz: line ", 0) == 0, "a refusal names the line");
        demand(message.find('\n') == std::string::npos, "a refusal is one line");
    }
    return 0;
}
