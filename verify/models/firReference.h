/** Reference filters: direct sums in double, and the order of additions that the engine promises.
 */
#ifndef VERIFY_FIR_REFERENCE_H
#define VERIFY_FIR_REFERENCE_H

#include <cstddef>
#include <vector>

namespace reference {

/** One output of a filter: the sum in double, and how far a float sum may lie from it. */
struct FirOutput {
    double value;
    double limit;
};

/**
 * h[0]·x[0] + ... + h[nh-1]·x[nh-1].
 *
 * The limit: a product is rounded once, added to one of four sums of at most ceil(nh/4) terms and
 * passes two more additions. Each of these ceil(nh/4)+3 roundings has a relative error of at most
 * 2^-24, so to first order the sum is off by that many times 2^-24 times the sum of the absolute
 * terms; one more unit covers the higher orders.
 */
FirOutput firOutput(const float* x, const float* h, int nh);

/** The same output in float, bit for bit: four sums of every fourth product, joined in pairs. */
float firOutputInOrder(const float* x, const float* h, int nh);

/** Uniform in [-1, 1), from a fixed seed. */
std::vector<float> noise(std::size_t count, unsigned seed);

/** True when both are NaN or both have the same bits. */
bool sameValue(float a, float b);

}  // namespace reference

#endif
