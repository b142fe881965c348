// The response of a room, against what geometry says of single sounds and of the echo's end.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <stdexcept>

#include "simulator/exactMath.h"
#include "simulator/response.h"

namespace {

constexpr double SamplesPerMetre = 48000.0 / 348.0;
const Walls NoWalls;

std::complex<double> spectrumAt(const std::vector<float>& response, double hertz) {
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < response.size(); ++n) {
        sum += static_cast<double>(response[n]) *
               std::polar(1.0, -2 * M_PI * hertz / 48000.0 * static_cast<double>(n));
    }
    return sum;
}

TEST(Response, TheDirectPathIsLateByItsLengthAndFadesWithIt) {
    for (int i = 0; i < 40; ++i) {
        const double metres = 0.5 + 0.1737 * i;
        const auto response = responsesOf(NoWalls, {metres, 0, 0}, {{0, 0, 0}}).at(0);
        for (const double hertz : {50.0, 1000.0, 5000.0, 11000.0, 16000.0, 18000.0}) {
            const double late = metres * SamplesPerMetre + ResponseDelay;
            const auto ideal = std::polar(1.0 / metres, -2 * M_PI * hertz / 48000.0 * late);
            EXPECT_LE(std::abs(spectrumAt(response, hertz) - ideal), 1e-3 / metres)
                << metres << " m, " << hertz << " Hz";
        }
    }
}

struct Arrival {
    double at, height;
};

/**
 * A single pulse within 14 samples of where it should be, by its spectrum at 6.6 kHz, four whole
 * waves, to which the slow rest of what came before gives nothing.
 */
Arrival arrivalNear(const std::vector<float>& response, double expected) {
    constexpr double Turn = 2 * M_PI * 4 / 29;  // a sample
    const auto middle = std::lround(expected);
    std::complex<double> sum = 0.0;
    for (long n = -14; n <= 14; ++n) {
        sum += static_cast<double>(response.at(static_cast<std::size_t>(middle + n))) *
               std::polar(1.0, -Turn * static_cast<double>(n));
    }
    return {static_cast<double>(middle) - std::arg(sum) / Turn, std::abs(sum)};
}

TEST(Response, TheFirstReflectionsComeFromTheMirroredTalkers) {
    const Point size{6.1, 4.3, 2.9}, source{3.44, 0.92, 1.81}, heard{3.82, 0.97, 1.89};
    const Walls walls{size, 0.7, 0.1};
    const auto response = responsesOf(walls, source, {heard}).at(0);
    const std::vector<Point> mirrored{
        {-source.x, source.y, source.z}, {2 * size.x - source.x, source.y, source.z},
        {source.x, -source.y, source.z}, {source.x, 2 * size.y - source.y, source.z},
        {source.x, source.y, -source.z}, {source.x, source.y, 2 * size.z - source.z}};
    for (const Point& image : mirrored) {
        const double metres = std::hypot(image.x - heard.x, image.y - heard.y, image.z - heard.z);
        const double expected = metres * SamplesPerMetre + ResponseDelay;
        const Arrival arrival = arrivalNear(response, expected);
        // No other arrival is closer than 28 samples; the foot of one may reach in.
        EXPECT_NEAR(expected, arrival.at, 0.03);
        EXPECT_NEAR(0.7 / metres, arrival.height, 0.03 * 0.7 / metres);
    }
}

TEST(Response, ACornerReflectsByEachOfItsWalls) {
    // In the corner of three walls eight images are at the same place.
    const double away = 1e-9;
    const Walls walls{{20, 20, 20}, 0.5, 0.02};
    const auto response = responsesOf(walls, {away, away, away}, {{1.74, 0, 0}}).at(0);
    const Arrival arrival = arrivalNear(response, 240.0 + ResponseDelay);
    EXPECT_NEAR(1.5 * 1.5 * 1.5 / 1.74, arrival.height, 0.02);
}

/** Seconds from -5 to -35 dB of what is still to come, times two. */
double measuredTime(const std::vector<float>& response) {
    double total = 0.0;
    for (const float sample : response) total += static_cast<double>(sample * sample);
    double rest = total, from = 0.0, to = 0.0;
    for (std::size_t n = 0; n < response.size(); ++n) {
        const double level = 10 * std::log10(rest / total);
        if (level > -5.0) from = static_cast<double>(n);
        if (level > -35.0) to = static_cast<double>(n);
        rest -= static_cast<double>(response[n] * response[n]);
    }
    return 2.0 * (to - from) / 48000.0;
}

TEST(Response, TheEchoLastsAsStated) {
    const std::vector<Room> rooms{{{6, 5, 3}, 0.3},
                                  {{6, 5, 3}, 0.5},
                                  {{6, 5, 3}, 0.8},
                                  {{4, 3, 2.5}, 0.4},
                                  {{9, 6, 3.2}, 0.6}};
    for (const Room& room : rooms) {
        const Walls walls = wallsOf(room);
        const Point& size = room.size;
        for (const double share : {0.2, 0.35}) {
            const auto response =
                responsesOf(walls, {share * size.x, (1 - share) * size.y, 0.4 * size.z},
                            {{0.83 * size.x, 0.31 * size.y, 0.47 * size.z}})
                    .at(0);
            EXPECT_NEAR(1.0, measuredTime(response) / room.rt60, 0.1) << size.x << " " << room.rt60;
            EXPECT_NEAR(1.0, reverberationTime(response) / room.rt60, 0.1)
                << size.x << " " << room.rt60;
        }
    }
}

TEST(Response, ARoomThatCannotEchoAsStatedIsRefused) {
    EXPECT_THROW(wallsOf({{0.5, 5, 3}, 0.3}), std::invalid_argument);
    EXPECT_THROW(wallsOf({{50, 40, 30}, 0.05}), std::invalid_argument);
    EXPECT_THROW(wallsOf({{6, 5, 3}, std::nan("")}), std::invalid_argument);
}

TEST(ExactMath, AgreesWithTheLibrary) {
    for (int i = -400; i <= 400; ++i) {
        const double x = 0.0173 * i;
        EXPECT_NEAR(std::sin(x), sineOf(x), 2e-15);
        EXPECT_NEAR(std::cos(x), cosineOf(x), 2e-15);
        EXPECT_NEAR(1.0, amplitudeOf(x * 10) / std::pow(10.0, x / 2), 1e-13);
    }
    EXPECT_NEAR(std::cyl_bessel_i(0.0, 6.8), besselOf(6.8), 1e-10);
}

}  // namespace
