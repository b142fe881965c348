#include "simulator/simulator.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <voxloc/unittestGenerator.h>

#include "simulator/convolution.h"
#include "simulator/exactMath.h"
#include "simulator/fractionalDelay.h"
#include "simulator/noise.h"
#include "simulator/response.h"

namespace {

constexpr double SamplesPerSecond = 48000.0;
constexpr double Degree = Pi / 180.0;              // radians
constexpr double LargestSample = 8388607.0;        // of 24 bits
constexpr double MostDelay = 1000.0;               // samples
constexpr double MostRange = 1000.0;               // metres
constexpr double MostSeconds = 3600.0;             // of a recording
constexpr double LeastFromWall = 0.01;             // metres
constexpr std::uint64_t PointSeed = 0x506F696E74;  // tell the noises of a scene apart
constexpr std::uint64_t OwnSeed = 0x4F776E;

using Channels = std::vector<std::vector<float>>;

/** From the array's coordinates to the room's. */
Point turned(const ArrayPlace& place, const Point& p) {
    const double sineRoll = sineOf(place.roll * Degree), cosineRoll = cosineOf(place.roll * Degree);
    const double y = p.y * cosineRoll - p.z * sineRoll, z = p.y * sineRoll + p.z * cosineRoll;
    const double sineYaw = sineOf(place.yaw * Degree), cosineYaw = cosineOf(place.yaw * Degree);
    return {place.origin.x + p.x * cosineYaw - y * sineYaw,
            place.origin.y + p.x * sineYaw + y * cosineYaw, place.origin.z + z};
}

void checkInside(const Room& room, const Point& p, const char* what) {
    if (!(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z))) {
        throw std::invalid_argument(std::string(what) + " is nowhere");
    }
    if (room.rt60 == 0.0) return;
    const auto isInside = [](double at, double size) {
        return at >= LeastFromWall && at <= size - LeastFromWall;
    };
    if (!isInside(p.x, room.size.x) || !isInside(p.y, room.size.y) || !isInside(p.z, room.size.z)) {
        throw std::invalid_argument(std::string(what) + " is outside the room");
    }
}

std::size_t samplesOf(const Segment& segment) {
    return static_cast<std::size_t>(std::floor(segment.seconds * SamplesPerSecond));
}

void checkSegment(const Scene& scene, const Segment& segment) {
    if (!(segment.seconds >= 0.0 && segment.seconds <= MostSeconds)) {
        throw std::invalid_argument("a segment lasts 0 to 3600 s");
    }
    if (segment.voice == nullptr) return;
    if (segment.voice->empty()) throw std::invalid_argument("a voice has no samples");
    for (const Direction& direction : {segment.from, segment.to}) {
        if (!(direction.range > 0.0 && direction.range <= MostRange)) {
            throw std::invalid_argument("a talker is more than 0 and up to 1000 m away");
        }
        checkInside(scene.room, pointOf(scene.place, direction), "the talker");
    }
}

void checkScene(const VoxlocArray& array, const Scene& scene) {
    if (array.channels < 1 || array.channels > VOXLOC_MAX_CHANNELS) {
        throw std::invalid_argument("an array has 1 to 8 microphones");
    }
    if (!scene.errors.empty() && scene.errors.size() != static_cast<std::size_t>(array.channels)) {
        throw std::invalid_argument("there is an error for each channel or none");
    }
    for (const MicrophoneError& error : scene.errors) {
        if (!(error.delay >= 0.0 && error.delay <= MostDelay)) {
            throw std::invalid_argument("a channel is 0 to 1000 samples late");
        }
    }
    if (!(scene.stepLength >= 16.0)) throw std::invalid_argument("a step is 16 samples or more");
    for (const Segment& segment : scene.segments) checkSegment(scene, segment);
    for (const Point& p : microphonesOf(array, scene)) checkInside(scene.room, p, "a microphone");
}

double totalPower(const Channels& channels) {
    double sum = 0.0;
    for (const std::vector<float>& channel : channels) {
        for (const float sample : channel) {
            sum += static_cast<double>(sample) * static_cast<double>(sample);
        }
    }
    return sum;
}

bool isStill(const Segment& segment) {
    return segment.from.azimuth == segment.to.azimuth &&
           segment.from.elevation == segment.to.elevation && segment.from.range == segment.to.range;
}

/** Renders the segments one after the other. */
class Talker {
  public:
    Talker(const VoxlocArray& array, const Scene& scene)
        : scene_(scene), walls_(wallsOf(scene.room)), heard_(microphonesOf(array, scene)) {
        std::size_t samples = 0;
        for (const Segment& segment : scene.segments) samples += samplesOf(segment);
        sound_.channel.assign(heard_.size(), std::vector<float>(samples, 0.0f));
    }

