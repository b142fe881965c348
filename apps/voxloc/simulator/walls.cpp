// How much walls reflect in a room with a stated echo.

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "simulator/response.h"

namespace {

constexpr double BinSeconds = 0.002;
constexpr double LeastReflection = 0.001, MostReflection = 0.9999;
constexpr double AllowedMiss = 0.02;  // of the time
constexpr int Halvings = 40;

/** The time in which what is still to come of the energy falls by 60 dB; bins a step apart. */
double fallOf(const std::vector<double>& energy, double step) {
    constexpr double From = -5.0, To = -35.0;  // dB
    std::vector<double> rest(energy.size() + 1, 0.0);
    for (std::size_t i = energy.size(); i-- > 0;) rest[i] = rest[i + 1] + energy[i];
    double n = 0.0, t = 0.0, tt = 0.0, d = 0.0, td = 0.0;
    for (std::size_t i = 0; i < energy.size(); ++i) {
        const double level = 10.0 * std::log10(rest[i] / rest[0]);
        if (!(level <= From)) continue;
        if (!(level >= To)) break;
        const double at = static_cast<double>(i) * step;
        n += 1.0, t += at, tt += at * at, d += level, td += at * level;
    }
    const double slope = (n * td - t * d) / (n * tt - t * t);  // dB a second
    return -60.0 / slope;
}

/** The energy of the images, by when they come and how many walls they met. */
class ImageEnergy {
  public:
    ImageEnergy(const Point& size, double seconds) {
        // Two places off every plane of symmetry, half the room apart.
        const double farthest = seconds * SpeedOfSound;
        bins_ = static_cast<std::size_t>(seconds / BinSeconds) + 1;
        const auto x = differences(0.31 * size.x, 0.77 * size.x, size.x, farthest);
        const auto y = differences(0.29 * size.y, 0.67 * size.y, size.y, farthest);
        const auto z = differences(0.37 * size.z, 0.57 * size.z, size.z, farthest);
        orders_ = x.size() + y.size() + z.size() + 8;
        energy_.assign(bins_ * orders_, 0.0);
        for (const Difference& a : x) {
            for (const Difference& b : y) {
                for (const Difference& c : z) add(a, b, c, farthest);
            }
        }
    }

    double fall(double reflection) const {
        std::vector<double> energy(bins_, 0.0);
        for (std::size_t i = 0; i < bins_; ++i) {
            double factor = 1.0;
            for (std::size_t n = 0; n < orders_; ++n) {
                energy[i] += energy_[i * orders_ + n] * factor;
                factor *= reflection * reflection;
            }
        }
        return fallOf(energy, BinSeconds);
    }

  private:
    struct Difference {
        double squared;
        int walls;
    };

    static std::vector<Difference> differences(double source, double heard, double size,
                                               double farthest) {
        std::vector<Difference> all;
        const int rooms = static_cast<int>(farthest / (2 * size)) + 1;
        for (int m = -rooms; m <= rooms; ++m) {
            for (int mirrored = 0; mirrored <= 1; ++mirrored) {
                const double at = (mirrored == 0 ? source : -source) + 2 * m * size - heard;
                if (std::fabs(at) <= farthest) all.push_back({at * at, std::abs(2 * m - mirrored)});
            }
        }
        return all;
    }

    void add(const Difference& a, const Difference& b, const Difference& c, double farthest) {
        const double squared = a.squared + b.squared + c.squared;
        if (squared > farthest * farthest) return;
        const auto bin = static_cast<std::size_t>(std::sqrt(squared) / SpeedOfSound / BinSeconds);
        const auto order = static_cast<std::size_t>(a.walls + b.walls + c.walls);
        energy_[std::min(bin, bins_ - 1) * orders_ + order] += 1.0 / squared;
    }

    std::size_t bins_ = 0, orders_ = 0;
    std::vector<double> energy_;
};

double reflectionOf(const Room& room) {
    const ImageEnergy images(room.size, room.rt60);
    double low = LeastReflection, high = MostReflection;
    for (int i = 0; i < Halvings; ++i) {
        const double middle = 0.5 * (low + high);
        // Not a number: nothing is left at -5 dB, walls that hardly reflect.
        (images.fall(middle) >= room.rt60 ? high : low) = middle;
    }
    // Logarithms differ in their last bits from machine to machine; this does not.
    const double reflection = std::floor(high * 1e6 + 0.5) / 1e6;
    const double miss = images.fall(reflection) / room.rt60 - 1.0;
    if (!(std::fabs(miss) <= AllowedMiss)) {
        throw std::invalid_argument("a room of that size cannot have that reverberation time");
    }
    return reflection;
}

}  // namespace

Walls wallsOf(const Room& room) {
    if (room.rt60 == 0.0) return {room.size, 0.0, 0.0};
    const double least = std::min({room.size.x, room.size.y, room.size.z});
    const double most = std::max({room.size.x, room.size.y, room.size.z});
    if (!(least >= 1.0 && most <= 100.0)) {
        throw std::invalid_argument("a room is 1 to 100 m long, wide and high");
    }
    if (!(room.rt60 >= 0.05 && room.rt60 <= 5.0)) {
        throw std::invalid_argument("a reverberation time is 0 or 0.05 to 5 s");
    }
    return {room.size, reflectionOf(room), room.rt60};
}

double reverberationTime(const std::vector<float>& response) {
    std::vector<double> energy;
    energy.reserve(response.size());
    for (const float sample : response) {
        energy.push_back(static_cast<double>(sample) * static_cast<double>(sample));
    }
    return fallOf(energy, 1.0 / SampleRate);
}
