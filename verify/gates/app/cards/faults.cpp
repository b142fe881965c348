#include "faults.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include "doctor/doctor.h"

namespace {

constexpr double Seconds = 10.0;
constexpr int TalkerPlaces = 3;
constexpr double FullScale = 8388608.0;
constexpr double Rate = 48000.0;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

double rms(const std::vector<float>& channel) {
    double sum = 0.0;
    for (const float x : channel) sum += static_cast<double>(x) * static_cast<double>(x);
    return std::sqrt(sum / static_cast<double>(channel.size()));
}

float clipped(double sample) {
    return static_cast<float>(std::clamp(sample, -FullScale, FullScale - 1.0));
}

void scale(std::vector<float>& channel, double decibels) {
    const double gain = std::pow(10.0, decibels / 20.0);
    for (float& x : channel) x = clipped(static_cast<double>(x) * gain);
}

void clip(std::vector<float>& channel, double share) {
    float peak = 0.0f;
    for (const float x : channel) peak = std::max(peak, std::fabs(x));
    const float limit = peak * static_cast<float>(share);
    for (float& x : channel) x = std::clamp(x, -limit, limit);
}

void addHum(std::vector<float>& channel, double mains, double decibels) {
    const double amplitude = FullScale * std::sqrt(2.0) * std::pow(10.0, decibels / 20.0);
    for (std::size_t n = 0; n < channel.size(); ++n) {
        double hum = 0.0;
        for (int h = 1; h <= 5; h += 2) {
            hum += std::sin(2.0 * M_PI * mains * h * static_cast<double>(n) / Rate) / h;
        }
        channel[n] = clipped(static_cast<double>(channel[n]) + amplitude * hum);
    }
}

void addNoise(std::vector<float>& channel, double decibels, Dice& dice) {
    const double level = rms(channel) * std::pow(10.0, decibels / 20.0);
    for (float& x : channel) x = clipped(static_cast<double>(x) + level * dice.normal());
}

void delay(std::vector<float>& channel, int samples) {
    channel.insert(channel.begin(), at(samples), 0.0f);
    channel.resize(channel.size() - at(samples));
}

/** As a clock sees it that runs fast by so many parts in a million: cubic between samples. */
void drift(std::vector<float>& channel, double perMillion) {
    const std::vector<float> before = channel;
    const auto last = static_cast<double>(before.size()) - 3.0;
    for (std::size_t n = 0; n < channel.size(); ++n) {
        const double place =
            std::clamp(static_cast<double>(n) * (1.0 - 1e-6 * perMillion), 1.0, last);
        const auto k = static_cast<std::size_t>(place);
        const double t = place - static_cast<double>(k);
        const double a = static_cast<double>(before[k - 1]), b = static_cast<double>(before[k]),
                     c = static_cast<double>(before[k + 1]), d = static_cast<double>(before[k + 2]);
        channel[n] = static_cast<float>(
            b + 0.5 * t * (c - a + t * (2 * a - 5 * b + 4 * c - d + t * (3 * (b - c) + d - a))));
    }
}

void addUltrasound(std::vector<float>& channel, double decibels) {
    const double amplitude = FullScale * std::sqrt(2.0) * std::pow(10.0, decibels / 20.0);
    for (std::size_t n = 0; n < channel.size(); ++n) {
        const double tone = std::sin(2.0 * M_PI * 20900.0 * static_cast<double>(n) / Rate);
        channel[n] = clipped(static_cast<double>(channel[n]) + amplitude * tone);
    }
}

bool isInside(const Point& point, const Point& size) {
    constexpr double Margin = 0.3;  // metres
    return point.x > Margin && point.y > Margin && point.z > Margin && point.x < size.x - Margin &&
           point.y < size.y - Margin && point.z < size.z - Margin;
}

Direction drawDirection(const VoxlocArray& array, const Scene& scene, Dice& dice) {
    VoxlocGrid grid;
    voxloc_getGrid(&array, &grid);
    const auto within = [&](float low, float high, double most) {
        return dice.between(std::max(static_cast<double>(low), -most),
                            std::min(static_cast<double>(high), most));
    };
    for (;;) {
        Direction direction;
        direction.azimuth = within(grid.lowestAzimuth, grid.highestAzimuth, 60.0);
        direction.elevation = within(grid.lowestElevation, grid.highestElevation, 30.0);
        direction.range = dice.between(0.8, 3.5);
        if (isInside(pointOf(scene.place, direction), scene.room.size)) return direction;
    }
}

}  // namespace

double Dice::normal() {
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) sum += between(-1.0, 1.0);
    return sum;
}

