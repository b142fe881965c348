/** What a machine computed, as agreement_dump wrote it to a file. */
#ifndef VERIFY_AGREEMENT_DUMP_FILE_H
#define VERIFY_AGREEMENT_DUMP_FILE_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

/** A named array's fingerprints; see fingerprint.h. */
struct Print {
    std::string name;
    std::uint64_t exact, withoutTiny;
};

struct FrameDump {
    unsigned content;  // enum Content
    float azimuth, elevation, range, quality;
    std::uint32_t flags;
    int azimuthIndex, elevationIndex;
    float azimuthMargin, elevationMargin, rangeMargin;
    std::vector<Print> stages;  // in the order in which they are computed, the input first
};

using FrameKey = std::pair<int, int>;  // product and frame

struct MachineDump {
    std::string machine;
    bool fused = false;                        // kernels round a product and a sum once
    std::map<int, std::vector<Print>> tables;  // by product
    std::map<FrameKey, FrameDump> frames;
    std::map<std::string, std::vector<std::uint32_t>> vectors;  // outputs, bits
};

/** Throws std::runtime_error, naming file and line, for anything that is not a complete dump. */
MachineDump readDump(const std::string& path);

#endif
