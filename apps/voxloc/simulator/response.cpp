#include "simulator/response.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "simulator/exactMath.h"
#include "simulator/fractionalDelay.h"

namespace {

constexpr double SamplesPerMetre = SampleRate / SpeedOfSound;
constexpr double KaiserShape = 6.8;       // 70 dB
constexpr double LeastDistance = 0.01;    // metres: nothing is louder than 40 dB over that at 1 m
constexpr double LowestFrequency = 40.0;  // Hz

using Pulses = std::array<Pulse, PulseSteps + 1>;

Pulses makePulses() {
    Pulses pulses = {};
    for (int step = 0; step <= PulseSteps; ++step) {
        for (int tap = 0; tap < PulseTaps; ++tap) {
            const double at = tap - PulseMiddle - static_cast<double>(step) / PulseSteps;
            const double share = at / (0.5 * PulseTaps);
            const double window =
                besselOf(KaiserShape * std::sqrt(1.0 - share * share)) / besselOf(KaiserShape);
            const bool isWhole = step % PulseSteps == 0;
            const double sinc = isWhole ? (at == 0.0 ? 1.0 : 0.0) : sincOf(Pi * at);
            pulses[static_cast<std::size_t>(step)][static_cast<std::size_t>(tap)] =
                static_cast<float>(sinc * window);
        }
    }
    return pulses;
}

/** The images of a coordinate that matter, with the walls between each and the source. */
struct AxisImage {
    double at;
    int walls;
};

std::vector<AxisImage> imagesAlong(double size, double source, double middle, double farthest) {
    std::vector<AxisImage> images;
    const int rooms = static_cast<int>(farthest / (2 * size)) + 1;
    for (int m = -rooms; m <= rooms; ++m) {
        for (int mirrored = 0; mirrored <= 1; ++mirrored) {
            const double at = (mirrored == 0 ? source : -source) + 2 * m * size;
            if (std::fabs(at - middle) > farthest) continue;
            images.push_back({at, std::abs(2 * m - mirrored)});
        }
    }
    return images;
}

double distanceOf(const Point& a, const Point& b) {
    const double x = a.x - b.x, y = a.y - b.y, z = a.z - b.z;
    return std::sqrt(x * x + y * y + z * z);
}

Point middleOf(const std::vector<Point>& points) {
    Point sum;
    for (const Point& p : points) sum = {sum.x + p.x, sum.y + p.y, sum.z + p.z};
    const double count = static_cast<double>(points.size());
    return {sum.x / count, sum.y / count, sum.z / count};
}

void addImage(Responses& responses, const Point& image, double gain,
              const std::vector<Point>& heard) {
    for (std::size_t c = 0; c < heard.size(); ++c) {
        const double distance = std::max(LeastDistance, distanceOf(image, heard[c]));
        addPulse(responses[c].data(), distance * SamplesPerMetre + ResponseDelay,
                 static_cast<float>(gain / distance));
    }
}

std::vector<double> powersOf(double reflection, std::size_t count) {
    std::vector<double> powers(count, 1.0);
    for (std::size_t n = 1; n < count; ++n) powers[n] = powers[n - 1] * reflection;
    return powers;
}

void addImages(Responses& responses, const Walls& walls, const Point& source,
               const std::vector<Point>& heard, const Point& middle, double farthest) {
    const auto alongX = imagesAlong(walls.size.x, source.x, middle.x, farthest);
    const auto alongY = imagesAlong(walls.size.y, source.y, middle.y, farthest);
    const auto alongZ = imagesAlong(walls.size.z, source.z, middle.z, farthest);
    const std::vector<double> gains =
        powersOf(walls.reflection, alongX.size() + alongY.size() + alongZ.size() + 8);
    for (const AxisImage& x : alongX) {
        for (const AxisImage& y : alongY) {
            const double flat =
                (x.at - middle.x) * (x.at - middle.x) + (y.at - middle.y) * (y.at - middle.y);
            for (const AxisImage& z : alongZ) {
                const double height = z.at - middle.z;
                if (flat + height * height > farthest * farthest) continue;
                const auto hit = static_cast<std::size_t>(x.walls + y.walls + z.walls);
                addImage(responses, {x.at, y.at, z.at}, gains[hit], heard);
            }
        }
    }
}

/** Takes away what is below the lowest frequency: two poles, Butterworth. */
void cutLows(std::vector<float>& samples) {
    const double turn = 2 * Pi * LowestFrequency / SampleRate;
    const double cosine = cosineOf(turn), alpha = sineOf(turn) / std::sqrt(2.0);
    const double scale = 1.0 / (1.0 + alpha), b = 0.5 * (1.0 + cosine) * scale;
    const double a1 = -2.0 * cosine * scale, a2 = (1.0 - alpha) * scale;
    double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
    for (float& sample : samples) {
        const double x = static_cast<double>(sample);
        const double y = b * (x - 2.0 * x1 + x2) - a1 * y1 - a2 * y2;
        x2 = x1, x1 = x, y2 = y1, y1 = y;
        sample = static_cast<float>(y);
    }
}

}  // namespace

const Pulse& pulseAt(int step) {
    static const Pulses pulses = makePulses();
    return pulses[static_cast<std::size_t>(step)];
}

Responses responsesOf(const Walls& walls, const Point& source, const std::vector<Point>& heard) {
    const Point middle = middleOf(heard);
    double widest = 0.0, direct = 0.0;
    for (const Point& point : heard) {
        widest = std::max(widest, distanceOf(point, middle));
        direct = std::max(direct, distanceOf(point, source));
    }
    const bool hasWalls = walls.reflection > 0.0;
    const double farthest = direct + (hasWalls ? walls.seconds * SpeedOfSound : 0.0);
    const auto length =
        static_cast<std::size_t>((farthest + widest) * SamplesPerMetre) + ResponseDelay + PulseTaps;
    Responses responses(heard.size(), std::vector<float>(length, 0.0f));
    if (!hasWalls) {
        addImage(responses, source, 1.0, heard);
        return responses;
    }
    addImages(responses, walls, source, heard, middle, farthest);
    for (std::vector<float>& response : responses) cutLows(response);
    return responses;
}