const std::vector<Injection>& injections() {
    static const std::vector<Injection> all{
        {Fault::Swapped, 0.0, "two channels swapped"},
        {Fault::Inverted, 0.0, "polarity inverted"},
        {Fault::Late, 4.0, "4 samples late"},
        {Fault::Late, 12.0, "12 samples late"},
        {Fault::Late, 100.0, "100 samples late"},
        {Fault::Dead, -200.0, "dead: zeros"},
        {Fault::Dead, -60.0, "dead: 60 dB down"},
        {Fault::Duplicate, -200.0, "a copy of another"},
        {Fault::Duplicate, -20.0, "a copy, with noise 20 dB below"},
        {Fault::Quiet, -10.0, "10 dB quieter"},
        {Fault::Quiet, -20.0, "20 dB quieter"},
        {Fault::Loud, 10.0, "10 dB louder"},
        {Fault::Clipping, 0.3, "clipped at 0.3 of its peak"},
        {Fault::Clipping, 0.7, "clipped at 0.7 of its peak"},
        {Fault::Offset, 0.01, "offset of 1 % of full scale"},
        {Fault::Hum, 50.0, "50 Hz hum at -45 dB"},
        {Fault::Hum, 60.0, "60 Hz hum at -45 dB"},
        {Fault::Noise, 0.0, "noise as loud as the voice"},
        {Fault::Noise, 10.0, "noise 10 dB louder than it"},
        {Fault::Drift, 40.0, "clock 40 ppm fast"},
        {Fault::Drift, -100.0, "clock 100 ppm slow"},
        {Fault::Ultrasound, -15.0, "ultrasound at -15 dB"},
    };
    return all;
}

std::vector<int> inject(const Injection& injection, Dice& dice, Channels& channels) {
    const int count = static_cast<int>(channels.size());
    const int a = dice.below(count), b = (a + 1 + dice.below(count - 1)) % count;
    std::vector<float>& one = channels[at(a)];
    switch (injection.fault) {
        case Fault::Swapped:
            std::swap(one, channels[at(b)]);
            return {std::min(a, b), std::max(a, b)};
        case Fault::Inverted:
            for (float& x : one) x = -x;
            break;
        case Fault::Late:
            delay(one, static_cast<int>(injection.strength));
            break;
        case Fault::Duplicate:
            one = channels[at(b)];
            addNoise(one, injection.strength, dice);
            return {std::min(a, b), std::max(a, b)};
        case Fault::Dead:
        case Fault::Quiet:
        case Fault::Loud:
            scale(one, injection.strength);
            break;
        case Fault::Clipping:
            clip(one, injection.strength);
            break;
        case Fault::Offset:
            for (float& x : one)
                x = clipped(static_cast<double>(x) + injection.strength * FullScale);
            break;
        case Fault::Hum:
            addHum(one, injection.strength, -45.0);
            break;
        case Fault::Noise:
            addNoise(one, injection.strength, dice);
            break;
        case Fault::Drift:
            drift(one, injection.strength);
            break;
        case Fault::Ultrasound:
            addUltrasound(one, injection.strength);
            return {};
        case Fault::UpsideDown:
            return {};
    }
    return {a};
}

Channels soundRecording(const VoxlocArray& array, std::uint64_t seed) {
    Dice dice(seed);
    Scene scene;
    scene.room.size = {dice.between(4.0, 7.0), dice.between(3.5, 6.0), dice.between(2.4, 3.0)};
    scene.room.rt60 = dice.between(0.2, 0.5);
    scene.place.origin = {0.4, scene.room.size.y * dice.between(0.4, 0.6), dice.between(1.0, 1.4)};
    for (int s = 0; s < TalkerPlaces; ++s) {
        const Direction place = drawDirection(array, scene, dice);
        scene.segments.push_back({builtInVoice(), place, place, Seconds / TalkerPlaces});
    }
    scene.noise.diffuseRatio = dice.between(10.0, 25.0);
    MicrophoneError limit;
    limit.offset = {0.002, 0.002, 0.002};
    limit.gain = 1.0;
    scene.errors = drawErrors(array.channels, limit, seed);
    scene.seed = seed;
    scene.gain = -12.0;  // room for a channel that is louder
    return simulate(array, scene).channel;
}

Diagnosis diagnosed(const VoxlocProduct& product, const Channels& channels) {
    Doctor doctor({product.name, product.array, product.type});
    InputFrame frame;
    frame.samples.resize(channels.size() * FRAME_SAMPLES);
    for (std::size_t n = 0; n + FRAME_SAMPLES <= channels.front().size(); n += FRAME_SAMPLES) {
        for (std::size_t c = 0; c < channels.size(); ++c) {
            std::copy_n(channels[c].begin() + static_cast<std::ptrdiff_t>(n), FRAME_SAMPLES,
                        frame.samples.begin() + static_cast<std::ptrdiff_t>(c * FRAME_SAMPLES));
        }
        frame.sample = n;
        doctor.add(frame);
    }
    return doctor.diagnose();
}
