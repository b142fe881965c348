#include "writers/header.h"

#include <array>
#include <cmath>
#include <ctime>

#include "common/record.h"

std::string wallTime(double seconds) {
    // From whole milliseconds, so that a second never reads 59.1000.
    const auto milliseconds = static_cast<long long>(std::llround(seconds * 1000.0));
    long long rest = milliseconds % 1000;
    if (rest < 0) rest += 1000;
    const std::time_t whole = static_cast<std::time_t>((milliseconds - rest) / 1000);
    std::tm parts = {};
    gmtime_r(&whole, &parts);
    std::array<char, 32> date;
    const std::size_t length = std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::string text(date.data(), length);
    const std::string digits = std::to_string(1000 + rest);
    return text + "." + digits.substr(1) + "Z";
}

Json headerToJson(const RunHeader& header) {
    const InputFormat& input = header.input;
    Json options = Json::object();
    if (!header.options.channels.empty()) options["channels"] = header.options.channels;
    if (header.options.gain != 0.0) options["gain"] = header.options.gain;
    if (header.options.start > 0.0) options["start"] = header.options.start;
    if (header.options.end) options["end"] = *header.options.end;
    if (!header.farEnd.empty()) options["far_end"] = header.farEnd;
    if (header.clock) options["clock"] = wallTime(*header.clock);
    return {{"type", "header"},
            {"schema", SchemaVersion},
            {"version", voxloc_getVersion()},
            {"input",
             {{"name", input.name},
              {"kind", input.kind},
              {"channels", input.channels},
              {"rate", input.rate}}},
            {"frame_samples", FRAME_SAMPLES},
            {"sample_rate", SampleRate},
            {"options", std::move(options)},
            {"array", arrayToJson(header.array)}};
}