    TalkerSound render() {
        std::size_t start = 0, spoken = 0;
        double power = 0.0;
        for (const Segment& segment : scene_.segments) {
            const std::size_t count = samplesOf(segment);
            if (segment.voice != nullptr) {
                renderSegment(segment, start, count);
                spoken += count;
            }
            start += count;
        }
        start = 0;
        for (const Segment& segment : scene_.segments) {
            const std::size_t count = samplesOf(segment);
            if (segment.voice != nullptr) power += powerOf(start, count);
            start += count;
        }
        if (spoken > 0) sound_.power = power / static_cast<double>(spoken * heard_.size());
        return std::move(sound_);
    }

  private:
    void renderSegment(const Segment& segment, std::size_t start, std::size_t count) {
        const Point from = pointOf(scene_.place, segment.from);
        const Point to = pointOf(scene_.place, segment.to);
        if (isStill(segment)) {
            add(from, voiceOf(segment, start, count), start);
            return;
        }
        // Pieces that rise and fall, each from its own place; they overlap by half.
        const double step = scene_.stepLength;
        const auto pieces = static_cast<int>(static_cast<double>(count) / step) + 1;
        for (int k = 0; k <= pieces; ++k) {
            const double middle = k * step,
                         share = std::min(1.0, middle / static_cast<double>(count));
            const auto first = static_cast<std::size_t>(std::max(0.0, middle - step));
            const std::size_t last = std::min(count, static_cast<std::size_t>(middle + step));
            if (first >= last) continue;
            std::vector<float> piece = voiceOf(segment, start + first, last - first);
            for (std::size_t n = 0; n < piece.size(); ++n) {
                const double away = std::fabs(static_cast<double>(first + n) - middle) / step;
                const double rise = sineOf(Pi / 2 * std::max(0.0, 1.0 - away));
                piece[n] *= static_cast<float>(rise * rise);
            }
            add({from.x + share * (to.x - from.x), from.y + share * (to.y - from.y),
                 from.z + share * (to.z - from.z)},
                piece, start + first);
        }
    }

    static std::vector<float> voiceOf(const Segment& segment, std::size_t start,
                                      std::size_t count) {
        const std::vector<float>& voice = *segment.voice;
        std::vector<float> samples(count);
        for (std::size_t n = 0; n < count; ++n) samples[n] = voice[(start + n) % voice.size()];
        return samples;
    }

    void add(const Point& at, const std::vector<float>& sound, std::size_t start) {
        if (last_.empty() || at.x != lastAt_.x || at.y != lastAt_.y || at.z != lastAt_.z) {
            last_ = responsesOf(walls_, at, heard_);
            lastAt_ = at;
        }
        addThrough(last_, sound, static_cast<std::ptrdiff_t>(start) - ResponseDelay,
                   sound_.channel);
    }

    double powerOf(std::size_t start, std::size_t count) const {
        double sum = 0.0;
        for (const std::vector<float>& channel : sound_.channel) {
            for (std::size_t n = start; n < start + count; ++n) {
                sum += static_cast<double>(channel[n]) * static_cast<double>(channel[n]);
            }
        }
        return sum;
    }

    const Scene& scene_;
    Walls walls_;
    std::vector<Point> heard_;
    TalkerSound sound_;
    Responses last_;
    Point lastAt_;
};

void addAtRatio(TalkerSound& sound, const Channels& noise, double ratio) {
    if (!(sound.power > 0.0)) {
        throw std::invalid_argument("a noise ratio needs a talker who is heard");
    }
    const double count =
        static_cast<double>(noise.size()) * static_cast<double>(noise.front().size());
    const double factor = amplitudeOf(-ratio) * std::sqrt(sound.power * count / totalPower(noise));
    for (std::size_t c = 0; c < noise.size(); ++c) {
        for (std::size_t n = 0; n < noise[c].size(); ++n) {
            sound.channel[c][n] += static_cast<float>(factor) * noise[c][n];
        }
    }
}

Channels pointNoise(const Scene& scene, const std::vector<Point>& heard, std::size_t samples) {
    const Point at = pointOf(scene.place, scene.noise.pointPlace);
    checkInside(scene.room, at, "the noise");
    Channels noise(heard.size(), std::vector<float>(samples, 0.0f));
    addThrough(responsesOf(wallsOf(scene.room), at, heard),
               independentNoise(1, samples, scene.seed ^ PointSeed).front(), -ResponseDelay, noise);
    return noise;
}

