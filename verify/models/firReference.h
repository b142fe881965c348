/** The reference of every filter: direct sums in double precision. */
#ifndef VERIFY_MODELS_FIR_REFERENCE_H
#define VERIFY_MODELS_FIR_REFERENCE_H

#include <cmath>

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
inline FirOutput firOutput(const float* x, const float* h, int nh) {
    FirOutput output = {0.0, 0.0};
    double absolute = 0.0;
    for (int j = 0; j < nh; ++j) {
        const double term = static_cast<double>(h[j]) * static_cast<double>(x[j]);
        output.value += term;
        absolute += std::abs(term);
    }
    const int roundings = (nh + 3) / 4 + 4;
    output.limit = roundings * 0x1p-24 * absolute;
    return output;
}

}  // namespace reference

#endif
