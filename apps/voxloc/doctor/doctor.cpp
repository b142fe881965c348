#include "doctor/doctor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "common/record.h"
#include "common/table.h"
#include "doctor/duplicates.h"
#include "doctor/findings.h"

namespace {

// A dead channel is that far below the others, or that quiet.
constexpr double DeadBelow = 40.0, DeadLevel = -95.0;  // dB, dB of full scale
constexpr double MostDeviation = 6.0;                  // dB, louder or quieter than the others
constexpr std::uint64_t LeastPlateaus = 3;
constexpr double LeastClippedPeak = 0.01;  // of full scale: below it, plateaus are rounding
constexpr double MostOffset = 0.005;       // of full scale
// Noise of its own: that much louder in quiet frames, and that much less between loud and quiet.
constexpr double NoiseAbove = 8.0, NoiseFlatter = 6.0;  // dB
constexpr std::size_t LeastSegments = 4;                // two seconds
constexpr double LeastModulation = 4.0;                 // dB: steady noise has one or two
constexpr std::uint64_t LeastVoiceFrames = 12;          // half a second
constexpr double LeastResponse = 0.05;                  // below it nothing came from a place
constexpr double UpsideDownShare = 0.5;                 // of the frames with voice
constexpr std::uint64_t LeastUpsideDownFrames = 24;     // a second

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

double middle(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : 0.5 * (values[half - 1] + values[half]);
}

std::vector<double> column(const std::vector<ChannelReport>& reports,
                           double ChannelReport::*member) {
    std::vector<double> values;
    values.reserve(reports.size());
    for (const ChannelReport& report : reports) values.push_back(report.*member);
    return values;
}

ChannelSet judgeDead(const std::vector<ChannelReport>& reports, Diagnosis& diagnosis) {
    const double level = middle(column(reports, &ChannelReport::speechLevel));
    ChannelSet dead = 0;
    for (std::size_t c = 0; c < reports.size(); ++c) {
        const double own = reports[c].speechLevel;
        if (own >= DeadLevel && own >= level - DeadBelow) continue;
        diagnosis.findings.push_back(deadFinding(static_cast<int>(c), own, level));
        dead |= 1u << c;
    }
    return dead;
}

void judgeWaveforms(const std::vector<ChannelReport>& reports, Diagnosis& diagnosis) {
    for (std::size_t c = 0; c < reports.size(); ++c) {
        const ChannelReport& one = reports[c];
        const int channel = static_cast<int>(c);
        if (one.plateauRuns >= LeastPlateaus && one.peak > LeastClippedPeak) {
            diagnosis.findings.push_back(clippingFinding(channel, one));
        }
        if (std::fabs(one.mean) > MostOffset) {
            diagnosis.findings.push_back(offsetFinding(channel, one.mean));
        }
    }
}

/** One finding for all channels that hum alike. */
void judgeHum(const std::vector<ChannelReport>& reports, Diagnosis& diagnosis) {
    for (const double mains : {50.0, 60.0}) {
        std::vector<int> channels;
        Hum strongest;
        for (std::size_t c = 0; c < reports.size(); ++c) {
            const Hum& hum = reports[c].hum;
            if (std::fabs(hum.frequency - mains) > 1.0) continue;
            channels.push_back(static_cast<int>(c));
            if (hum.level > strongest.level) strongest = hum;
        }
        if (!channels.empty()) diagnosis.findings.push_back(humFinding(channels, strongest));
    }
}

/** Channels whose pauses are louder than those of the others, as no gain explains. */
void judgeNoise(const std::vector<ChannelReport>& reports, ChannelSet dead, Diagnosis& diagnosis) {
    const double floor = middle(column(reports, &ChannelReport::floorLevel));
    const double reach = middle(column(reports, &ChannelReport::speechLevel)) - floor;
    for (std::size_t c = 0; c < reports.size(); ++c) {
        const ChannelReport& one = reports[c];
        if (contains(dead, static_cast<int>(c)) || one.floorLevel < floor + NoiseAbove) continue;
        if (one.speechLevel - one.floorLevel > reach - NoiseFlatter) continue;
        diagnosis.findings.push_back(noiseFinding(static_cast<int>(c), one.floorLevel, floor));
    }
}

bool isNoisy(const Diagnosis& diagnosis, int channel) {
    return std::any_of(diagnosis.findings.begin(), diagnosis.findings.end(),
                       [&](const Finding& one) {
                           return one.fault == Fault::Noise && one.channels.front() == channel;
                       });
}

/** Of channels that are neither dead nor louder by their noise. */
void judgeLevels(const std::vector<ChannelReport>& reports, ChannelSet dead, Diagnosis& diagnosis) {
    for (std::size_t c = 0; c < reports.size(); ++c) {
        const int channel = static_cast<int>(c);
        const double deviation = reports[c].deviation;
        if (contains(dead, channel) || isNoisy(diagnosis, channel)) continue;
        if (std::fabs(deviation) > MostDeviation) {
            diagnosis.findings.push_back(levelFinding(channel, deviation));
        }
    }
}

/**
 * Whether a fault of one or two channels explains that upright pairs have more in common than
 * horizontal ones. A panel that covers microphones leaves several that hear nothing of the others.
 */
bool explainsUpsideDown(const std::vector<Finding>& findings) {
    int strangers = 0;
    for (const Finding& one : findings) {
        switch (one.fault) {
            case Fault::Dead:
            case Fault::Duplicate:
            case Fault::Swapped:
            case Fault::Inverted:
            case Fault::Late:
            case Fault::Drift:
                return true;
            case Fault::Noise:
                ++strangers;
                break;
            default:
                break;
        }
    }
    return strangers == 1;
}

}  // namespace

