#include "simulator/exactMath.h"

#include <cmath>

double sineOf(double radians) {
    const double halfTurns = std::floor(radians / Pi + 0.5);
    // Pi is short of the number by 1.2e-16.
    const double x = (radians - halfTurns * Pi) - halfTurns * 1.2246467991473532e-16;
    double term = x, sum = x;
    for (int n = 2; n <= 22; n += 2) {
        term *= -x * x / (n * (n + 1));
        sum += term;
    }
    return std::floor(halfTurns / 2) * 2 == halfTurns ? sum : -sum;
}

double cosineOf(double radians) {
    return sineOf(radians + Pi / 2);
}

double sincOf(double x) {
    return x == 0.0 ? 1.0 : sineOf(x) / x;
}

double amplitudeOf(double decibels) {
    constexpr double LogOfTwo = 0.69314718055994530942, LogOfTen = 2.30258509299404568402;
    const double exponent = decibels / 20 * LogOfTen;
    const double octaves = std::floor(exponent / LogOfTwo + 0.5);
    const double x = exponent - octaves * LogOfTwo;
    double term = 1.0, sum = 1.0;
    for (int n = 1; n <= 16; ++n) {
        term *= x / n;
        sum += term;
    }
    return std::ldexp(sum, static_cast<int>(octaves));
}

double besselOf(double x) {
    double term = 1.0, sum = 1.0;
    for (int n = 1; n <= 40; ++n) {
        term *= x / (2 * n) * x / (2 * n);
        sum += term;
    }
    return sum;
}

std::uint64_t RandomNumbers::word() {
    state_ += 0x9E3779B97F4A7C15u;
    std::uint64_t x = state_;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

double RandomNumbers::between(double low, double high) {
    return low + (high - low) * std::ldexp(static_cast<double>(word() >> 11), -53);
}
