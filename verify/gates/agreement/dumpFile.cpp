#include "dumpFile.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "fingerprint.h"

namespace {

std::uint64_t word(std::istream& line) {
    std::uint64_t value = 0;
    line >> std::hex >> value >> std::dec;
    return value;
}

float real(std::istream& line) {
    return floatOf(static_cast<std::uint32_t>(word(line)));
}

Print print(std::istream& line) {
    Print result;
    line >> result.name;
    result.exact = word(line);
    result.withoutTiny = word(line);
    return result;
}

FrameDump frame(std::istream& line) {
    FrameDump result;
    result.content = static_cast<unsigned>(word(line));
    for (float* value : {&result.azimuth, &result.elevation, &result.range, &result.quality}) {
        *value = real(line);
    }
    result.flags = static_cast<std::uint32_t>(word(line));
    result.azimuthIndex = static_cast<int>(word(line));
    result.elevationIndex = static_cast<int>(word(line));
    for (float* value : {&result.azimuthMargin, &result.elevationMargin, &result.rangeMargin}) {
        *value = real(line);
    }
    return result;
}

void readLine(std::istream& line, MachineDump& dump) {
    std::string kind;
    line >> kind;
    if (kind == "machine") {
        std::string arithmetic;
        line >> dump.machine >> arithmetic;
        dump.fused = arithmetic == "fused";
    } else if (kind == "table") {
        int product = -1;
        line >> product;
        dump.tables[product].push_back(print(line));
    } else if (kind == "frame" || kind == "stage") {
        std::pair<int, int> key;
        line >> key.first >> key.second;
        if (kind == "frame") {
            dump.frames[key] = frame(line);
        } else {
            dump.frames.at(key).stages.push_back(print(line));
        }
    } else if (kind == "vector") {
        std::string name;
        line >> name;
        std::vector<std::uint32_t>& values = dump.vectors[name];
        while (line.good()) values.push_back(static_cast<std::uint32_t>(word(line)));
    } else {
        line.setstate(std::ios::failbit);
    }
}

}  // namespace

MachineDump readDump(const std::string& path) {
    std::ifstream file(path);
    MachineDump dump;
    std::string text;
    bool ended = false;
    for (int number = 1; std::getline(file, text); ++number) {
        if (text == "end") {
            ended = true;
            break;
        }
        std::istringstream line(text);
        try {
            readLine(line, dump);
        } catch (const std::out_of_range&) {
            line.setstate(std::ios::failbit);
        }
        if (line.fail()) {
            throw std::runtime_error(path + ":" + std::to_string(number) +
                                     ": not a line of a dump");
        }
    }
    if (!ended) throw std::runtime_error(path + ": missing or not complete");
    return dump;
}