Doctor::Doctor(const NamedArray& array)
    : array_(array),
      tracker_(createTracker(array)),
      places_(array.array),
      spectra_(array.array.channels),
      gatherer_(array.array.channels, places_.mostLag() + ::MostOffset),
      statistics_(array.array.channels) {
    voxloc_setLog(
        tracker_.get(), [](void*, const char*) {}, nullptr);  // findings say it
}

void Doctor::add(const InputFrame& frame) {
    watchTracker(frame);
    samples_.resize(frame.samples.size());
    voxloc_normalizeInput(frame.samples.data(), samples_.data(), frame.bits, array_.array.channels);
    const std::vector<Spectrum>& spectra = spectra_.next(samples_);
    statistics_.add(samples_, spectra);
    const double seconds = static_cast<double>(frames_) * FRAME_SAMPLES / SampleRate;
    if (voxloc_getFlag(VOXLOC_INPUT_FAR_END, frame.flags) == 0) gatherer_.add(spectra, seconds);
    ++frames_;
}

void Doctor::watchTracker(const InputFrame& frame) {
    TrackerResult result;
    voxloc_track(tracker_.get(), frame.samples.data(), frame.bits, frame.flags, &result);
    if (voxloc_getFlag(VOXLOC_FLAG_VOICE, result.flags) != 0) {
        ++voiceFrames_;
        if (voxloc_getFlag(VOXLOC_FLAG_POSITION_VALID, result.flags) == 0) ++upsideDownFrames_;
    }
    if (voxloc_getFlag(VOXLOC_FLAG_ULTRASOUND, result.flags) != 0) {
        ++ultrasoundFrames_;
        ultrasoundLevel_ =
            std::max(ultrasoundLevel_,
                     static_cast<double>(voxloc_getTrackerUltraSoundLevel(tracker_.get())));
    }
}

Diagnosis Doctor::diagnose() {
    Diagnosis diagnosis;
    diagnosis.seconds = static_cast<double>(frames_) * FRAME_SAMPLES / SampleRate;
    if (frames_ == 0) {
        diagnosis.notes.push_back("there is no whole frame in it");
        return diagnosis;
    }
    const ChannelSet dead = judgeChannels(diagnosis);
    judgeGeometry(diagnosis, ((1u << array_.array.channels) - 1) & ~dead);
    judgeTracker(diagnosis);
    return diagnosis;
}

