#include "doctor/findings.h"

#include <algorithm>
#include <cmath>

#include "common/table.h"

namespace {

constexpr double PerMillionPerSlope = 1e6 / LagRate;

std::string percent(double share) {
    return fixed(100.0 * share, 0) + " per cent";
}

double decibelsOf(double amplitude) {
    return 20.0 * std::log10(std::max(amplitude, 1e-10));
}

std::string lateText(const std::vector<int>& channels, double offset) {
    const double samples = offset / LagsPerSample;
    return channelsText(channels) + (channels.size() == 1 ? " is " : " are ") +
           fixed(std::fabs(samples), 1) + " samples " + (samples > 0.0 ? "late" : "early");
}

Finding lateFinding(const std::vector<int>& channels, const GeometryFault& fault) {
    return {Fault::Late,
            channels,
            {{"samples", fault.offset / LagsPerSample}, {"gain", fault.gain}},
            lateText(channels, fault.offset)};
}

Finding driftFinding(const std::vector<int>& channels, const GeometryFault& fault) {
    const double perMillion = fault.slope * PerMillionPerSlope;
    return {Fault::Drift,
            channels,
            {{"per_million", perMillion}, {"gain", fault.gain}},
            channelsText(channels) + (channels.size() == 1 ? " is" : " are") +
                " not on the clock of the others: " + fixed(std::fabs(perMillion), 0) +
                " parts in a million too " + (perMillion > 0.0 ? "fast" : "slow")};
}

Finding swapFinding(const std::vector<int>& channels, const GeometryFault& fault) {
    return {Fault::Swapped,
            channels,
            {{"gain", fault.gain}},
            channelsText(channels) + " are swapped: exchanged, they fit the array's geometry"};
}

Finding plainFinding(const GeometryFault& fault) {
    const std::vector<int> channels = listOf(fault.channels);
    switch (fault.kind) {
        case GeometryKind::Late:
            return lateFinding(channels, fault);
        case GeometryKind::Drift:
            return driftFinding(channels, fault);
        case GeometryKind::Swapped:
            return swapFinding(channels, fault);
        case GeometryKind::Inverted:
            break;
    }
    return {Fault::Inverted,
            channels,
            {{"gain", fault.gain}},
            channelsText(channels) + " has its polarity inverted"};
}

}  // namespace

std::vector<int> listOf(ChannelSet set) {
    std::vector<int> channels;
    for (int c = 0; set >> c != 0; ++c) {
        if (contains(set, c)) channels.push_back(c);
    }
    return channels;
}

Finding deadFinding(int c, double level, double others) {
    return {Fault::Dead,
            {c},
            {{"level_db", level}, {"others_db", others}},
            channelsText({c}) + " is dead: " + fixed(level, 1) + " dB where the others have " +
                fixed(others, 1) + " dB"};
}

Finding levelFinding(int c, double deviation) {
    const bool isLoud = deviation > 0.0;
    return {isLoud ? Fault::Loud : Fault::Quiet,
            {c},
            {{"deviation_db", deviation}},
            channelsText({c}) + " is " + fixed(std::fabs(deviation), 1) + " dB " +
                (isLoud ? "louder" : "quieter") + " than the others"};
}

Finding clippingFinding(int c, const ChannelReport& report) {
    return {Fault::Clipping,
            {c},
            {{"samples", static_cast<double>(report.plateauSamples)},
             {"runs", static_cast<double>(report.plateauRuns)},
             {"peak_db", decibelsOf(report.peak)}},
            channelsText({c}) + " clips: " + std::to_string(report.plateauSamples) +
                " samples stay at its peak of " + fixed(decibelsOf(report.peak), 1) + " dB, in " +
                std::to_string(report.plateauRuns) + " runs"};
}

Finding offsetFinding(int c, double mean) {
    return {Fault::Offset,
            {c},
            {{"offset", mean}},
            channelsText({c}) + " has an offset of " + fixed(100.0 * mean, 2) +
                " per cent of full scale"};
}

Finding humFinding(const std::vector<int>& channels, const Hum& hum) {
    return {Fault::Hum,
            channels,
            {{"mains_hz", hum.frequency},
             {"line_hz", hum.line},
             {"level_db", hum.level},
             {"above_db", hum.above}},
            channelsText(channels) + (channels.size() == 1 ? " hums" : " hum") + " with the " +
                fixed(hum.frequency, 0) + " Hz of the mains: " + fixed(hum.level, 1) + " dB at " +
                fixed(hum.line, 0) + " Hz, " + fixed(hum.above, 0) + " dB above what is around it"};
}

Finding noiseFinding(int c, double floor, double others) {
    return {Fault::Noise,
            {c},
            {{"floor_db", floor}, {"others_db", others}},
            channelsText({c}) + " has noise of its own: " + fixed(floor, 1) +
                " dB in pauses where the others have " + fixed(others, 1) + " dB"};
}

Finding strangerFinding(int c, double fit) {
    return {Fault::Noise,
            {c},
            {{"fit", fit}},
            channelsText({c}) +
                " does not carry what the others hear: its correlation with them is " +
                percent(std::max(fit, 0.0)) + " of theirs with each other"};
}

Finding duplicateFinding(const Duplicate& duplicate) {
    return {Fault::Duplicate,
            {std::min(duplicate.copy, duplicate.original),
             std::max(duplicate.copy, duplicate.original)},
            {{"likeness", duplicate.likeness}},
            channelsText({duplicate.copy}) + " carries the signal of " +
                channelsText({duplicate.original}) + ": likeness " + fixed(duplicate.likeness, 3)};
}

Finding geometryFinding(const GeometryFault& fault) {
    Finding finding = plainFinding(fault);
    for (const LikeFault& other : fault.instead) {
        const std::vector<int> channels = listOf(other.channels);
        finding.instead.push_back(channels);
        finding.text +=
            "; or " + (fault.kind == GeometryKind::Late ? lateText(channels, other.offset)
                                                        : channelsText(channels));
    }
    if (!fault.instead.empty()) finding.text += ": these cannot be told apart";
    return finding;
}

Finding ultrasoundFinding(double level) {
    return {
        Fault::Ultrasound,
        {},
        {{"level_db", level}},
        "ultrasound distorts the microphones: " + fixed(level, 1) + " dB from 20.25 to 21.6 kHz"};
}

Finding upsideDownFinding(double share) {
    return {Fault::UpsideDown,
            {},
            {{"share", share}},
            "the array seems to be mounted upside down: " + percent(share) +
                " of the frames with voice say so"};
}