void addNoises(TalkerSound& sound, const Scene& scene, const std::vector<Point>& heard) {
    const NoiseSettings& noise = scene.noise;
    const std::size_t samples = sound.channel.front().size();
    if (samples == 0) return;
    if (noise.diffuseRatio) {
        addAtRatio(sound, diffuseNoise(heard, samples, scene.seed), *noise.diffuseRatio);
    }
    if (noise.independentRatio) {
        addAtRatio(sound, independentNoise(heard.size(), samples, scene.seed ^ OwnSeed),
                   *noise.independentRatio);
    }
    if (noise.pointRatio) addAtRatio(sound, pointNoise(scene, heard, samples), *noise.pointRatio);
}

/** Late by any number of samples; from what was before the start come zeros. */
void delayBy(double delay, std::vector<float>& samples) {
    std::vector<float> taps(static_cast<std::size_t>(delay) + PulseTaps + 1, 0.0f);
    addPulse(taps.data(), delay + PulseMiddle, 1.0f);
    const std::size_t first = static_cast<std::size_t>(delay);
    const std::vector<float> before = samples;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        float sum = 0.0f;
        for (std::size_t k = first; k < taps.size(); ++k) {
            // Tap k is late by k - PulseMiddle samples.
            const std::size_t at = n + PulseMiddle - k;
            if (at < before.size()) sum += taps[k] * before[at];
        }
        samples[n] = sum;
    }
}

void finish(std::vector<float>& samples, double gain) {
    for (float& sample : samples) {
        const double value = std::floor(static_cast<double>(sample) * gain + 0.5);
        sample = static_cast<float>(std::clamp(value, -LargestSample - 1.0, LargestSample));
    }
}

}  // namespace

Voice builtInVoice() {
    static const Voice voice = std::make_shared<const std::vector<float>>(
        femaleSpeechInfo.samples, femaleSpeechInfo.samples + femaleSpeechInfo.numSamples);
    return voice;
}

int Recording::frames() const {
    return channel.empty() ? 0 : static_cast<int>(channel.front().size() / FRAME_SAMPLES);
}

void Recording::copyFrame(int k, float* frame) const {
    const std::ptrdiff_t first = static_cast<std::ptrdiff_t>(k) * FRAME_SAMPLES;
    for (const std::vector<float>& samples : channel) {
        frame = std::copy_n(samples.begin() + first, FRAME_SAMPLES, frame);
    }
}

Point pointOf(const ArrayPlace& place, const Direction& direction) {
    const double azimuth = direction.azimuth * Degree, elevation = direction.elevation * Degree;
    const double ground = direction.range * cosineOf(elevation);
    const Point ahead = {ground * cosineOf(azimuth), ground * sineOf(azimuth),
                         direction.range * sineOf(elevation)};
    return turned(place, ahead);
}

std::vector<Point> microphonesOf(const VoxlocArray& array, const Scene& scene) {
    std::vector<Point> points;
    for (std::int32_t c = 0; c < array.channels; ++c) {
        const Position& at = array.microphone[c];
        const auto index = static_cast<std::size_t>(c);
        const Point offset = index < scene.errors.size() ? scene.errors[index].offset : Point{};
        points.push_back(turned(scene.place, {static_cast<double>(at.x) + offset.x,
                                              static_cast<double>(at.y) + offset.y,
                                              static_cast<double>(at.z) + offset.z}));
    }
    return points;
}

TalkerSound talkerSound(const VoxlocArray& array, const Scene& scene) {
    checkScene(array, scene);
    return Talker(array, scene).render();
}

Recording recordingOf(const VoxlocArray& array, const Scene& scene, TalkerSound talker) {
    checkScene(array, scene);
    addNoises(talker, scene, microphonesOf(array, scene));
    for (std::size_t c = 0; c < talker.channel.size(); ++c) {
        const MicrophoneError error = c < scene.errors.size() ? scene.errors[c] : MicrophoneError{};
        if (error.delay > 0.0) delayBy(error.delay, talker.channel[c]);
        const double gain = amplitudeOf(scene.gain + error.gain);
        finish(talker.channel[c], error.isInverted ? -gain : gain);
    }
    return {std::move(talker.channel)};
}

Recording simulate(const VoxlocArray& array, const Scene& scene) {
    return recordingOf(array, scene, talkerSound(array, scene));
}

std::vector<MicrophoneError> drawErrors(int channels, const MicrophoneError& limit,
                                        std::uint64_t seed) {
    RandomNumbers random(seed);
    const auto draw = [&random](double most) { return random.between(-most, most); };
    std::vector<MicrophoneError> errors(static_cast<std::size_t>(channels));
    for (MicrophoneError& error : errors) {
        error.offset.x = draw(limit.offset.x);
        error.offset.y = draw(limit.offset.y);
        error.offset.z = draw(limit.offset.z);
        error.delay = random.between(0.0, limit.delay);
        error.gain = draw(limit.gain);
        error.isInverted = limit.isInverted && random.between(0.0, 1.0) < 0.5;
    }
    return errors;
}