ChannelSet Doctor::judgeChannels(Diagnosis& diagnosis) const {
    const std::vector<ChannelReport> reports = statistics_.reports();
    diagnosis.levels = column(reports, &ChannelReport::speechLevel);
    const ChannelSet dead = judgeDead(reports, diagnosis);
    judgeNoise(reports, dead, diagnosis);
    judgeLevels(reports, dead, diagnosis);
    judgeWaveforms(reports, diagnosis);
    judgeHum(reports, diagnosis);
    return dead;
}

/** Voice, or sound that comes and goes as voices do: the voice detector misses much in echoes. */
bool Doctor::hasSpeech() const {
    if (voiceFrames_ >= LeastVoiceFrames) return true;
    std::vector<double> modulation;
    for (const ChannelReport& one : statistics_.reports()) {
        modulation.push_back(one.speechLevel - one.floorLevel);
    }
    return middle(modulation) >= LeastModulation;
}

void Doctor::judgeGeometry(Diagnosis& diagnosis, ChannelSet used) {
    std::vector<SegmentTables> segments = gatherer_.finish();
    if (!hasSpeech() || segments.size() < LeastSegments || listOf(used).size() < 3) {
        diagnosis.verdict = diagnosis.findings.empty() ? Verdict::CannotTell : Verdict::Faults;
        diagnosis.notes.push_back(
            listOf(used).size() < 3
                ? "fewer than three channels are left for the array's geometry"
                : "there is too little speech to judge polarity, order and delays by");
        return;
    }
    // The last segment may not be full.
    diagnosis.speechSeconds =
        std::min(static_cast<double>(segments.size()) * SegmentSeconds, diagnosis.seconds);
    for (const Duplicate& one : findDuplicates(places_, segments, used)) {
        if (one.isCertain) {
            diagnosis.findings.push_back(duplicateFinding(one));
            used &= ~(1u << one.copy);
        } else {
            diagnosis.notes.push_back(
                channelsText({std::min(one.copy, one.original), std::max(one.copy, one.original)}) +
                " are alike, but sound may have reached both at the same "
                "time; speak from further places");
        }
    }
    const GeometryFindings geometry = findGeometryFaults(places_, segments, used);
    diagnosis.response = geometry.response;
    if (geometry.response < LeastResponse) {
        diagnosis.notes.push_back("no sound came clearly from one place");
    } else {
        for (const GeometryFault& fault : geometry.faults) {
            diagnosis.findings.push_back(geometryFinding(fault));
        }
        for (const int c : listOf(geometry.strangers)) {
            if (isNoisy(diagnosis, c)) continue;
            diagnosis.findings.push_back(strangerFinding(c, geometry.fits[at(c)]));
        }
        for (const auto& [a, b] : geometry.untold) {
            diagnosis.notes.push_back("sound reached " + channelsText({a, b}) +
                                      " at the same time from every place: whether they are "
                                      "swapped cannot be told");
        }
    }
    const bool isJudged = geometry.response >= LeastResponse;
    diagnosis.verdict = !diagnosis.findings.empty() ? Verdict::Faults
                        : isJudged                  ? Verdict::Sound
                                                    : Verdict::CannotTell;
}

void Doctor::judgeTracker(Diagnosis& diagnosis) const {
    if (ultrasoundFrames_ > 0) {
        diagnosis.findings.push_back(ultrasoundFinding(ultrasoundLevel_));
    }
    const double share = voiceFrames_ > 0 ? static_cast<double>(upsideDownFrames_) /
                                                static_cast<double>(voiceFrames_)
                                          : 0.0;
    if (upsideDownFrames_ >= LeastUpsideDownFrames && share > UpsideDownShare &&
        !explainsUpsideDown(diagnosis.findings)) {
        diagnosis.findings.push_back(upsideDownFinding(share));
    }
    if (!diagnosis.findings.empty()) diagnosis.verdict = Verdict::Faults;
}
