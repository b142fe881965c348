#include "readers/farEnd.h"

#include <algorithm>
#include <cmath>

#include <voxloc/voxloc.h>

#include "common/failure.h"
#include "common/record.h"
#include "common/text.h"
#include "readers/file.h"

FarEnd::FarEnd(std::string_view text, const std::string& name) {
    std::size_t number = 0;
    for (const std::string& line : split(text, '\n')) {
        ++number;
        const std::string_view content = trimmed(line);
        if (content.empty() || content.front() == '#') continue;
        const auto fields = split(content, ',');
        const auto from = numberFrom(trimmed(fields.front()));
        const auto to = fields.size() > 1 ? numberFrom(trimmed(fields[1])) : std::nullopt;
        if (!from && !to && number == 1 && fields.size() == 2) continue;
        if (fields.size() != 2 || !from || !to || !std::isfinite(*from) || !std::isfinite(*to) ||
            *from < 0.0 || *to < *from) {
            throw BadData(name + ": line " + std::to_string(number) +
                          ": must be two times in seconds, from,to, not " + inQuotes(content));
        }
        spans_.push_back({*from, *to});
    }
    std::sort(spans_.begin(), spans_.end(),
              [](const Span& a, const Span& b) { return a.from < b.from; });
    // With overlaps joined, both ends are sorted.
    std::vector<Span> joined;
    for (const Span& span : spans_) {
        if (!joined.empty() && span.from <= joined.back().to) {
            joined.back().to = std::max(joined.back().to, span.to);
        } else {
            joined.push_back(span);
        }
    }
    spans_.swap(joined);
}

FarEnd FarEnd::fromFile(const std::string& path) {
    File file(path);
    std::string text, block(65536, '\0');
    while (const std::size_t size = file.read(block.data(), block.size())) {
        text.append(block, 0, size);
    }
    return FarEnd(text, path);
}

bool FarEnd::isPlaying(std::uint64_t sample) const {
    const double begin = static_cast<double>(sample) / SampleRate;
    const double end = static_cast<double>(sample + FRAME_SAMPLES) / SampleRate;
    const auto next = std::partition_point(spans_.begin(), spans_.end(),
                                           [begin](const Span& span) { return span.to <= begin; });
    return next != spans_.end() && next->from < end;
}
