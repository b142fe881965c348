/**
 * Functions that give the same bits on every machine, which a C library's need not: sums, products
 * and divisions alone.
 */
#ifndef VOXLOC_APP_SIMULATOR_EXACT_MATH_H
#define VOXLOC_APP_SIMULATOR_EXACT_MATH_H

#include <cstdint>

constexpr double Pi = 3.14159265358979323846;

/** Within 1e-15 of the sine for angles up to a thousand turns. */
double sineOf(double radians);
double cosineOf(double radians);

/** sin(x)/x, 1 at 0. */
double sincOf(double x);

/** The factor on an amplitude. */
double amplitudeOf(double decibels);

/** The modified Bessel function of order 0, for Kaiser's window. */
double besselOf(double x);

/** A sequence of 64-bit words for each seed: Vigna's splitmix64. */
class RandomNumbers {
  public:
    explicit RandomNumbers(std::uint64_t seed) : state_(seed) {}

    std::uint64_t word();

    /** Evenly from low up to high. */
    double between(double low, double high);

  private:
    std::uint64_t state_;
};

#endif
